#pragma once

#include <chrono>
#include <condition_variable>
#include <cstddef>
#include <cstdint>
#include <deque>
#include <functional>
#include <map>
#include <mutex>
#include <umockdev.h>
#include <vector>

namespace vornadel::test
{

/// A control request as the device sees it; the words are native.
struct WireRequest {
    std::uint8_t bmRequestType = 0;
    std::uint8_t bRequest = 0;
    std::uint16_t wValue = 0;
    std::uint16_t wIndex = 0;
    std::uint16_t wLength = 0;
    std::vector<std::uint8_t> out{}; ///< the data stage of a host-to-device request

    bool operator==(const WireRequest&) const = default;
};

/// The device's response to a request.
struct WireAnswer {
    int error = 0; ///< 0, or a negative errno as the kernel reports it; -EPIPE is a stall
    std::vector<std::uint8_t> in{}; ///< data stage to the host; what exceeds wLength is cut
    std::uint16_t refused = 0;      ///< bytes at the end of an OUT data stage that are not accepted
    bool never = false;             ///< no answer at all
};

/// Runs on the testbed's thread and must not block.
using WireHandler = std::function<WireAnswer(const WireRequest&)>;

/// One enumeration of a device and its node: handles libusb's ioctls like usbfs. The node must
/// outlive every open file on it.
class SimulatedNode
{
public:
    SimulatedNode(unsigned address, WireHandler handler);
    SimulatedNode(const SimulatedNode&) = delete;
    SimulatedNode& operator=(const SimulatedNode&) = delete;
    ~SimulatedNode();

    UMockdevIoctlBase* base() const { return m_base; }

    /// The device leaves the bus: transfers in flight end, later ioctls fail with ENODEV.
    void vanish();

    std::vector<WireRequest> requests();

    /// Waits up to twenty seconds until the device has seen that many requests; false on time-out.
    bool waitForRequests(std::size_t count);

    /// The number of ioctls so far. Listing makes none, opening does.
    std::size_t ioctlCount();

    /// The ioctls that no vendor request to the device needs, such as claiming an interface or
    /// detaching a driver. They all fail.
    std::vector<unsigned long> refusedIoctls();

private:
    struct Transfer {
        UMockdevIoctlData* urb;    // of the host, held until it is reaped
        UMockdevIoctlData* buffer; // setup packet and data stage
        std::vector<std::uint8_t> in;
        int status = 0;
        int length = 0;
        bool done = false;
    };
    using Transfers = std::deque<Transfer>;

    static void onConnected(UMockdevIoctlBase* base, UMockdevIoctlClient* client, gpointer self);
    static gboolean onIoctl(UMockdevIoctlBase* base, UMockdevIoctlClient* client, gpointer self);
    static void onClosed(gpointer self, GObject* client);

    void handle(UMockdevIoctlClient* client);
    void answerCapabilities(UMockdevIoctlClient* client);
    void answerConnectInfo(UMockdevIoctlClient* client);
    void answerControl(UMockdevIoctlClient* client);
    void submit(UMockdevIoctlClient* client);
    void discard(UMockdevIoctlClient* client);
    void reap(UMockdevIoctlClient* client);
    WireAnswer ask(const WireRequest& request);

    unsigned m_address;
    WireHandler m_handler;
    UMockdevIoctlBase* m_base;
    std::mutex m_mutex; // guards what follows
    std::condition_variable m_requestSeen;
    bool m_gone = false;
    bool m_justReaped = false;
    std::size_t m_ioctlCount = 0;
    std::vector<WireRequest> m_requests;
    std::vector<unsigned long> m_refusedIoctls;
    std::map<GObject*, Transfers> m_transfers; // per open file
};

} // namespace vornadel::test
