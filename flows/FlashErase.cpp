#include "flows/FlashErase.h"

#include "flows/FlowRun.h"

namespace vornadel
{

bool eraseFlash(FlowReporter& reporter)
{
    FlowRun run({FlowKind::Erase}, reporter);
    static_cast<void>(run.openRom() && run.erase() && run.restart());
    return run.end();
}

} // namespace vornadel
