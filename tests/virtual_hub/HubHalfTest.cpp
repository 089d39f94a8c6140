// One half of the hub as its host sees it. That a real kernel is content with it, the kernel tests
// show.

#include "standins/virtual_hub/HubHalf.h"

#include "tests/virtual_hub/Frames.h"
#include "tests/virtual_hub/SomeDevice.h"

#include <gmock/gmock.h>
#include <gtest/gtest.h>

namespace vornadel::test
{
namespace
{

using testing::ElementsAre;
using testing::SizeIs;

Bytes part(const Bytes& bytes, std::size_t at, std::size_t size)
{
    return {bytes.begin() + static_cast<std::ptrdiff_t>(at),
            bytes.begin() + static_cast<std::ptrdiff_t>(at + size)};
}

/// One half, with requests written as they are on the wire.
class HalfBench
{
public:
    explicit HalfBench(HubSpeed speed) : m_half(someDevice(speed)) {}

    /// The data of a request to the host; it must succeed.
    Bytes read(const SetupPacket& setup)
    {
        const TransferResult result = m_half.control(setup, {});
        EXPECT_EQ(result.status, 0);
        EXPECT_EQ(result.moved, result.data.size());
        return result.data;
    }
    bool accepts(const SetupPacket& setup) { return m_half.control(setup, {}).status == 0; }
    bool stalls(const SetupPacket& setup) { return m_half.control(setup, {}).status == -32; }

    Bytes descriptor(std::uint16_t typeAndIndex)
    {
        return read({0x80, 6, typeAndIndex, 0, 0xFFFF});
    }
    void configure() { EXPECT_TRUE(accepts({0x00, 9, 1, 0, 0})); }

private:
    HubHalf m_half;
};

TEST(Descriptors, OfTheSuperSpeedHalfAreThoseOfAUsb3Hub)
{
    HalfBench bench(HubSpeed::SuperSpeed);
    EXPECT_THAT(bench.descriptor(0x0100), ElementsAre(18, 1, 0x00, 0x03, 9, 0, 3, 9, 0x2B, 0x1A,
                                                      0x4D, 0x3C, 0x00, 0x01, 1, 2, 3, 1));
    const Bytes set = bench.descriptor(0x0200);
    ASSERT_THAT(set, SizeIs(31));
    EXPECT_THAT(part(set, 0, 9), ElementsAre(9, 2, 31, 0, 1, 1, 0, 0xE0, 0));
    EXPECT_THAT(part(set, 9, 9), ElementsAre(9, 4, 0, 0, 1, 9, 0, 0, 0));
    EXPECT_THAT(part(set, 18, 7), ElementsAre(7, 5, 0x81, 0x13, 2, 0, 8));
    EXPECT_THAT(part(set, 25, 6), ElementsAre(6, 0x30, 0, 0, 2, 0));
    EXPECT_THAT(bench.read({0xA0, 6, 0x2A00, 0, 12}),
                ElementsAre(12, 0x2A, 4, 0x09, 0, 50, 0, 4, 100, 0, 0, 0));
    EXPECT_TRUE(bench.stalls({0x80, 6, 0x0600, 0, 10})); // there is no other speed
}

TEST(Descriptors, OfTheHighSpeedHalfAreThoseOfItsCompanion)
{
    HalfBench bench(HubSpeed::HighSpeed);
    EXPECT_THAT(bench.descriptor(0x0100), ElementsAre(18, 1, 0x10, 0x02, 9, 0, 1, 64, 0x2B, 0x1A,
                                                      0x4E, 0x3C, 0x00, 0x01, 1, 2, 3, 1));
    EXPECT_THAT(bench.descriptor(0x0600), ElementsAre(10, 6, 0x10, 0x02, 9, 0, 0, 64, 1, 0));
    for (const bool fullSpeed : {false, true}) {
        const Bytes set = bench.descriptor(fullSpeed ? 0x0700 : 0x0200);
        ASSERT_THAT(set, SizeIs(25));
        EXPECT_THAT(part(set, 0, 9), ElementsAre(9, fullSpeed ? 7 : 2, 25, 0, 1, 1, 0, 0xE0, 0));
        EXPECT_THAT(part(set, 18, 7), ElementsAre(7, 5, 0x81, 3, 1, 0, fullSpeed ? 255 : 12));
    }
    EXPECT_THAT(bench.read({0xA0, 6, 0x2900, 0, 71}),
                ElementsAre(9, 0x29, 4, 0x09, 0, 50, 0, 0, 0xFF));
}

TEST(Ports, HaveTheirPowerSwitchedOneByOne)
{
    for (const bool super : {true, false}) {
        SCOPED_TRACE(super);
        HalfBench bench(super ? HubSpeed::SuperSpeed : HubSpeed::HighSpeed);
        const Bytes on = super ? Bytes{0xA0, 0x02, 0, 0} : Bytes{0x00, 0x01, 0, 0};
        const Bytes off = super ? Bytes{0x80, 0x00, 0, 0} : Bytes{0x00, 0x00, 0, 0};
        bench.configure();
        for (std::uint16_t port = 1; port <= 4; ++port) {
            EXPECT_TRUE(bench.accepts({0x23, 3, 8, port, 0}));
            EXPECT_TRUE(bench.accepts({0x23, 3, 4, port, 0})); // a reset, with nothing plugged in
            EXPECT_EQ(bench.read({0xA3, 0, 0, port, 4}), on);
        }
        EXPECT_TRUE(bench.accepts({0x23, 1, 8, 2, 0}));
        EXPECT_EQ(bench.read({0xA3, 0, 0, 2, 4}), off);
        EXPECT_EQ(bench.read({0xA3, 0, 0, 1, 4}), on);
        EXPECT_TRUE(bench.stalls({0xA3, 0, 0, 5, 4}));
    }
}

} // namespace
} // namespace vornadel::test
