#pragma once

#include <cstdint>

namespace vornadel
{

// The SPI flash behind the hub.

inline constexpr std::uint32_t kFlashSize = 32768; ///< bytes
inline constexpr std::uint32_t kFlashPiece = 4096; ///< most bytes of one write or read request
inline constexpr std::uint8_t kFlashBlank = 0xFF;  ///< value of an erased byte

} // namespace vornadel
