#pragma once

#include "standins/virtual_hub/Conversation.h"
#include "standins/virtual_hub/UrbExchange.h"
#include "standins/virtual_hub/UsbIpWire.h"

#include <memory>
#include <string>
#include <vector>

namespace vornadel
{

/// The devices that a server offers. Called on the threads of the connections.
class ExportList
{
public:
    ExportList() = default;
    ExportList(const ExportList&) = delete;
    ExportList& operator=(const ExportList&) = delete;
    virtual ~ExportList() = default;

    virtual std::vector<ExportedDevice> devices() = 0; ///< the devices on the bus now
    /// Assigns the device to the connection that asks; sets `device` if the result is Ok.
    virtual OperationStatus import(const std::string& busId, ExportedDevice& device) = 0;
};

/// A client of the server: asks for the list, once, or imports a device and then sends transfers.
class ServerConversation final : public Conversation
{
public:
    explicit ServerConversation(ExportList& list) : m_list(list) {}

    Step step(ByteView in, std::size_t& taken, ByteBuffer& out) override;
    void leave(ByteBuffer& out) override;

private:
    Step import(ByteView in, std::size_t& taken, ByteBuffer& out);

    ExportList& m_list;
    std::unique_ptr<UrbExchange> m_transfers; // null: nothing imported yet
    bool m_over = false;                      // no further list or import
};

} // namespace vornadel
