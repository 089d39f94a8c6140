#pragma once

#include "flows/FlowReporter.h"
#include "hub/FlashGeometry.h"

#include <algorithm>
#include <cstddef>
#include <cstdint>

namespace vornadel
{

/// Goes over `size` bytes of the flash piece by piece, from address 0, and moves `progress` along
/// by `percent` of the bar in all. `transfer(address, length)` returns a request status; false at
/// the first that is not 0.
template <typename Transfer>
bool forEachPiece(std::int32_t size, double percent, double& progress, FlowReporter& reporter,
                  Transfer transfer)
{
    for (std::int32_t address = 0; address < size;) {
        const std::int32_t length = std::min(std::int32_t{kFlashPiece}, size - address);
        if (transfer(static_cast<std::uint32_t>(address), static_cast<std::size_t>(length)) != 0) {
            return false;
        }
        address += length;
        progress += static_cast<double>(length) / size * percent;
        reporter.updateProgressBar(progress, Wait::No);
    }
    return true;
}

} // namespace vornadel
