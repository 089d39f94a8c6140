#include "flows/FlashRead.h"

#include "flows/FlowRun.h"
#include "hub/FlashGeometry.h"

#include <utility>

namespace vornadel
{

bool readFlash(std::vector<std::uint8_t>& flash, FlowReporter& reporter, const FlowOptions& options)
{
    FlowRun run({FlowKind::Read}, reporter, options);
    std::vector<std::uint8_t> bytes(kFlashSize);
    if (run.openRom() && run.read(bytes) && run.readAgain(bytes) &&
        (run.restart() || run.isStrict())) {
        flash = std::move(bytes);
    }
    return run.end();
}

} // namespace vornadel
