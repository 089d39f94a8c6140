#pragma once

#include "standins/virtual_hub/Conversation.h"
#include "standins/virtual_hub/HubHalf.h"
#include "standins/virtual_hub/UsbIpWire.h"

#include <cstddef>
#include <cstdint>
#include <vector>

namespace vornadel
{

/// The transfers of one attached device. A transfer on the status endpoint stays pending until it
/// is unlinked or the device leaves.
class UrbExchange final : public Conversation
{
public:
    /// The most pending transfers; more are refused. A hub driver has one.
    static constexpr std::size_t kMostPending = 64;

    explicit UrbExchange(VirtualDevice device) : m_half(std::move(device)) {}

    Step step(ByteView in, std::size_t& taken, ByteBuffer& out) override;
    void leave(ByteBuffer& out) override;

private:
    void unlink(const UrbRequest& request, ByteBuffer& out);
    void submit(const UrbRequest& request, ByteView data, ByteBuffer& out);
    TransferResult control(const UrbRequest& request, ByteView data);

    HubHalf m_half;
    std::vector<std::uint32_t> m_pending; // sequence numbers
    bool m_gone = false;
};

} // namespace vornadel
