// The main job from end to end with IOKit between the tool and the simulated hub.

#include "flows/FirmwareUpdate.h"
#include "tests/macos/MacTest.h"
#include "tests/macos/RequestOf.h"
#include "tests/support/RecordingReporter.h"
#include "tests/support/SimulatedSetup.h"
#include "tests/support/UsbDevices.h"

#include <algorithm>
#include <functional>
#include <memory>
#include <utility>

namespace vornadel::test
{
namespace
{

using testing::Each;
using testing::IsEmpty;
using testing::StartsWith;
using Kind = RecordingReporter::Kind;

constexpr std::uint8_t kReadFlash = 0xD8;

/// A Mac whose devices are those of a simulated bus, as they are when a search begins.
class MacWithAHub final : public UsbBus
{
public:
    MacWithAHub(FakeMacos& mac, UsbBus& simulated) : m_mac(mac), m_simulated(simulated) {}

    /// Reads of the flash end early from now on, and the system does not mind.
    void cutReads() { m_cutReads = true; }

    std::unique_ptr<UsbSearch> search() override
    {
        std::vector<MacDevice> devices;
        for (std::unique_ptr<UsbDevice>& device : allDevices(m_simulated)) {
            devices.push_back(macDevice(std::shared_ptr<UsbDevice>(std::move(device))));
        }
        m_mac.attach(std::move(devices));
        return m_iokit.search();
    }
    bool watch(Listener) override { return false; }
    void unwatch() override {}

private:
    MacDevice macDevice(const std::shared_ptr<UsbDevice>& simulated) const
    {
        MacDevice device{.vendorId = simulated->vendorId(), .productId = simulated->productId()};
        device.onOpen = [simulated] {
            return simulated->open() == UsbOpenStatus::Opened ? kIOReturnSuccess
                                                              : kIOReturnExclusiveAccess;
        };
        device.onClose = [simulated] { simulated->close(); };
        device.onRequest = [simulated, cutReads = m_cutReads](IOUSBDevRequest& transfer) {
            if (cutReads && transfer.bRequest == kReadFlash) {
                return kIOReturnSuccess; // and nothing moved
            }
            ControlRequest request = requestOf(transfer);
            const std::uint32_t status = simulated->control(request);
            transfer.wLenDone = request.transferred;
            return static_cast<IOReturn>(status);
        };
        return device;
    }

    FakeMacos& m_mac;
    UsbBus& m_simulated;
    IokitBus m_iokit;
    bool m_cutReads = false;
};

class UpdateOnAMac : public MacTest
{
public:
    UpdateOnAMac()
    {
        Hub_UsePlatform(m_bus, m_setup.clock);
        EXPECT_TRUE(
            FwImage_Parse(m_image, m_bytes.data(), static_cast<std::int32_t>(m_bytes.size())));
    }
    ~UpdateOnAMac() override { hubIsClosed(); } // before the bus goes

protected:
    bool update() { return updateFirmware(m_image, "demo.bin", m_reporter); }

    std::size_t callsThat(const std::function<bool(const std::string&)>& match) const
    {
        const Calls calls = mac.calls();
        return static_cast<std::size_t>(std::count_if(calls.begin(), calls.end(), match));
    }

    SimulatedSetup m_setup;
    MacWithAHub m_bus{mac, *m_setup.bus};
    std::vector<std::uint8_t> m_bytes = demoImage(0x0101);
    FwImage m_image;
    RecordingReporter m_reporter;
};

TEST_F(UpdateOnAMac, EndsWithTheImageInTheFlash)
{
    EXPECT_TRUE(update());
    EXPECT_EQ(m_reporter.texts(Kind::Blue).back(), "Update FW Success\n");
    EXPECT_THAT(m_reporter.texts(Kind::Red), IsEmpty());
    EXPECT_TRUE(std::equal(m_bytes.begin(), m_bytes.end(), m_setup.hub().flash().begin()));
    EXPECT_EQ(m_setup.hub().runningCode(), HubCode::Flash);
}

TEST_F(UpdateOnAMac, GivesEverythingBackButTheListsOfItsOpens)
{
    EXPECT_TRUE(update());
    const auto opens = [](const std::string& call) { return call.ends_with(" USBDeviceOpen"); };
    const auto closes = [](const std::string& call) { return call.ends_with(" USBDeviceClose"); };
    const auto searches = [](const std::string& call) {
        return call.starts_with("IOServiceGetMatchingServices(");
    };
    EXPECT_EQ(callsThat(opens), 3U) << "at first, in ROM code, in the new firmware";
    EXPECT_EQ(callsThat(closes), 3U);
    EXPECT_EQ(mac.alive().size(), callsThat(searches)) << "one list for each search";
    EXPECT_THAT(mac.alive(), Each(StartsWith("iterator ")));
}

TEST_F(UpdateOnAMac, TakesNoReadForAMatchThatBroughtNothing)
{
    m_bus.cutReads();
    EXPECT_FALSE(update());
    EXPECT_EQ(m_reporter.texts(Kind::Red).back(), "Update FW Fail\n");
}

TEST_F(UpdateOnAMac, FailsWithoutAHubAndGivesEverythingBack)
{
    m_setup.hub().unplug();
    EXPECT_FALSE(update());
    EXPECT_EQ(m_reporter.texts(Kind::Red).back(), "Update FW Fail\n");
    EXPECT_THAT(mac.alive(), Each(StartsWith("iterator ")));
}

} // namespace
} // namespace vornadel::test
