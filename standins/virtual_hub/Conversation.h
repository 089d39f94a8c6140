#pragma once

#include "standins/virtual_hub/ByteOrder.h"

#include <cstddef>

namespace vornadel
{

/// The server's side of a connection, without the connection: bytes in, bytes out. Not thread-safe.
class Conversation
{
public:
    enum class Step {
        Waits,    ///< what there is holds no whole message
        Answered, ///< one message was dealt with; there may be more
        Ends ///< the other side does not keep to the protocol, or has nothing more to ask; after
             ///< what is in `out`
    };

    /// No message is longer.
    static constexpr std::size_t kLongestMessage = 48 + 0xFFFF;

    Conversation() = default;
    Conversation(const Conversation&) = delete;
    Conversation& operator=(const Conversation&) = delete;
    virtual ~Conversation() = default;

    /// Deals with at most one message at the beginning of `in`: says in `taken` how many bytes it
    /// was and appends the answer to `out`, at most 48 bytes and a data stage of 64 kB for a
    /// transfer.
    virtual Step step(ByteView in, std::size_t& taken, ByteBuffer& out) = 0;

    /// The device leaves the bus: what is pending is answered with an error, and so will be what is
    /// still to come.
    virtual void leave(ByteBuffer& out) = 0;
};

} // namespace vornadel
