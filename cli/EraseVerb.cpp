#include "cli/ConsoleReporter.h"
#include "cli/Verbs.h"
#include "flows/FlashErase.h"

namespace vornadel
{

int eraseVerb(const Command& command)
{
    ConsoleReporter reporter(command.out, command.err, command.terminal);
    return eraseFlash(reporter) ? kExitSuccess : kExitFailure;
}

} // namespace vornadel
