#pragma once

#include <cstddef>
#include <cstdint>
#include <string>
#include <vector>

// USB/IP frames, written byte by byte and independent of the code under test.
namespace vornadel::test
{

using Bytes = std::vector<std::uint8_t>;

/// A number as four bytes, high byte first.
inline Bytes word(std::uint32_t value)
{
    return {static_cast<std::uint8_t>(value >> 24), static_cast<std::uint8_t>(value >> 16),
            static_cast<std::uint8_t>(value >> 8), static_cast<std::uint8_t>(value)};
}

inline Bytes operator+(Bytes left, const Bytes& right)
{
    left.insert(left.end(), right.begin(), right.end());
    return left;
}

inline std::uint32_t wordAt(const Bytes& bytes, std::size_t at)
{
    return static_cast<std::uint32_t>(bytes.at(at)) << 24 |
           static_cast<std::uint32_t>(bytes.at(at + 1)) << 16 |
           static_cast<std::uint32_t>(bytes.at(at + 2)) << 8 | bytes.at(at + 3);
}

/// A connection's number for the SuperSpeed half of hub 3, see someDevice().
inline constexpr std::uint32_t kDevice = 0x00020003;

struct Submit {
    std::uint32_t sequence = 1;
    std::uint32_t direction = 1; // 1: towards the host
    std::uint32_t endpoint = 0;
    std::uint32_t length = 0;
    Bytes setup = Bytes(8);
    Bytes data = {};
    std::uint32_t packets = 0;
    std::uint32_t device = kDevice;
};

inline Bytes frame(const Submit& submit)
{
    return word(1) + word(submit.sequence) + word(submit.device) + word(submit.direction) +
           word(submit.endpoint) + word(0) + word(submit.length) + word(0) + word(submit.packets) +
           word(0) + submit.setup + submit.data;
}

/// The answer to a transfer.
inline Bytes answer(std::uint32_t sequence, std::int32_t status, std::uint32_t moved,
                    const Bytes& data = {})
{
    return word(3) + word(sequence) + Bytes(12) + word(static_cast<std::uint32_t>(status)) +
           word(moved) + Bytes(20) + data;
}

/// A transfer that waits for a change on the ports.
inline Submit statusRequest(std::uint32_t sequence) { return {sequence, 1, 1, 2}; }

/// The request for the list of devices, and the one to import a device.
inline Bytes listFrame() { return {0x01, 0x11, 0x80, 0x05, 0, 0, 0, 0}; }
inline Bytes importFrame(const std::string& busId)
{
    Bytes field(busId.begin(), busId.end());
    field.resize(32);
    return Bytes{0x01, 0x11, 0x80, 0x03, 0, 0, 0, 0} + field;
}

} // namespace vornadel::test
