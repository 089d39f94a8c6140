// The window program on the macOS back end: the registration at its start, and the administrator
// scripts.

#include "app/AppDelegate.h"
#include "hub/HubTransport.h"
#include "platform/macos/AuthorizedRun.h"
#include "platform/macos/GestaltVersion.h"
#include "tests/app/ToolUnderTest.h"
#include "tests/macos/MacTest.h"
#include "tests/support/FakeMachine.h"
#include "tests/support/HubGuard.h"
#include "tests/support/VirtualClock.h"

#include <QAbstractButton>
#include <QDialog>
#include <QMessageBox>
#include <QPushButton>
#include <QTemporaryDir>
#include <QTest>

#include <algorithm>
#include <filesystem>
#include <fstream>
#include <memory>
#include <string>
#include <vector>

namespace vornadel::test
{
namespace
{

using testing::ElementsAreArray;

class WindowOnAMac : public MacTest
{
public:
    WindowOnAMac()
    {
        mac.gestalt = {{gestaltSystemVersion, 0x1095},
                       {gestaltSystemVersionMajor, 10},
                       {gestaltSystemVersionMinor, 10},
                       {gestaltSystemVersionBugFix, 5}};
        m_shell.existing = {"/tmp/nvram_setting.dat"};
        std::filesystem::create_directories(resources());
        std::ofstream(resources() + "/config.ini") << configText();
    }
    ~WindowOnAMac() override
    {
        EXPECT_TRUE(m_delegate->shutDown());
        m_delegate.reset();
        settleEvents();
        hubIsClosed();
    }

protected:
    std::string resources() const
    {
        return m_directory.path().toStdString() + "/Vornadel.app/Contents/Resources";
    }

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

    /// Starts the tool and returns the console output of the launch.
    std::string launch()
    {
        Hub_UsePlatform(m_bus, m_clock);
        const std::string bundle = m_directory.path().toStdString() + "/Vornadel.app";
        m_delegate = std::make_unique<AppDelegate>(m_platform, ToolPlace{bundle, true, resources()},
                                                   QString());
        m_delegate->driverCopy = m_directory.path() + "/copy";
        m_delegate->bootArgumentsFile = m_directory.path() + "/snapshot";
        testing::internal::CaptureStderr();
        m_delegate->applicationDidFinishLaunching();
        return testing::internal::GetCapturedStderr();
    }

    void letTheRunAtTheStartEnd()
    {
        ASSERT_TRUE(waitFor([this] { return m_delegate->nsbtnLoadDriver_HelpBox->isEnabled(); }));
        settleEvents();
        mac.forgetCalls();
    }

    std::string hubInfo() { return m_delegate->nstfHubInfo_UpdateFW->toPlainText().toStdString(); }

