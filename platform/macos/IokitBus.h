#pragma once

#include "platform/UsbBus.h"

#include <memory>

namespace vornadel
{

class PlugNotifications;

/// The system's USB through IOKit.
///
/// Only release() frees the list of a search. Without it, one small kernel object for each search
/// stays until the process ends.
///
/// watch() and unwatch() belong to one thread, the one whose run loop tells the events;
/// the listener runs on it. The system is asked for notifications once, by the first watch(), and
/// sends them until the process ends; unwatch() only stops listening. Of several buses the one that
/// watched last is told.
class IokitBus final : public UsbBus
{
public:
    IokitBus();
    ~IokitBus() override;

    std::unique_ptr<UsbSearch> search() override;
    bool watch(Listener listener) override;
    void unwatch() override;

private:
    std::unique_ptr<PlugNotifications> m_notifications; // from the first watch() on
};

} // namespace vornadel
