#pragma once

#include "platform/Shell.h"

namespace vornadel
{

/// `/bin/sh` by way of system(). Any thread.
class SystemShell final : public Shell
{
public:
    int run(const std::string& command) override;
    bool exists(const std::string& path) override;
};

} // namespace vornadel
