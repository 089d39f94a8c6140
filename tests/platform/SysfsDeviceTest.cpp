// What a hub tells without being opened.

#include "platform/linux/SysfsDevice.h"
#include "platform/linux/LibusbBus.h"
#include "platform/linux/SysfsText.h"
#include "tests/platform/UsbTestbed.h"
#include "tests/support/TemporaryFolder.h"
#include "tests/support/UsbDevices.h"
#include "tests/support/VirtualClock.h"

#include <cerrno>
#include <gmock/gmock.h>
#include <gtest/gtest.h>
#include <memory>
#include <string>

namespace vornadel::test
{

namespace
{

using testing::ElementsAre;
using testing::IsEmpty;

constexpr std::uint16_t kOtherProductId = kProductId + 1;

const std::string kBosDescriptor =
    std::string("\x05\x0F\x21\x00\x02", 5) + std::string("\x07\x10\x02\x02\x00\x00\x00", 7) +
    std::string("\x14\x10\x04\x00", 4) +
    "\x01\x23\x45\x67\x89\xAB\xCD\xEF\xFE\xDC\xBA\x98\x76\x54\x32\x10";
constexpr const char* kContainerId = "{01234567-89ab-cdef-fedc-ba9876543210}";

class HubInSysfs : public testing::Test
{
protected:
    /// A hub with its halves in these ports.
    void plugHub(const std::string& port, const std::string& otherPort, WireHandler handler = {})
    {
        m_node = &m_testbed.plug(port, kVendorId, kProductId, std::move(handler));
        m_testbed.plug(otherPort, kVendorId, kOtherProductId);
        m_testbed.join(port, otherPort, "09");
    }

    std::unique_ptr<UsbDevice> find(std::uint16_t productId = kProductId)
    {
        return findDevice(m_bus, kVendorId, productId);
    }

