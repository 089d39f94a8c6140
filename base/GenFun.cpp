#include "base/GenFun.h"

#include <cstdio>
#include <cstdlib>
#include <string>
#include <string_view>
#include <utility>

namespace vornadel
{

namespace
{

constexpr std::string_view kShellSpecials = " !\"$&'()*,:;<=>?@[\\]^`{|}";

// Not assert(): release builds drop it, and the line it names changes with every edit.
void requireOutput(const std::uint8_t* pointer, const char* name)
{
    if (pointer == nullptr) {
        std::fprintf(
            stderr, "Assertion failed: (%s), function GF_Mask2Bits, file GenFun, line 98.\n", name);
        std::abort();
    }
}

} // namespace

void GF_Mask2Bits(std::uint8_t mask, std::uint8_t* high, std::uint8_t* low)
{
    requireOutput(high, "high");
    requireOutput(low, "low");
    *low = 0xFF;
    *high = 0xFF;
    if (mask == 0) {
        return;
    }
    *low = GF_Mask2Shift(mask);
    for (std::uint8_t position = *low; (mask >> position) != 0; ++position) {
        *high = position;
    }
}

std::uint8_t GF_Mask2Shift(std::uint8_t mask)
{
    std::uint8_t shift = 0;
    while (shift < 8 && ((mask >> shift) & 1) == 0) {
        ++shift;
    }
    return shift;
}

std::uint8_t GF_GetMaskValue(const std::uint8_t* byte, std::uint8_t mask)
{
    return static_cast<std::uint8_t>((*byte & mask) >> GF_Mask2Shift(mask));
}

void GF_SetMaskValue(std::uint8_t* byte, std::uint8_t mask, std::uint8_t value)
{
    *byte = static_cast<std::uint8_t>(((value << GF_Mask2Shift(mask)) & mask) | (*byte & ~mask));
}

bool GF_IsAlphaNum(char c)
{
    return (c >= '0' && c <= '9') || (c >= 'a' && c <= 'z') || (c >= 'A' && c <= 'Z');
}

std::uint8_t GF_Char2Value(char c)
{
    if (c >= '0' && c <= '9') {
        return static_cast<std::uint8_t>(c - '0');
    }
    if (c >= 'a' && c <= 'z') {
        return static_cast<std::uint8_t>(c - 'a' + 10);
    }
    if (c >= 'A' && c <= 'Z') {
        return static_cast<std::uint8_t>(c - 'A' + 10);
    }
    return 0;
}

char GF_Value2HexChar(std::uint8_t value)
{
    constexpr std::string_view kDigits = "0123456789abcdef";
    return value < kDigits.size() ? kDigits[value] : '\0';
}

void GF_PrintHex(const std::uint8_t* bytes, std::int32_t count)
{
    if (bytes == nullptr) {
        return;
    }
    for (std::int32_t i = 0; i < count; ++i) {
        std::printf("%02x ", static_cast<unsigned>(bytes[i]));
        if (i % 8 == 7) {
            std::putchar('\n');
        }
    }
    std::putchar('\n');
}

const char* ShellEscape(const char* text)
{
    static std::string buffer;
    std::string escaped;
    for (const char* c = text; c != nullptr && *c != '\0'; ++c) {
        if (kShellSpecials.find(*c) != std::string_view::npos) {
            escaped += '\\';
        }
        escaped += *c;
    }
    buffer = std::move(escaped);
    return buffer.c_str();
}

} // namespace vornadel
