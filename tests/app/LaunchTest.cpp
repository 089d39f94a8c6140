#include "tests/app/ToolUnderTest.h"

#include "hub/SupportedIds.h"

#include <QApplication>
#include <QWidget>
#include <gmock/gmock.h>

#include <string>

namespace vornadel::test
{

namespace
{

using testing::ElementsAre;
using testing::HasSubstr;
using testing::IsEmpty;

using Launch = ToolUnderTest;

TEST_F(Launch, TellsItsStepsOnTheConsoleInOrder)
{
    shell.existing.clear();
    config = "[DumpTool Config]\nAppTitle = Bench & Co\nScalarMode = 0x1\nFwBin = none.bin\n"
             "[Support Vid Pid]\n"
             "VID_3F = 0xABCD\nSSPID_3F = 0x0F03\nHSPID_3F = 0xf04\n"
             "VID_00 = 4617\nSSPID_00 = 01\nHSPID_00 = 0x0002\n"
             "VID_01 = 4617\nSSPID_01 = 01\n";
    EXPECT_EQ(consoleOfLaunch(), "Current System Version: 12.4.0\n"
                                 "AP Path :" +
                                     directory() +
                                     " \n"
                                     "Resource Path :" +
                                     directory() +
                                     "/Vornadel.app/Contents/Resources \n"
                                     "vid:0x1209   ;    sspid:0x1 ;    hspid:0x2 \n"
                                     "vid:0xabcd   ;    sspid:0xf03 ;    hspid:0xf04 \n"
                                     "App title: Bench & Co\n"
                                     "Fw Bin: none.bin\n"
                                     "ScalarMode: 1\n"
                                     "Enter Device Added\n"
                                     "Enter Device Removed\n");
    EXPECT_EQ(tool().window()->windowTitle(), "Bench & Co  1.02");
}

TEST_F(Launch, LogsTheVersionThenSavesTheBootArguments)
{
    shell.existing.clear();
    launch();
    EXPECT_THAT(shell.commands, ElementsAre("echo 12.4.0 >> /tmp/Vornadel.log",
                                            "nvram boot-args >> /tmp/nvram_setting.dat"));
    EXPECT_THAT(shell.quiet, ElementsAre(shell.commands[1])) << "most systems have no nvram";
    end();
    shell.commands.clear();
    shell.existing = {"/tmp/nvram_setting.dat"};
    launch();
    EXPECT_THAT(shell.commands, ElementsAre("echo 12.4.0 >> /tmp/Vornadel.log"));
}

TEST_F(Launch, WritesToNoFileOfAnotherUser)
{
    shell.existing.clear();
    shell.foreign = {"/tmp/Vornadel.log", "/tmp/nvram_setting.dat"};
    EXPECT_THAT(consoleOfLaunch(),
                HasSubstr("/tmp/Vornadel.log is not a plain file of your own, so nothing is "
                          "written to it\n"));
    EXPECT_THAT(shell.commands, IsEmpty());
}

struct VersionCase {
    SystemVersionNumbers numbers;
    const char* text;
    bool needsSigning;
};

TEST_F(Launch, DecidesOnTheDriverSignatureByTheVersion)
{
    const VersionCase kCases[] = {
        {{10, 10, 0, 0}, "10.10.0", true},   {{10, 10, 5, 0}, "10.10.5", true},
        {{110, 10, 1, 0}, "110.10.1", true}, {{9, 10, 10, 0}, "9.10.10", true},
        {{10, 1, 0, 0}, "10.1.0", false},    {{10, 11, 0, 0}, "10.11.0", false},
        {{10, 9, 5, 0}, "10.9.5", false},    {{12, 0, 0, 0}, "12.0.0", false}};
    for (const VersionCase& each : kCases) {
        systemVersion.numbers = each.numbers;
        EXPECT_THAT(consoleOfLaunch(), testing::StartsWith("Current System Version: " +
                                                           std::string(each.text) + "\n"));
        EXPECT_EQ(tool()._bNeedSignDriver, each.needsSigning) << each.text;
        EXPECT_EQ(shell.commands.back(),
                  "echo " + std::string(each.text) + " >> /tmp/Vornadel.log");
        end();
    }
}

TEST_F(Launch, FallsBackWhenTheSystemHasNoVersion)
{
    systemVersion.numbers = {77, 77, 77, -5};
    EXPECT_THAT(consoleOfLaunch(), testing::StartsWith("Unable to obtain system version: -5\n"
                                                       "Current System Version: 10.0.0\n"));
    EXPECT_FALSE(tool()._bNeedSignDriver);
    EXPECT_EQ(shell.commands.front(), "echo 10.0.0 >> /tmp/Vornadel.log");
}

TEST_F(Launch, KnowsTheFoldersOfABundle)
{
    place = {directory() + "/R\xC3\xA4ume & mehr/Vornadel.app", true,
             directory() + "/R\xC3\xA4ume & mehr/Vornadel.app/Contents/Resources"};
    launch();
    EXPECT_EQ(tool().apPath.toStdString(), directory() + "/R\xC3\xA4ume & mehr");
    EXPECT_EQ(tool().resourcePath.toStdString(),
              directory() + "/R\xC3\xA4ume & mehr/Vornadel.app/Contents/Resources");
    EXPECT_EQ(SupportedIdList[0].vid, 0x1209);
}

TEST_F(Launch, KnowsItsFolderOutsideABundle)
{
    place = {directory() + "/bin", false, directory() + "/bin"};
    launch();
    EXPECT_EQ(tool().apPath.toStdString(), directory() + "/bin");
    EXPECT_EQ(tool().resourcePath.toStdString(), directory() + "/bin");
    EXPECT_EQ(SupportedIdList[0].vid, 0x1209);
}

TEST_F(Launch, GoesOnWithoutAConfiguration)
{
    config.reset();
    const std::string console = consoleOfLaunch();
    EXPECT_THAT(console, HasSubstr("iniparser: cannot open " + resources() +
                                   "/config.ini\n"
                                   "App title: Vornadel\n"
                                   "Fw Bin: \n"
                                   "ScalarMode: 0\n"));
    EXPECT_EQ(tool().window()->windowTitle(), "Vornadel  1.02");
    EXPECT_EQ(hubInfo(), "Detect Zel Hub: Fail\nPlease Insert Zel Hub Device");
    EXPECT_EQ(QApplication::activeModalWidget(), nullptr);
    EXPECT_TRUE(waitUntilEnabled());
}

TEST_F(Launch, DoesNotWaitForTheRunThatItStarts)
{
    writeFile("Vornadel.app/Contents/Resources/none.bin", {1, 2, 3});
    config = configText("FwBin = none.bin\n");
    launch();
    EXPECT_TRUE(tool().window()->isVisible());
    EXPECT_EQ(progressText(), "") << "lines come by the event loop alone";
    EXPECT_TRUE(waitUntilEnabled());
}

} // namespace

} // namespace vornadel::test
