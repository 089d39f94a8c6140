#pragma once

#include "tests/fake_macos/MacState.h"

#include <CoreFoundation/CoreFoundation.h>

#include <string>
#include <utility>

namespace vornadel::test
{

/// What CFRelease() takes. The pointers that are handed out point here.
struct CoreObject {
    explicit CoreObject(std::string its) : name(std::move(its)) {}
    CoreObject(const CoreObject&) = delete;
    CoreObject& operator=(const CoreObject&) = delete;
    virtual ~CoreObject() = default;

    std::string name;
};

/// The meaning of an identifier of the platform, such as "device interface", or "an unknown id".
std::string nameOf(CFUUIDRef uuid);
std::string nameOf(const CFUUIDBytes& bytes);

/// "source 1", or "none".
std::string nameOf(CFRunLoopSourceRef source);

/// The run loop source of a port; the machine owns it. The mutex must be held.
CFRunLoopSourceRef makeSource(MacState& state, const void* port, std::string name);

} // namespace vornadel::test
