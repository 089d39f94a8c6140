#include "tests/platform/SimulatedNode.h"

#include <algorithm>
#include <array>
#include <cerrno>
#include <cstring>
#include <linux/usbdevice_fs.h>
#include <sys/ioctl.h>
#include <utility>

namespace vornadel::test
{

namespace
{

constexpr std::uint8_t kDeviceToHost = 0x80;
constexpr std::uint8_t kGetConfiguration = 8;
constexpr std::size_t kSetupSize = 8;
constexpr int kSuperSpeed = 5;

void complete(UMockdevIoctlClient* client, long result, int error)
{
    umockdev_ioctl_client_complete(client, result, error);
}

/// The node always looks readable, so an immediate answer would make the host spin.
void completeLater(UMockdevIoctlClient* client, int error)
{
    using Waiting = std::pair<UMockdevIoctlClient*, int>;
    auto* waiting = new Waiting(UMOCKDEV_IOCTL_CLIENT(g_object_ref(client)), error);
    GSource* source = g_timeout_source_new(1);
    g_source_set_callback(
        source,
        [](gpointer data) -> gboolean {
            const auto& [waiter, code] = *static_cast<Waiting*>(data);
            complete(waiter, -1, code);
            return G_SOURCE_REMOVE;
        },
        waiting,
        [](gpointer data) {
            auto* done = static_cast<Waiting*>(data);
            g_object_unref(done->first);
            delete done;
        });
    g_source_attach(source, g_main_context_get_thread_default());
    g_source_unref(source);
}

/// A copy of a record in the host's memory. complete() writes it back.
template <typename Record>
class HostRecord
{
public:
    explicit HostRecord(UMockdevIoctlClient* client)
        : m_data(umockdev_ioctl_data_resolve(umockdev_ioctl_client_get_arg(client), 0,
                                             sizeof(Record), nullptr))
    {
    }
    HostRecord(const HostRecord&) = delete;
    HostRecord& operator=(const HostRecord&) = delete;
    ~HostRecord() { g_object_unref(m_data); }

