#pragma once

#include "platform/PrivilegedRun.h"

#include <functional>
#include <memory>
#include <string>

namespace vornadel
{

/// Administrator rights by way of polkit's `pkexec`, which asks for the credentials itself. Any
/// thread.
///
/// One script at a time, or several prompts would lie on top of each other: a script that is
/// started while another one runs, or still waits for its password, starts when that has ended. The
/// script started last is not started again while it has not ended; a line says so.
///
/// pkexec's exit status 127 is not the user's doing, and is told in one line too: no authorization,
/// no agent to ask for it, or a command missing in the script.
///
/// A script's standard input is an anonymous file, on which a HubHold is a shared lock. The script
/// takes the exclusive lock before it takes access away, and keeps it to its end. A file without a
/// name can be neither exchanged nor locked by anybody else.
///
/// The program stays a child of this process: pkexec refuses to work for a parent that has ended,
/// so the usual double fork is not for it. A thread of its own takes the exit status, so no zombie
/// stays behind.
class PkexecRun final : public PrivilegedRun
{
public:
    using Tell = std::function<void(const std::string& line)>;

    /// `program` is searched on PATH unless it holds a slash.
    /// `tell` gets the lines, on any thread, and may be called as long as the process runs.
    explicit PkexecRun(std::string program = "pkexec", Tell tell = tellStandardError);

    bool start(const std::string& script) override;
    std::unique_ptr<HubHold> holdHub() override;

private:
    struct Shared;

    static void tellStandardError(const std::string& line);
    static void workThrough(const std::shared_ptr<Shared>& shared, int child);

    std::shared_ptr<Shared> m_shared; ///< with the thread that waits for the scripts
};

} // namespace vornadel
