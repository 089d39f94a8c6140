#pragma once

#include <cstdint>

namespace vornadel
{

// Bit fields inside one byte, hex digits, a hex printer and the escaping of paths for the shell.
//
// A mask marks the field in its byte. It should be one run of bits; other masks are not rejected. A
// field value is right-aligned: its bit 0 is the lowest bit of the field. Bit 0 is the least
// significant. All functions except ShellEscape may be called from any thread.

/// The bit range of a mask: the positions of its highest and its lowest set bit; gaps are ignored.
/// Both are 0xFF for mask 0. A null `high` or `low` is a bug and ends the program, in release
/// builds too.
void GF_Mask2Bits(std::uint8_t mask, std::uint8_t* high, std::uint8_t* low);

/// Position of the mask's lowest set bit; 8 for mask 0.
std::uint8_t GF_Mask2Shift(std::uint8_t mask);

/// The field of `*byte` under the mask, shifted right by GF_Mask2Shift(). Gaps in the mask stay
/// gaps in the value. Mask 0 reads 0.
std::uint8_t GF_GetMaskValue(const std::uint8_t* byte, std::uint8_t mask);

/// Writes `value` into the field of `*byte`. Bits of `value` that do not fit are dropped; all other
/// bits of the byte stay. Mask 0 changes nothing.
void GF_SetMaskValue(std::uint8_t* byte, std::uint8_t mask, std::uint8_t value);

/// An ASCII digit or letter, whatever the locale.
bool GF_IsAlphaNum(char c);

/// 0-9 for digits, 10-35 for letters of either case, 0 for anything else. Letters past "f" count on
/// purpose: callers join two characters as high * 16 + low and cut the result to 8 bits.
std::uint8_t GF_Char2Value(char c);

/// "0"-"9" and "a"-"f" for 0-15, NUL for anything above.
char GF_Value2HexChar(std::uint8_t value);

/// Prints `count` bytes to standard output as "%02x ", eight to a line, and a newline at the end.
/// So a count divisible by 8 ends with an empty line. A count below 1 prints only the newline, null
/// nothing at all.
void GF_PrintHex(const std::uint8_t* bytes, std::int32_t count);

/// `text` with a backslash before each character that is special to the shell. The text may have
/// any length; null counts as empty. The result is in a static buffer, valid until the next call;
/// `text` may point into it. Main thread only.
const char* ShellEscape(const char* text);

} // namespace vornadel
