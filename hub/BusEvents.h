#pragma once

#include "platform/Clock.h"
#include "platform/UsbBus.h"

#include <atomic>
#include <memory>

namespace vornadel
{

/// Counts the bus's events while it lives, and wakes who waits for the next one. Nobody else may
/// watch the bus meanwhile.
class BusEvents
{
public:
    BusEvents(UsbBus& bus, Clock& clock)
        : m_bus(bus), m_areReported(bus.watch([count = m_count, &clock](UsbEvent) {
              ++*count;
              clock.wake();
          }))
    {
    }
    BusEvents(const BusEvents&) = delete;
    BusEvents& operator=(const BusEvents&) = delete;
    ~BusEvents() { m_bus.unwatch(); }

    bool areReported() const { return m_areReported; }
    unsigned count() const { return *m_count; }

private:
    UsbBus& m_bus;
    std::shared_ptr<std::atomic<unsigned>> m_count = std::make_shared<std::atomic<unsigned>>();
    bool m_areReported;
};

} // namespace vornadel
