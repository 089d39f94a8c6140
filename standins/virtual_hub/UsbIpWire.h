#pragma once

#include "standins/virtual_hub/ByteOrder.h"
#include "standins/virtual_hub/HubHalf.h"

#include <cstdint>
#include <optional>
#include <string>

namespace vornadel
{

// The bytes of USB/IP, protocol version 1.1.1. All numbers high byte first, but for the setup
// packet, which is as on the USB itself.

inline constexpr std::size_t kUrbHeaderSize = 48;
inline constexpr std::size_t kOperationHeaderSize = 8;
inline constexpr std::size_t kBusIdSize = 32;
inline constexpr std::size_t kDeviceRecordSize = 312;

/// What a host sends about one transfer. Everything that the protocol rules out is out of it
/// already.
struct UrbRequest {
    bool unlink = false;
    std::uint32_t sequence = 0; ///< names the transfer, or the unlink
    std::uint32_t device = 0;   ///< deviceNumber()
    bool in = false;            ///< towards the host
    std::uint8_t endpoint = 0;  ///< 0 to 15
    std::uint32_t length = 0;   ///< bytes of the host's buffer
    SetupPacket setup;          ///< endpoint 0 only
    std::uint32_t unlinked = 0; ///< unlink only: the sequence number of the transfer to be called
                                ///< off
};

/// Reads a header of 48 bytes. Empty when it is none: unknown command, direction or endpoint, an
/// isochronous transfer, or more than 65535 bytes towards the device.
std::optional<UrbRequest> readUrbHeader(ByteView bytes);

/// Appends the reply to a transfer, and `result.data` behind it.
void writeUrbReply(ByteBuffer& to, std::uint32_t sequence, const TransferResult& result);
/// Appends the reply to an unlink: kTransferUnlinked when the transfer was called off, 0 when it
/// was done before.
void writeUnlinkReply(ByteBuffer& to, std::uint32_t sequence, std::int32_t status);

/// What a client may ask before it has a device.
enum class Operation : std::uint16_t { ListDevices = 0x8005, Import = 0x8003 };
enum class OperationStatus : std::uint32_t { Ok = 0, Busy = 2, NoDevice = 4, Error = 5 };

/// Reads the 8 bytes that every operation begins with; empty for another protocol version or an
/// unknown operation.
std::optional<Operation> readOperation(ByteView bytes);

/// A device as a server exports it.
struct ExportedDevice {
    std::string busId; ///< under which clients import it, up to 31 characters
    VirtualDevice device;
};

void writeDeviceList(ByteBuffer& to, const std::vector<ExportedDevice>& devices);
/// The record of the device follows only when the status is Ok.
void writeImportReply(ByteBuffer& to, OperationStatus status, const ExportedDevice* device);

} // namespace vornadel
