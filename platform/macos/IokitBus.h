#pragma once

#include "platform/UsbBus.h"
#include "platform/posix/LockFiles.h"

#include <memory>
#include <string>
#include <vector>

namespace vornadel
{

class PlugNotifications;

/// The system's USB through IOKit.
///
/// Only release() frees the list of a search. Without it, one small kernel object for each search
/// stays until the process ends.
///
/// Call watch() and unwatch() on one thread; its run loop delivers the events, and the listener
/// runs on it. The first watch() registers for notifications, which the system sends until the
/// process ends; unwatch() only stops listening. Of several buses, the last to watch gets them.
class IokitBus final : public UsbBus
{
public:
    /// `lockFolders`: as LockFiles wants them.
    explicit IokitBus(const std::vector<std::string>& lockFolders = {"/private/tmp", "/tmp"});
    ~IokitBus() override;

    std::unique_ptr<UsbSearch> search() override;
    bool watch(Listener listener) override;
    void unwatch() override;
    PlaceLocks& placeLocks() override { return m_locks; }

private:
    LockFiles m_locks;
    std::unique_ptr<PlugNotifications> m_notifications; // from the first watch() on
};

} // namespace vornadel
