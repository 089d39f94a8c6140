#include "flows/FlashRead.h"

#include "flows/FlowRun.h"
#include "hub/FlashGeometry.h"

#include <utility>

namespace vornadel
{

namespace
{

/// Restarts the hub into the firmware in its flash, if there is any.
bool restartInto(const std::vector<std::uint8_t>& flash, FlowRun& run)
{
    FwImage image;
    if (run.isStrict()) {
        FwImage_Parse(image, flash.data(), static_cast<std::int32_t>(flash.size()));
    }
    return run.restart() && run.runs(image);
}

} // namespace

bool readFlash(std::vector<std::uint8_t>& flash, FlowReporter& reporter, const FlowOptions& options)
{
    FlowRun run({FlowKind::Read}, reporter, options);
    std::vector<std::uint8_t> bytes(kFlashSize);
    if (run.openRom() && run.read(bytes) && run.readAgain(bytes) &&
        (restartInto(bytes, run) || run.isStrict())) {
        flash = std::move(bytes);
    } else if (run.isStrict()) {
        run.sendBack();
    }
    return run.end();
}

} // namespace vornadel