    UsbTestbed m_testbed;
    VirtualClock m_clock;
    LibusbBus m_bus{m_clock};
    SimulatedNode* m_node = nullptr;
};

TEST_F(HubInSysfs, TellsTheSamePlaceFromEitherHalf)
{
    plugHub("2-3", "1-3");
    const auto half = find();
    const auto otherHalf = find(kOtherProductId);
    ASSERT_TRUE(half && otherHalf);
    EXPECT_EQ(half->place(), (UsbPlace{{"2-3", 2}, {"1-3", 3}}));
    EXPECT_EQ(otherHalf->place(), (UsbPlace{{"1-3", 3}, {"2-3", 2}}));
    EXPECT_EQ(m_node->ioctlCount(), 0U);
}

TEST_F(HubInSysfs, TellsThePlaceOfAHubBehindAHub)
{
    plugHub("2-1", "1-1");
    m_testbed.plug("2-1.4", kVendorId, 1);
    m_testbed.plug("1-1.4", kVendorId, 2);
    m_testbed.join("2-1.4", "1-1.4", "09");
    const auto device = find(1);
    ASSERT_NE(device, nullptr);
    EXPECT_EQ(device->place(), (UsbPlace{{"2-1.4", 4}, {"1-1.4", 5}}));
}

TEST_F(HubInSysfs, TellsThePlaceAlsoWhenTheHalvesHaveLeft)
{
    plugHub("2-3", "1-3");
    const auto device = find();
    ASSERT_NE(device, nullptr);
    m_testbed.unplug("1-3");
    EXPECT_EQ(device->place(), (UsbPlace{{"2-3", 2}, {"1-3", 0}}));
    m_testbed.unplug("2-3");
    EXPECT_EQ(device->place(), (UsbPlace{{"2-3", 2}, {"1-3", 0}}));
    plugHub("2-3", "1-3");
    EXPECT_EQ(device->place(), (UsbPlace{{"2-3", 2}, {"1-3", 5}}));
    const auto returned = find();
    ASSERT_NE(returned, nullptr);
    EXPECT_EQ(returned->place(), (UsbPlace{{"2-3", 4}, {"1-3", 5}}));
}

TEST_F(HubInSysfs, HasNoOtherHalfOfAnotherVendor)
{
    m_testbed.plug("2-3", kVendorId, kProductId);
    m_testbed.plug("1-3", kVendorId + 1, kOtherProductId);
    m_testbed.join("2-3", "1-3", "09");
    const auto device = find();
    ASSERT_NE(device, nullptr);
    EXPECT_EQ(device->place(), (UsbPlace{{"2-3", 2}, {"1-3", 0}}));
}

TEST_F(HubInSysfs, HasOnePortWhereTheKernelKnowsNoOther)
{
    m_testbed.plug("1-1", kVendorId, kProductId);
    const auto device = find();
    ASSERT_NE(device, nullptr);
    EXPECT_EQ(device->place(), (UsbPlace{{"1-1", 2}, {}}));
}

TEST_F(HubInSysfs, TellsItsTextsWithoutControlCharacters)
{
    plugHub("2-3", "1-3");
    m_testbed.write("2-3", "product",
                    "Hub\x1B[2J \xC2\x9B"
                    "7\xC2\xA0\xC2\xB5-\xE2\x82\xAC\x7F\r\n\n");
    m_testbed.write("2-3", "serial", "0042\n");
    const auto device = find();
    ASSERT_NE(device, nullptr);
    EXPECT_EQ(device->texts().product, "Hub[2J 7\xC2\xA0\xC2\xB5-\xE2\x82\xAC");
    EXPECT_EQ(device->texts().serialNumber, "0042");
    EXPECT_EQ(m_node->ioctlCount(), 0U);

    m_testbed.unplug("2-3");
    EXPECT_EQ(device->texts().serialNumber, "");
    m_testbed.plug("2-3", kVendorId, kProductId);
    m_testbed.write("2-3", "serial", "another hub's\n");
    EXPECT_EQ(device->texts().serialNumber, "");
}

TEST(SysfsText, IsEmptyWhereAReadFails)
{
    const TemporaryFolder folder; // can be opened like a file, but not read
    EXPECT_EQ(textIn(folder.path()), "");
}

TEST_F(HubInSysfs, TellsTheContainerIdThatTheKernelKeeps)
{
    plugHub("2-3", "1-3");
    m_testbed.write("2-3", "bos_descriptors", kBosDescriptor);
    const auto device = find();
    ASSERT_NE(device, nullptr);
    EXPECT_EQ(device->containerId(), kContainerId);
    EXPECT_EQ(m_node->ioctlCount(), 0U);
}

TEST(ContainerId, IsInNoOtherDescriptorAndNotBehindOneWithoutALength)
{
    std::vector<std::uint8_t> descriptor(20, 0x04);
    descriptor[0] = 20;
    EXPECT_EQ(containerIdIn(descriptor), "");
    descriptor[1] = 0x10;
    EXPECT_NE(containerIdIn(descriptor), "");
    descriptor[2] = 0x02;
    descriptor[0] = 0;
    EXPECT_EQ(containerIdIn(descriptor), "");
}

TEST_F(HubInSysfs, AsksTheHubForAContainerIdThatTheKernelDoesNotKeep)
{
    std::string descriptor = kBosDescriptor;
    plugHub("2-3", "1-3", [&](const WireRequest& request) {
        return request.bmRequestType == 0x80 && request.bRequest == 6 && request.wValue == 0x0F00
                   ? WireAnswer{.in = {descriptor.begin(), descriptor.end()}}
                   : WireAnswer{.error = -EPIPE};
    });
    const auto device = find();
    const auto other = find();
    ASSERT_TRUE(device && other);
    EXPECT_EQ(device->containerId(), kContainerId);
    ASSERT_EQ(device->open(), UsbOpenStatus::Opened); // it was closed again
    EXPECT_EQ(device->containerId(), kContainerId);
    EXPECT_EQ(other->containerId(), ""); // busy
    for (const std::size_t size : {std::size_t{31}, std::size_t{12}, std::size_t{0}}) {
        descriptor.resize(size);
        EXPECT_EQ(device->containerId(), "") << size;
    }
    EXPECT_NE(other->open(), UsbOpenStatus::Opened); // this one was not
}

TEST_F(HubInSysfs, NamesWhatHangsBelowEitherHalf)
{
    plugHub("2-3", "1-3");
    const auto device = find();
    ASSERT_NE(device, nullptr);
    EXPECT_THAT(device->attachedBelow(), IsEmpty());

    const std::string keys = "capabilities/key";
    m_testbed.plug("2-3.1", 1, 1); // a disk with partitions and volumes, and an empty reader
    const std::string disk = "2-3.1:1.0/host0/target0:0:0/0:0:0:0/block/sda/";
    m_testbed.write("2-3.1", disk + "size", "1\n");
    m_testbed.write("2-3.1", disk + "sda1/partition", "1\n");
    m_testbed.write("2-3.1", disk + "sda2/holders/dm-0/dm/name", "secret\n");
    m_testbed.write("2-3.1", disk + "sda3/holders/md0/size", "1\n");
    m_testbed.write("2-3.1", "2-3.1:1.0/host0/target0:0:0/0:0:0:1/block/sdb/size", "0\n");
    m_testbed.writeFile("/proc/self/mounts",
                        "/dev/sda1 /media/my\\040disk\\012 vfat rw 0 0\n/dev/sdb1 / ext4 rw 0 0\n"
                        "/dev/mapper/secret /vault ext4 rw 0 0\n/dev/md0 /raid ext4 rw 0 0\n");

    m_testbed.plug("1-3.2", 2, 2); // a hub: what is in it counts, but not the hub
    m_testbed.write("1-3.2", "bDeviceClass", "09\n");
    m_testbed.write("1-3.2", "1-3.2:1.0/ep_81/type", "Interrupt\n");
    m_testbed.plug("1-3.2.1", 3, 3); // a keyboard with a mouse and volume keys
    const auto input = [&](const std::string& number, const std::string& name,
                           const std::string& key, const std::string& rel) {
        const std::string folder = "1-3.2.1:1.0/0003:0003:0003.0001/input/input" + number;
        m_testbed.write("1-3.2.1", folder + "/name", name + '\n');
        m_testbed.write("1-3.2.1", folder + "/capabilities/key", key + '\n');
        m_testbed.write("1-3.2.1", folder + "/capabilities/rel", rel + '\n');
    };
    input("1", "Typist", "10000 7 ff9f207ac14057ff febeffdfffefffff fffffffffffffffe", "0");
    input("2", "Typist", "40010000", "0"); // the same keyboard by another protocol
    input("3", "Runner", "70000 0 0 0 0", "903");
    input("4", "Volume", "3800000000 0", "40");

    m_testbed.plug("1-3.3", 4, 4);
    m_testbed.write("1-3.3", "1-3.3:1.0/net/eth1/address", "00\n");
    m_testbed.plug("2-3.4", 5, 5);
    m_testbed.write("2-3.4", "product", "Billboard\x07\n");
    m_testbed.write("2-3.4", "2-3.4:1.0/ep_81/type", "Bulk\n");
    m_testbed.plug("2-3.5", 0x1209, 0x00AB);
    m_testbed.plug("2-4", 6, 6); // beside the hub

    EXPECT_THAT(device->attachedBelow(),
                ElementsAre("disk sda, mounted at /media/my disk, /vault, /raid", "disk sdb",
                            "USB device Billboard", "USB device 1209:00ab", "keyboard Typist",
                            "mouse Runner", "network interface eth1"));
    EXPECT_EQ(find(kOtherProductId)->attachedBelow().size(), 7U);
    EXPECT_EQ(m_node->ioctlCount(), 0U);
}

} // namespace

} // namespace vornadel::test
