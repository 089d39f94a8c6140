// What a device tells without being opened, and what the status of a request means.

#include "tests/macos/MacTest.h"
#include "tests/support/TemporaryFolder.h"
#include "tests/support/UsbDevices.h"

#include <cstdint>
#include <filesystem>
#include <memory>
#include <sys/stat.h>
#include <utility>
#include <vector>

namespace vornadel::test
{
namespace
{

class IokitDeviceTest : public MacTest
{
protected:
    UsbPlace placeOf(const MacDevice& device)
    {
        mac.attach({device});
        return allDevices(m_bus).front()->place();
    }

    IokitBus m_bus;
};

TEST_F(IokitDeviceTest, HasThePortPathOfItsLocation)
{
    EXPECT_EQ(placeOf({.locationId = 0x14210000, .address = 7}), (UsbPlace{{"20-2.1", 7}, {}}));
    EXPECT_EQ(placeOf({.locationId = 0x01A00000, .address = 8}), (UsbPlace{{"1-10", 8}, {}}));
    EXPECT_EQ(placeOf({.locationId = 0x80123456, .address = 9}),
              (UsbPlace{{"128-1.2.3.4.5.6", 9}, {}}));
    EXPECT_EQ(placeOf({.locationId = 0x14201000, .address = 1}), (UsbPlace{{"20-2", 1}, {}}));
}

TEST_F(IokitDeviceTest, HasNoPlaceIfTheSystemDoesNotTellIt)
{
    EXPECT_EQ(placeOf({.locationId = 0, .address = 7}), UsbPlace{});
    EXPECT_EQ(placeOf({.locationId = 0x14210000, .locationResult = kIOReturnError}), UsbPlace{});
    EXPECT_EQ(placeOf({.locationId = 0x14210000, .addressResult = kIOReturnError}), UsbPlace{});
}

TEST_F(IokitDeviceTest, TellsWhatAStatusMeans)
{
    mac.attach({{}});
    const auto device = std::move(allDevices(m_bus).front());
    const std::vector<std::pair<IOReturn, UsbFailure>> failures = {
        {kIOUSBPipeStalled, UsbFailure::Stalled},
        {kIOReturnUnderrun, UsbFailure::Short},
        {kIOReturnNoDevice, UsbFailure::Gone},
        {kIOReturnNotAttached, UsbFailure::Gone},
        {kIOUSBTransactionTimeout, UsbFailure::TimedOut},
        {kIOReturnTimeout, UsbFailure::TimedOut},
        {kIOReturnNotOpen, UsbFailure::Other}};
    for (const auto& [status, failure] : failures) {
        EXPECT_EQ(device->failureOf(static_cast<std::uint32_t>(status)), failure)
            << std::hex << status;
    }
}

TEST_F(IokitDeviceTest, IsLockedForOtherProcessesByAFile)
{
    const TemporaryFolder folder;
    ASSERT_EQ(chmod(folder.path().c_str(), 01777), 0);
    IokitBus bus({folder.path()});
    PlaceOwner owner;
    const auto lock = bus.placeLocks().lock({{"20-2.1", 7}, {}}, {}, owner);
    EXPECT_NE(lock, nullptr);
    EXPECT_TRUE(std::filesystem::exists(folder.path("vornadel-20-2.1.lock")));
}

} // namespace
} // namespace vornadel::test
