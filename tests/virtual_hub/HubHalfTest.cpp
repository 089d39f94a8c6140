// One half of the hub as its host sees it. That a real kernel is content with it, the kernel tests
// show.

#include "tests/virtual_hub/HalfBench.h"

#include <gmock/gmock.h>

#include <string>

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

std::string text(const Bytes& descriptor)
{
    EXPECT_EQ(descriptor[0], descriptor.size());
    std::string read;
    for (std::size_t at = 2; at + 1 < descriptor.size(); at += 2) {
        read += static_cast<char>(descriptor[at]);
    }
    return read;
}

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

TEST_P(EachHalf, NamesItselfAndItsCapabilities)
{
    const Bytes store = m_bench.descriptor(0x0F00);
    ASSERT_THAT(store, SizeIs(42));
    EXPECT_THAT(part(store, 0, 5), ElementsAre(5, 15, 42, 0, 3));
    EXPECT_THAT(part(store, 12, 10), ElementsAre(10, 16, 3, 0, 0x0E, 0, 1, 10, 0xFF, 0x07));
    EXPECT_THAT(m_bench.descriptor(0x0300), ElementsAre(4, 3, 0x09, 0x04));
    EXPECT_EQ(text(m_bench.descriptor(0x0301)), "Vornadel");
    EXPECT_EQ(text(m_bench.descriptor(0x0303)), "VIRTUAL3-3C4D3C4E");
    EXPECT_THAT(m_bench.descriptor(0x0100, 8), SizeIs(8));
    EXPECT_TRUE(m_bench.stalls({0x80, 6, 0x0101, 0, 18}));
}

TEST_P(EachHalf, IsConfigured)
{
    EXPECT_TRUE(m_bench.stalls({0x81, 10, 0, 0, 1})); // no interface yet
    EXPECT_TRUE(m_bench.accepts({0x00, 9, 1, 0, 0}));
    EXPECT_THAT(m_bench.read({0x80, 8, 0, 0, 1}), ElementsAre(1));
    EXPECT_TRUE(m_bench.stalls({0x00, 9, 2, 0, 0}));
    EXPECT_TRUE(m_bench.accepts({0x01, 11, 0, 0, 0}));
    EXPECT_TRUE(m_bench.stalls({0x01, 11, 1, 0, 0}));
    EXPECT_TRUE(m_bench.accepts({0x00, 9, 0, 0, 0}));
    EXPECT_THAT(m_bench.read({0x80, 8, 0, 0, 1}), ElementsAre(0));
}

TEST_P(EachHalf, HaltsItsStatusEndpointAndGoesOn)
{
    m_bench.configure();
    EXPECT_TRUE(m_bench.accepts({0x02, 3, 0, 0x81, 0}));
    EXPECT_THAT(m_bench.read({0x82, 0, 0, 0x81, 2}), ElementsAre(1, 0));
    EXPECT_TRUE(m_bench.half.statusEndpointHalted());
    EXPECT_TRUE(m_bench.accepts({0x02, 1, 0, 0x81, 0}));
    EXPECT_FALSE(m_bench.half.statusEndpointHalted());
    EXPECT_TRUE(m_bench.stalls({0x02, 3, 0, 0x82, 0}));
}

TEST_P(EachHalf, RefusesWhatItDoesNotKnow)
{
    EXPECT_TRUE(m_bench.stalls({0x00, 7, 0x0100, 0, 18})); // descriptors cannot be set
    EXPECT_TRUE(m_bench.stalls({0x00, 6, 0x0100, 0, 0}));  // the wrong direction
    EXPECT_TRUE(m_bench.stalls({0x21, 9, 0x0200, 0, 0}));  // another class
    EXPECT_TRUE(m_bench.stalls({0x20, 3, 0, 0, 0}));       // a feature that no hub has
}

TEST_P(EachHalf, SwitchesThePowerOfEachOfItsFourPorts)
{
    const bool super = GetParam() == HubSpeed::SuperSpeed;
    const Bytes on = super ? Bytes{0xA0, 0x02, 0, 0} : Bytes{0x00, 0x01, 0, 0};
    const Bytes off = super ? Bytes{0x80, 0x00, 0, 0} : Bytes{0x00, 0x00, 0, 0};
    m_bench.configure();
    EXPECT_THAT(m_bench.read({0xA0, 0, 0, 0, 4}), ElementsAre(0, 0, 0, 0));
    for (std::uint16_t port = 1; port <= 4; ++port) {
        EXPECT_TRUE(m_bench.accepts({0x23, 3, 8, port, 0}));
        EXPECT_EQ(m_bench.read({0xA3, 0, 0, port, 4}), on);
        EXPECT_TRUE(m_bench.accepts({0x23, 3, 4, port, 0})); // a reset, with nothing plugged in
        EXPECT_EQ(m_bench.read({0xA3, 0, 0, port, 4}), on);
    }
    EXPECT_TRUE(m_bench.accepts({0x23, 1, 8, 2, 0}));
    EXPECT_EQ(m_bench.read({0xA3, 0, 0, 2, 4}), off);
    EXPECT_EQ(m_bench.read({0xA3, 0, 0, 1, 4}), on);
    m_bench.configure();
    EXPECT_EQ(m_bench.read({0xA3, 0, 0, 1, 4}), off);
    for (const std::uint16_t port : {std::uint16_t{0}, std::uint16_t{5}}) {
        EXPECT_TRUE(m_bench.stalls({0xA3, 0, 0, port, 4}));
        EXPECT_TRUE(m_bench.stalls({0x23, 3, 8, port, 0}));
    }
}

