// Identifiers, the run loop and the main bundle.

#include "tests/fake_macos/FakeCoreFoundation.h"

#include <algorithm>
#include <array>
#include <cstring>
#include <list>
#include <map>
#include <mutex>
#include <utility>

struct __CFUUID {
    CFUUIDBytes bytes;
};
struct __CFRunLoop {
};
struct __CFRunLoopSource {
    const void* port;
    std::string name;
};
struct __CFString {
};
struct __CFBundle {
};
struct __CFURL : vornadel::test::CoreObject {
    __CFURL(std::string its, std::string where, bool usable)
        : CoreObject(std::move(its)), path(std::move(where)), hasPath(usable)
    {
    }

    std::string path;
    bool hasPath;
};

namespace vornadel::test
{

namespace
{

const __CFString defaultMode{};
__CFBundle mainBundle;

/// The published identifiers.
const std::map<std::string, std::string> kKnownIds = {
    {"9DC7B780-9EC0-11D4-A54F-000A27052861", "device user client"},
    {"C244E858-109C-11D4-91D4-0050E4C6426F", "plug-in interface"},
    {"5C8187D0-9EF3-11D4-8B45-000A27052861", "device interface"},
};

} // namespace

CFRunLoopRef ownRunLoop()
{
    static thread_local __CFRunLoop own;
    return &own;
}

std::string nameOf(const CFUUIDBytes& bytes)
{
    std::array<UInt8, 16> all{};
    static_assert(sizeof all == sizeof bytes);
    std::memcpy(all.data(), &bytes, sizeof all);
    std::string text;
    for (std::size_t i = 0; i < all.size(); ++i) {
        constexpr char kDigits[] = "0123456789ABCDEF";
        text += i == 4 || i == 6 || i == 8 || i == 10 ? "-" : "";
        text += {kDigits[all[i] >> 4], kDigits[all[i] & 0xF]};
    }
    const auto known = kKnownIds.find(text);
    return known != kKnownIds.end() ? known->second : "an unknown id";
}

std::string nameOf(CFUUIDRef uuid) { return uuid != nullptr ? nameOf(uuid->bytes) : "none"; }

std::string nameOf(CFRunLoopSourceRef source) { return source != nullptr ? source->name : "none"; }

CFRunLoopSourceRef makeSource(MacState& state, const void* port, std::string name)
{
    const auto source = std::make_shared<__CFRunLoopSource>();
    source->port = port;
    source->name = std::move(name);
    state.kept.push_back(source);
    return source.get();
}

} // namespace vornadel::test

using namespace vornadel::test;

extern "C" {

const CFRunLoopMode kCFRunLoopDefaultMode = &defaultMode;

void CFRelease(CFTypeRef object)
{
    const CurrentMac state;
    if (object == nullptr) {
        state->wrong("CFRelease of nothing");
        return;
    }
    if (state->handedOut.count(object) == 0) {
        state->wrong("CFRelease of something that is not there, or is no caller's to release");
        return;
    }
    const auto* released = static_cast<const CoreObject*>(object);
    state->call("CFRelease(" + released->name + ')');
    state->goneAt(released, "release");
}

CFBundleRef CFBundleGetMainBundle()
{
    const CurrentMac state;
    state->call("CFBundleGetMainBundle()");
    return state->machine->bundlePath ? &mainBundle : nullptr;
}

CFURLRef CFBundleCopyBundleURL(CFBundleRef bundle)
{
    const CurrentMac state;
    state->call("CFBundleCopyBundleURL(main bundle)");
    if (bundle != &mainBundle) {
        state->wrong("the URL of no bundle");
        return nullptr;
    }
    if (!state->machine->bundleHasUrl) {
        return nullptr;
    }
    return state->madeAt(new __CFURL(state->nextName("url"), *state->machine->bundlePath,
                                     state->machine->urlHasPath));
}

Boolean CFURLGetFileSystemRepresentation(CFURLRef url, Boolean absolute, UInt8* buffer,
                                         CFIndex size)
{
    const CurrentMac state;
    state->call("CFURLGetFileSystemRepresentation(" + url->name + ", " +
                (absolute != 0 ? "absolute" : "as it is") + ')');
    if (state->handedOut.count(url) == 0) {
        state->wrong("the path of " + url->name + ", which is not there");
    }
    const std::size_t room = static_cast<std::size_t>(size) - 1;
    const std::size_t fits = std::min(url->path.size(), room);
    std::memcpy(buffer, url->path.data(),
                fits); // in any case: a refusal leaves it unchanged
    buffer[fits] = 0;
    return url->hasPath && fits == url->path.size() ? 1 : 0;
}

CFRunLoopRef CFRunLoopGetCurrent()
{
    const CurrentMac state;
    state->call("CFRunLoopGetCurrent()");
    return ownRunLoop();
}

void CFRunLoopAddSource(CFRunLoopRef runLoop, CFRunLoopSourceRef source, CFRunLoopMode mode)
{
    const CurrentMac state;
    state->call(std::string("CFRunLoopAddSource(") +
                (runLoop == ownRunLoop() ? "own run loop" : "another run loop") + ", " +
                nameOf(source) + ", " +
                (mode == kCFRunLoopDefaultMode ? "default mode" : "another mode") + ')');
    if (source == nullptr) {
        state->wrong("a run loop given no source");
        return;
    }
    if (mode == kCFRunLoopDefaultMode) { // the only mode that runs
        state->runLoopOfPort[source->port] = runLoop;
    }
}

CFUUIDRef CFUUIDGetConstantUUIDWithBytes(CFAllocatorRef /*allocator*/, UInt8 byte0, UInt8 byte1,
                                         UInt8 byte2, UInt8 byte3, UInt8 byte4, UInt8 byte5,
                                         UInt8 byte6, UInt8 byte7, UInt8 byte8, UInt8 byte9,
                                         UInt8 byte10, UInt8 byte11, UInt8 byte12, UInt8 byte13,
                                         UInt8 byte14, UInt8 byte15)
{
    static std::mutex mutex;
    static std::list<__CFUUID> made; // one per value, kept until the process ends
    const CFUUIDBytes bytes{byte0, byte1, byte2,  byte3,  byte4,  byte5,  byte6,  byte7,
                            byte8, byte9, byte10, byte11, byte12, byte13, byte14, byte15};
    const std::lock_guard lock(mutex);
    for (const __CFUUID& each : made) {
        if (std::memcmp(&each.bytes, &bytes, sizeof bytes) == 0) {
            return &each;
        }
    }
    return &made.emplace_back(__CFUUID{bytes});
}

CFUUIDBytes CFUUIDGetUUIDBytes(CFUUIDRef uuid) { return uuid->bytes; }

} // extern "C"
