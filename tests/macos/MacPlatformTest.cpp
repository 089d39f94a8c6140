#include "platform/macos/MacPlatform.h"

#include "tests/macos/MacTest.h"
#include "tests/support/UsbDevices.h"

namespace vornadel::test
{
namespace
{

using MacPlatformTest = MacTest;

TEST_F(MacPlatformTest, BundlesTheRealMac)
{
    mac.attach({{.vendorId = 0x1209, .productId = 0x5AB3}});
    mac.gestalt = {{gestaltSystemVersion, 0x1039}};
    MacPlatform machine;
    const Platform platform = machine.platform();
    EXPECT_NE(findDevice(platform.usb, 0x1209, 0x5AB3), nullptr);
    EXPECT_TRUE(platform.usb.watch([](UsbEvent) {}));
    EXPECT_EQ(platform.shell.run("true"), 0);
    EXPECT_TRUE(platform.shell.exists("/"));
    EXPECT_EQ(platform.systemVersion.read().minor, 3U);
    EXPECT_TRUE(platform.privileged.start("/x/load"));
    EXPECT_THAT(mac.calls(), testing::Contains("AuthorizationFree(authorization 1, flags 0)"));
    const Clock::Duration before = platform.clock.now();
    EXPECT_GE(platform.clock.now(), before);
}

} // namespace
} // namespace vornadel::test
