#pragma once

#include <atomic>

namespace vornadel
{

/// The devices of a notification that nobody has looked at yet. next() takes one; false when none is left.
class UsbServices
{
public:
    void add() { m_waiting.fetch_add(1); }
    bool next();

private:
    std::atomic<int> m_waiting{0};
};

/// The two notification callbacks, on the main thread. The reference is not used; the services are taken and
/// not looked at: any USB device, hub or not, has the detection run.
void DeviceAddedCallback(void* reference, UsbServices& services);
void DeviceRemovedCallback(void* reference, UsbServices& services);

} // namespace vornadel
