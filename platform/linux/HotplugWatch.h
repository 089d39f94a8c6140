#pragma once

#include "platform/Clock.h"
#include "platform/UsbBus.h"
#include "platform/linux/LibusbContext.h"
#include "platform/linux/UsbWatch.h"

#include <atomic>
#include <memory>
#include <thread>

namespace vornadel
{

/// Plug events from libusb. The listener runs only on the watch's thread.
class HotplugWatch final : public UsbWatch
{
public:
    /// Null if libusb has no hot-plug events here, or the system has no thread.
    static std::unique_ptr<HotplugWatch> start(const std::shared_ptr<LibusbContext>& context,
                                               Clock& clock, UsbBus::Listener listener);
    ~HotplugWatch() override;

private:
    HotplugWatch(std::shared_ptr<LibusbContext> context, Clock& clock, UsbBus::Listener listener,
                 int registration);
    void run();

    std::shared_ptr<LibusbContext> m_context;
    Clock& m_clock;
    UsbBus::Listener m_listener;
    int m_registration; // libusb's handle of the callback
    std::atomic<bool> m_ending = false;
    std::thread m_thread;
};

} // namespace vornadel
