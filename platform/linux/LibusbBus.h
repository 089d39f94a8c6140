#pragma once

#include "platform/Clock.h"
#include "platform/UsbBus.h"
#include "platform/linux/LibusbContext.h"
#include "platform/linux/UsbWatch.h"

#include <chrono>
#include <memory>
#include <mutex>

namespace vornadel
{

/// The system's USB by way of libusb 1.0. libusb is initialised at the first search() or watch()
/// and ends after the bus and everything it handed out. Make one per process, so that there is one
/// libusb context.
///
/// search() lists the devices in libusb's order. watch() and unwatch() belong to one thread; a
/// second watch() replaces the first. The listener runs on one thread of this bus's, or on the
/// clock's where it has to poll.
class LibusbBus final : public UsbBus
{
public:
    /// What ends a control transfer that the device does not answer. Long, because a flash erase is
    /// answered only when it is done.
    static constexpr std::chrono::milliseconds kControlTimeout = std::chrono::seconds(30);

    struct Options {
        std::chrono::milliseconds controlTimeout = kControlTimeout;
        bool forcePolling = false; ///< compare device lists even where libusb has hot-plug events
    };

    /// `clock` paces the polling and must outlive the bus.
    explicit LibusbBus(Clock& clock) : LibusbBus(clock, Options{}) {}
    LibusbBus(Clock& clock, Options options) : m_clock(clock), m_options(options) {}
    ~LibusbBus() override;

    std::unique_ptr<UsbSearch> search() override;
    bool watch(Listener listener) override;
    void unwatch() override;

private:
    std::shared_ptr<LibusbContext> context();

    Clock& m_clock;
    Options m_options;
    std::mutex m_mutex; // guards m_context
    std::shared_ptr<LibusbContext> m_context;
    std::unique_ptr<UsbWatch> m_watch;
};

} // namespace vornadel
