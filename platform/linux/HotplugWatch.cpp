#include "platform/linux/HotplugWatch.h"

#include <libusb.h>
#include <system_error>
#include <utility>
#include <vector>

namespace vornadel
{

namespace
{

constexpr Clock::Duration kPauseAfterFailure = std::chrono::milliseconds(100);

int LIBUSB_CALL onHotplug(libusb_context* /*libusb*/, libusb_device* /*device*/,
                          libusb_hotplug_event event, void* context)
{
    static_cast<LibusbContext*>(context)->queueEvent(
        event == LIBUSB_HOTPLUG_EVENT_DEVICE_ARRIVED ? UsbEvent::Attached : UsbEvent::Detached);
    return 0; // stays registered
}

} // namespace

std::unique_ptr<HotplugWatch> HotplugWatch::start(const std::shared_ptr<LibusbContext>& context,
                                                  Clock& clock, UsbBus::Listener listener)
{
    if (libusb_has_capability(LIBUSB_CAP_HAS_HOTPLUG) == 0) {
        return nullptr;
    }
    context->dropEvents();
    libusb_hotplug_callback_handle registration = 0;
    const int result = libusb_hotplug_register_callback(
        context->get(), LIBUSB_HOTPLUG_EVENT_DEVICE_ARRIVED | LIBUSB_HOTPLUG_EVENT_DEVICE_LEFT,
        LIBUSB_HOTPLUG_NO_FLAGS, LIBUSB_HOTPLUG_MATCH_ANY, LIBUSB_HOTPLUG_MATCH_ANY,
        LIBUSB_HOTPLUG_MATCH_ANY, onHotplug, context.get(), &registration);
    if (result != LIBUSB_SUCCESS) {
        return nullptr;
    }
    try {
        return std::unique_ptr<HotplugWatch>(
            new HotplugWatch(context, clock, std::move(listener), registration));
    } catch (const std::system_error&) { // no thread available
        libusb_hotplug_deregister_callback(context->get(), registration);
        return nullptr;
    }
}

HotplugWatch::HotplugWatch(std::shared_ptr<LibusbContext> context, Clock& clock,
                           UsbBus::Listener listener, int registration)
    : m_context(std::move(context)), m_clock(clock), m_listener(std::move(listener)),
      m_registration(registration), m_thread([this] { run(); })
{
}

HotplugWatch::~HotplugWatch()
{
    libusb_hotplug_deregister_callback(m_context->get(), m_registration);
    m_ending = true;
    m_context->wakeUp();
    m_thread.join();
}

void HotplugWatch::run()
{
    std::vector<UsbEvent> events;
    while (!m_ending) {
        if (!m_context->waitForEvents(events)) {
            m_clock.sleep(kPauseAfterFailure); // no busy loop if libusb keeps failing at once
        }
        for (const UsbEvent event : events) {
            if (!m_ending) {
                m_listener(event);
            }
        }
    }
}

} // namespace vornadel
