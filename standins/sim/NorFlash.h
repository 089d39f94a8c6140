#pragma once

#include <cstddef>
#include <cstdint>
#include <optional>
#include <span>
#include <vector>

namespace vornadel
{

/// Bytes of the flash behind the simulated controller.
inline constexpr std::size_t kSimulatedFlashSize = 32768;

/// What the controller's boot code takes from the image in its flash.
struct FlashIdentity {
    std::uint16_t version = 0;
    std::uint16_t vendorId = 0;
    std::uint16_t superSpeedId = 0;
    std::uint16_t highSpeedId = 0;
};

/// Looks for the descriptor block as the controller does at power-on: 256-byte steps from the end
/// of the flash towards its start, AA 55, 3C C3 or 55 AA in the first two bytes, the block nearest
/// the end wins. Empty when there is none, or when it lies at the very start, where no firmware and
/// no version word can precede it: the controller has nothing to run then.
std::optional<FlashIdentity> findFlashIdentity(std::span<const std::uint8_t> flash);

/// A NOR flash: erasing sets every bit, programming can only clear bits. Not thread-safe.
class NorFlash
{
public:
    /// Erased.
    NorFlash();

    /// True when all of `length` bytes from `address` lie in the flash.
    static bool covers(std::uint32_t address, std::size_t length);

    /// Sets all bytes to FF.
    void erase();
    /// ANDs the data into the flash. The caller has asked covers().
    void program(std::uint32_t address, std::span<const std::uint8_t> data);
    /// The bytes of one range. The caller has asked covers().
    std::span<const std::uint8_t> read(std::uint32_t address, std::size_t length) const;

    const std::vector<std::uint8_t>& bytes() const { return m_bytes; }
    /// Replaces the content, as a programmer clipped to the chip would; false unless it is of the
    /// flash's size.
    bool assign(std::vector<std::uint8_t> bytes);

private:
    std::vector<std::uint8_t> m_bytes;
};

} // namespace vornadel
