#pragma once

#include <array>
#include <cstdint>
#include <span>

namespace vornadel
{

// The vendor commands of the hub. All use the hub that the calling thread has open, and block. A
// status is that of Hub_ControlRequest(), 0 for success.
//
// The hub runs either the firmware in its SPI flash or its ROM code. The flash can be erased,
// written and read only while ROM code runs. A restart from one into the other takes the hub off
// the bus for a while.

/// The status block as the hub sends it. Bytes 10-11: firmware version, high byte first. Byte 13: 1
/// if a restart into ROM code is quick. Byte 15, bit 1: clear while ROM code runs.
using HubStatusBlock = std::array<std::uint8_t, 32>;

/// The firmware version in a status block.
std::uint16_t firmwareVersionIn(const HubStatusBlock& block);

/// Whether ROM code runs, according to a status block.
bool romCodeRunsBy(const HubStatusBlock& block);

/// Modes of Hub_SwitchMode() and Hub_SendModeCommand().
inline constexpr std::uint8_t HUB_MODE_ROM = 0x21;   ///< restart into the ROM code
inline constexpr std::uint8_t HUB_MODE_FLASH = 0x22; ///< restart into the firmware in the flash

/// Reads as much of the status block as fits into `buffer`. All callers pass a zeroed block.
std::uint32_t Hub_ReadStatusBlock(std::span<std::uint8_t> buffer);

/// Whether the hub runs its ROM code; false if the status block cannot be read.
bool Hub_IsRomMode();

/// The firmware version; 0 if the status block cannot be read.
std::uint16_t Hub_GetFwVersion();

/// Sends the restart request of a mode and closes the hub in any case. For a mode without a request
/// the result is true.
bool Hub_SendModeCommand(std::uint8_t mode);

/// Restarts the hub into a mode, waits for it to come back and opens it again: 20 attempts, 2 s
/// apart (1 s for a quick hub on its way into ROM code). The mode command is tried three times,
/// with 128 ms after each failure; the first attempt closes the hub, so the other two do not reach
/// it. True: the hub is open. False: it is closed.
bool Hub_SwitchMode(std::uint8_t mode);

/// Opens the hub; in a strict session, waits up to a second for another program that has it open.
bool Hub_OpenPatiently();

/// Opens the hub and, unless it already runs ROM code, restarts it into that. False: the hub is
/// closed, and LastError is that of Hub_OpenDevice(), or 12 if the hub came back without running
/// ROM code.
bool Hub_OpenRomDevice();

/// Erases the flash: up to three requests, with 128 ms after each, even after a success.
bool Hub_EraseFlash();

/// Writes at most 65535 bytes to the flash at a byte address, in one request.
std::uint32_t Hub_WriteFlash(std::uint32_t address, std::span<const std::uint8_t> data);

/// Fills `buffer`, at most 65535 bytes, from the flash at a byte address, in one request.
std::uint32_t Hub_ReadFlash(std::uint32_t address, std::span<std::uint8_t> buffer);

} // namespace vornadel
