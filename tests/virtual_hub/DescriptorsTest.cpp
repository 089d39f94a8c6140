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
    EXPECT_EQ(descriptor[1], 3);
    std::string read;
    for (std::size_t at = 2; at + 1 < descriptor.size(); at += 2) {
        EXPECT_EQ(descriptor[at + 1], 0);
        read += static_cast<char>(descriptor[at]);
    }
    return read;
}

TEST(SuperSpeedDescriptors, DescribeAHubOfUsb3)
{
    HalfBench bench(HubSpeed::SuperSpeed);
    EXPECT_THAT(bench.descriptor(0x0100), ElementsAre(18, 1, 0x00, 0x03, 9, 0, 3, 9, 0x2B, 0x1A,
                                                      0x4D, 0x3C, 0x00, 0x01, 1, 2, 3, 1));
}

TEST(SuperSpeedDescriptors, HaveAnEndpointWithItsCompanion)
{
    HalfBench bench(HubSpeed::SuperSpeed);
    const Bytes set = bench.descriptor(0x0200);
    ASSERT_THAT(set, SizeIs(31));
    EXPECT_THAT(part(set, 0, 9), ElementsAre(9, 2, 31, 0, 1, 1, 0, 0xE0, 0));
    EXPECT_THAT(part(set, 9, 9), ElementsAre(9, 4, 0, 0, 1, 9, 0, 0, 0));
    EXPECT_THAT(part(set, 18, 7), ElementsAre(7, 5, 0x81, 0x13, 2, 0, 8));
    EXPECT_THAT(part(set, 25, 6), ElementsAre(6, 0x30, 0, 0, 2, 0));
}

TEST(SuperSpeedDescriptors, KnowNoOtherSpeed)
{
    HalfBench bench(HubSpeed::SuperSpeed);
    EXPECT_TRUE(bench.stalls({0x80, 6, 0x0600, 0, 10}));
    EXPECT_TRUE(bench.stalls({0x80, 6, 0x0700, 0, 9}));
}

TEST(SuperSpeedDescriptors, DescribeThePorts)
{
    HalfBench bench(HubSpeed::SuperSpeed);
    EXPECT_THAT(bench.read({0xA0, 6, 0x2A00, 0, 12}),
                ElementsAre(12, 0x2A, 4, 0x09, 0, 50, 0, 4, 100, 0, 0, 0));
    EXPECT_TRUE(bench.stalls({0xA0, 6, 0x2900, 0, 9}));
}

TEST(HighSpeedDescriptors, DescribeTheCompanionOfAHubOfUsb3)
{
    HalfBench bench(HubSpeed::HighSpeed);
    EXPECT_THAT(bench.descriptor(0x0100), ElementsAre(18, 1, 0x10, 0x02, 9, 0, 1, 64, 0x2B, 0x1A,
                                                      0x4E, 0x3C, 0x00, 0x01, 1, 2, 3, 1));
    EXPECT_THAT(bench.descriptor(0x0600), ElementsAre(10, 6, 0x10, 0x02, 9, 0, 0, 64, 1, 0));
}

TEST(HighSpeedDescriptors, HaveAnEndpointAtBothSpeeds)
{
    HalfBench bench(HubSpeed::HighSpeed);
    for (const bool fullSpeed : {false, true}) {
        const Bytes set = bench.descriptor(fullSpeed ? 0x0700 : 0x0200);
        ASSERT_THAT(set, SizeIs(25));
        EXPECT_THAT(part(set, 0, 9), ElementsAre(9, fullSpeed ? 7 : 2, 25, 0, 1, 1, 0, 0xE0, 0));
        EXPECT_THAT(part(set, 9, 9), ElementsAre(9, 4, 0, 0, 1, 9, 0, 0, 0));
        EXPECT_THAT(part(set, 18, 7), ElementsAre(7, 5, 0x81, 3, 1, 0, fullSpeed ? 255 : 12));
    }
}

TEST(HighSpeedDescriptors, DescribeThePorts)
{
    HalfBench bench(HubSpeed::HighSpeed);
    EXPECT_THAT(bench.read({0xA0, 6, 0x2900, 0, 71}),
                ElementsAre(9, 0x29, 4, 0x09, 0, 50, 0, 0, 0xFF));
    EXPECT_TRUE(bench.stalls({0xA0, 6, 0x2A00, 0, 12}));
}

