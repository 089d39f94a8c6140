// The part of Core Services that the macOS back end uses; see CoreFoundation.h beside it.

#pragma once

#include <CoreFoundation/CoreFoundation.h>

enum : OSErr { noErr = 0 };
enum : OSErr { gestaltUndefSelectorErr = -5551 };

enum : OSType {
    gestaltSystemVersion = 0x73797376,       // 'sysv'
    gestaltSystemVersionMajor = 0x73797331,  // 'sys1'
    gestaltSystemVersionMinor = 0x73797332,  // 'sys2'
    gestaltSystemVersionBugFix = 0x73797333, // 'sys3'
};

extern "C" [[deprecated]] OSErr Gestalt(OSType selector, SInt32* response);
