// Closing the window in any phase of an update, of a flash read or erase, while the hub goes back
// to its firmware after an unload of the driver, or with a dialog open:
// the process ends cleanly, and the next update succeeds.

#include "flows/FirmwareUpdate.h"
#include "tests/support/RecordingReporter.h"
#include "tests/support/SimulatedSetup.h"
#include "tests/support/TemporaryFolder.h"

#include <gtest/gtest.h>

#include <cstdlib>
#include <filesystem>
#include <sys/wait.h>

namespace vornadel::test
{

namespace
{

class ClosingTheWindow : public testing::Test
{
protected:
    ClosingTheWindow()
    {
        // A copy of the probe outside any bundle, so its config.ini lies beside it.
        std::filesystem::copy_file(CLOSE_PROBE, folder.path("probe"));
        folder.write("new.bin", image);
        configure("");
    }

    void configure(const std::string& settings)
    {
        folder.write("config.ini", "[Support Vid Pid]\nVID_00 = 0x1209\nSSPID_00 = 1\n"
                                   "HSPID_00 = 2\n[DumpTool Config]\n" +
                                       settings);
    }

    /// Runs the probe and returns its exit status, 124 if it does not end, or 128 plus the signal
    /// that ended it.
    int closeAt(const std::string& kind, unsigned number)
    {
        const std::string command =
            "cd " + folder.path() + " && QT_QPA_PLATFORM=offscreen timeout 60 ./probe flash.bin " +
            folder.path("new.bin") + " " + kind + " " + std::to_string(number) + " 2>log";
        const int status = std::system(command.c_str());
        return WIFEXITED(status) ? WEXITSTATUS(status) : 128 + WTERMSIG(status);
    }

    std::string log() const { return folder.text("log"); }
    std::vector<std::uint8_t> flash() const { return folder.read("flash.bin"); }

    /// Updates the hub that the probe left behind.
    void expectTheNextUpdateToSucceed()
    {
        SimulatedHubOptions options;
        options.image = folder.path("flash.bin");
        options.latency = SimulatedLatency::None;
        const HubSetup setup(options);
        FwImage next;
        ASSERT_TRUE(FwImage_Parse(next, image.data(), static_cast<std::int32_t>(image.size())));
        RecordingReporter reporter;
        EXPECT_TRUE(updateFirmware(next, "new.bin", reporter));
        EXPECT_EQ(flash(), image);
    }

    const std::vector<std::uint8_t> image = demoImage(0x0101);
    const TemporaryFolder folder;
};

struct Point {
    const char* kind;
    unsigned number;
};

class InEveryPhase : public ClosingTheWindow, public testing::WithParamInterface<Point>
{
};

std::vector<Point> points()
{
    std::vector<Point> all{{"launch", 0}, {"dialog", 0}, {"panel", 0}, {"alert", 0},
                           {"pause", 1},  {"pause", 2},  {"pause", 3}, {"farewell", 1},
                           {"unload", 4}, {"away", 1}};
    for (const unsigned request : {1U, 4U, 7U, 12U, 20U, 24U, 25U}) {
        all.push_back({"start-up", request});
    }
    for (const unsigned request : {1U, 4U, 7U, 8U, 12U, 15U, 16U}) {
        all.push_back({"read", request});
    }
    for (unsigned request = 1; request <= 9; ++request) {
        all.push_back({"erase", request});
    }
    for (unsigned request = 1; request <= 25; ++request) {
        all.push_back({"request", request});
    }
    return all;
}

} // namespace

TEST_P(InEveryPhase, EndsTheProcessAndSparesTheNextUpdate)
{
    if (const std::string kind = GetParam().kind; kind == "start-up" || kind == "farewell") {
        configure("FwBin = new.bin\n");
    }
    EXPECT_EQ(closeAt(GetParam().kind, GetParam().number), 0) << log();
    expectTheNextUpdateToSucceed();
}

INSTANTIATE_TEST_SUITE_P(ClosingTheWindow, InEveryPhase, testing::ValuesIn(points()),
                         [](const auto& point) {
                             const std::string kind = point.param.kind;
                             return (kind == "start-up" ? "StartUp" : kind) +
                                    std::to_string(point.param.number);
                         });

TEST_F(ClosingTheWindow, AfterTheUpdateLeavesTheNewFirmware)
{
    EXPECT_EQ(closeAt("end", 0), 0) << log();
    EXPECT_EQ(flash(), image);
}

TEST_F(ClosingTheWindow, IsNotNeededForAnUnattendedUpdateWhichEndsWithStatusZeroEveryTime)
{
    configure("FwBin = new.bin\n");
    for (int run = 0; run < 50 && !HasFailure(); ++run) {
        std::filesystem::remove(folder.path("flash.bin"));
        EXPECT_EQ(closeAt("unattended", 0), 0) << log();
        EXPECT_EQ(flash(), image);
    }
}

TEST_F(ClosingTheWindow, IsNotHeldUpByATransferThatNeverEnds)
{
    EXPECT_EQ(closeAt("stuck", 12), 0) << log();
    expectTheNextUpdateToSucceed();
}

} // namespace vornadel::test
