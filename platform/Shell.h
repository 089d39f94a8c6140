#pragma once

#include <string>

namespace vornadel
{

/// The system shell, and the file queries that go with it.
class Shell
{
public:
    Shell() = default;
    Shell(const Shell&) = delete;
    Shell& operator=(const Shell&) = delete;
    virtual ~Shell() = default;

    /// Runs one command line through the system shell and waits for it. Returns the shell's result,
    /// which this tool ignores.
    virtual int run(const std::string& command) = 0;

    /// The same, with standard error discarded.
    virtual int runQuietly(const std::string& command) = 0;

    /// Whether something of that name exists, readable or not.
    virtual bool exists(const std::string& path) = 0;

    // In a folder such as /tmp, another user may have put a link or a pipe where a file is
    // expected. These two open nothing that is there, and follow no link.

    /// Whether a command may append to the file: a plain file of the caller's own with no second
    /// name. Creates an empty one if nothing is there, so that nobody else can do so first.
    virtual bool mayAppend(const std::string& path) = 0;

    /// Whether the file may be opened for reading: a plain file of the caller's or of root's. False
    /// for a missing one.
    virtual bool mayRead(const std::string& path) = 0;
};

} // namespace vornadel
