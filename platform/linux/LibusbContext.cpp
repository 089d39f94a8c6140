#include "platform/linux/LibusbContext.h"

#include <atomic>
#include <libusb.h>
#include <utility>

namespace vornadel
{

std::shared_ptr<LibusbContext> LibusbContext::create()
{
    libusb_context* context = nullptr;
    if (libusb_init(&context) != LIBUSB_SUCCESS) {
        return nullptr;
    }
    return std::shared_ptr<LibusbContext>(new LibusbContext(context));
}

LibusbContext::~LibusbContext() { libusb_exit(m_context); }

void LibusbContext::queueEvent(UsbEvent event)
{
    {
        const std::lock_guard lock(m_mutex);
        m_events.push_back(event);
    }
    wakeUp();
}

bool LibusbContext::waitForEvents(std::vector<UsbEvent>& events)
{
    // libusb checks the flag under its own locks before it waits. So a wake-up just before the call
    // is not lost, even if another thread's transfer handles the interruption.
    const int result = libusb_handle_events_completed(m_context, &m_woken);
    std::atomic_ref(m_woken).store(0);
    const std::lock_guard lock(m_mutex);
    events = std::exchange(m_events, {});
    return result == LIBUSB_SUCCESS || result == LIBUSB_ERROR_INTERRUPTED;
}

void LibusbContext::dropEvents()
{
    timeval now{};
    libusb_handle_events_timeout_completed(m_context, &now,
                                           nullptr); // libusb queues them until it is asked
    const std::lock_guard lock(m_mutex);
    m_events.clear();
}

void LibusbContext::wakeUp()
{
    std::atomic_ref(m_woken).store(1);
    libusb_interrupt_event_handler(m_context);
}

LibusbDeviceList::LibusbDeviceList(const LibusbContext& context)
{
    const ssize_t count = libusb_get_device_list(context.get(), &m_list);
    if (count < 0) {
        m_list = nullptr;
        return;
    }
    m_count = static_cast<std::size_t>(count);
}

LibusbDeviceList::LibusbDeviceList(LibusbDeviceList&& other) noexcept
    : m_list(std::exchange(other.m_list, nullptr)), m_count(std::exchange(other.m_count, 0))
{
}

LibusbDeviceList& LibusbDeviceList::operator=(LibusbDeviceList&& other) noexcept
{
    std::swap(m_list, other.m_list);
    std::swap(m_count, other.m_count);
    return *this;
}

void LibusbDeviceList::clear()
{
    if (m_list != nullptr) {
        libusb_free_device_list(m_list, 1);
    }
    m_list = nullptr;
    m_count = 0;
}

} // namespace vornadel
