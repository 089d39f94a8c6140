#pragma once

#include "platform/Clock.h"
#include "platform/UsbBus.h"
#include "platform/linux/LibusbContext.h"
#include "platform/linux/UsbWatch.h"

#include <memory>

namespace vornadel
{

/// Finds plug events by comparing the device list once a second. The listener runs on the clock's
/// thread. A device that leaves and returns between two polls is reported as both.
class PollWatch final : public UsbWatch
{
public:
    static constexpr Clock::Duration kInterval = std::chrono::seconds(1);

    /// Null if libusb gives no device list. `clock` must outlive the watch.
    static std::unique_ptr<PollWatch> start(std::shared_ptr<LibusbContext> context, Clock& clock,
                                            UsbBus::Listener listener);
    ~PollWatch() override;

private:
    class Poller; // shared with the clock's task, which cannot be cancelled

    explicit PollWatch(std::shared_ptr<Poller> poller);

    std::shared_ptr<Poller> m_poller;
};

} // namespace vornadel
