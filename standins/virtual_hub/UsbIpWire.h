#pragma once

#include "standins/virtual_hub/ByteOrder.h"
#include "standins/virtual_hub/HubHalf.h"

#include <cstdint>
#include <optional>
#include <string>

namespace vornadel
{

// The bytes of USB/IP, protocol version 1.1.1. All numbers are high byte first, except in the setup
// packet, which is as on USB itself.

inline constexpr std::size_t kUrbHeaderSize = 48;
inline constexpr std::size_t kOperationHeaderSize = 8;
inline constexpr std::size_t kBusIdSize = 32;
inline constexpr std::size_t kDeviceRecordSize = 312;

/// A host's message about one transfer, already checked against the protocol.
struct UrbRequest {
    bool unlink = false;
    std::uint32_t sequence = 0; ///< identifies the transfer, or the unlink
    std::uint32_t device = 0;   ///< deviceNumber()
    bool in = false;            ///< towards the host
    std::uint8_t endpoint = 0;  ///< 0 to 15
    std::uint32_t length = 0;   ///< bytes of the host's buffer
    SetupPacket setup;          ///< endpoint 0 only
    std::uint32_t unlinked = 0; ///< unlink only: the sequence number of the transfer to cancel
};

/// Reads a header of 48 bytes. Empty if it is invalid: unknown command, direction or endpoint, an
/// isochronous transfer, or more than 65535 bytes to the device.
std::optional<UrbRequest> readUrbHeader(ByteView bytes);

/// Appends the reply to a transfer, followed by `result.data`.
void writeUrbReply(ByteBuffer& to, std::uint32_t sequence, const TransferResult& result);
/// Appends the reply to an unlink: kTransferUnlinked if the transfer was cancelled, 0 if it was
/// already done.
void writeUnlinkReply(ByteBuffer& to, std::uint32_t sequence, std::int32_t status);

/// The requests of a client that has no device yet.
enum class Operation : std::uint16_t { ListDevices = 0x8005, Import = 0x8003 };
enum class OperationStatus : std::uint32_t { Ok = 0, Busy = 2, NoDevice = 4, Error = 5 };

/// Reads the first 8 bytes of an operation; empty if its code or the protocol version is unknown.
std::optional<Operation> readOperation(ByteView bytes);

/// A device as a server exports it.
struct ExportedDevice {
    std::string busId; ///< the id by which clients import it, up to 31 characters
    VirtualDevice device;
};

void writeDeviceList(ByteBuffer& to, const std::vector<ExportedDevice>& devices);
/// The record of the device follows only when the status is Ok.
void writeImportReply(ByteBuffer& to, OperationStatus status, const ExportedDevice* device);

} // namespace vornadel
