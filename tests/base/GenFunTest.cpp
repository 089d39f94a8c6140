#include "base/GenFun.h"

#include <gtest/gtest.h>

#include <algorithm>
#include <array>
#include <csignal>
#include <cstddef>
#include <cstdint>
#include <string>
#include <utility>

namespace vornadel::test
{
namespace
{

struct BitRange {
    std::uint8_t high = 1;
    std::uint8_t low = 1;
    bool operator==(const BitRange&) const = default;
};

BitRange bitsOf(std::uint8_t mask)
{
    BitRange range;
    GF_Mask2Bits(mask, &range.high, &range.low);
    return range;
}

std::uint8_t get(std::uint8_t byte, std::uint8_t mask) { return GF_GetMaskValue(&byte, mask); }

std::uint8_t set(std::uint8_t byte, std::uint8_t mask, std::uint8_t value)
{
    GF_SetMaskValue(&byte, mask, value);
    return byte;
}

TEST(Mask2BitsDeathTest, StopsTheProgramWithoutAPlaceForTheResult)
{
    std::uint8_t place = 0;
    const auto aborted = testing::KilledBySignal(SIGABRT); // not SIGSEGV
    const std::string failed = "^Assertion failed: \\(";
    const std::string where = "\\), function GF_Mask2Bits, file GenFun, line 98\\.\n";
    EXPECT_EXIT(GF_Mask2Bits(0x30, nullptr, &place), aborted, failed + "high" + where);
    EXPECT_EXIT(GF_Mask2Bits(0x30, &place, nullptr), aborted, failed + "low" + where);
    EXPECT_EXIT(GF_Mask2Bits(0, nullptr, nullptr), aborted, failed + "high" + where);
}

// Bit by bit, from the definition of a field instead of the way it is computed.
std::uint8_t fieldWritten(unsigned byte, unsigned mask, unsigned value)
{
    unsigned result = 0;
    unsigned valueBit = 0;
    bool inField = false;
    for (unsigned weight = 1; weight < 256; weight *= 2) {
        const bool masked = mask / weight % 2 == 1;
        inField = inField || masked;
        const bool bit = masked ? (value >> valueBit) % 2 == 1 : byte / weight % 2 == 1;
        result += bit ? weight : 0;
        valueBit += inField ? 1 : 0;
    }
    return static_cast<std::uint8_t>(result);
}

unsigned fieldRead(unsigned byte, unsigned mask)
{
    unsigned result = 0;
    unsigned valueWeight = 0;
    for (unsigned weight = 1; weight < 256; weight *= 2) {
        const bool masked = mask / weight % 2 == 1;
        valueWeight = valueWeight != 0 ? valueWeight * 2 : (masked ? 1 : 0);
        result += masked && byte / weight % 2 == 1 ? valueWeight : 0;
    }
    return result;
}

TEST(MaskValueLaws, HoldForEveryMaskByteAndValue)
{
    for (unsigned mask = 0; mask < 256; ++mask) {
        const auto m = static_cast<std::uint8_t>(mask);
        const unsigned room = fieldRead(0xFF, mask);
        for (unsigned byte = 0; byte < 256; ++byte) {
            const auto b = static_cast<std::uint8_t>(byte);
            ASSERT_EQ(get(b, m), fieldRead(byte, mask)) << "mask " << mask << " byte " << byte;
            ASSERT_EQ(set(b, m, get(b, m)), b) << "mask " << mask << " byte " << byte;
            for (unsigned value = 0; value < 256; ++value) {
                const std::uint8_t after = set(b, m, static_cast<std::uint8_t>(value));
                const bool asTold =
                    after == fieldWritten(byte, mask, value) && get(after, m) == (value & room);
                if (!asTold) {
                    FAIL() << "mask " << mask << " byte " << byte << " value " << value << " gave "
                           << +after;
                }
            }
        }
    }
}

TEST(Mask2BitsLaws, EnclosesEveryMask)
{
    for (unsigned mask = 1; mask < 256; ++mask) {
        const BitRange range = bitsOf(static_cast<std::uint8_t>(mask));
        EXPECT_EQ(mask % (1U << range.low), 0U) << mask;
        EXPECT_EQ(mask / (1U << range.low) % 2, 1U) << mask;
        EXPECT_EQ(mask / (1U << range.high), 1U) << mask;
        EXPECT_EQ(range.low, GF_Mask2Shift(static_cast<std::uint8_t>(mask))) << mask;
    }
    EXPECT_EQ(bitsOf(0), (BitRange{0xFF, 0xFF}));
    EXPECT_EQ(GF_Mask2Shift(0), 8);
}

TEST(IsAlphaNum, IsTrueForAsciiDigitsAndLettersAlone)
{
    const std::string wanted = "0123456789ABCDEFGHIJKLMNOPQRSTUVWXYZabcdefghijklmnopqrstuvwxyz";
    for (int code = 0; code < 256; ++code) {
        const char c = static_cast<char>(code);
        EXPECT_EQ(GF_IsAlphaNum(c), wanted.find(c) != std::string::npos) << code;
    }
}

TEST(Char2Value, CountsLettersOnPastTheHexDigitsAndIsZeroForAnythingElse)
{
    const std::string lower = "0123456789abcdefghijklmnopqrstuvwxyz";
    const std::string upper = "0123456789ABCDEFGHIJKLMNOPQRSTUVWXYZ";
    for (int code = 0; code < 256; ++code) {
        const char c = static_cast<char>(code);
        const std::size_t value = std::min(lower.find(c), upper.find(c));
        EXPECT_EQ(GF_Char2Value(c), value == std::string::npos ? 0 : value) << code;
    }
}

TEST(Value2HexChar, GivesLowerCaseDigitsAndNulAboveFifteen)
{
    const std::string digits = "0123456789abcdef";
    for (unsigned value = 0; value < 256; ++value) {
        const char wanted = value < 16 ? digits[value] : '\0';
        EXPECT_EQ(GF_Value2HexChar(static_cast<std::uint8_t>(value)), wanted) << value;
    }
}

TEST(PrintHex, BreaksTheLineAfterEveryEighthByteAndAtTheEnd)
{
    const std::array<std::uint8_t, 9> bytes{0xAA, 0x0B, 2, 3, 4, 5, 6, 7, 8};
    const std::pair<std::int32_t, std::string> rows[] = {
        {-1, "\n"},
        {0, "\n"},
        {3, "aa 0b 02 \n"},
        {8, "aa 0b 02 03 04 05 06 07 \n\n"},
        {9, "aa 0b 02 03 04 05 06 07 \n08 \n"},
    };
    for (const auto& [count, printed] : rows) {
        ::testing::internal::CaptureStdout();
        GF_PrintHex(bytes.data(), count);
        GF_PrintHex(nullptr, count);
        EXPECT_EQ(::testing::internal::GetCapturedStdout(), printed);
    }
}

TEST(ShellEscapeTest, EscapesExactlyTheCharactersOfTheShell)
{
    const std::string escaped = R"( !"$&'()*,:;<=>?@[\]^`{|})";
    for (int code = 1; code < 256; ++code) {
        const char c = static_cast<char>(code);
        const bool special = escaped.find(c) != std::string::npos;
        EXPECT_EQ(ShellEscape(std::string(1, c).c_str()), (special ? "\\" : "") + std::string(1, c))
            << code;
    }
}

TEST(ShellEscapeTest, TakesTextOfAnyLengthAndItsOwnBuffer)
{
    EXPECT_STREQ(ShellEscape(""), "");
    EXPECT_STREQ(ShellEscape(nullptr), "");
    EXPECT_STREQ(ShellEscape(ShellEscape("a b")), "a\\\\\\ b");
    const std::string escaped = ShellEscape(std::string(100'000, ' ').c_str());
    ASSERT_EQ(escaped.size(), 200'000U);
    EXPECT_EQ(escaped.substr(199'998), "\\ ");
}

} // namespace
} // namespace vornadel::test
