#pragma once

#include "platform/PrivilegedRun.h"

#include <functional>
#include <memory>
#include <string>

namespace vornadel
{

/// Administrator rights through polkit's `pkexec`, which asks for the credentials. Any thread.
///
/// Runs one script at a time; otherwise several password prompts would cover each other. A script
/// that is started while another one runs, or waits for its password, starts when that has ended.
/// The script that was started last is not started again before it has ended; a line says so.
///
/// pkexec's exit status 127 is reported in one line too: not authorized, no agent to ask for the
/// password, or a command missing in the script. A cancelled password dialog is not reported.
///
/// A script's standard input is an anonymous file. A HubHold is a shared lock on it. The script
/// takes the exclusive lock before it withdraws access, and keeps it to its end. Nobody else can
/// replace or lock a file without a name.
///
/// pkexec stays a child of this process, because it refuses to work for a parent that has ended; so
/// the usual double fork is no option. A thread waits for its exit status, so that no zombie stays.
class PkexecRun final : public PrivilegedRun
{
public:
    using Tell = std::function<void(const std::string& line)>;

    /// `program` is searched on PATH unless it contains a slash. `tell` is called with the lines on
    /// any thread, possibly until the process ends.
    explicit PkexecRun(std::string program = "pkexec", Tell tell = tellStandardError);

    bool start(const std::string& script) override;
    /// Nothing if the last one could not be started, or a signal ended it.
    std::optional<int> wait() override;
    std::unique_ptr<HubHold> holdHub() override;

private:
    struct Shared;

    static void tellStandardError(const std::string& line);
    static void workThrough(const std::shared_ptr<Shared>& shared, int child);

    std::shared_ptr<Shared> m_shared; ///< shared with the thread that waits for the scripts
};

} // namespace vornadel
