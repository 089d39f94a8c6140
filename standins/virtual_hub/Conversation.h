#pragma once

#include "standins/virtual_hub/ByteOrder.h"

#include <cstddef>

namespace vornadel
{

/// The server's side of the protocol, without the connection: bytes in, bytes out. Not thread-safe.
class Conversation
{
public:
    enum class Step {
        Waits,    ///< no complete message yet
        Answered, ///< one message was handled; there may be more
        Ends      ///< protocol error, or nothing more to ask; send `out`, then close
    };

    /// The longest possible message.
    static constexpr std::size_t kLongestMessage = 48 + 0xFFFF;

    Conversation() = default;
    Conversation(const Conversation&) = delete;
    Conversation& operator=(const Conversation&) = delete;
    virtual ~Conversation() = default;

    /// Handles at most one message at the beginning of `in`. Sets `taken` to its length and appends
    /// the answer to `out`; for a transfer, that is at most 48 bytes and a data stage of 64 kB.
    virtual Step step(ByteView in, std::size_t& taken, ByteBuffer& out) = 0;

    /// The device leaves the bus: pending and future transfers are answered with an error.
    virtual void leave(ByteBuffer& out) = 0;
};

} // namespace vornadel
