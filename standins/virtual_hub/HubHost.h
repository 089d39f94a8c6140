#pragma once

#include "standins/virtual_hub/VirtualDevice.h"

#include <string>

namespace vornadel
{

/// Puts the halves of hubs onto a bus. Any thread, but one call at a time for each hub.
class HubHost
{
public:
    HubHost() = default;
    HubHost(const HubHost&) = delete;
    HubHost& operator=(const HubHost&) = delete;
    virtual ~HubHost() = default;

    /// Puts a half onto the bus. False and a sentence in `error` on failure.
    virtual bool attach(const VirtualDevice& device, std::string& error) = 0;
    /// Begins to take a half off the bus: from now on its transfers fail. Returns at once; no
    /// effect on a half that is not there.
    virtual void beginDetach(unsigned hub, HubSpeed half) = 0;
    /// Waits until nothing of the half is left on the bus. After beginDetach().
    virtual void finishDetach(unsigned hub, HubSpeed half) = 0;
    /// The bus id of the half; empty if it is not there.
    virtual std::string busId(unsigned hub, HubSpeed half) = 0;
};

} // namespace vornadel
