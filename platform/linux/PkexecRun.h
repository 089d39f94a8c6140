#pragma once

#include "platform/PrivilegedRun.h"

#include <functional>
#include <string>
#include <utility>

namespace vornadel
{

/// Administrator rights by way of polkit's `pkexec`, which asks for the credentials itself. Any
/// thread.
///
/// What went wrong without the user's doing, pkexec's exit status 127, is told in one line: no
/// authorization, no agent to ask for it, or a command missing in the script.
///
/// The program stays a child of this process: pkexec refuses to work for a parent that has ended,
/// so the usual double fork is not for it. A thread of its own takes the exit status, so no zombie
/// stays behind.
class PkexecRun final : public PrivilegedRun
{
public:
    using Tell = std::function<void(const std::string& line)>;

    /// `program` is searched on PATH unless it holds a slash.
    /// `tell` gets the line on a thread of its own and may be called as long as the process runs.
    explicit PkexecRun(std::string program = "pkexec", Tell tell = tellStandardError)
        : m_program(std::move(program)), m_tell(std::move(tell))
    {
    }

    bool start(const std::string& script) override;

private:
    static void tellStandardError(const std::string& line);

    std::string m_program;
    Tell m_tell;
};

} // namespace vornadel