    QTemporaryDir m_directory;
    IokitBus m_bus;
    AuthorizedRun m_privileged;
    GestaltVersion m_version;
    FakeShell m_shell;
    VirtualClock m_clock;
    Platform m_platform{m_bus, m_shell, m_privileged, m_version, m_clock};
    std::unique_ptr<AppDelegate> m_delegate;
};

std::vector<std::string> registrationFrom(const std::vector<std::string>& calls)
{
    return {
        std::find(calls.begin(), calls.end(), "IOServiceMatching(\"IOUSBDevice\") = dictionary 1"),
        calls.end()};
}

/// One detection of an open hub: the search, the open, the open-time request, the version, the
/// close.
std::vector<std::string> detection(int dictionary)
{
    const std::string found = "iterator " + std::to_string(dictionary);
    const std::string opened = "iterator " + std::to_string(dictionary + 1);
    const auto search = [](int number) {
        const std::string own = std::to_string(number);
        return std::vector<std::string>{"IOServiceMatching(\"IOUSBDevice\") = dictionary " + own,
                                        "IOServiceGetMatchingServices(main port, dictionary " +
                                            own + ") = iterator " + own};
    };
    const std::vector<std::string> ids{"interface 0 GetDeviceVendor",
                                       "interface 0 GetDeviceProduct"};
    return oneAfterTheOther(
        search(dictionary), callsUpToTheInterface(found, 0), ids,
        std::vector<std::string>{"interface 0 Release", "IOObjectRelease(" + found + ")"},
        search(dictionary + 1), callsUpToTheInterface(opened, 0), ids,
        std::vector<std::string>{"interface 0 USBDeviceOpen", openTimeRequest(0),
                                 "interface 0 DeviceRequest(C0 09 0000 0000 0020)",
                                 "interface 0 USBDeviceClose", "interface 0 Release"});
}

TEST_F(WindowOnAMac, RegistersAndArmsBothNotificationsAndDetectsTwice)
{
    mac.plug(hubOfVersion(0x0105));
    const std::string console = launch();
    const std::vector<std::string> added{"IOIteratorNext(iterator 1) = service 0",
                                         "IOObjectRelease(service 0)",
                                         "IOIteratorNext(iterator 1) = none"};
    const std::vector<std::string> removed{"IOIteratorNext(iterator 2) = none"};
    EXPECT_THAT(registrationFrom(mac.calls()),
                ElementsAreArray(oneAfterTheOther(registrationCalls(), added, removed, detection(3),
                                                  detection(5))));
    EXPECT_EQ(hubInfo(), "Detect Zel Hub : Success\nfwVer:0105");
    const std::size_t addedLine = console.find("Enter Device Added\n");
    ASSERT_NE(addedLine, std::string::npos) << console;
    EXPECT_NE(console.find("Enter Device Removed\n", addedLine), std::string::npos) << console;
    EXPECT_NE(console.find("Current System Version: 10.10.5\n"), std::string::npos) << console;
    letTheRunAtTheStartEnd();
}

TEST_F(WindowOnAMac, FollowsTheHubAsItComesAndGoes)
{
    launch();
    letTheRunAtTheStartEnd();
    EXPECT_EQ(hubInfo(), "Detect Zel Hub: Fail\nPlease Insert Zel Hub Device");
    for (const int round : {1, 2}) {
        mac.plug(hubOfVersion(0x0101));
        mac.turnRunLoop();
        settleEvents();
        EXPECT_EQ(hubInfo(), "Detect Zel Hub : Success\nfwVer:0101") << round;
        mac.unplug();
        mac.turnRunLoop();
        settleEvents();
        EXPECT_EQ(hubInfo(), "Detect Zel Hub: Fail\nPlease Insert Zel Hub Device") << round;
    }
}

TEST_F(WindowOnAMac, MissesNothingThatComesDuringADetection)
{
    launch();
    letTheRunAtTheStartEnd();
    MacDevice hub = hubOfVersion(0x0101);
    hub.onOpen = [this, first = true]() mutable {
        if (first) {
            first = false;
            mac.plug({});
            mac.turnRunLoop();
        }
        return kIOReturnSuccess;
    };
    mac.plug(hub);
    mac.turnRunLoop();
    settleEvents();
    mac.unplug();
    mac.unplug();
    mac.turnRunLoop();
    settleEvents();
    mac.plug(hubOfVersion(0x0102));
    mac.turnRunLoop();
    settleEvents();
    EXPECT_EQ(hubInfo(), "Detect Zel Hub : Success\nfwVer:0102")
        << "its list was emptied, and it reports again";
}

TEST_F(WindowOnAMac, FallsBackWhenTheSystemDoesNotTellItsVersion)
{
    mac.gestaltErrors[gestaltSystemVersionMajor] = -5551;
    const std::string console = launch();
    EXPECT_NE(console.find("Unable to obtain system version: -5551\n"), std::string::npos)
        << console;
    EXPECT_NE(console.find("Current System Version: 10.0.0\n"), std::string::npos) << console;
    letTheRunAtTheStartEnd();
}

TEST_F(WindowOnAMac, RunsItsThreeScriptsWithAdministratorRights)
{
    launch();
    letTheRunAtTheStartEnd();
    clickAndUse(m_delegate->nsbtnLoadDriver_HelpBox, [](QDialog& dialog) {
        auto* prompt = qobject_cast<QMessageBox*>(&dialog);
        ASSERT_NE(prompt, nullptr);
        QTest::mouseClick(prompt->buttons().back(), Qt::LeftButton);
    });
    QTest::mouseClick(m_delegate->nsbtnUnloadDriver_HelpBox, Qt::LeftButton);

    std::vector<std::string> expected;
    int number = 0;
    for (const std::string script : {"load", "reboot", "unload"}) {
        const std::string authorization = "authorization " + std::to_string(++number);
        expected.push_back("AuthorizationCreate(no rights, no environment, flags 0) = " +
                           authorization);
        std::string execution = "AuthorizationExecuteWithPrivileges(";
        for (const std::string& part : {authorization, std::string(", "), resources(), "/" + script,
                                        std::string(", flags 0, no arguments, no pipe)")}) {
            execution += part;
        }
        expected.push_back(execution);
        expected.push_back("AuthorizationFree(" + authorization + ", flags 0)");
    }
    std::vector<std::string> calls = mac.calls();
    std::erase_if(calls,
                  [](const std::string& call) { return !call.starts_with("Authorization"); });
    EXPECT_EQ(calls, expected);
    EXPECT_EQ(m_shell.commands.back(), "cp -R " + resources() + "/HubUpdaterDriver.kext /tmp");
}

} // namespace
} // namespace vornadel::test
