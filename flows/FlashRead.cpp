#include "flows/FlashRead.h"

#include "flows/FlowRun.h"
#include "hub/FlashGeometry.h"

#include <utility>

namespace vornadel
{

bool readFlash(std::vector<std::uint8_t>& flash, FlowReporter& reporter)
{
    FlowRun run({FlowKind::Read}, reporter);
    std::vector<std::uint8_t> bytes(kFlashSize);
    if (run.openRom() && run.read(bytes) && run.restart()) {
        flash = std::move(bytes);
    }
    return run.end();
}

} // namespace vornadel
