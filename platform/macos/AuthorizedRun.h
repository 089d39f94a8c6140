#pragma once

#include "platform/PrivilegedRun.h"

namespace vornadel
{

/// Administrator rights by way of Authorization services, which ask for the credentials. For the
/// main thread.
///
/// Returns once the script has been started or the user has refused; the two look alike.
class AuthorizedRun final : public PrivilegedRun
{
public:
    bool start(const std::string& script) override;
};

} // namespace vornadel
