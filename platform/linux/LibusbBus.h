#pragma once

#include "platform/Clock.h"
#include "platform/UsbBus.h"
#include "platform/linux/LibusbContext.h"
#include "platform/linux/UsbWatch.h"
#include "platform/posix/LockFiles.h"

#include <chrono>
#include <memory>
#include <mutex>
#include <string>
#include <utility>
#include <vector>

namespace vornadel
{

/// The system's USB through libusb 1.0. The first search() or watch() initialises libusb; libusb
/// ends after the bus and everything that the bus handed out. Create one per process, so that there
/// is one libusb context.
///
/// search() lists the devices in libusb's order. Call watch() and unwatch() on one thread; a second
/// watch() replaces the first. The listener runs on a thread of the bus, or on the clock's thread
/// where it has to poll.
class LibusbBus final : public UsbBus
{
public:
    /// Time-out of a control transfer. It is long, because a hub answers a flash erase only when it
    /// is done.
    static constexpr std::chrono::milliseconds kControlTimeout = std::chrono::seconds(30);

    struct Options {
        std::chrono::milliseconds controlTimeout = kControlTimeout;
        bool forcePolling = false; ///< compare device lists even where libusb has hot-plug events
        std::vector<std::string> lockFolders{"/run/lock", "/tmp"}; ///< as LockFiles wants them
    };

    /// `clock` paces the polling and must outlive the bus.
    explicit LibusbBus(Clock& clock) : LibusbBus(clock, Options{}) {}
    LibusbBus(Clock& clock, Options options)
        : m_clock(clock), m_options(std::move(options)), m_locks(m_options.lockFolders)
    {
    }
    ~LibusbBus() override;

    std::unique_ptr<UsbSearch> search() override;
    bool watch(Listener listener) override;
    void unwatch() override;
    PlaceLocks& placeLocks() override { return m_locks; }

private:
    std::shared_ptr<LibusbContext> context();

    Clock& m_clock;
    Options m_options;
    LockFiles m_locks;
    std::mutex m_mutex; // guards m_context
    std::shared_ptr<LibusbContext> m_context;
    std::unique_ptr<UsbWatch> m_watch;
};

} // namespace vornadel
