#include "platform/linux/PollWatch.h"

#include <algorithm>
#include <mutex>
#include <utility>

namespace vornadel
{

namespace
{

/// How many devices of `list` `other` lacks. Both hold references, so addresses are unique.
std::ptrdiff_t countMissing(const LibusbDeviceList& list, const LibusbDeviceList& other)
{
    return std::ranges::count_if(list.devices(), [&other](libusb_device* device) {
        return std::ranges::find(other.devices(), device) == other.devices().end();
    });
}

} // namespace

class PollWatch::Poller : public std::enable_shared_from_this<PollWatch::Poller>
{
public:
    Poller(std::shared_ptr<LibusbContext> context, Clock& clock, UsbBus::Listener listener)
        : m_context(std::move(context)), m_clock(clock), m_listener(std::move(listener)),
          m_known(*m_context)
    {
    }

    bool hasList() const { return m_known.valid(); }

    void lookLater()
    {
        m_clock.after(kInterval, [weak = weak_from_this()] {
            if (const std::shared_ptr<Poller> poller = weak.lock()) {
                poller->look();
            }
        });
    }

    void stop()
    {
        const std::lock_guard lock(m_mutex);
        m_stopped = true;
    }

private:
    void look()
    {
        const std::lock_guard lock(m_mutex); // stop() waits for the listener by this
        if (m_stopped) {
            return;
        }
        LibusbDeviceList current(*m_context);
        if (current.valid()) {
            report(countMissing(m_known, current), UsbEvent::Detached);
            report(countMissing(current, m_known), UsbEvent::Attached);
            m_known = std::move(current);
        }
        lookLater();
    }

    void report(std::ptrdiff_t count, UsbEvent event)
    {
        for (; count > 0; --count) {
            m_listener(event);
        }
    }

    std::shared_ptr<LibusbContext> m_context;
    Clock& m_clock;
    UsbBus::Listener m_listener;
    std::mutex m_mutex; // guards what follows
    LibusbDeviceList m_known;
    bool m_stopped = false;
};

std::unique_ptr<PollWatch> PollWatch::start(std::shared_ptr<LibusbContext> context, Clock& clock,
                                            UsbBus::Listener listener)
{
    auto poller = std::make_shared<Poller>(std::move(context), clock, std::move(listener));
    if (!poller->hasList()) {
        return nullptr;
    }
    poller->lookLater();
    return std::unique_ptr<PollWatch>(new PollWatch(std::move(poller)));
}

PollWatch::PollWatch(std::shared_ptr<Poller> poller) : m_poller(std::move(poller)) {}

PollWatch::~PollWatch() { m_poller->stop(); }

} // namespace vornadel
