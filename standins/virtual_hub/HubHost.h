#pragma once

#include "standins/virtual_hub/VirtualDevice.h"

#include <string>

namespace vornadel
{

/// Where the halves of the hubs are put onto a bus. Any thread, but one call at a time for each
/// hub.
class HubHost
{
public:
    HubHost() = default;
    HubHost(const HubHost&) = delete;
    HubHost& operator=(const HubHost&) = delete;
    virtual ~HubHost() = default;

    /// Puts a half onto the bus. False and a sentence in `error` when that cannot be done.
    virtual bool attach(const VirtualDevice& device, std::string& error) = 0;
    /// Begins to take a half off the bus: its transfers are answered with an error from now on.
    /// Returns at once; harmless for a half that is not there.
    virtual void beginDetach(unsigned hub, HubSpeed half) = 0;
    /// Waits until nothing of the half is left on the bus. After beginDetach().
    virtual void finishDetach(unsigned hub, HubSpeed half) = 0;
    /// The bus id under which the half is found; empty when it is not there.
    virtual std::string busId(unsigned hub, HubSpeed half) = 0;
};

} // namespace vornadel
