#pragma once

#include "platform/Clock.h"
#include "standins/virtual_hub/Conversation.h"

#include <atomic>
#include <functional>
#include <memory>
#include <mutex>
#include <thread>

namespace vornadel
{

/// A conversation over a stream socket, on its own thread. leave() and join() may be called from
/// any thread.
class DeviceLink
{
public:
    /// A leaving device closes the connection after this time of silence. Closing earlier would
    /// leave a transfer on its way unanswered, and its sender would wait for ever.
    static constexpr Clock::Duration kSilence = std::chrono::milliseconds(20);

    /// Takes over the socket. `ended` is called at the end of the link's thread, after the socket
    /// has been closed. Throws std::system_error if there is no thread or file descriptor; then the
    /// caller keeps the socket.
    DeviceLink(int socket, std::unique_ptr<Conversation> conversation, Clock& clock,
               std::function<void()> ended = {});
    DeviceLink(const DeviceLink&) = delete;
    DeviceLink& operator=(const DeviceLink&) = delete;
    ~DeviceLink(); ///< leave() and join()

    void leave(); ///< the device leaves the bus; returns at once
    void join();  ///< waits until the socket is closed. Not on the link's own thread

private:
    void run();
    bool exchange();
    bool readSome();
    bool writeSome();
    bool converse();
    void sayGoodbye();

    const int m_socket;
    const int m_wakeUp; // becomes readable when the device has to leave
    const std::unique_ptr<Conversation> m_conversation;
    Clock& m_clock;
    const std::function<void()> m_ended;
    ByteBuffer m_in;
    ByteBuffer m_out;
    bool m_sayingGoodbye = false;
    std::atomic<bool> m_leaving = false;
    std::mutex m_joining;
    std::thread m_thread;
};

} // namespace vornadel
