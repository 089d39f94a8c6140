#pragma once

#include "firmware/FwImage.h"

#include <array>
#include <cstddef>
#include <cstdint>
#include <span>
#include <vector>

namespace vornadel
{

/// A copy of everything that an image is, to bring it back later: its bytes, where its descriptor
/// block begins, and the four texts of the record with the bytes after their NUL.
struct ImageState {
    bool loaded = false;
    std::vector<std::uint8_t> bytes;
    std::size_t block = 0; ///< offset of the descriptor block; only if loaded
    std::array<FwText, 4> texts{};

    /// From the first byte of the descriptor block to the end; empty if not loaded.
    std::span<const std::uint8_t> fromBlock() const
    {
        return loaded ? std::span(bytes).subspan(block) : std::span<const std::uint8_t>();
    }

    bool operator==(const ImageState&) const = default;
};

ImageState FwImage_State(const FwImage& image);

/// Makes the image what it was. The block is not searched again, because an edit may have changed
/// its signature. False without memory for the bytes; then the image is empty and not loaded.
bool FwImage_Restore(FwImage& image, const ImageState& state);

} // namespace vornadel
