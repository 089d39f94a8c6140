#pragma once

#include <cstddef>
#include <cstdint>
#include <optional>
#include <span>
#include <string>
#include <vector>

namespace vornadel
{

/// Size in bytes of the simulated controller's flash.
inline constexpr std::size_t kSimulatedFlashSize = 32768;

/// What the controller's boot code reads from the image in its flash.
struct FlashIdentity {
    std::uint16_t version = 0;
    std::uint16_t vendorId = 0;
    std::uint16_t superSpeedId = 0;
    std::uint16_t highSpeedId = 0;
    std::size_t block = 0; ///< offset of the descriptor block
};

/// What the hub says of itself with an image in its flash. Empty: the image says nothing.
struct FlashTexts {
    std::string product; ///< in UTF-8, like the serial number
    std::string serialNumber;
    std::string containerId; ///< "{8-4-4-4-12}", lower-case hex digits in the order of the bytes
};

/// Looks for the descriptor block as the controller does at power-on: in 256-byte steps from the
/// end of the flash towards its start, for AA 55, 3C C3 or 55 AA in the first two bytes. The first
/// match wins. Empty if there is none, or if it is at offset 0, where no firmware and no version
/// word can precede it: then the controller has nothing to run.
std::optional<FlashIdentity> findFlashIdentity(std::span<const std::uint8_t> flash);

/// The texts of the descriptor block at offset `block`, which findFlashIdentity() has found.
FlashTexts readFlashTexts(std::span<const std::uint8_t> flash, std::size_t block);

/// A NOR flash: erasing sets every bit, programming can only clear bits. Not thread-safe.
class NorFlash
{
public:
    /// Starts erased.
    NorFlash();

    /// Whether all `length` bytes from `address` are inside the flash.
    static bool covers(std::uint32_t address, std::size_t length);

    /// Sets all bytes to FF.
    void erase();
    /// ANDs the data into the flash. The caller must check covers() first.
    void program(std::uint32_t address, std::span<const std::uint8_t> data);
    /// The bytes of one range. The caller must check covers() first.
    std::span<const std::uint8_t> read(std::uint32_t address, std::size_t length) const;

    const std::vector<std::uint8_t>& bytes() const { return m_bytes; }
    /// Replaces the content, like an external programmer; false if the size is wrong.
    bool assign(std::vector<std::uint8_t> bytes);

private:
    std::vector<std::uint8_t> m_bytes;
};

} // namespace vornadel
