#include "standins/virtual_hub/UrbExchange.h"

#include <algorithm>
#include <optional>

namespace vornadel
{

Conversation::Step UrbExchange::step(ByteView in, std::size_t& taken, ByteBuffer& out)
{
    taken = 0;
    if (in.size() < kUrbHeaderSize) {
        return Step::Waits;
    }
    const std::optional<UrbRequest> request = readUrbHeader(in.first(kUrbHeaderSize));
    if (!request || request->device != deviceNumber(m_half.device())) {
        return Step::Ends;
    }
    const std::size_t dataSize = request->unlink || request->in ? 0 : request->length;
    if (in.size() < kUrbHeaderSize + dataSize) {
        return Step::Waits;
    }
    taken = kUrbHeaderSize + dataSize;
    if (request->unlink) {
        unlink(*request, out);
    } else {
        submit(*request, in.subspan(kUrbHeaderSize, dataSize), out);
    }
    return Step::Answered;
}

void UrbExchange::leave(ByteBuffer& out)
{
    m_gone = true;
    for (const std::uint32_t sequence : m_pending) {
        writeUrbReply(out, sequence, {kTransferGone, 0, {}});
    }
    m_pending.clear();
}

/// If the transfer is not pending, it has been answered already or never existed: the answer is
/// that it is done.
void UrbExchange::unlink(const UrbRequest& request, ByteBuffer& out)
{
    const bool calledOff = std::erase(m_pending, request.unlinked) > 0;
    writeUnlinkReply(out, request.sequence, calledOff ? kTransferUnlinked : kTransferDone);
}

void UrbExchange::submit(const UrbRequest& request, ByteView data, ByteBuffer& out)
{
    TransferResult result = {kTransferStalled, 0, {}};
    if (m_gone) {
        result.status = kTransferGone;
    } else if (request.endpoint == 0) {
        result = control(request, data);
    } else if (request.in && request.endpoint == (kStatusEndpoint & 0x0F) &&
               !m_half.statusEndpointHalted() && m_pending.size() < kMostPending) {
        m_pending.push_back(request.sequence);
        return;
    }
    writeUrbReply(out, request.sequence, result);
}

TransferResult UrbExchange::control(const UrbRequest& request, ByteView data)
{
    const bool in = (request.setup.bmRequestType & 0x80) != 0;
    const bool matches = request.setup.wLength == 0 || in == request.in;
    if (!matches || (!in && data.size() != request.setup.wLength)) {
        return {kTransferStalled, 0, {}};
    }
    TransferResult result = m_half.control(request.setup, data);
    if (result.data.size() > request.length) { // never more than the host's buffer
        result.data.resize(request.length);
        result.moved = request.length;
    }
    return result;
}

} // namespace vornadel