TEST_P(EachHalf, TellsItsCapabilities)
{
    const Bytes store = m_bench.descriptor(0x0F00);
    ASSERT_THAT(store, SizeIs(42));
    EXPECT_THAT(part(store, 0, 5), ElementsAre(5, 15, 42, 0, 3));
    EXPECT_THAT(part(store, 5, 7), ElementsAre(7, 16, 2, 0x02, 0, 0, 0));
    EXPECT_THAT(part(store, 12, 10), ElementsAre(10, 16, 3, 0, 0x0E, 0, 1, 10, 0xFF, 0x07));
    EXPECT_THAT(part(store, 22, 4), ElementsAre(20, 16, 4, 0));
}

TEST_P(EachHalf, TellsItsStringsInUsEnglish)
{
    EXPECT_THAT(m_bench.descriptor(0x0300), ElementsAre(4, 3, 0x09, 0x04));
    EXPECT_EQ(text(m_bench.descriptor(0x0301)), "Vornadel");
    EXPECT_EQ(text(m_bench.descriptor(0x0302)), GetParam() == HubSpeed::SuperSpeed
                                                    ? "Virtual hub, SuperSpeed"
                                                    : "Virtual hub, high speed");
    EXPECT_EQ(text(m_bench.descriptor(0x0303)), "VIRTUAL3-3C4D3C4E");
    EXPECT_TRUE(m_bench.stalls({0x80, 6, 0x0304, 0x0409, 255}));
}

TEST_P(EachHalf, CutsADescriptorToWhatWasAskedFor)
{
    EXPECT_THAT(m_bench.descriptor(0x0100, 8), SizeIs(8));
    EXPECT_THAT(m_bench.descriptor(0x0200, 9), SizeIs(9));
    EXPECT_THAT(m_bench.descriptor(0x0100, 0), SizeIs(0));
}

TEST_P(EachHalf, HasOneOfEachDescriptor)
{
    EXPECT_TRUE(m_bench.stalls({0x80, 6, 0x0101, 0, 18}));
    EXPECT_TRUE(m_bench.stalls({0x80, 6, 0x0201, 0, 9}));
    EXPECT_TRUE(m_bench.stalls({0x80, 6, 0x0400, 0, 9})); // an interface is not to be had alone
    EXPECT_TRUE(m_bench.stalls({0x80, 6, 0x0A00, 0, 4}));
}

INSTANTIATE_TEST_SUITE_P(Descriptors, EachHalf,
                         testing::Values(HubSpeed::SuperSpeed, HubSpeed::HighSpeed));

TEST(ContainerId, IsTheSameOnBothHalvesAndAnotherOneOnAnotherHub)
{
    const auto containerId = [](unsigned hub, HubSpeed half) {
        VirtualDevice device = someDevice(half);
        device.hub = hub;
        return part(standardDescriptor(device, 15, 0), 26, 16);
    };
    EXPECT_EQ(containerId(1, HubSpeed::SuperSpeed), containerId(1, HubSpeed::HighSpeed));
    EXPECT_NE(containerId(1, HubSpeed::SuperSpeed), containerId(2, HubSpeed::SuperSpeed));
}

TEST(ContainerIdAndSerialNumber, DifferBetweenHubsOfOneNumberWithOtherProductIds)
{
    for (const std::uint16_t descriptor : {std::uint16_t{0x0F00}, std::uint16_t{0x0303}}) {
        const auto read = [&](std::uint16_t productId, std::uint16_t otherProductId) {
            VirtualDevice device = someDevice(HubSpeed::SuperSpeed);
            device.productId = productId;
            device.otherProductId = otherProductId;
            return standardDescriptor(device, static_cast<std::uint8_t>(descriptor >> 8),
                                      static_cast<std::uint8_t>(descriptor & 0xFF));
        };
        EXPECT_EQ(read(1, 2), read(1, 2));
        EXPECT_NE(read(1, 2), read(3, 2));
        EXPECT_NE(read(1, 2), read(1, 3));
    }
}

} // namespace
} // namespace vornadel::test
