#include "flows/FlashErase.h"

#include "flows/FlowRun.h"
#include "hub/FlashGeometry.h"

#include <cstdint>
#include <vector>

namespace vornadel
{

bool eraseFlash(FlowReporter& reporter, const FlowOptions& options)
{
    FlowRun run({FlowKind::Erase}, reporter, options);
    const std::vector<std::uint8_t> blank(kFlashSize, kFlashBlank);
    if (run.openRom() && run.save(blank, FlashState::Erased) &&
        (run.isUpToDate() || (run.erase() && run.eraseIsDone()))) {
        run.session().expectAnySerialNumber();
        run.restart();
    }
    return run.end();
}

} // namespace vornadel
