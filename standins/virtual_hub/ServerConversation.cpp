#include "standins/virtual_hub/ServerConversation.h"

#include <algorithm>
#include <optional>

namespace vornadel
{

Conversation::Step ServerConversation::step(ByteView in, std::size_t& taken, ByteBuffer& out)
{
    taken = 0;
    if (m_transfers) {
        return m_transfers->step(in, taken, out);
    }
    if (m_over) {
        return Step::Ends;
    }
    if (in.size() < kOperationHeaderSize) {
        return Step::Waits;
    }
    const std::optional<Operation> operation = readOperation(in.first(kOperationHeaderSize));
    if (!operation) {
        return Step::Ends;
    }
    if (*operation == Operation::Import) {
        return import(in, taken, out);
    }
    taken = kOperationHeaderSize;
    m_over = true;
    writeDeviceList(out, m_list.devices());
    return Step::Ends;
}

void ServerConversation::leave(ByteBuffer& out)
{
    m_over = true;
    if (m_transfers) {
        m_transfers->leave(out);
    }
}

Conversation::Step ServerConversation::import(ByteView in, std::size_t& taken, ByteBuffer& out)
{
    if (in.size() < kOperationHeaderSize + kBusIdSize) {
        return Step::Waits;
    }
    taken = kOperationHeaderSize + kBusIdSize;
    const ByteView field = in.subspan(kOperationHeaderSize, kBusIdSize);
    const std::string busId(field.begin(), std::find(field.begin(), field.end(), 0));
    ExportedDevice device;
    const OperationStatus status = m_list.import(busId, device);
    writeImportReply(out, status, &device);
    if (status != OperationStatus::Ok) {
        return Step::Ends;
    }
    m_transfers = std::make_unique<UrbExchange>(device.device);
    return Step::Answered;
}

} // namespace vornadel
