#include "flows/FirmwareUpdate.h"

#include "base/LastError.h"
#include "hub/HubCommands.h"
#include "tests/flows/WireLog.h"
#include "tests/support/RecordingReporter.h"
#include "tests/support/ScriptedBus.h"
#include "tests/support/SimulatedSetup.h"

#include <gmock/gmock.h>
#include <gtest/gtest.h>

#include <chrono>

namespace vornadel::test
{

namespace
{

using namespace std::chrono_literals;
using testing::DoubleNear;
using testing::ElementsAre;
using testing::IsEmpty;
using testing::Pointwise;
using Kind = RecordingReporter::Kind;

/// A value that nothing sets.
constexpr int kUntouched = -1;

std::vector<std::uint8_t> newImage() { return demoImage(0x0101); }

class FirmwareUpdate : public testing::Test
{
protected:
    FirmwareUpdate()
    {
        LastError = kUntouched;
        keepRequests(setup.hub(), wire);
    }

    void load(const std::vector<std::uint8_t>& bytes)
    {
        ASSERT_TRUE(FwImage_Parse(image, bytes.data(), static_cast<std::int32_t>(bytes.size())));
    }

    bool update() { return updateFirmware(image, "demo.bin", reporter); }

    SimulatedSetup setup;
    FwImage image;
    RecordingReporter reporter;
    std::vector<WireRequest> wire;
};

/// An image of any length from 256 bytes on, with its descriptor block in the last 256.
std::vector<std::uint8_t> imageOfSize(std::size_t size)
{
    std::vector<std::uint8_t> bytes(size);
    for (std::size_t i = 0; i < size; ++i) {
        bytes[i] = static_cast<std::uint8_t>(i * 7 + 1);
    }
    const std::vector<std::uint8_t> demo = newImage();
    std::copy(demo.end() - 512, demo.end() - 256, bytes.end() - 256);
    return bytes;
}

} // namespace

TEST_F(FirmwareUpdate, SendsExactlyTheseRequests)
{
    load(newImage());
    EXPECT_TRUE(update());

    const std::vector<std::uint8_t> bytes = newImage();
    const WireRequest hello{0x40, 0x02, 0x0001, HUB_MAKER_VID, 0, {}};
    const WireRequest status{0xC0, 0x09, 0, 0, 32, {}};
    // Opened while running flash code: asked for its mode, then for its restart speed, then
    // restarted.
    std::vector<WireRequest> expected{hello, status, status, {0x40, 0x00, 0, 0, 0, {}},
                                      hello, status};
    expected.push_back({0x40, 0xE8, 0, 0, 0, {}});
    for (std::uint16_t address = 0; address < 0x8000;
         address = static_cast<std::uint16_t>(address + 4096)) {
        expected.push_back(
            {0x40, 0xC8, address, 0, 4096,
             std::vector<std::uint8_t>(bytes.begin() + address, bytes.begin() + address + 4096)});
    }
    for (std::uint16_t address = 0; address < 0x8000;
         address = static_cast<std::uint16_t>(address + 4096)) {
        expected.push_back({0xC0, 0xD8, address, 0, 4096, {}});
    }
    expected.push_back({0x40, 0xE9, 0x0101, 0, 0, {}});
    expected.push_back(hello);
    EXPECT_EQ(wire, expected);
    EXPECT_EQ(setup.hub().flash(), bytes);
}

TEST_F(FirmwareUpdate, UsesAHubThatRunsItsRomCodeAsItIs)
{
    SimulatedHubOptions options;
    options.mode = HubCode::Rom;
    SimulatedSetup rom(options);
    std::vector<std::uint8_t> requests;
    rom.hub().onRequest = [&](const ControlRequest& request) {
        requests.push_back(request.bRequest);
    };
    load(newImage());
    EXPECT_TRUE(update());
    ASSERT_GE(requests.size(), 3U);
    EXPECT_THAT(std::vector<std::uint8_t>(requests.begin(), requests.begin() + 3),
                ElementsAre(0x02, 0x09, 0xE8));
    EXPECT_THAT(requests, testing::Not(testing::Contains(0x00)));
}

TEST_F(FirmwareUpdate, TellsItsLinesAndValues)
{
    load(newImage());
    EXPECT_TRUE(update());
    EXPECT_THAT(reporter.texts(Kind::Blue),
                ElementsAre("FW:demo.bin(size=32768)\n\n", "Erase Flash...\n", "Write Flash...\n",
                            "Read Flash...\n", "Verify Flash...\n", "Reset to Flash Code...\n",
                            "Update FW Success\n"));
    EXPECT_THAT(reporter.texts(Kind::Red), IsEmpty());
    EXPECT_EQ(reporter.entries.front().kind, Kind::Reset);
    EXPECT_THAT(reporter.values(Wait::Yes), ElementsAre(0, 10, 100));
    EXPECT_THAT(reporter.values(Wait::No),
                ElementsAre(15, 20, 25, 30, 35, 40, 45, 50, 55, 60, 65, 70, 75, 80, 85, 90));
    EXPECT_FALSE(Hub_IsOpen());
}

TEST_F(FirmwareUpdate, PausesOnlyForTheRestartsAndTheErase)
{
    load(newImage());
    EXPECT_TRUE(update());
    EXPECT_THAT(setup.clock.pauses(), ElementsAre(1s, 128ms, 2s));
}

TEST_F(FirmwareUpdate, WritesAnImageOf5000BytesInTwoPieces)
{
    load(imageOfSize(5000));
    EXPECT_TRUE(update());

    std::vector<WireRequest> writes;
    std::vector<WireRequest> reads;
    for (const WireRequest& request : wire) {
        if (request.bRequest == 0xC8) {
            writes.push_back(request);
        } else if (request.bRequest == 0xD8) {
            reads.push_back(request);
        }
    }
    const std::vector<std::uint8_t> flash = setup.hub().flash();
    const std::vector<std::uint8_t> bytes = imageOfSize(5000);
    EXPECT_TRUE(std::equal(bytes.begin(), bytes.end(), flash.begin()));
    EXPECT_THAT(
        writes,
        ElementsAre(WireRequest{0x40, 0xC8, 0, 0, 4096, {bytes.begin(), bytes.begin() + 4096}},
                    WireRequest{0x40, 0xC8, 4096, 0, 904, {bytes.begin() + 4096, bytes.end()}}));
    EXPECT_THAT(reads, ElementsAre(WireRequest{0xC0, 0xD8, 0, 0, 4096, {}},
                                   WireRequest{0xC0, 0xD8, 4096, 0, 904, {}}));
    EXPECT_THAT(reporter.values(Wait::No),
                Pointwise(DoubleNear(1e-9),
                          {10 + 40 * 4096 / 5000.0, 50.0, 50 + 40 * 4096 / 5000.0, 90.0}));
}

TEST_F(FirmwareUpdate, SplitsAddressesBeyond64KiBIntoTwoWords)
{
    ScriptedBus bus; // a hub with a larger flash, in its ROM code: it keeps what is written
    bus.attached = {{0x1209, 0x0001}};
    std::vector<std::uint8_t> flash(0x11000);
    bus.onControl([&](ControlRequest& request) {
        const std::size_t address = request.wIndex * std::size_t{0x10000} + request.wValue;
        if (request.bRequest == 0xC8) {
            std::copy(request.out.begin(), request.out.end(),
                      flash.begin() + static_cast<std::ptrdiff_t>(address));
        } else if (request.bRequest == 0xD8) {
            std::copy_n(flash.begin() + static_cast<std::ptrdiff_t>(address), request.in.size(),
                        request.in.begin());
        }
        return 0U;
    });
    VirtualClock clock;
    Hub_UsePlatform(bus, clock);
    const std::vector<std::uint8_t> bytes = imageOfSize(0x10000 + 1000);
    load(bytes);
    EXPECT_TRUE(update());
    EXPECT_TRUE(std::equal(bytes.begin(), bytes.end(), flash.begin()));

    const std::vector<SeenRequest> requests = bus.requests();
    // Open-time request, status, erase, 17 writes, 17 reads, restart, open-time request.
    ASSERT_EQ(requests.size(), 3U + 17 + 17 + 2);
    using Setup = std::array<std::uint8_t, 8>;
    EXPECT_EQ(requests[3 + 15].setup, (Setup{0x40, 0xC8, 0x00, 0xF0, 0x00, 0x00, 0x00, 0x10}));
    EXPECT_EQ(requests[3 + 16].setup, (Setup{0x40, 0xC8, 0x00, 0x00, 0x01, 0x00, 0xE8, 0x03}));
    EXPECT_EQ(requests[20 + 15].setup, (Setup{0xC0, 0xD8, 0x00, 0xF0, 0x00, 0x00, 0x00, 0x10}));
    EXPECT_EQ(requests[20 + 16].setup, (Setup{0xC0, 0xD8, 0x00, 0x00, 0x01, 0x00, 0xE8, 0x03}));
    EXPECT_EQ(requests[3 + 16].sent.size(), 1000U);
}

TEST_F(FirmwareUpdate, WithoutAnImageShowsAnEmptyHeaderAndFails)
{
    EXPECT_FALSE(updateFirmware(image, "", reporter));
    EXPECT_THAT(reporter.texts(Kind::Blue), ElementsAre("FW:(size=0)\n\n"));
    EXPECT_THAT(reporter.texts(Kind::Red),
                ElementsAre("Wrong firmware file\n", "Update FW Fail\n"));
    EXPECT_THAT(wire, IsEmpty());
}

TEST_F(FirmwareUpdate, WithoutAHubNamesTheDriver)
{
    load(newImage());
    setup.hub().unplug();
    EXPECT_FALSE(update());
    EXPECT_THAT(
        reporter.texts(Kind::Red),
        ElementsAre(
            "Fail To Open Rom Device\nPlease Load Driver firstly\nThen replugin usb hub device\n",
            "Update FW Fail\n"));
    EXPECT_EQ(LastError, 5);
}

TEST_F(FirmwareUpdate, GivesUpOnAHubThatStaysInItsFlashCode)
{
    load(newImage());
    setup.hub().addFault({.kind = FaultKind::SameMode, .on = {}});
    EXPECT_FALSE(update());
    EXPECT_EQ(LastError, 12);
    EXPECT_FALSE(Hub_IsOpen());
}

TEST_F(FirmwareUpdate, TriesTheEraseThreeTimes)
{
    load(newImage());
    for (unsigned attempt = 1; attempt <= 3; ++attempt) {
        setup.hub().addFault(
            {.kind = FaultKind::Stall, .on = RequestKind::Erase, .position = attempt});
    }
    EXPECT_FALSE(update());
    EXPECT_THAT(reporter.texts(Kind::Red),
                ElementsAre("Fail to Erase Flash\n", "Update FW Fail\n"));
    EXPECT_EQ(LastError, kUntouched);
    EXPECT_THAT(setup.clock.pauses(), ElementsAre(1s, 128ms, 128ms, 128ms));
}

TEST_F(FirmwareUpdate, StopsAtTheFirstPieceThatIsNotWritten)
{
    load(newImage());
    setup.hub().addFault({.kind = FaultKind::Stall, .on = RequestKind::Write, .position = 3});
    EXPECT_FALSE(update());
    EXPECT_THAT(reporter.texts(Kind::Red),
                ElementsAre("Fail to Write Flash\n", "Update FW Fail\n"));
    EXPECT_EQ(wire.back().wValue, 2 * 4096);
    EXPECT_EQ(LastError, kUntouched);
}

TEST_F(FirmwareUpdate, StopsAtTheFirstPieceThatIsNotRead)
{
    load(newImage());
    setup.hub().addFault({.kind = FaultKind::Stall, .on = RequestKind::Read, .position = 8});
    EXPECT_FALSE(update());
    EXPECT_THAT(reporter.texts(Kind::Red), ElementsAre("Fail to Read Flash\n", "Update FW Fail\n"));
    EXPECT_EQ(wire.back().wValue, 7 * 4096);
    EXPECT_EQ(LastError, kUntouched);
}

TEST_F(FirmwareUpdate, LeavesAHubThatDoesNotVerifyInItsRomCode)
{
    load(newImage());
    setup.hub().addFault({.kind = FaultKind::Flip, .on = RequestKind::Write, .position = 5});
    EXPECT_FALSE(update());
    EXPECT_THAT(reporter.texts(Kind::Red),
                ElementsAre("Fail to verify flash\n", "Update FW Fail\n"));
    EXPECT_EQ(setup.hub().runningCode(), HubCode::Rom);
    EXPECT_EQ(LastError, kUntouched);
    EXPECT_EQ(reporter.values(Wait::No).back(), 90);
}

TEST_F(FirmwareUpdate, DoesNotTakeAReadWithoutDataForAnEqualFlash)
{
    load(newImage());
    setup.hub().addFault({.kind = FaultKind::Ignore, .on = RequestKind::Read, .position = 1});
    EXPECT_FALSE(update());
    EXPECT_THAT(reporter.texts(Kind::Red),
                ElementsAre("Fail to verify flash\n", "Update FW Fail\n"));
}

TEST_F(FirmwareUpdate, SaysSoWhenTheHubDoesNotComeBackFromTheLastRestart)
{
    load(newImage());
    setup.hub().addFault({.kind = FaultKind::Never, .on = {}, .position = 2});
    EXPECT_FALSE(update());
    EXPECT_THAT(reporter.texts(Kind::Red),
                ElementsAre("Fail to Reset to Flash Code\n", "Update FW Fail\n"));
    std::vector<Clock::Duration> expected{1s, 128ms};
    expected.insert(expected.end(), 20, 2s);
    EXPECT_EQ(setup.clock.pauses(), expected);
    EXPECT_EQ(LastError, 5);
}

TEST_F(FirmwareUpdate, SendsTheLastRestartOnceEvenWhenItIsRefused)
{
    load(newImage());
    setup.hub().addFault({.kind = FaultKind::Stall, .on = RequestKind::Flash, .position = 1});
    EXPECT_FALSE(update());
    EXPECT_THAT(reporter.texts(Kind::Red),
                ElementsAre("Fail to Reset to Flash Code\n", "Update FW Fail\n"));
    EXPECT_EQ(wire.back().bRequest, 0xE9); // the closed handle answers the second and third attempt
    EXPECT_EQ(LastError, kUntouched);
    EXPECT_THAT(setup.clock.pauses(), ElementsAre(1s, 128ms, 128ms, 128ms, 128ms));
}

TEST_F(FirmwareUpdate, RefusesNoImageLongerThanTheFlashButFailsHonestly)
{
    load(imageOfSize(40960));
    EXPECT_FALSE(update());
    EXPECT_THAT(reporter.texts(Kind::Red),
                ElementsAre("Fail to Write Flash\n", "Update FW Fail\n"));
}

} // namespace vornadel::test
