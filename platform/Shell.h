#pragma once

#include <string>

namespace vornadel
{

/// The system shell and what is asked of the file system along with it.
class Shell
{
public:
    Shell() = default;
    Shell(const Shell&) = delete;
    Shell& operator=(const Shell&) = delete;
    virtual ~Shell() = default;

    /// Runs one command line through the system shell and waits for it. The result is the shell's
    /// own; nobody in this tool looks at it.
    virtual int run(const std::string& command) = 0;

    /// Whether something of that name exists; says nothing about being allowed to read it.
    virtual bool exists(const std::string& path) = 0;
};

} // namespace vornadel
