#include "flows/FlashErase.h"

#include "flows/FlowRun.h"

namespace vornadel
{

bool eraseFlash(FlowReporter& reporter, const FlowOptions& options)
{
    FlowRun run({FlowKind::Erase}, reporter, options);
    if (run.openRom() && run.erase() && run.eraseIsDone()) {
        run.session().expectAnySerialNumber();
        run.restart();
    }
    return run.end();
}

} // namespace vornadel
