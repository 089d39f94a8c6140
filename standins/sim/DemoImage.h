#pragma once

#include <cstdint>
#include <vector>

namespace vornadel
{

/// Version words of the two demo images, "1.00" and "1.01".
inline constexpr std::uint16_t kDemoVersion100 = 0x0100;
inline constexpr std::uint16_t kDemoVersion101 = 0x0101;

/// A whole flash of 32768 bytes for a demo hub: made-up firmware, and a descriptor block at 0x7E00
/// with the ids 1209:0001 and 1209:0002, the strings "Vornadel", "Demo Hub" and "SN0001", a
/// Container ID and some configuration. The same version always gives the same bytes; another
/// version also has different code. `hub`, 1 to 64, only changes the last digits of the serial
/// number and of the Container ID.
std::vector<std::uint8_t> demoImage(std::uint16_t version = kDemoVersion100, unsigned hub = 1);

} // namespace vornadel
