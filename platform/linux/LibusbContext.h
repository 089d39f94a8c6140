#pragma once

#include "platform/UsbBus.h"

#include <cstddef>
#include <memory>
#include <mutex>
#include <span>
#include <vector>

struct libusb_context;
struct libusb_device;

namespace vornadel
{

/// One initialised libusb. Bus, searches and devices share it, so libusb ends after the last of
/// them, in whatever order they are destroyed.
///
/// It also queues the plug events from libusb for the watch. libusb may call back on any thread
/// that handles its events, even inside a control transfer, and even while the callback is being
/// deregistered. So the queue lives as long as libusb.
class LibusbContext
{
public:
    /// Null if libusb cannot be initialised, for example without a USB file system.
    static std::shared_ptr<LibusbContext> create();

    LibusbContext(const LibusbContext&) = delete;
    LibusbContext& operator=(const LibusbContext&) = delete;
    ~LibusbContext();

    libusb_context* get() const { return m_context; }

    /// Queues a plug event and wakes waitForEvents(). Any thread.
    void queueEvent(UsbEvent event);

    /// Handles libusb's events until a plug event is queued or wakeUp() is called, then takes the
    /// queue. False if libusb failed to wait. One thread at a time.
    bool waitForEvents(std::vector<UsbEvent>& events);

    /// Drops the plug events from before the watch began. Must not run during waitForEvents().
    void dropEvents();

    /// Makes a running waitForEvents(), or the next one, return. Any thread.
    void wakeUp();

private:
    explicit LibusbContext(libusb_context* context) : m_context(context) {}

    libusb_context* m_context;
    std::mutex m_mutex; // guards m_events
    std::vector<UsbEvent> m_events;
    int m_woken = 0; // libusb wants an int*; our code accesses it through atomic_ref only
};

/// libusb's list of the attached devices, with a reference on each of them.
class LibusbDeviceList
{
public:
    LibusbDeviceList() = default; ///< empty and not valid
    explicit LibusbDeviceList(const LibusbContext& context);
    LibusbDeviceList(LibusbDeviceList&& other) noexcept;
    LibusbDeviceList& operator=(LibusbDeviceList&& other) noexcept;
    ~LibusbDeviceList() { clear(); }

    bool valid() const
    {
        return m_list != nullptr;
    } ///< false if libusb gave no list, and after clear()
    std::span<libusb_device* const> devices() const { return {m_list, m_count}; }
    void clear(); ///< frees the list and its references

private:
    libusb_device** m_list = nullptr;
    std::size_t m_count = 0;
};

} // namespace vornadel
