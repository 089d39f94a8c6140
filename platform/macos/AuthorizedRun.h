#pragma once

#include "platform/PrivilegedRun.h"

namespace vornadel
{

/// Administrator rights through Authorization services, which ask for the credentials. Main thread.
///
/// Returns once the script has been started or the user has refused; the two look the same.
class AuthorizedRun final : public PrivilegedRun
{
public:
    bool start(const std::string& script) override;
};

} // namespace vornadel
