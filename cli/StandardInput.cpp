#include "cli/StandardInput.h"

#include "hub/HubTransport.h"

#include <cerrno>

#include <poll.h>
#include <unistd.h>

namespace vornadel
{

namespace
{

constexpr int kSignalPause = 100; // milliseconds from one look for a signal to the next

/// Waits for input or its end. False if the program is stopped before.
bool inputIsThere()
{
    pollfd input{STDIN_FILENO, POLLIN, 0};
    while (!Hub_IsAbandoned()) {
        const int ready = ::poll(&input, 1, kSignalPause);
        if (ready > 0 || (ready < 0 && errno != EINTR)) {
            return true; // after an error the read tells
        }
    }
    return false;
}

} // namespace

StandardInput::StandardInput() : std::istream(nullptr) { rdbuf(&m_buffer); }

StandardInput::Buffer::int_type StandardInput::Buffer::underflow()
{
    ssize_t size = -1;
    do {
        if (!inputIsThere()) {
            return traits_type::eof();
        }
        size = ::read(STDIN_FILENO, m_bytes.data(), m_bytes.size());
    } while (size < 0 && (errno == EINTR || errno == EAGAIN));
    if (size < 0) {
        throw std::ios_base::failure("standard input"); // the stream becomes bad
    }
    setg(m_bytes.data(), m_bytes.data(), m_bytes.data() + size);
    return size == 0 ? traits_type::eof() : traits_type::to_int_type(m_bytes[0]);
}

} // namespace vornadel
