#pragma once

#include "platform/PrivilegedRun.h"
#include "platform/Shell.h"
#include "platform/SystemVersion.h"

namespace vornadel::test
{

/// A shell that does nothing; on its machine every file exists.
class IdleShell final : public Shell
{
public:
    int run(const std::string& /*command*/) override { return 0; }
    int runQuietly(const std::string& /*command*/) override { return 0; }
    bool exists(const std::string& /*path*/) override { return true; }
    bool mayAppend(const std::string& /*path*/) override { return true; }
    bool mayRead(const std::string& /*path*/) override { return true; }
};

class IdlePrivilegedRun final : public PrivilegedRun
{
public:
    bool start(const std::string& /*script*/) override { return false; }
};

class FixedSystemVersion final : public SystemVersion
{
public:
    SystemVersionNumbers read() override { return {12, 0, 0, 0}; }
};

} // namespace vornadel::test
