#pragma once

#include "hub/HubSession.h"

#include <atomic>
#include <cstdint>
#include <functional>
#include <span>

namespace vornadel
{

/// What a flow does after it has handed over the flash that it is about to change.
enum class BeforeChange {
    Go,
    UpToDate, ///< changes nothing, sends the hub to its firmware and succeeds
    NotSaved, ///< changes nothing, sends the hub back and fails with Cause::NotSaved
    Stop,     ///< changes nothing, sends the hub back and fails with Cause::Interrupted
};

/// How a flow goes about its work. The default is what the window does.
struct FlowOptions {
    /// Which hub. A strict flow also confirms its success with the hub: an update looks whether the
    /// hub came back with the image's version, an erase reads the flash, a read reads it twice.
    HubSession::Options hub = {};
    /// Set by another thread: the flow ends with Cause::Interrupted, but not between the begin of
    /// an erase and its last restart. A hub that the flow has restarted is sent back to its
    /// firmware. Null: never.
    const std::atomic<bool>* stop = nullptr;
    /// Called by a strict flow before it changes the flash, with the whole content, once two reads
    /// of it are equal. Empty: the flash is not read.
    std::function<BeforeChange(std::span<const std::uint8_t> flash)> beforeChange = {};
};

} // namespace vornadel
