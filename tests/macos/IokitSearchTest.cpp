// Finding, opening, sending requests and closing the hub, call by call.

#include "base/LastError.h"
#include "hub/HubFailure.h"
#include "hub/HubTransport.h"
#include "hub/SupportedIds.h"
#include "tests/macos/MacTest.h"
#include "tests/support/VirtualClock.h"

#include <array>
#include <cstdint>
#include <cstring>
#include <functional>
#include <memory>
#include <utility>

namespace vornadel::test
{
namespace
{

using testing::ElementsAre;
using testing::IsEmpty;

constexpr std::uint16_t kVendor = 0x1209;
constexpr std::uint16_t kSuperSpeed = 0x0001;
constexpr std::uint16_t kHighSpeed = 0x0002;

const MacDevice kHub{.vendorId = kVendor, .productId = kSuperSpeed};
const MacDevice kStranger{.vendorId = 0x2222, .productId = kSuperSpeed};

constexpr kern_return_t kSendFailed = 0x10000003; // a kernel message error, above zero

MacDevice with(MacDevice device, const std::function<void(MacDevice&)>& change)
{
    change(device);
    return device;
}

class IokitSearch : public MacTest
{
public:
    IokitSearch()
    {
        SupportedIdList = {};
        SupportedIdList[0] = {1, kVendor, kSuperSpeed, kHighSpeed};
        LastError = 0;
        Hub_UsePlatform(m_bus, m_clock);
    }
    ~IokitSearch() override
    {
        Hub_CloseDevice();
        SupportedIdList = {};
    }

protected:
    /// `search` counts the searches from 1 on.
    static Calls searchBegins(int search = 1)
    {
        const std::string number = std::to_string(search);
        return {"IOServiceMatching(\"IOUSBDevice\") = dictionary " + number,
                "IOServiceGetMatchingServices(main port, dictionary " + number + ") = iterator " +
                    number};
    }
    static Calls step(int place, int search = 1)
    {
        return callsUpToTheInterface("iterator " + std::to_string(search), place);
    }
    static Calls idsRead(int place)
    {
        const std::string interface = "interface " + std::to_string(place);
        return {interface + " GetDeviceVendor", interface + " GetDeviceProduct"};
    }
    static Calls released(int place) { return {"interface " + std::to_string(place) + " Release"}; }
    static Calls opened(int place)
    {
        return {"interface " + std::to_string(place) + " USBDeviceOpen", openTimeRequest(place)};
    }

    static std::string plugInCreation(const std::string& result)
    {
        return "IOCreatePlugInInterfaceForService(service 0, device user client, plug-in "
               "interface) = " +
               result;
    }

    /// Both searches skip such a device, with these calls, and go on to the hub after it. Each
    /// leaks the objects in `left`.
    void expectPassedBy(const MacDevice& device, const Calls& calls, int code,
                        const Calls& left = {})
    {
        mac.attach({device, kHub});
        EXPECT_TRUE(Hub_FindDevice());
        EXPECT_EQ(LastError, code);
        EXPECT_EQ(mac.calls(),
                  oneAfterTheOther(searchBegins(1), Calls{"IOIteratorNext(iterator 1) = service 0"},
                                   calls, step(1, 1), idsRead(1), released(1),
                                   Calls{"IOObjectRelease(iterator 1)"}));
        EXPECT_EQ(mac.alive(), left);

        mac.forgetCalls();
        LastError = 0;
        EXPECT_TRUE(Hub_OpenDevice());
        EXPECT_EQ(LastError, code);
        EXPECT_EQ(mac.calls(),
                  oneAfterTheOther(searchBegins(2), Calls{"IOIteratorNext(iterator 2) = service 0"},
                                   calls, step(1, 2), idsRead(1), opened(1)));
        Hub_CloseDevice();
        EXPECT_EQ(mac.alive(), oneAfterTheOther(Calls{"iterator 2"}, left, left));
        mac.reclaim();
    }

