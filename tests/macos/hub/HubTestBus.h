#pragma once

#include "platform/macos/IokitBus.h"
#include "tests/fake_macos/FakeMacos.h"
#include "tests/macos/RequestOf.h"
#include "tests/support/ScriptedBus.h"
#include "tests/support/SeenRequest.h"

#include <gmock/gmock.h>
#include <gtest/gtest.h>

#include <functional>
#include <memory>
#include <mutex>
#include <string>
#include <utility>
#include <vector>

namespace vornadel::test
{

/// The bus that the hub's tests work on, as ScriptedBus is one: with IOKit's back end between the
/// script and the hub room. What happens on it is read off the platform's calls.
class HubTestBus final : public UsbBus
{
public:
    std::vector<ScriptedDevice> attached; ///< as the next search meets them
    bool givesList = true;

    HubTestBus() = default;
    ~HubTestBus() override { EXPECT_THAT(m_mac.misuse(), testing::IsEmpty()); }

    void onSearch(std::function<void()> hook) { m_onSearch = std::move(hook); }
    void onOpen(std::function<void()> hook) { m_script->onOpen = std::move(hook); }
    void onClose(std::function<void()> hook) { m_script->onClose = std::move(hook); }
    void onControl(std::function<std::uint32_t(ControlRequest&)> hook)
    {
        m_script->onControl = std::move(hook);
    }

    std::vector<std::string> events() const
    {
        std::vector<std::string> events;
        for (const std::string& call : m_mac.calls()) {
            const std::string event = eventOf(call);
            if (!event.empty()) {
                events.push_back(event);
            }
        }
        return events;
    }

    std::vector<SeenRequest> requests() const
    {
        const std::lock_guard lock(m_script->mutex);
        return m_script->requests;
    }

    void forget()
    {
        m_mac.forgetCalls();
        const std::lock_guard lock(m_script->mutex);
        m_script->requests.clear();
    }

    std::unique_ptr<UsbSearch> search() override
    {
        if (m_onSearch) {
            m_onSearch();
        }
        const std::lock_guard lock(m_searching); // another search would exchange the devices under
                                                 // this one
        m_mac.use();
        m_mac.matchingResult = givesList ? kIOReturnSuccess : kIOReturnError;
        std::vector<MacDevice> devices;
        for (const ScriptedDevice& device : attached) {
            devices.push_back(macDevice(device));
        }
        m_mac.attach(std::move(devices));
        return m_bus.search();
    }

    bool watch(Listener) override { return false; }
    void unwatch() override {}

private:
    /// Devices may outlive their bus, and their script with them.
    struct Script {
        std::mutex mutex;
        std::vector<SeenRequest> requests;
        std::function<void()> onOpen;
        std::function<void()> onClose;
        std::function<std::uint32_t(ControlRequest&)> onControl;
    };

    static std::string eventOf(const std::string& call)
    {
        if (call.starts_with("IOServiceGetMatchingServices(")) {
            return "search";
        }
        if (call.starts_with("IOObjectRelease(iterator")) {
            return "end of list";
        }
        if (!call.starts_with("interface ")) {
            return {};
        }
        const std::string place = call.substr(10, call.find(' ', 10) - 10);
        const std::string what = call.substr(10 + place.size() + 1);
        return what == "USBDeviceOpen"    ? "open " + place
               : what == "USBDeviceClose" ? "close " + place
               : what == "Release"        ? "drop " + place
                                          : std::string();
    }

    static IOReturn resultOf(UsbOpenStatus status)
    {
        switch (status) {
        case UsbOpenStatus::Opened:
            return kIOReturnSuccess;
        case UsbOpenStatus::NoAccess:
            return kIOReturnNotPermitted;
        case UsbOpenStatus::Busy:
            return kIOReturnExclusiveAccess;
        case UsbOpenStatus::Gone:
            return kIOReturnNoDevice;
        default:
            return kIOReturnError;
        }
    }

    MacDevice macDevice(const ScriptedDevice& device)
    {
        MacDevice made{.vendorId = device.vendorId, .productId = device.productId};
        made.givesPlugIn = device.step != UsbSearch::Step::NoPlugIn;
        made.givesInterface = device.step != UsbSearch::Step::NoInterface;
        made.openResult = resultOf(device.openStatus);
        made.onOpen = [script = m_script] {
            if (script->onOpen) {
                script->onOpen();
            }
            return kIOReturnSuccess;
        };
        made.onClose = [script = m_script] {
            if (script->onClose) {
                script->onClose();
            }
        };
        made.onRequest = [script = m_script](IOUSBDevRequest& transfer) {
            ControlRequest request = requestOf(transfer);
            {
                const std::lock_guard lock(script->mutex);
                script->requests.push_back(seenOf(request));
            }
            return static_cast<IOReturn>(script->onControl ? script->onControl(request) : 0);
        };
        return made;
    }

    FakeMacos m_mac;
    IokitBus m_bus;
    std::function<void()> m_onSearch;
    std::mutex m_searching;
    std::shared_ptr<Script> m_script = std::make_shared<Script>();
};

} // namespace vornadel::test
