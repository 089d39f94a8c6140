// The window program on the macOS back end.

#include "app/AppDelegate.h"
#include "hub/HubTransport.h"
#include "platform/macos/GestaltVersion.h"
#include "tests/app/ToolUnderTest.h"
#include "tests/macos/MacTest.h"
#include "tests/support/FakeMachine.h"
#include "tests/support/HubGuard.h"
#include "tests/support/TemporaryFolder.h"
#include "tests/support/VirtualClock.h"

#include <QPushButton>

#include <algorithm>
#include <filesystem>
#include <memory>
#include <string>

namespace vornadel::test
{
namespace
{

using testing::HasSubstr;

class WindowOnAMac : public MacTest
{
public:
    WindowOnAMac()
    {
        mac.gestalt = {{gestaltSystemVersion, 0x1039}};
        std::filesystem::create_directories(m_place.resourcePath);
        m_folder.write("Vornadel.app/Contents/Resources/config.ini", configText());
    }
    ~WindowOnAMac() override
    {
        EXPECT_TRUE(m_delegate->shutDown());
        m_delegate.reset();
        settleEvents();
        hubIsClosed();
    }

protected:
    static MacDevice hubOfVersion(std::uint16_t version)
    {
        MacDevice hub{.vendorId = 0x1209, .productId = 0x0001};
        hub.onRequest = [version](IOUSBDevRequest& transfer) {
            if (transfer.bRequest == 0x09) {
                auto* const block = static_cast<std::uint8_t*>(transfer.pData);
                std::fill_n(block, transfer.wLength, std::uint8_t{0});
                block[10] = static_cast<std::uint8_t>(version >> 8);
                block[11] = static_cast<std::uint8_t>(version);
            }
            transfer.wLenDone = transfer.wLength;
            return kIOReturnSuccess;
        };
        return hub;
    }

    /// Starts the tool and returns the console output of the launch, without the update at start.
    std::string launch()
    {
        Hub_UsePlatform(m_bus, m_clock);
        m_delegate = std::make_unique<AppDelegate>(m_platform, m_place, QString());
        m_delegate->driverCopy = QString::fromStdString(m_folder.path("copy"));
        m_delegate->bootArgumentsFile = QString::fromStdString(m_folder.path("snapshot"));
        testing::internal::CaptureStderr();
        m_delegate->applicationDidFinishLaunching();
        std::string console = testing::internal::GetCapturedStderr();
        EXPECT_TRUE(waitFor([this] { return m_delegate->nsbtnLoadDriver_HelpBox->isEnabled(); }));
        settleEvents();
        return console;
    }

    /// What the window tells about the hub after one turn of the run loop.
    std::string hubInfo()
    {
        mac.turnRunLoop();
        settleEvents();
        return m_delegate->nstfHubInfo_UpdateFW->toPlainText().toStdString();
    }

    const TemporaryFolder m_folder;
    const ToolPlace m_place = toolPlaceInBundle(m_folder.path("Vornadel.app"));
    IokitBus m_bus;
    FakePrivilegedRun m_privileged;
    GestaltVersion m_version;
    FakeShell m_shell;
    VirtualClock m_clock;
    Platform m_platform{m_bus, m_shell, m_privileged, m_version, m_clock};
    std::unique_ptr<AppDelegate> m_delegate;
};

TEST_F(WindowOnAMac, FollowsTheHubAsItComesAndGoes)
{
    mac.plug(hubOfVersion(0x0105));
    EXPECT_THAT(launch(), AllOf(HasSubstr("Enter Device Added\nEnter Device Removed\n"),
                                HasSubstr("Current System Version: 10.3.9\n")));
    EXPECT_EQ(hubInfo(), "Detect Zel Hub : Success\nfwVer:0105");
    for (const int round : {1, 2}) {
        mac.unplug();
        EXPECT_EQ(hubInfo(), "Detect Zel Hub: Fail\nPlease Insert Zel Hub Device") << round;
        mac.plug(hubOfVersion(0x0101));
        EXPECT_EQ(hubInfo(), "Detect Zel Hub : Success\nfwVer:0101") << round;
    }
}

} // namespace
} // namespace vornadel::test
