#pragma once

#include <array>
#include <cstdint>
#include <span>

namespace vornadel
{

// The vendor commands of the hub. All act on the hub that the calling thread has open and block it.
// A status is the status of Hub_ControlRequest(), 0 for success.
//
// The hub runs either the firmware in its SPI flash or its ROM code; the flash can be erased,
// written and read only in the latter. A restart from one into the other takes the hub off the bus
// for a while.

/// The status block as the hub sends it. Bytes 10-11: firmware version, high byte first. Byte 13: 1
/// for a hub that is back quickly after a restart into ROM code. Byte 15, bit 1: clear while ROM
/// code runs.
using HubStatusBlock = std::array<std::uint8_t, 32>;

/// The firmware version in a status block.
std::uint16_t firmwareVersionIn(const HubStatusBlock& block);

/// Whether ROM code runs, by a status block.
bool romCodeRunsBy(const HubStatusBlock& block);

/// Modes of Hub_SwitchMode() and Hub_SendModeCommand().
inline constexpr std::uint8_t HUB_MODE_ROM = 0x21;   ///< restart into the ROM code
inline constexpr std::uint8_t HUB_MODE_FLASH = 0x22; ///< restart into the firmware in the flash

/// Reads as many bytes of the status block as `buffer` has room for; everyone passes a zeroed
/// HubStatusBlock.
std::uint32_t Hub_ReadStatusBlock(std::span<std::uint8_t> buffer);

/// Whether the hub runs its ROM code; false when the status block cannot be read.
bool Hub_IsRomMode();

/// The firmware version; 0 when the status block cannot be read.
std::uint16_t Hub_GetFwVersion();

/// Sends the restart request of a mode and closes the hub, whatever came of it. A mode that has no
/// request counts as sent.
bool Hub_SendModeCommand(std::uint8_t mode);

/// Restarts the hub into a mode, waits for it to come back and opens it again: 20 attempts, 2 s
/// apart (1 s for a quick hub on its way into ROM code). Three attempts at the mode command, 128 ms
/// after each that failed; the first closes the hub, so the other two do not reach it. True: the
/// hub is open. False: it is closed.
bool Hub_SwitchMode(std::uint8_t mode);

/// Opens the hub and restarts it into ROM code unless it runs it already. False: the hub is closed.
/// LastError as Hub_OpenDevice() left it, or 12 when the hub came back and still does not report
/// ROM code.
bool Hub_OpenRomDevice();

/// Erases the flash: up to three requests, each followed by a pause of 128 ms, the successful one
/// too.
bool Hub_EraseFlash();

/// Writes at most 65535 bytes to the flash at a byte address, in one request.
std::uint32_t Hub_WriteFlash(std::uint32_t address, std::span<const std::uint8_t> data);

/// Fills `buffer`, at most 65535 bytes, from the flash at a byte address, in one request.
std::uint32_t Hub_ReadFlash(std::uint32_t address, std::span<std::uint8_t> buffer);

} // namespace vornadel
