#pragma once

#include "hub/HubSession.h"

#include <atomic>

namespace vornadel
{

/// How a flow goes about its work. The default is what the window does.
struct FlowOptions {
    /// Which hub. A strict flow also confirms its success with the hub: an update looks whether the
    /// hub came back with the image's version, an erase reads the flash, a read reads it twice.
    HubSession::Options hub = {};
    /// Set by another thread: the flow ends with Cause::Interrupted, but not between the begin of
    /// an erase and its last restart. A hub that the flow has restarted is sent back to its
    /// firmware. Null: never.
    const std::atomic<bool>* stop = nullptr;
};

} // namespace vornadel
