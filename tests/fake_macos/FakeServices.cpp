// Authorization services and Gestalt.

#include "tests/fake_macos/MacState.h"

struct AuthorizationOpaqueRef {
    std::string name;
};

using namespace vornadel::test;

namespace
{

std::string nameOf(AuthorizationRef authorization)
{
    return authorization != nullptr ? authorization->name : "none";
}

std::string argumentsText(char* const* arguments)
{
    if (arguments == nullptr) {
        return "no list of arguments";
    }
    std::string text;
    for (; *arguments != nullptr; ++arguments) {
        text += std::string(text.empty() ? "" : " ") + *arguments;
    }
    return text.empty() ? "no arguments" : text;
}

} // namespace

extern "C" {

OSStatus AuthorizationCreate(const AuthorizationRights* rights,
                             const AuthorizationEnvironment* environment, AuthorizationFlags flags,
                             AuthorizationRef* authorization)
{
    const CurrentMac state;
    std::string text = std::string("AuthorizationCreate(") +
                       (rights == nullptr ? "no rights" : "rights") + ", " +
                       (environment == nullptr ? "no environment" : "an environment") + ", flags " +
                       std::to_string(flags) + ')';
    const OSStatus result = state->machine->authorizationResult;
    if (result == errAuthorizationSuccess) {
        const auto* made =
            state->madeAt(new AuthorizationOpaqueRef{state->nextName("authorization")});
        text += " = " + made->name;
        *authorization = made;
    }
    state->call(text + statusText(result));
    return result;
}

OSStatus AuthorizationExecuteWithPrivileges(AuthorizationRef authorization, const char* pathToTool,
                                            AuthorizationFlags options, char* const* arguments,
                                            std::FILE** communicationsPipe)
{
    const CurrentMac state;
    if (authorization != nullptr && state->handedOut.count(authorization) == 0) {
        state->wrong("a script run with something that is no authorization any more");
    }
    const OSStatus result =
        authorization == nullptr ? errAuthorizationInvalidRef : state->machine->executionResult;
    state->call("AuthorizationExecuteWithPrivileges(" + nameOf(authorization) + ", " + pathToTool +
                ", flags " + std::to_string(options) + ", " + argumentsText(arguments) + ", " +
                (communicationsPipe == nullptr ? "no pipe" : "a pipe") + ')' + statusText(result));
    return result;
}

OSStatus AuthorizationFree(AuthorizationRef authorization, AuthorizationFlags flags)
{
    const CurrentMac state;
    state->call("AuthorizationFree(" + nameOf(authorization) + ", flags " + std::to_string(flags) +
                ')');
    if (authorization == nullptr) {
        return errAuthorizationInvalidRef;
    }
    return state->goneAt(authorization, "freeing") ? errAuthorizationSuccess
                                                   : errAuthorizationInvalidRef;
}

OSErr Gestalt(OSType selector, SInt32* response)
{
    const CurrentMac state;
    std::string name;
    for (const unsigned shift : {24U, 16U, 8U, 0U}) {
        name += static_cast<char>(selector >> shift & 0xFF);
    }
    state->call("Gestalt(" + name + ')');
    if (const auto error = state->machine->gestaltErrors.find(selector);
        error != state->machine->gestaltErrors.end()) {
        return error->second;
    }
    const auto answer = state->machine->gestalt.find(selector);
    if (answer == state->machine->gestalt.end()) {
        return gestaltUndefSelectorErr;
    }
    *response = answer->second;
    return noErr;
}

} // extern "C"
