// access show, grant and revoke: who may open the hubs.

#include "base/GenFun.h"
#include "cli/Findings.h"
#include "cli/Verbs.h"
#include "driver/HubDriver.h"

#include <memory>
#include <optional>
#include <string>

namespace vornadel
{

namespace
{

/// Runs an administrator script and waits for its end. Returns the exit status.
int runScript(const Command& command, const char* name)
{
    const std::string byHand =
        "sudo " + std::string(ShellEscape(command.resourcePath.c_str())) + '/' + name;
    PrivilegedRun& privileged = command.platform.privileged;
    if (!startScript(privileged, command.resourcePath, name)) {
        return fail(command, FailureId::NoAdministrator,
                    "this system cannot ask for administrator rights", byHand);
    }
    const std::optional<int> status = privileged.wait();
    if (!status) {
        command.out << name << " was started\n"; // a Mac does not tell how it ended
        return kExitSuccess;
    }
    constexpr int kRefused = 126;
    constexpr int kNotAuthorized = 127;
    if (*status == kRefused || *status == kNotAuthorized) {
        return fail(command, FailureId::NoAdministrator, "administrator rights were not given",
                    byHand);
    }
    return *status == 0
               ? kExitSuccess
               : fail(command, FailureId::AccessUnchanged,
                      std::string(name) + " failed with status " + std::to_string(*status), byHand);
}

int showVerb(const Command& command)
{
    Findings findings = hubFindings(command);
    const Findings rule = ruleFindings(command);
    findings.insert(findings.end(), rule.begin(), rule.end());
    return tellFindings(command, findings);
}

int grantVerb(const Command& command)
{
    if (!isFitForShell(command.resourcePath)) {
        return fail(command, FailureId::AccessUnchanged,
                    "the tool's path contains a control character, which the shell would misread");
    }
    if (const std::string problem = claimDriverCopy(command.env.driverCopy); !problem.empty()) {
        return fail(command, FailureId::AccessUnchanged, problem,
                    "sudo rm -r " + command.env.driverCopy);
    }
    copyDriverBundle(command.platform.shell, command.resourcePath);
    return runScript(command, "load");
}

int revokeVerb(const Command& command)
{
    // A hub in its ROM code is restarted into its firmware while it may still be opened: the script
    // waits for the end of the hold.
    std::unique_ptr<HubHold> hold = command.platform.privileged.holdHub();
    if (hold == nullptr) {
        return fail(command, FailureId::AccessUnchanged, "access is being withdrawn already");
    }
    returnHubToFlash();
    hold = nullptr;
    return runScript(command, "unload");
}

} // namespace

const Verb kAccessShowVerb = {
    .name = "access show",
    .summary = "Show who may open which hub, and what the installed rule says",
    .run = showVerb,
    .selectsHub = false,
    .examples = "vornadelctl access show\n",
};

const Verb kAccessGrantVerb = {
    .name = "access grant",
    .summary = "Let users open the hubs of config.ini. Asks for an administrator's password",
    .run = grantVerb,
    .selectsHub = false,
    .examples = "vornadelctl access grant\n",
};

const Verb kAccessRevokeVerb = {
    .name = "access revoke",
    .summary = "Withdraw that again. A hub that runs its ROM code is restarted into its firmware "
               "before. Asks for an administrator's password",
    .run = revokeVerb,
    .selectsHub = false,
    .examples = "vornadelctl access revoke\n",
};

} // namespace vornadel