    UMockdevIoctlData* data() { return m_data; }
    Record* operator->() { return reinterpret_cast<Record*>(m_data->data); }

private:
    UMockdevIoctlData* m_data;
};

std::uint16_t littleEndianWord(const guint8* bytes)
{
    return static_cast<std::uint16_t>(bytes[0] | (bytes[1] << 8));
}

WireRequest parseSetup(const guint8* setup)
{
    return {.bmRequestType = setup[0],
            .bRequest = setup[1],
            .wValue = littleEndianWord(setup + 2),
            .wIndex = littleEndianWord(setup + 4),
            .wLength = littleEndianWord(setup + 6)};
}

void trimToRequest(WireAnswer& answer, const WireRequest& request)
{
    answer.in.resize(std::min<std::size_t>(answer.in.size(), request.wLength));
}

int movedBytes(const WireAnswer& answer, const WireRequest& request)
{
    if (answer.error != 0) {
        return 0;
    }
    return (request.bmRequestType & kDeviceToHost) != 0 ? static_cast<int>(answer.in.size())
                                                        : request.wLength - answer.refused;
}

} // namespace

SimulatedNode::SimulatedNode(unsigned address, WireHandler handler)
    : m_address(address), m_handler(std::move(handler)), m_base(umockdev_ioctl_base_new())
{
    g_signal_connect(m_base, "handle-ioctl", G_CALLBACK(onIoctl), this);
    g_signal_connect(m_base, "client-connected", G_CALLBACK(onConnected), this);
}

SimulatedNode::~SimulatedNode()
{
    for (auto& [client, transfers] : m_transfers) {
        g_object_weak_unref(client, onClosed, this);
        for (const Transfer& transfer : transfers) {
            g_object_unref(transfer.buffer);
            g_object_unref(transfer.urb);
        }
    }
    g_signal_handlers_disconnect_by_data(m_base, this);
    g_object_unref(m_base);
}

void SimulatedNode::vanish()
{
    const std::lock_guard lock(m_mutex);
    m_gone = true;
    for (auto& [client, transfers] : m_transfers) {
        for (Transfer& transfer : transfers) {
            if (!transfer.done) {
                transfer.status = -ESHUTDOWN;
                transfer.done = true;
            }
        }
    }
}

std::vector<WireRequest> SimulatedNode::requests()
{
    const std::lock_guard lock(m_mutex);
    return m_requests;
}

bool SimulatedNode::waitForRequests(std::size_t count)
{
    std::unique_lock lock(m_mutex);
    return m_requestSeen.wait_for(lock, std::chrono::seconds(20),
                                  [this, count] { return m_requests.size() >= count; });
}

std::size_t SimulatedNode::ioctlCount()
{
    const std::lock_guard lock(m_mutex);
    return m_ioctlCount;
}

std::vector<unsigned long> SimulatedNode::refusedIoctls()
{
    const std::lock_guard lock(m_mutex);
    return m_refusedIoctls;
}

void SimulatedNode::onConnected(UMockdevIoctlBase* /*base*/, UMockdevIoctlClient* client,
                                gpointer self)
{
    auto* node = static_cast<SimulatedNode*>(self);
    const std::lock_guard lock(node->m_mutex);
    node->m_transfers[G_OBJECT(client)];
    g_object_weak_ref(G_OBJECT(client), onClosed, node); // the only notification of a close
}

void SimulatedNode::onClosed(gpointer self, GObject* client)
{
    auto* node = static_cast<SimulatedNode*>(self);
    const std::lock_guard lock(node->m_mutex);
    for (const Transfer& transfer : node->m_transfers[client]) {
        g_object_unref(transfer.buffer);
        g_object_unref(transfer.urb);
    }
    node->m_transfers.erase(client);
}

gboolean SimulatedNode::onIoctl(UMockdevIoctlBase* /*base*/, UMockdevIoctlClient* client,
                                gpointer self)
{
    static_cast<SimulatedNode*>(self)->handle(client);
    return TRUE;
}

void SimulatedNode::handle(UMockdevIoctlClient* client)
{
    const std::lock_guard lock(m_mutex);
    ++m_ioctlCount;
    const gulong request = umockdev_ioctl_client_get_request(client);
    const bool worksWithoutDevice = request == USBDEVFS_REAPURB ||
                                    request == USBDEVFS_REAPURBNDELAY ||
                                    request == USBDEVFS_DISCARDURB;
    if (m_gone && !worksWithoutDevice) {
        complete(client, -1, ENODEV);
        return;
    }
    switch (request) {
    case USBDEVFS_GET_CAPABILITIES:
        return answerCapabilities(client);
    case USBDEVFS_GET_SPEED:
        return complete(client, kSuperSpeed, 0);
    case USBDEVFS_CONNECTINFO:
        return answerConnectInfo(client);
    case USBDEVFS_CONTROL:
        return answerControl(client);
    case USBDEVFS_SUBMITURB:
        return submit(client);
    case USBDEVFS_DISCARDURB:
        return discard(client);
    case USBDEVFS_REAPURB:
    case USBDEVFS_REAPURBNDELAY:
        return reap(client);
    default:
        m_refusedIoctls.push_back(request);
        return complete(client, -1, ENOTTY);
    }
}

void SimulatedNode::answerCapabilities(UMockdevIoctlClient* client)
{
    HostRecord<std::uint32_t> capabilities(client);
    *capabilities.operator->() = USBDEVFS_CAP_ZERO_PACKET | USBDEVFS_CAP_NO_PACKET_SIZE_LIM |
                                 USBDEVFS_CAP_REAP_AFTER_DISCONNECT;
    complete(client, 0, 0);
}

void SimulatedNode::answerConnectInfo(UMockdevIoctlClient* client)
{
    HostRecord<usbdevfs_connectinfo> info(client);
    info->devnum = m_address;
    info->slow = 0;
    complete(client, 0, 0);
}

/// libusb asks this way for the active configuration of a node that it did not open itself, and for
/// nothing else.
void SimulatedNode::answerControl(UMockdevIoctlClient* client)
{
    HostRecord<usbdevfs_ctrltransfer> transfer(client);
    if (transfer->bRequestType != kDeviceToHost || transfer->bRequest != kGetConfiguration ||
        transfer->wLength < 1) {
        complete(client, -1, EPIPE);
        return;
    }
    UMockdevIoctlData* data = umockdev_ioctl_data_resolve(
        transfer.data(), offsetof(usbdevfs_ctrltransfer, data), transfer->wLength, nullptr);
    data->data[0] = 1;
    complete(client, 1, 0);
    g_object_unref(data);
}

void SimulatedNode::submit(UMockdevIoctlClient* client)
{
    UMockdevIoctlData* data = umockdev_ioctl_data_resolve(umockdev_ioctl_client_get_arg(client), 0,
                                                          sizeof(usbdevfs_urb), nullptr);
    const auto* urb = reinterpret_cast<const usbdevfs_urb*>(data->data);
    const auto size = static_cast<std::size_t>(urb->buffer_length);
    if (urb->type != USBDEVFS_URB_TYPE_CONTROL || size < kSetupSize) {
        complete(client, -1, EINVAL);
        g_object_unref(data);
        return;
    }
    UMockdevIoctlData* buffer =
        umockdev_ioctl_data_resolve(data, offsetof(usbdevfs_urb, buffer), size, nullptr);
    WireRequest request = parseSetup(buffer->data);
    if ((request.bmRequestType & kDeviceToHost) == 0) {
        request.out.assign(buffer->data + kSetupSize, buffer->data + size);
    }
    WireAnswer answer = ask(request);
    trimToRequest(answer, request);
    m_transfers[G_OBJECT(client)].push_back({.urb = data,
                                             .buffer = buffer,
                                             .in = answer.in,
                                             .status = answer.error,
                                             .length = movedBytes(answer, request),
                                             .done = !answer.never});
    complete(client, 0, 0);
}

void SimulatedNode::discard(UMockdevIoctlClient* client)
{
    gulong address = 0; // the argument is the address of the host's URB itself
    std::memcpy(&address, umockdev_ioctl_client_get_arg(client)->data, sizeof address);
    for (Transfer& transfer : m_transfers[G_OBJECT(client)]) {
        if (transfer.urb->client_addr == address && !transfer.done) {
            transfer.status = -ENOENT;
            transfer.done = true;
            complete(client, 0, 0);
            return;
        }
    }
    complete(client, -1, EINVAL);
}

void SimulatedNode::reap(UMockdevIoctlClient* client)
{
    Transfers& transfers = m_transfers[G_OBJECT(client)];
    const auto transfer = std::ranges::find_if(transfers, &Transfer::done);
    if (transfer == transfers.end()) {
        if (!m_gone && std::exchange(m_justReaped, false)) {
            complete(client, -1, EAGAIN); // the check that follows each reaped URB need not wait
        } else {
            completeLater(client, m_gone ? ENODEV : EAGAIN);
        }
        return;
    }
    auto* urb = reinterpret_cast<usbdevfs_urb*>(transfer->urb->data);
    urb->status = transfer->status;
    urb->actual_length = transfer->length;
    std::ranges::copy(transfer->in, transfer->buffer->data + kSetupSize);
    {
        HostRecord<void*> reaped(client);
        umockdev_ioctl_data_set_ptr(reaped.data(), 0, transfer->urb);
        complete(client, 0, 0);
    }
    g_object_unref(transfer->buffer);
    g_object_unref(transfer->urb);
    transfers.erase(transfer);
    m_justReaped = true;
}

WireAnswer SimulatedNode::ask(const WireRequest& request)
{
    m_requests.push_back(request);
    m_requestSeen.notify_all();
    return m_handler(request);
}

} // namespace vornadel::test
