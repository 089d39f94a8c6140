#pragma once

#include "platform/Shell.h"

namespace vornadel
{

/// `/bin/sh`. Any thread.
class SystemShell final : public Shell
{
public:
    int run(const std::string& command) override;
    int runQuietly(const std::string& command) override;
    bool exists(const std::string& path) override;
    bool mayAppend(const std::string& path) override;
    bool mayRead(const std::string& path) override;
};

} // namespace vornadel
