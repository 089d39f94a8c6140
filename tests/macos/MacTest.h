#pragma once

#include "platform/macos/IokitBus.h"
#include "tests/fake_macos/FakeMacos.h"

#include <gmock/gmock.h>
#include <gtest/gtest.h>

#include <cstdio>
#include <string>
#include <vector>

namespace vornadel::test
{

/// The calls of one successful step of a search, for the device at a position.
inline std::vector<std::string> callsUpToTheInterface(const std::string& iterator, int place)
{
    const std::string number = std::to_string(place);
    return {
        "IOIteratorNext(" + iterator + ") = service " + number,
        "IOCreatePlugInInterfaceForService(service " + number +
            ", device user client, plug-in interface) = plug-in " + number,
        "IOObjectRelease(service " + number + ")",
        "plug-in " + number + " QueryInterface(device interface) = interface " + number,
        "plug-in " + number + " Release",
    };
}

/// The request that follows the open of the device at a position.
inline std::string openTimeRequest(int place)
{
    char text[64];
    std::snprintf(text, sizeof text, "interface %d DeviceRequest(40 02 0001 %04X 0000)", place,
                  HUB_MAKER_VID);
    return text;
}

/// The calls that register for both kinds of notification, without a refusal.
inline std::vector<std::string> registrationCalls()
{
    const auto registered = [](const std::string& number, const std::string& kind) {
        return "IOServiceAddMatchingNotification(port " + number + ", \"" + kind +
               "\", dictionary " + number + ", no reference) = iterator " + number;
    };
    return {
        "IOServiceMatching(\"IOUSBDevice\") = dictionary 1",
        "IOServiceMatching(\"IOUSBDevice\") = dictionary 2",
        "IONotificationPortCreate(main port) = port 1",
        "IONotificationPortCreate(main port) = port 2",
        "IONotificationPortGetRunLoopSource(port 1) = source 1",
        "IONotificationPortGetRunLoopSource(port 2) = source 2",
        "CFRunLoopGetCurrent()",
        "CFRunLoopAddSource(own run loop, source 1, default mode)",
        "CFRunLoopAddSource(own run loop, source 2, default mode)",
        registered("1", "IOServiceFirstMatch"),
        registered("2", "IOServiceTerminate"),
    };
}

/// Concatenates lists of calls.
template <typename... Lists>
std::vector<std::string> oneAfterTheOther(const Lists&... lists)
{
    std::vector<std::string> all;
    (all.insert(all.end(), lists.begin(), lists.end()), ...);
    return all;
}

/// A Mac without devices. Each test fails on misuse.
class MacTest : public testing::Test
{
public:
    ~MacTest() override { EXPECT_THAT(mac.misuse(), testing::IsEmpty()); }

protected:
    using Calls = std::vector<std::string>;

    FakeMacos mac;
};

} // namespace vornadel::test
