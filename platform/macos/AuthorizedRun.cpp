#include "platform/macos/AuthorizedRun.h"

#include <Security/Authorization.h>

namespace vornadel
{

bool AuthorizedRun::start(const std::string& script)
{
    char* noArguments[] = {nullptr};
    AuthorizationRef authorization = nullptr;
    AuthorizationCreate(nullptr, kAuthorizationEmptyEnvironment, kAuthorizationFlagDefaults,
                        &authorization);
    // Its successor needs a permanently installed helper.
#pragma GCC diagnostic push
#pragma GCC diagnostic ignored "-Wdeprecated-declarations"
    AuthorizationExecuteWithPrivileges(authorization, script.c_str(), kAuthorizationFlagDefaults,
                                       noArguments, nullptr);
#pragma GCC diagnostic pop
    AuthorizationFree(authorization, kAuthorizationFlagDefaults);
    return true;
}

} // namespace vornadel
