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

/// A conversation over a stream socket, on a thread of its own. leave() and join() may be called
/// from any thread.
class DeviceLink
{
public:
    /// How long nothing may come from the other side before a device that leaves hangs up: a
    /// transfer that is under way then would not be answered, and its sender would wait for it in
    /// vain.
    static constexpr Clock::Duration kSilence = std::chrono::milliseconds(20);

    /// Takes the socket over. `ended` is called on the link's thread, at its end, when the socket
    /// is closed. Throws std::system_error when there is no thread or no file to be had; the socket
    /// stays the caller's then.
    DeviceLink(int socket, std::unique_ptr<Conversation> conversation, Clock& clock,
               std::function<void()> ended = {});
    DeviceLink(const DeviceLink&) = delete;
    DeviceLink& operator=(const DeviceLink&) = delete;
    ~DeviceLink(); ///< as leave() and join()

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
    const int m_wakeUp; // becomes readable when the device is to leave
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
