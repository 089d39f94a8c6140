#pragma once

#include <cstddef>
#include <cstdint>
#include <span>
#include <string_view>
#include <vector>

namespace vornadel
{

using ByteBuffer = std::vector<std::uint8_t>;
using ByteView = std::span<const std::uint8_t>;

/// USB writes the low byte first.
inline void putLittle16(ByteBuffer& to, std::uint32_t value)
{
    to.push_back(static_cast<std::uint8_t>(value & 0xFF));
    to.push_back(static_cast<std::uint8_t>((value >> 8) & 0xFF));
}

/// USB/IP writes the high byte first.
inline void putBig16(ByteBuffer& to, std::uint32_t value)
{
    to.push_back(static_cast<std::uint8_t>((value >> 8) & 0xFF));
    to.push_back(static_cast<std::uint8_t>(value & 0xFF));
}

inline void putBig32(ByteBuffer& to, std::uint32_t value)
{
    putBig16(to, value >> 16);
    putBig16(to, value & 0xFFFF);
}

/// A text in a field of `size` bytes, padded with zeros and always zero-terminated.
inline void putText(ByteBuffer& to, std::string_view text, std::size_t size)
{
    text = text.substr(0, size - 1);
    to.insert(to.end(), text.begin(), text.end());
    to.resize(to.size() + size - text.size(), 0);
}

// The caller must check that the bytes exist.

inline std::uint16_t little16(ByteView from, std::size_t at)
{
    return static_cast<std::uint16_t>(from[at] | (from[at + 1] << 8));
}

inline std::uint16_t big16(ByteView from, std::size_t at)
{
    return static_cast<std::uint16_t>((from[at] << 8) | from[at + 1]);
}

inline std::uint32_t big32(ByteView from, std::size_t at)
{
    return (static_cast<std::uint32_t>(big16(from, at)) << 16) | big16(from, at + 2);
}

} // namespace vornadel
