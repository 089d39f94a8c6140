// Closing the window in any phase of an update, of a flash read or erase, or with a dialog open:
// the process ends cleanly, and the next update succeeds.

#include "flows/FirmwareUpdate.h"
#include "tests/support/RecordingReporter.h"
#include "tests/support/SimulatedSetup.h"

#include <gtest/gtest.h>

#include <cstdlib>
#include <filesystem>
#include <fstream>
#include <iterator>
#include <sys/wait.h>

namespace vornadel::test
{

namespace
{

namespace fs = std::filesystem;

class ClosingTheWindow : public testing::Test
{
public:
    ClosingTheWindow()
    {
        std::string pattern = (fs::temp_directory_path() / "close-XXXXXX").string();
        folder = mkdtemp(pattern.data());
        // A copy of the probe outside any bundle, so its config.ini lies beside it.
        fs::copy_file(CLOSE_PROBE, folder / "probe");
        std::ofstream(folder / "config.ini")
            << "[Support Vid Pid]\nVID_00 = 0x1209\nSSPID_00 = 1\nHSPID_00 = 2\n";
        std::ofstream(folder / "new.bin", std::ios::binary)
            .write(reinterpret_cast<const char*>(image.data()),
                   static_cast<std::streamsize>(image.size()));
    }
    ~ClosingTheWindow() override { fs::remove_all(folder); }

protected:
    /// Runs the probe and returns its exit status, 124 if it does not end, or 128 plus the signal
    /// that ended it.
    int closeAt(const std::string& kind, unsigned number)
    {
        const std::string command = "QT_QPA_PLATFORM=offscreen timeout 60 " +
                                    (folder / "probe").string() + " " + flashFile().string() + " " +
                                    (folder / "new.bin").string() + " " + kind + " " +
                                    std::to_string(number) + " 2>" + (folder / "log").string();
        const int status = std::system(command.c_str());
        return WIFEXITED(status) ? WEXITSTATUS(status) : 128 + WTERMSIG(status);
    }

    std::string log() const
    {
        std::ifstream file(folder / "log");
        return {std::istreambuf_iterator<char>(file), {}};
    }

    fs::path flashFile() const { return folder / "flash.bin"; }

    std::vector<std::uint8_t> flash() const
    {
        std::ifstream file(flashFile(), std::ios::binary);
        return {std::istreambuf_iterator<char>(file), {}};
    }

    /// Updates the hub that the probe left behind.
    void expectTheNextUpdateToSucceed()
    {
        SimulatedHubOptions options;
        options.image = flashFile().string();
        options.latency = SimulatedLatency::None;
        VirtualClock clock;
        std::string error;
        const auto bus = SimulatedBus::create(options, clock, error);
        ASSERT_TRUE(bus) << error;
        SupportedIdList.at(0) = {1, 0x1209, 0x0001, 0x0002};
        Hub_UsePlatform(*bus, clock);
        FwImage next;
        ASSERT_TRUE(FwImage_Parse(next, image.data(), static_cast<std::int32_t>(image.size())));
        RecordingReporter reporter;
        EXPECT_TRUE(updateFirmware(next, "new.bin", reporter));
        EXPECT_EQ(flash(), image);
    }

    const std::vector<std::uint8_t> image = demoImage(0x0101);
    fs::path folder;
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
                           {"pause", 1},  {"pause", 2},  {"pause", 3}, {"farewell", 1}};
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
        std::ofstream(folder / "config.ini", std::ios::app)
            << "[DumpTool Config]\nFwBin = new.bin\n";
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

TEST_F(ClosingTheWindow, IsNotHeldUpByATransferThatNeverEnds)
{
    EXPECT_EQ(closeAt("stuck", 12), 0) << log();
    expectTheNextUpdateToSucceed();
}

} // namespace vornadel::test
