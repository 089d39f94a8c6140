#include "platform/macos/AuthorizedRun.h"

#include <Security/Authorization.h>

namespace vornadel
{

bool AuthorizedRun::start(const std::string& script)
{
    char* noArguments[] = {nullptr};
    AuthorizationRef authorization = nullptr;
    AuthorizationCreate(nullptr, kAuthorizationEmptyEnvironment, kAuthorizationFlagDefaults, &authorization);
#pragma GCC diagnostic push
#pragma GCC diagnostic ignored                                                                               \
    "-Wdeprecated-declarations" // what came after it wants a helper installed for good
    AuthorizationExecuteWithPrivileges(authorization, script.c_str(), kAuthorizationFlagDefaults, noArguments,
                                       nullptr);
#pragma GCC diagnostic pop
    AuthorizationFree(authorization, kAuthorizationFlagDefaults);
    return true;
}

} // namespace vornadel
