#include "standins/virtual_hub/DeviceLink.h"

#include <array>
#include <cerrno>
#include <poll.h>
#include <sys/eventfd.h>
#include <sys/socket.h>
#include <system_error>
#include <unistd.h>
#include <utility>

namespace vornadel
{

namespace
{

constexpr std::size_t kChunk = 65536;

bool wouldBlock() { return errno == EAGAIN || errno == EWOULDBLOCK || errno == EINTR; }

} // namespace

DeviceLink::DeviceLink(int socket, std::unique_ptr<Conversation> conversation, Clock& clock,
                       std::function<void()> ended)
    : m_socket(socket), m_wakeUp(eventfd(0, EFD_CLOEXEC | EFD_NONBLOCK)),
      m_conversation(std::move(conversation)), m_clock(clock), m_ended(std::move(ended))
{
    if (m_wakeUp < 0) {
        throw std::system_error(errno, std::generic_category());
    }
    try {
        m_thread = std::thread([this] { run(); });
    } catch (...) {
        close(m_wakeUp);
        throw;
    }
}

DeviceLink::~DeviceLink()
{
    leave();
    join();
    close(m_wakeUp);
}

void DeviceLink::leave()
{
    m_leaving = true;
    eventfd_write(m_wakeUp, 1);
}

void DeviceLink::join()
{
    const std::lock_guard lock(m_joining);
    if (m_thread.joinable()) {
        m_thread.join();
    }
}

void DeviceLink::run()
{
    bool goesOn = true;
    while (goesOn && !m_leaving) {
        goesOn = exchange();
    }
    if (goesOn) {
        sayGoodbye();
    }
    shutdown(m_socket, SHUT_RDWR);
    close(m_socket);
    if (m_ended) {
        m_ended();
    }
}

/// Waits for something to do and does it. False if the connection is over. Reads nothing while
/// answers are waiting to be sent, so the buffers stay small.
bool DeviceLink::exchange()
{
    const short wanted = m_out.empty() ? POLLIN : POLLOUT;
    std::array<pollfd, 2> events = {{{m_socket, wanted, 0}, {m_wakeUp, POLLIN, 0}}};
    if (poll(events.data(), events.size(), -1) < 0) {
        return errno == EINTR;
    }
    if (events[0].revents == 0) {
        return true;
    }
    return (m_out.empty() ? readSome() : writeSome()) && converse();
}

bool DeviceLink::readSome()
{
    const std::size_t before = m_in.size();
    m_in.resize(before + kChunk);
    const ssize_t count = recv(m_socket, m_in.data() + before, kChunk, MSG_DONTWAIT);
    m_in.resize(before + static_cast<std::size_t>(count > 0 ? count : 0));
    return count > 0 || (count < 0 && wouldBlock());
}

bool DeviceLink::writeSome()
{
    const ssize_t count = send(m_socket, m_out.data(), m_out.size(), MSG_DONTWAIT | MSG_NOSIGNAL);
    if (count > 0) {
        m_out.erase(m_out.begin(), m_out.begin() + count);
    }
    return count > 0 || wouldBlock();
}

/// Answers the messages received so far, as long as the answers can be sent. Stops at once if the
/// device has to leave; sayGoodbye() answers the rest. False if the connection is over.
bool DeviceLink::converse()
{
    std::size_t done = 0;
    bool goesOn = true;
    while (goesOn && m_out.empty() && (m_sayingGoodbye || !m_leaving)) {
        std::size_t taken = 0;
        const Conversation::Step step =
            m_conversation->step(ByteView(m_in).subspan(done), taken, m_out);
        done += taken;
        if (step == Conversation::Step::Waits) {
            break;
        }
        goesOn = step == Conversation::Step::Answered;
        if (!m_out.empty() && !writeSome()) {
            goesOn = false;
        }
    }
    m_in.erase(m_in.begin(), m_in.begin() + static_cast<std::ptrdiff_t>(done));
    return goesOn;
}

/// Answers everything with an error until the other side is silent, but only for a limited time.
void DeviceLink::sayGoodbye()
{
    constexpr int kMostRounds = 25;
    m_sayingGoodbye = true;
    m_conversation->leave(m_out);
    for (int round = 0; round < kMostRounds; ++round) {
        const std::size_t unsaid = m_out.size();
        if ((unsaid > 0 && !writeSome()) || !converse()) {
            return;
        }
        m_clock.sleep(kSilence);
        const std::size_t before = m_in.size();
        if (m_out.empty() && (!readSome() || (m_in.size() == before))) {
            return;
        }
    }
}

} // namespace vornadel
