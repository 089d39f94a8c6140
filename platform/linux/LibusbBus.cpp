#include "platform/linux/LibusbBus.h"

#include "platform/linux/HotplugWatch.h"
#include "platform/linux/LibusbDevice.h"
#include "platform/linux/PollWatch.h"

#include <cstddef>
#include <utility>

namespace vornadel
{

namespace
{

class LibusbSearch final : public UsbSearch
{
public:
    LibusbSearch(std::shared_ptr<LibusbContext> context, LibusbDeviceList list,
                 std::chrono::milliseconds controlTimeout)
        : m_context(std::move(context)), m_list(std::move(list)), m_controlTimeout(controlTimeout)
    {
    }

    Step next(std::unique_ptr<UsbDevice>& device) override
    {
        if (m_next >= m_list.devices().size()) {
            device.reset();
            return Step::End;
        }
        device =
            std::make_unique<LibusbDevice>(m_context, m_list.devices()[m_next], m_controlTimeout);
        ++m_next;
        return Step::Device;
    }

    void release() override { m_list.clear(); }

private:
    std::shared_ptr<LibusbContext> m_context; // before the list, which needs it to the end
    LibusbDeviceList m_list;
    std::size_t m_next = 0;
    std::chrono::milliseconds m_controlTimeout;
};

} // namespace

LibusbBus::~LibusbBus() { LibusbBus::unwatch(); }

std::unique_ptr<UsbSearch> LibusbBus::search()
{
    std::shared_ptr<LibusbContext> libusb = context();
    if (!libusb) {
        return nullptr;
    }
    LibusbDeviceList list(*libusb);
    if (!list.valid()) {
        return nullptr;
    }
    return std::make_unique<LibusbSearch>(std::move(libusb), std::move(list),
                                          m_options.controlTimeout);
}

bool LibusbBus::watch(Listener listener)
{
    unwatch();
    const std::shared_ptr<LibusbContext> libusb = context();
    if (!libusb) {
        return false;
    }
    if (!m_options.forcePolling) {
        m_watch = HotplugWatch::start(libusb, m_clock, listener);
    }
    if (!m_watch) {
        m_watch = PollWatch::start(libusb, m_clock, std::move(listener));
    }
    return m_watch != nullptr;
}

void LibusbBus::unwatch() { m_watch.reset(); }

std::shared_ptr<LibusbContext> LibusbBus::context()
{
    const std::lock_guard lock(m_mutex);
    if (!m_context) {
        m_context = LibusbContext::create();
    }
    return m_context;
}

} // namespace vornadel