INSTANTIATE_TEST_SUITE_P(Halves, EachHalf,
                         testing::Values(HubSpeed::SuperSpeed, HubSpeed::HighSpeed));

/// Which features of 0 to 31 the half lets the host set, or clear.
std::vector<int> features(HubSpeed half, std::uint8_t request)
{
    std::vector<int> accepted;
    for (std::uint16_t feature = 0; feature < 32; ++feature) {
        HalfBench bench(half);
        if (bench.accepts({0x23, request, feature, 1, 0})) {
            accepted.push_back(feature);
        }
    }
    return accepted;
}

TEST(PortFeatures, AreThoseOfTheSpeed)
{
    EXPECT_THAT(features(HubSpeed::HighSpeed, 3), ElementsAre(2, 4, 8, 22));
    EXPECT_THAT(features(HubSpeed::HighSpeed, 1), ElementsAre(1, 2, 8, 16, 17, 18, 19, 20, 22));
    EXPECT_THAT(features(HubSpeed::SuperSpeed, 3), ElementsAre(4, 5, 8, 23, 24, 27, 28, 30));
    EXPECT_THAT(features(HubSpeed::SuperSpeed, 1), ElementsAre(8, 16, 19, 20, 25, 26, 29, 30));
}

TEST(SpeedRequests, AreKnownAtTheirSpeedAlone)
{
    HalfBench super(HubSpeed::SuperSpeed);
    HalfBench high(HubSpeed::HighSpeed);
    EXPECT_TRUE(super.accepts({0x20, 12, 0, 0, 0})); // how deep the hub sits
    EXPECT_TRUE(high.stalls({0x20, 12, 0, 0, 0}));
    EXPECT_TRUE(super.accepts({0x00, 48, 0, 0, 6}, Bytes(6))); // exit latencies
    EXPECT_FALSE(high.accepts({0x00, 48, 0, 0, 6}, Bytes(6)));
    EXPECT_TRUE(high.accepts({0x23, 9, 0, 1, 0})); // resets the transaction translator
    EXPECT_TRUE(super.stalls({0x23, 9, 0, 1, 0}));
    EXPECT_TRUE(high.accepts({0x00, 3, 1, 0, 0})); // remote wake-up
    EXPECT_THAT(high.read({0x80, 0, 0, 0, 2}), ElementsAre(0x03, 0));
    EXPECT_TRUE(super.stalls({0x00, 3, 1, 0, 0}));
    EXPECT_TRUE(super.accepts({0x00, 3, 48, 0, 0})); // U1
    EXPECT_THAT(super.read({0x80, 0, 0, 0, 2}), ElementsAre(0x05, 0));
    EXPECT_TRUE(super.accepts({0x23, 3, 8, 1, 0}));
    EXPECT_TRUE(super.accepts({0x23, 3, 5, 0x0401, 0})); // switches the port's link off
    EXPECT_THAT(super.read({0xA3, 0, 0, 1, 4}), ElementsAre(0x80, 0x02, 0, 0));
}

TEST(Identity, IsSharedByTheHalvesAndDiffersBetweenHubs)
{
    const auto containerId = [](unsigned hub, HubSpeed half, std::uint16_t otherProductId) {
        VirtualDevice device = someDevice(half);
        device.hub = hub;
        if (otherProductId != 0) {
            device.otherProductId = otherProductId;
        }
        return part(standardDescriptor(device, 15, 0), 26, 16);
    };
    const Bytes one = containerId(1, HubSpeed::SuperSpeed, 0);
    EXPECT_EQ(one, containerId(1, HubSpeed::HighSpeed, 0));
    EXPECT_NE(one, containerId(2, HubSpeed::SuperSpeed, 0));
    EXPECT_NE(one, containerId(1, HubSpeed::SuperSpeed, 7)); // another hub of the same number
}

} // namespace
} // namespace vornadel::test
