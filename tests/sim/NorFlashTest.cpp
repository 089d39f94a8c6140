#include "standins/sim/NorFlash.h"

#include "tests/sim/HubBench.h"

#include <gtest/gtest.h>

namespace vornadel::test
{
namespace
{

Bytes imageWithBlockAt(std::size_t block, std::uint8_t first, std::uint8_t second)
{
    Bytes image(kFlashSize, 0xFF);
    image[block] = first;
    image[block + 1] = second;
    return image;
}

TEST(NorFlash, ProgrammingOnlyClearsBits)
{
    NorFlash flash;
    flash.program(0x100, Bytes{0xF0, 0x3C});
    flash.program(0x100, Bytes{0xAA, 0xFF});
    EXPECT_EQ(flash.bytes()[0x100], 0xA0);
    EXPECT_EQ(flash.bytes()[0x101], 0x3C);
    EXPECT_EQ(flash.bytes()[0x0FF], 0xFF);
    EXPECT_EQ(flash.bytes()[0x102], 0xFF);
}

TEST(NorFlash, CoversItsOwnAddressesOnly)
{
    EXPECT_TRUE(NorFlash::covers(0, kFlashSize));
    EXPECT_TRUE(NorFlash::covers(kFlashSize - 1, 1));
    EXPECT_FALSE(NorFlash::covers(kFlashSize - 1, 2));
    EXPECT_FALSE(NorFlash::covers(0xFFFFFFFF, 2));
}

TEST(FlashIdentity, IsFoundByEachOfTheThreeSignatures)
{
    EXPECT_TRUE(findFlashIdentity(imageWithBlockAt(0x7F00, 0xAA, 0x55)));
    EXPECT_TRUE(findFlashIdentity(imageWithBlockAt(0x7F00, 0x3C, 0xC3)));
    EXPECT_TRUE(findFlashIdentity(imageWithBlockAt(0x7F00, 0x55, 0xAA)));
    EXPECT_FALSE(findFlashIdentity(imageWithBlockAt(0x7F00, 0xC3, 0x3C)));
    EXPECT_FALSE(findFlashIdentity(imageWithBlockAt(0x7F00, 0xAA, 0xC3)));
    EXPECT_FALSE(findFlashIdentity(imageWithBlockAt(0, 0xAA, 0x55))); // no room for firmware
}

TEST(FlashTexts, EndAtTheFirstLengthThatCannotBeRight)
{
    Bytes image(kFlashSize, 0xFF);
    const auto textsWith = [&](const Bytes& strings) {
        std::fill_n(image.begin() + 0x7E00 + 43, 35, std::uint8_t{0});
        std::copy(strings.begin(), strings.end(), image.begin() + 0x7E00 + 43);
        const FlashTexts texts = readFlashTexts(image, 0x7E00);
        return texts.product + '|' + texts.serialNumber;
    };
    EXPECT_EQ(textsWith({3, 3, 'M', 4, 3, 'P', 0xE9, 3, 3, 'S'}), "P\xC3\xA9|S");
    EXPECT_EQ(textsWith({2, 3, 2, 3, 29, 3, 'x', '\n', 0x9F, 'y'}), "|xy"); // no control characters
    EXPECT_EQ(textsWith({2, 3, 3, 3, 'P', 31, 3, 'x'}), "P|");
    EXPECT_EQ(textsWith({1, 3, 3, 3, 'P', 3, 3, 'S'}), "|");
}

TEST(FlashIdentity, ComesFromTheBlockNearestTheEnd)
{
    Bytes image = imageWithBlockAt(0x1000, 0xAA, 0x55);
    image[0x1003] = 0x01;
    image[0x2000] = 0x3C;
    image[0x2001] = 0xC3;
    image[0x2003] = 0x02;
    const auto identity = findFlashIdentity(image);
    ASSERT_TRUE(identity);
    EXPECT_EQ(identity->vendorId & 0xFF, 0x02);
}

} // namespace
} // namespace vornadel::test
