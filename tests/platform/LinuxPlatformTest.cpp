#include "platform/linux/LinuxPlatform.h"
#include "tests/platform/UsbTestbed.h"
#include "tests/support/UsbDevices.h"

#include <gtest/gtest.h>

namespace vornadel::test
{

namespace
{

TEST(LinuxPlatform, BundlesTheRealMachine)
{
    UsbTestbed testbed; // only the bus is simulated
    testbed.plug("1-1", 0x1209, 0x5AB3);
    LinuxPlatform machine;
    const Platform platform = machine.platform();
    EXPECT_NE(findDevice(platform.usb, 0x1209, 0x5AB3), nullptr);
    EXPECT_TRUE(platform.usb.watch([](UsbEvent) {}));
    EXPECT_EQ(platform.shell.run("true"), 0);
    EXPECT_TRUE(platform.shell.exists("/"));
    const Clock::Duration before = platform.clock.now();
    EXPECT_GE(platform.clock.now(), before);
}

} // namespace

} // namespace vornadel::test
