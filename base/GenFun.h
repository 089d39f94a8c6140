#pragma once

#include <cstdint>

namespace vornadel
{

// Bit fields inside one byte, hex digits, a hex printer and the escaping of paths for the shell.
//
// A mask marks the field in its byte and is expected to be one run of bits; other masks are taken
// as they come. A field value is right-aligned: its bit 0 is the lowest bit of the field. Bits
// count from 0, the least significant. Everything but ShellEscape may be called from any thread.

/// The bit range of a mask: the positions of its highest and its lowest set bit; gaps do not show.
/// Both are 0xFF for mask 0. A null `high` or `low` is a mistake in the program and ends it, in
/// release builds too.
void GF_Mask2Bits(std::uint8_t mask, std::uint8_t* high, std::uint8_t* low);

/// Position of the mask's lowest set bit; 8 for mask 0.
std::uint8_t GF_Mask2Shift(std::uint8_t mask);

/// The field of `*byte` under the mask, moved down by GF_Mask2Shift(). The bits of a mask with gaps
/// are not packed together. Mask 0 reads 0.
std::uint8_t GF_GetMaskValue(const std::uint8_t* byte, std::uint8_t mask);

/// Puts `value` into the field of `*byte`; its bits that do not fit are dropped, all other bits of
/// the byte stay. Mask 0 changes nothing.
void GF_SetMaskValue(std::uint8_t* byte, std::uint8_t mask, std::uint8_t value);

/// An ASCII digit or letter, whatever the locale.
bool GF_IsAlphaNum(char c);

/// 0-9 for digits, 10-35 for letters of either case, 0 for anything else. Letters past "f" are
/// wanted: two characters are joined as high * 16 + low and cut to 8 bits.
std::uint8_t GF_Char2Value(char c);

/// "0"-"9" and "a"-"f" for 0-15, NUL for anything above.
char GF_Value2HexChar(std::uint8_t value);

/// Prints `count` bytes to standard output as "%02x ", eight to a line, and a newline at the end,
/// so that a count divisible by 8 ends with an empty line. Null prints nothing, a count below 1
/// only the newline.
void GF_PrintHex(const std::uint8_t* bytes, std::int32_t count);

/// `text` with a backslash before each character that the shell would take for itself. Text of any
/// length; null reads as empty. The result is the module's one buffer, good until the next call;
/// `text` may lie in it. Main thread only.
const char* ShellEscape(const char* text);

} // namespace vornadel
