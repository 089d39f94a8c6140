#pragma once

#include "platform/PrivilegedRun.h"

#include <string>
#include <utility>

namespace vornadel
{

/// Administrator rights by way of polkit's `pkexec`, which asks for the credentials itself. Any thread.
///
/// Where pkexec has nobody to ask by, no agent and no terminal, one line on standard error says so, after the program's own.
///
/// The program stays a child of this process: pkexec refuses to work for a parent that has ended, so the usual
/// double fork is not for it. A thread of its own takes the exit status, so no zombie stays behind.
class PkexecRun final : public PrivilegedRun
{
public:
    /// `program` is searched on PATH unless it holds a slash.
    explicit PkexecRun(std::string program = "pkexec") : m_program(std::move(program)) {}

    bool start(const std::string& script) override;

private:
    std::string m_program;
};

} // namespace vornadel
