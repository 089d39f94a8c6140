#include "flows/FirmwareUpdate.h"

#include "hub/HubCommands.h"
#include "tests/flows/FlowTable.h"
#include "tests/support/RecordingReporter.h"
#include "tests/support/SeenRequest.h"
#include "tests/support/SimulatedSetup.h"

#include <gmock/gmock.h>
#include <gtest/gtest.h>

#include <chrono>

namespace vornadel::test
{

namespace
{

using namespace std::chrono_literals;
using testing::ElementsAre;
using testing::IsEmpty;
using testing::IsSupersetOf;

std::vector<std::uint8_t> newImage() { return demoImage(0x0101); }

class FirmwareUpdate : public testing::Test
{
protected:
    FirmwareUpdate()
    {
        setup.hub().onRequest = [this](const ControlRequest& request) {
            wire.push_back(seenOf(request));
        };
    }

    void load(const std::vector<std::uint8_t>& bytes)
    {
        ASSERT_TRUE(FwImage_Parse(image, bytes.data(), static_cast<std::int32_t>(bytes.size())));
    }

    bool update() { return updateFirmware(image, "demo.bin", reporter); }

    SimulatedSetup setup;
    FwImage image;
    RecordingReporter reporter;
    std::vector<SeenRequest> wire;
};

struct FaultyByte {
    RequestKind request;
    unsigned piece;
    unsigned offset;
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

    std::vector<std::uint8_t> bytes = newImage();
    const SeenRequest hello = seenOf({0x40, 0x02, 0x0001, HUB_MAKER_VID});
    const SeenRequest status{{0xC0, 0x09, 0, 0, 0, 0, 32, 0}};
    // It runs flash code when opened, so the flow reads its mode and restart speed, then restarts
    // it.
    std::vector<SeenRequest> expected{
        hello, status, status, seenOf({0x40, 0x00}), hello, status, seenOf({0x40, 0xE8})};
    for (std::size_t at = 0; at < 0x8000; at += 4096) {
        const auto address = static_cast<std::uint16_t>(at);
        expected.push_back(seenOf({0x40, 0xC8, address, 0, {bytes.data() + at, 4096}}));
    }
    for (std::size_t at = 0; at < 0x8000; at += 4096) {
        const auto address = static_cast<std::uint16_t>(at);
        expected.push_back(seenOf({0xC0, 0xD8, address, 0, {}, {bytes.data(), 4096}}));
    }
    expected.push_back(seenOf({0x40, 0xE9, 0x0101}));
    expected.push_back(hello);
    EXPECT_EQ(wire, expected);
    EXPECT_THAT(setup.clock.pauses(), ElementsAre(1s, 128ms, 2s)) << "restarts and the erase alone";
    EXPECT_EQ(setup.hub().flash(), bytes);
}

TEST_F(FirmwareUpdate, TellsItsLinesAndValuesInThisOrder)
{
    load(newImage());
    EXPECT_TRUE(update());
    EXPECT_THAT(reporter.lines(),
                ElementsAre("reset", "0%", "blue FW:demo.bin(size=32768)\n\n",
                            "blue Erase Flash...\n", "10%", "blue Write Flash...\n", "15% posted",
                            "20% posted", "25% posted", "30% posted", "35% posted", "40% posted",
                            "45% posted", "50% posted", "blue Read Flash...\n", "55% posted",
                            "60% posted", "65% posted", "70% posted", "75% posted", "80% posted",
                            "85% posted", "90% posted", "blue Verify Flash...\n", "100%",
                            "blue Reset to Flash Code...\n", "blue Update FW Success\n"));
}

TEST_F(FirmwareUpdate, WritesAnImageOf5000BytesInTwoPieces)
{
    load(imageOfSize(5000));
    EXPECT_TRUE(update());

    std::vector<std::uint8_t> bytes = imageOfSize(5000);
    const std::vector<std::uint8_t> flash = setup.hub().flash();
    EXPECT_TRUE(std::equal(bytes.begin(), bytes.end(), flash.begin()));
    const std::vector<SeenRequest> transfers(wire.end() - 6, wire.end() - 2);
    EXPECT_THAT(transfers, ElementsAre(seenOf({0x40, 0xC8, 0, 0, {bytes.data(), 4096}}),
                                       seenOf({0x40, 0xC8, 4096, 0, {bytes.data() + 4096, 904}}),
                                       seenOf({0xC0, 0xD8, 0, 0, {}, {bytes.data(), 4096}}),
                                       seenOf({0xC0, 0xD8, 4096, 0, {}, {bytes.data(), 904}})));
    EXPECT_THAT(reporter.lines(),
                IsSupersetOf({"42.768% posted", "50% posted", "82.768% posted", "90% posted"}));
}

TEST_F(FirmwareUpdate, WithoutAnImageShowsAnEmptyHeaderAndFails)
{
    EXPECT_FALSE(updateFirmware(image, "", reporter));
    EXPECT_THAT(reporter.lines(), ElementsAre("reset", "0%", "blue FW:(size=0)\n\n",
                                              "red Wrong firmware file\n", "red Update FW Fail\n"));
    EXPECT_THAT(wire, IsEmpty());
}

TEST_F(FirmwareUpdate, NamesTheFirstByteThatDiffers)
{
    load(newImage());
    unsigned updates = 0;
    for (const FaultyByte& row : {FaultyByte{RequestKind::Write, 1, 0},
                                  {RequestKind::Write, 8, 4095},
                                  {RequestKind::Read, 3, 17},
                                  {RequestKind::Read, 8, 4095}}) {
        setup.hub().addFault({.kind = FaultKind::Flip,
                              .on = row.request,
                              .position = updates * 8 + row.piece,
                              .amount = row.offset});
        ToldValues values;
        EXPECT_FALSE(updateFirmware(image, "demo.bin", values));
        EXPECT_EQ(failureIn(values.result), (FlowResult{Step::Verify, Cause::Different,
                                                        (row.piece - 1) * 4096 + row.offset, 1}));
        ++updates;
    }
}

TEST_F(FirmwareUpdate, RefusesNoImageLongerThanTheFlashButFailsHonestly)
{
    load(imageOfSize(40960));
    ToldValues values;
    EXPECT_FALSE(updateFirmware(image, "demo.bin", values));
    EXPECT_EQ(failureIn(values.result),
              (FlowResult{Step::Write, Cause::RequestFailed, 32768, 0, HubFailure::Stalled}));
}

} // namespace vornadel::test
