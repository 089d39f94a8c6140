#include "standins/sim/DemoImage.h"

#include "standins/sim/NorFlash.h"
#include "tests/sim/HubBench.h"

#include <algorithm>
#include <fstream>
#include <gtest/gtest.h>
#include <iterator>

namespace vornadel::test
{
namespace
{

Bytes contentOf(const std::string& path)
{
    std::ifstream file(path, std::ios::binary);
    return {std::istreambuf_iterator<char>(file), std::istreambuf_iterator<char>()};
}

Bytes slice(const Bytes& image, std::size_t offset, std::size_t length)
{
    const auto begin = image.begin() + static_cast<std::ptrdiff_t>(offset);
    return {begin, begin + static_cast<std::ptrdiff_t>(length)};
}

TEST(DemoImage, EqualsTheFilesInExamples)
{
    EXPECT_EQ(contentOf(VORNADEL_EXAMPLES "/demo-1.00.bin"), demoImage(0x0100));
    EXPECT_EQ(contentOf(VORNADEL_EXAMPLES "/demo-1.01.bin"), demoImage(0x0101));
}

TEST(DemoImage, CarriesVersionAndIds)
{
    for (const std::uint16_t version : {std::uint16_t{0x0100}, std::uint16_t{0x0101}}) {
        const Bytes image = demoImage(version);
        ASSERT_EQ(image.size(), kFlashSize);
        const auto identity = findFlashIdentity(image);
        ASSERT_TRUE(identity);
        EXPECT_EQ(identity->version, version);
        EXPECT_EQ(identity->vendorId, 0x1209);
        EXPECT_EQ(identity->superSpeedId, 0x0001);
        EXPECT_EQ(identity->highSpeedId, 0x0002);
    }
}

TEST(DemoImage, CarriesStringsAndContainerIdInItsBlock)
{
    const Bytes image = demoImage();
    const Bytes strings = {10,  3,   'V', 'o', 'r', 'n', 'a', 'd', 'e', 'l', 10,  3,
                           'D', 'e', 'm', 'o', ' ', 'H', 'u', 'b', 8,   3,   'S', 'N',
                           '0', '0', '0', '1', 0,   0,   0,   0,   0,   0,   0};
    ASSERT_EQ(strings.size(), 35U);
    EXPECT_EQ(slice(image, 0x7E00 + 43, 35), strings);
    const Bytes containerId = slice(image, 0x7E00 + 78, 16);
    EXPECT_EQ(std::count(containerId.begin(), containerId.end(), 0), 0);
}

TEST(DemoImage, ShowsNoEditedIdentity)
{
    const Bytes image = demoImage();
    EXPECT_EQ(image[0x7E00 + 10] & 0x01, 0);
    EXPECT_EQ(image[0x7E00 + 42] & 0x0F, 0);
}

TEST(DemoImage, HasConfigurationOnBothSidesOfTheIdentity)
{
    const Bytes image = demoImage();
    const auto isSet = [](std::uint8_t byte) { return byte != 0; };
    const Bytes low = slice(image, 0x7E00 + 11, 31);
    const Bytes high = slice(image, 0x7E00 + 94, 162);
    EXPECT_GE(std::count_if(low.begin(), low.end(), isSet), 10);
    EXPECT_GE(std::count_if(high.begin(), high.end(), isSet), 10);
}

TEST(DemoImage, HasExactlyOneBlock)
{
    for (const std::uint16_t version : {std::uint16_t{0x0100}, std::uint16_t{0x0101}}) {
        Bytes image = demoImage(version);
        image[0x7E00] = 0x00;
        EXPECT_FALSE(findFlashIdentity(image));
        image[0x0000] = 0x00; // a block at the very start is refused for another reason
        image[0x0100] = 0xAA;
        image[0x0101] = 0x55;
        EXPECT_TRUE(findFlashIdentity(image));
    }
}

TEST(DemoImage, NewVersionHasOtherCode)
{
    const Bytes first = demoImage(0x0100);
    const Bytes second = demoImage(0x0101);
    std::size_t changed = 0;
    for (std::size_t i = 0; i < 0x6000; ++i) {
        changed += first[i] != second[i] ? 1U : 0U;
    }
    EXPECT_GT(changed, 4096U);
    EXPECT_LT(changed, 0x6000U / 2);
    EXPECT_EQ(slice(first, 0x7E00, 512), slice(second, 0x7E00, 512));
}

} // namespace
} // namespace vornadel::test