    IokitBus m_bus;
    VirtualClock m_clock;
};

TEST_F(IokitSearch, FindsTheHubByTheseCalls)
{
    mac.attach({kStranger, kHub, kHub});
    EXPECT_TRUE(Hub_FindDevice());
    EXPECT_EQ(mac.calls(),
              oneAfterTheOther(searchBegins(), step(0), idsRead(0), released(0), step(1),
                               idsRead(1), released(1), Calls{"IOObjectRelease(iterator 1)"}));
    EXPECT_THAT(mac.alive(), IsEmpty());
    EXPECT_EQ(LastError, 0);
}

TEST_F(IokitSearch, GivesTheListBackWhenThereIsNoHub)
{
    mac.attach({kStranger});
    EXPECT_FALSE(Hub_FindDevice());
    EXPECT_EQ(mac.calls(), oneAfterTheOther(searchBegins(), step(0), idsRead(0), released(0),
                                            Calls{"IOIteratorNext(iterator 1) = none",
                                                  "IOObjectRelease(iterator 1)"}));
    EXPECT_THAT(mac.alive(), IsEmpty());
    EXPECT_EQ(LastError, 0);
}

TEST_F(IokitSearch, OpensTheHubByTheseCallsAndKeepsTheList)
{
    mac.attach({kStranger, kHub});
    EXPECT_TRUE(Hub_OpenDevice());
    EXPECT_EQ(mac.calls(), oneAfterTheOther(searchBegins(), step(0), idsRead(0), released(0),
                                            step(1), idsRead(1), opened(1)));
    EXPECT_THAT(mac.alive(), ElementsAre("interface 1", "iterator 1"));
}

TEST_F(IokitSearch, KeepsTheListAlsoWhenThereIsNoHubToOpen)
{
    mac.attach({kStranger});
    EXPECT_FALSE(Hub_OpenDevice());
    EXPECT_EQ(LastError, 5);
    EXPECT_EQ(mac.calls(), oneAfterTheOther(searchBegins(), step(0), idsRead(0), released(0),
                                            Calls{"IOIteratorNext(iterator 1) = none"}));
    EXPECT_THAT(mac.alive(), ElementsAre("iterator 1"));
}

TEST_F(IokitSearch, ReleasesABusyHubAndTriesNoOther)
{
    mac.attach(
        {with(kHub, [](MacDevice& hub) { hub.openResult = kIOReturnExclusiveAccess; }), kHub});
    EXPECT_FALSE(Hub_OpenDevice());
    EXPECT_EQ(LastError, 5);
    EXPECT_EQ(mac.calls(),
              oneAfterTheOther(searchBegins(), step(0), idsRead(0),
                               Calls{"interface 0 USBDeviceOpen", "interface 0 Release"}));
    EXPECT_THAT(mac.alive(), ElementsAre("iterator 1"));
}

TEST_F(IokitSearch, TellsWhyTheHubWasNotOpened)
{
    const std::vector<std::pair<IOReturn, HubFailure>> statuses = {
        {kIOReturnNotPrivileged, HubFailure::NoAccess},
        {kIOReturnNotPermitted, HubFailure::NoAccess},
        {kIOReturnExclusiveAccess, HubFailure::Busy},
        {kIOReturnBusy, HubFailure::Busy},
        {kIOReturnNoDevice, HubFailure::Unplugged},
        {kIOReturnNotAttached, HubFailure::Unplugged},
        {kIOReturnNoMemory, HubFailure::NotOpened}};
    for (const auto& row : statuses) { // clang 14 captures no structured binding
        mac.attach({with(kHub, [&row](MacDevice& hub) { hub.openResult = row.first; })});
        EXPECT_FALSE(Hub_OpenDevice());
        EXPECT_EQ(Hub_LastFailure(), row.second) << std::hex << row.first;
    }
}

TEST_F(IokitSearch, ClosesAndThenReleases)
{
    mac.attach({kHub});
    ASSERT_TRUE(Hub_OpenDevice());
    mac.forgetCalls();
    Hub_CloseDevice();
    Hub_CloseDevice();
    EXPECT_THAT(mac.calls(), ElementsAre("interface 0 USBDeviceClose", "interface 0 Release"));
    EXPECT_THAT(mac.alive(), ElementsAre("iterator 1"));
}

TEST_F(IokitSearch, ReleasesAlsoAHubThatHasLeft)
{
    mac.attach({kHub});
    ASSERT_TRUE(Hub_OpenDevice());
    mac.unplug();
    mac.forgetCalls();
    EXPECT_EQ(Hub_ControlRequest({0x40, 0xE8}), static_cast<std::uint32_t>(kIOReturnNoDevice));
    Hub_CloseDevice(); // which the system refuses
    EXPECT_THAT(mac.calls(), ElementsAre("interface 0 DeviceRequest(40 E8 0000 0000 0000)",
                                         "interface 0 USBDeviceClose", "interface 0 Release"));
    EXPECT_THAT(mac.alive(), ElementsAre("iterator 1"));
}

TEST_F(IokitSearch, HasCodeTwoWhenThereIsNoList)
{
    mac.attach({kHub});
    mac.matchingResult = kIOReturnNoMemory;
    EXPECT_FALSE(Hub_FindDevice());
    EXPECT_EQ(LastError, 2);
    EXPECT_THAT(mac.calls(),
                ElementsAre("IOServiceMatching(\"IOUSBDevice\") = dictionary 1",
                            "IOServiceGetMatchingServices(main port, dictionary 1) = 0xE00002BD"));
    LastError = 0;
    EXPECT_FALSE(Hub_OpenDevice());
    EXPECT_EQ(LastError, 2);
    EXPECT_THAT(mac.alive(), IsEmpty());
}

TEST_F(IokitSearch, HasCodeTwoWhenThereIsNoDictionary)
{
    mac.givesDictionaries = false;
    EXPECT_FALSE(Hub_FindDevice());
    EXPECT_EQ(LastError, 2);
    EXPECT_THAT(mac.calls(),
                ElementsAre("IOServiceMatching(\"IOUSBDevice\") = none",
                            "IOServiceGetMatchingServices(main port, none) = 0xE00002C2"));
}

TEST_F(IokitSearch, PassesByADeviceWithoutAPlugIn)
{
    expectPassedBy(with(kHub,
                        [](MacDevice& hub) {
                            hub.givesPlugIn = false;
                            hub.plugInResult = kIOReturnNoMemory;
                        }),
                   {plugInCreation("0xE00002BD"), "IOObjectRelease(service 0)"}, 3);
}

TEST_F(IokitSearch, PassesByADeviceWhoseServiceCannotBeGivenBack)
{
    expectPassedBy(with(kHub, [](MacDevice& hub) { hub.serviceReleaseResult = kIOReturnError; }),
                   {plugInCreation("plug-in 0"), "IOObjectRelease(service 0) = 0xE00002BC"}, 3,
                   {"plug-in 0"}); // no further call on that device
}

TEST_F(IokitSearch, PassesByADeviceWithoutItsInterface)
{
    expectPassedBy(with(kHub, [](MacDevice& hub) { hub.givesInterface = false; }),
                   {plugInCreation("plug-in 0"), "IOObjectRelease(service 0)",
                    "plug-in 0 QueryInterface(device interface)", "plug-in 0 Release"},
                   4);
}

TEST_F(IokitSearch, DoesNotMindWhatTheCreationSaysOfAPlugInThatIsThere)
{
    mac.attach({with(kHub, [](MacDevice& hub) { hub.plugInResult = kIOReturnError; })});
    EXPECT_TRUE(Hub_FindDevice());
    EXPECT_EQ(LastError, 0);
    EXPECT_THAT(mac.alive(), IsEmpty());
}

TEST_F(IokitSearch, ReadsAnIdThatTheDeviceDoesNotTellAsZero)
{
    SupportedIdList[0] = {1, kVendor, 0, kHighSpeed};
    mac.attach({with(kHub, [](MacDevice& hub) { hub.productResult = kIOReturnError; })});
    EXPECT_TRUE(Hub_FindDevice());
    SupportedIdList[0] = {1, 0, kSuperSpeed, kHighSpeed};
    mac.attach({with(kHub, [](MacDevice& hub) { hub.vendorResult = kIOReturnError; })});
    EXPECT_TRUE(Hub_FindDevice());
    SupportedIdList[0] = {1, kVendor, kSuperSpeed, kHighSpeed};
    EXPECT_FALSE(Hub_FindDevice());
}

TEST_F(IokitSearch, LeavesAnOverwrittenHubNeitherClosedNorReleased)
{
    mac.attach({kHub, kStranger});
    ASSERT_TRUE(Hub_OpenDevice());
    mac.attach({kStranger, kHub});
    ASSERT_TRUE(Hub_OpenDevice());
    Hub_CloseDevice();
    EXPECT_THAT(mac.alive(), ElementsAre("interface 0", "iterator 1", "iterator 2"));
}

TEST_F(IokitSearch, CopiesTheSixValuesIntoOneTransferAndTellsItsResult)
{
    IOReturn status = kIOReturnSuccess;
    mac.attach({with(kHub, [&](MacDevice& hub) {
        hub.onRequest = [&](IOUSBDevRequest& transfer) {
            std::memset(transfer.pData, 0x5A, 3);
            transfer.wLenDone = 3; // fewer than asked for
            return status;
        };
    })});
    std::unique_ptr<UsbDevice> device;
    const auto search = m_bus.search();
    ASSERT_EQ(search->next(device), UsbSearch::Step::Device);
    ASSERT_EQ(device->open(), UsbOpenStatus::Opened);
    mac.forgetCalls();
    for (const IOReturn each : {kIOReturnSuccess, static_cast<IOReturn>(0xE000404F)}) {
        status = each;
        std::array<std::uint8_t, 4> buffer{};
        ControlRequest request{0xC0, 0xD8, 0x1234, 0x5678, {}, buffer};
        EXPECT_EQ(device->control(request), static_cast<std::uint32_t>(each));
        EXPECT_EQ(request.transferred, 3U);
        EXPECT_THAT(buffer, ElementsAre(0x5A, 0x5A, 0x5A, 0));
    }
    const std::string call = "interface 0 DeviceRequest(C0 D8 1234 5678 0004)";
    EXPECT_THAT(mac.calls(), ElementsAre(call, call));
}

TEST_F(IokitSearch, TakesAnyResultButZeroForAFailure)
{
    mac.attach({with(kHub, [](MacDevice& hub) { hub.queryResult = 1; })});
    EXPECT_FALSE(Hub_FindDevice());
    EXPECT_EQ(LastError, 4);
    mac.reclaim();
    mac.attach({with(kHub, [](MacDevice& hub) { hub.serviceReleaseResult = 15; })}); // no such name
    EXPECT_FALSE(Hub_FindDevice());
    EXPECT_EQ(LastError, 3);
    mac.reclaim();
    mac.attach({with(kHub, [](MacDevice& hub) { hub.openResult = kSendFailed; })});
    EXPECT_FALSE(Hub_OpenDevice());
    EXPECT_EQ(LastError, 5);
    mac.matchingResult = kSendFailed;
    EXPECT_FALSE(Hub_FindDevice());
    EXPECT_EQ(LastError, 2);
}

} // namespace
} // namespace vornadel::test
