// The part of Authorization services that the macOS back end uses; see CoreFoundation.h.

#pragma once

#include <CoreFoundation/CoreFoundation.h>

#include <cstdio>

struct AuthorizationOpaqueRef;
using AuthorizationRef = const AuthorizationOpaqueRef*;
using AuthorizationFlags = UInt32;

struct AuthorizationItemSet;
using AuthorizationRights = AuthorizationItemSet;
using AuthorizationEnvironment = AuthorizationItemSet;

enum : OSStatus {
    errAuthorizationSuccess = 0,
    errAuthorizationInvalidRef = -60002,
    errAuthorizationDenied = -60005,
    errAuthorizationCanceled = -60006,
};

enum : AuthorizationFlags { kAuthorizationFlagDefaults = 0 };

#define kAuthorizationEmptyEnvironment nullptr

extern "C" {

OSStatus AuthorizationCreate(const AuthorizationRights* rights,
                             const AuthorizationEnvironment* environment, AuthorizationFlags flags,
                             AuthorizationRef* authorization);
OSStatus AuthorizationFree(AuthorizationRef authorization, AuthorizationFlags flags);
[[deprecated]] OSStatus AuthorizationExecuteWithPrivileges(AuthorizationRef authorization,
                                                           const char* pathToTool,
                                                           AuthorizationFlags options,
                                                           char* const* arguments,
                                                           std::FILE** communicationsPipe);

} // extern "C"
