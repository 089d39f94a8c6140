#pragma once

#include "platform/UsbBus.h"
#include "tests/support/PlacesInMemory.h"
#include "tests/support/SeenRequest.h"

#include <gtest/gtest.h>

#include <cstddef>
#include <functional>
#include <memory>
#include <mutex>
#include <string>
#include <utility>
#include <vector>

namespace vornadel::test
{

/// The result of a search step at one position of the bus.
struct ScriptedDevice {
    std::uint16_t vendorId = 0;
    std::uint16_t productId = 0;
    UsbOpenStatus openStatus = UsbOpenStatus::Opened;
    UsbSearch::Step step = UsbSearch::Step::Device;
    UsbPlace place = {};
    UsbTexts texts = {};
    std::vector<std::string> below = {};
    UsbFailure failure = UsbFailure::Other; ///< of its requests
};

/// A scripted bus that records its events. Set the script before the threads start. Devices may
/// outlive their bus.
class ScriptedBus final : public UsbBus
{
public:
    std::vector<ScriptedDevice> attached; ///< the devices for the next search
    bool givesList = true;
    bool saysItWatches = false; ///< reports an event only by report()

    ScriptedBus() = default;

    void onSearch(std::function<void()> hook) { m_script->onSearch = std::move(hook); }
    void onOpen(std::function<void()> hook) { m_script->onOpen = std::move(hook); }
    void onClose(std::function<void()> hook) { m_script->onClose = std::move(hook); }
    /// Answers the requests; if unset, every request succeeds without changing its data.
    void onControl(std::function<std::uint32_t(ControlRequest&)> hook)
    {
        m_script->onControl = std::move(hook);
    }

    /// "search", "end of list" (released), and "open 0", "close 0", "drop 0" with the device's
    /// position.
    std::vector<std::string> events() const
    {
        const std::lock_guard lock(m_script->mutex);
        return m_script->events;
    }

    std::vector<SeenRequest> requests() const
    {
        const std::lock_guard lock(m_script->mutex);
        return m_script->requests;
    }

    /// Drops the hooks, and with them what they refer to.
    void forgetHooks()
    {
        m_script->onSearch = nullptr;
        m_script->onOpen = nullptr;
        m_script->onClose = nullptr;
        m_script->onControl = nullptr;
    }

    /// Clears the record.
    void forget()
    {
        const std::lock_guard lock(m_script->mutex);
        m_script->events.clear();
        m_script->requests.clear();
    }

    std::unique_ptr<UsbSearch> search() override
    {
        m_script->note("search");
        if (m_script->onSearch) {
            m_script->onSearch();
        }
        return givesList ? std::make_unique<Search>(m_script, attached) : nullptr;
    }

    bool watch(Listener listener) override
    {
        m_listener = std::move(listener);
        return saysItWatches;
    }
    void unwatch() override { m_listener = nullptr; }

    /// Reports an attach; false if nobody watches.
    bool report()
    {
        if (m_listener) {
            m_listener(UsbEvent::Attached);
        }
        return m_listener != nullptr;
    }

    PlaceLocks& placeLocks() override { return m_locks; }

private:
    struct Script {
        std::mutex mutex;
        std::vector<std::string> events;
        std::vector<SeenRequest> requests;
        std::function<void()> onSearch;
        std::function<void()> onOpen;
        std::function<void()> onClose;
        std::function<std::uint32_t(ControlRequest&)> onControl;

        void note(std::string event)
        {
            const std::lock_guard lock(mutex);
            events.push_back(std::move(event));
        }

        void writeDown(const ControlRequest& request)
        {
            const std::lock_guard lock(mutex);
            requests.push_back(seenOf(request));
        }
    };

    class Device final : public UsbDevice
    {
    public:
        Device(std::shared_ptr<Script> script, const ScriptedDevice& device, std::size_t place)
            : m_script(std::move(script)), m_device(device), m_place(std::to_string(place))
        {
        }
        ~Device() override { m_script->note("drop " + m_place); }

        std::uint16_t vendorId() const override { return m_device.vendorId; }
        std::uint16_t productId() const override { return m_device.productId; }

        UsbPlace place() const override { return m_device.place; }
        UsbTexts texts() const override { return m_device.texts; }
        std::string containerId() override { return {}; }
        std::vector<std::string> attachedBelow() const override { return m_device.below; }

        UsbOpenStatus open() override
        {
            m_script->note("open " + m_place);
            if (m_script->onOpen) {
                m_script->onOpen();
            }
            m_open = m_device.openStatus == UsbOpenStatus::Opened;
            return m_device.openStatus;
        }

        std::uint32_t control(ControlRequest& request) override
        {
            EXPECT_TRUE(m_open) << "a request on a device that is not open";
            m_script->writeDown(request);
            return m_script->onControl ? m_script->onControl(request) : 0;
        }

        UsbFailure failureOf(std::uint32_t /*status*/) const override { return m_device.failure; }

        void close() override
        {
            m_script->note("close " + m_place);
            if (m_script->onClose) {
                m_script->onClose();
            }
            m_open = false;
        }

    private:
        std::shared_ptr<Script> m_script;
        ScriptedDevice m_device;
        std::string m_place;
        bool m_open = false;
    };

    class Search final : public UsbSearch
    {
    public:
        Search(std::shared_ptr<Script> script, std::vector<ScriptedDevice> devices)
            : m_script(std::move(script)), m_devices(std::move(devices))
        {
        }

        Step next(std::unique_ptr<UsbDevice>& device) override
        {
            device.reset();
            if (m_released || m_place == m_devices.size()) {
                return Step::End;
            }
            const ScriptedDevice& met = m_devices[m_place];
            if (met.step == Step::Device) {
                device = std::make_unique<Device>(m_script, met, m_place);
            }
            ++m_place;
            return met.step;
        }

        void release() override
        {
            m_released = true;
            m_script->note("end of list");
        }

    private:
        std::shared_ptr<Script> m_script;
        std::vector<ScriptedDevice> m_devices;
        std::size_t m_place = 0;
        bool m_released = false;
    };

    PlacesInMemory m_locks;
    Listener m_listener;
    std::shared_ptr<Script> m_script = std::make_shared<Script>();
};

} // namespace vornadel::test
