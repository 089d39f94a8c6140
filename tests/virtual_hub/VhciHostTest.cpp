#include "standins/virtual_hub/VhciHost.h"

#include "tests/support/VirtualClock.h"
#include "tests/support/WithoutPrivilege.h"
#include "tests/virtual_hub/FakeSysfs.h"
#include "tests/virtual_hub/Peer.h"
#include "tests/virtual_hub/SomeDevice.h"

#include <gmock/gmock.h>
#include <gtest/gtest.h>

#include <chrono>
#include <map>
#include <memory>
#include <string>
#include <thread>
#include <unistd.h>
#include <utility>

namespace vornadel::test
{
namespace
{

using testing::HasSubstr;
using testing::IsEmpty;

/// A kernel that takes sockets and shows a device in sysfs until the other end closes the socket.
class FakeKernel final : public VhciPorts
{
public:
    explicit FakeKernel(FakeSysfs& sysfs) : VhciPorts(sysfs.root()), m_sysfs(sysfs) {}

    Attach attach(const Port& port, int socket, std::uint32_t device,
                  std::string& /*error*/) const override
    {
        m_sysfs.setState(port.number, 6);
        m_sysfs.show(busId(port));
        tookTurns = tookTurns && !Turn(*this).come();
        sockets[port.number] = std::make_unique<Peer>(dup(socket));
        devices[port.number] = device;
        return Attach::Done;
    }

    /// A device whose socket is closed leaves, and its port is free at the next look.
    void look() const
    {
        std::erase_if(sockets, [&](const auto& each) {
            std::string unused;
            if (!each.second->isOver() || m_sysfs.hide(busId(list(unused)[each.first]))) {
                return false;
            }
            m_sysfs.setState(each.first, 4);
            return true;
        });
    }

    mutable bool tookTurns = true; ///< whether only one program at a time attached
    mutable std::map<unsigned, std::unique_ptr<Peer>> sockets;
    mutable std::map<unsigned, std::uint32_t> devices;

private:
    FakeSysfs& m_sysfs;
};

class VhciHostTest : public testing::Test
{
protected:
    bool attach(unsigned hub, HubSpeed half) { return attach(hub, half, hub); }
    bool attach(unsigned hub, HubSpeed half, unsigned connector)
    {
        VirtualDevice device = someDevice(half);
        device.hub = hub;
        device.place = "sim-" + std::to_string(connector);
        return m_host.attach(device, m_error);
    }
    void detach(unsigned hub, HubSpeed half)
    {
        m_host.beginDetach(hub, half);
        m_host.finishDetach(hub, half);
    }

    FakeSysfs m_sysfs;
    FakeKernel m_kernel{m_sysfs};
    VirtualClock m_clock;
    VhciHost m_host{m_kernel, m_clock};
    std::string m_error;
};

TEST_F(VhciHostTest, PutsEachHalfIntoAPortOfItsSpeed)
{
    EXPECT_TRUE(attach(1, HubSpeed::SuperSpeed));
    EXPECT_TRUE(attach(1, HubSpeed::HighSpeed));
    EXPECT_TRUE(attach(2, HubSpeed::SuperSpeed));
    EXPECT_EQ(m_host.busId(1, HubSpeed::SuperSpeed), "2-1");
    EXPECT_EQ(m_host.busId(1, HubSpeed::HighSpeed), "1-1");
    EXPECT_EQ(m_host.busId(2, HubSpeed::SuperSpeed), "2-2");
    EXPECT_EQ(m_host.busId(2, HubSpeed::HighSpeed), "");
    EXPECT_EQ(m_kernel.devices,
              (std::map<unsigned, std::uint32_t>{{3, 0x20001}, {0, 0x10001}, {4, 0x20002}}));
}

TEST_F(VhciHostTest, ComesBackToItsPort)
{
    m_clock.onSleep = [&](Clock::Duration) { m_kernel.look(); };
    ASSERT_TRUE(attach(1, HubSpeed::SuperSpeed));
    ASSERT_TRUE(attach(2, HubSpeed::SuperSpeed));
    detach(1, HubSpeed::SuperSpeed);
    detach(2, HubSpeed::SuperSpeed);
    ASSERT_TRUE(attach(2, HubSpeed::SuperSpeed));
    EXPECT_EQ(m_host.busId(2, HubSpeed::SuperSpeed), "2-2");
    ASSERT_TRUE(attach(3, HubSpeed::SuperSpeed));
    EXPECT_EQ(m_host.busId(3, HubSpeed::SuperSpeed), "2-3"); // not the place of hub 1
    ASSERT_TRUE(attach(1, HubSpeed::SuperSpeed));
    EXPECT_EQ(m_host.busId(1, HubSpeed::SuperSpeed), "2-1");
}

TEST_F(VhciHostTest, LeavesThePlacesOfAnotherProgramAlone)
{
    m_clock.onSleep = [&](Clock::Duration) { m_kernel.look(); };
    auto other = std::make_unique<VhciHost>(m_kernel, m_clock);
    ASSERT_TRUE(other->attach(someDevice(HubSpeed::SuperSpeed), m_error));
    other->beginDetach(3, HubSpeed::SuperSpeed);
    other->finishDetach(3, HubSpeed::SuperSpeed);
    ASSERT_TRUE(attach(1, HubSpeed::SuperSpeed));
    EXPECT_EQ(m_host.busId(1, HubSpeed::SuperSpeed), "2-2");
    other.reset();
    ASSERT_TRUE(attach(2, HubSpeed::SuperSpeed));
    EXPECT_EQ(m_host.busId(2, HubSpeed::SuperSpeed), "2-1");
}

TEST_F(VhciHostTest, IsGoneOnlyOnceTheKernelHasNoticed)
{
    const Clock::Duration noticed = m_clock.now() + std::chrono::seconds(20);
    m_clock.onSleep = [&](Clock::Duration) {
        if (m_clock.now() >= noticed) {
            m_kernel.look();
        }
    };
    ASSERT_TRUE(attach(1, HubSpeed::SuperSpeed));
    detach(1, HubSpeed::SuperSpeed);
    EXPECT_GE(m_clock.now(), noticed);
    EXPECT_THAT(m_kernel.sockets, IsEmpty());
}

TEST_F(VhciHostTest, GivesAHubTheConnectorOfAnotherThatLeaves)
{
    bool leaves = false;
    m_clock.onSleep = [&, self = std::this_thread::get_id()](Clock::Duration) {
        m_kernel.look();
        if (std::this_thread::get_id() == self && std::exchange(leaves, false)) {
            m_host.finishDetach(2, HubSpeed::SuperSpeed);
        }
    };
    ASSERT_TRUE(attach(1, HubSpeed::SuperSpeed));
    ASSERT_TRUE(attach(2, HubSpeed::SuperSpeed));
    detach(1, HubSpeed::SuperSpeed);
    m_host.beginDetach(2, HubSpeed::SuperSpeed);
    leaves = true; // when hub 1 waits for its place
    ASSERT_TRUE(attach(1, HubSpeed::SuperSpeed, 2));
    EXPECT_EQ(m_host.busId(1, HubSpeed::SuperSpeed), "2-2");
    ASSERT_TRUE(attach(2, HubSpeed::SuperSpeed, 1));
    EXPECT_EQ(m_host.busId(2, HubSpeed::SuperSpeed), "2-1");
    detach(2, HubSpeed::SuperSpeed);
    ASSERT_TRUE(attach(2, HubSpeed::SuperSpeed, 3));
    EXPECT_EQ(m_host.busId(2, HubSpeed::SuperSpeed), "2-3");
}

TEST_F(VhciHostTest, GoesOnToTheNextControllerAndSaysWhenAllPortsAreTaken)
{
    for (unsigned hub = 1; hub <= 6; ++hub) {
        ASSERT_TRUE(attach(hub, HubSpeed::SuperSpeed)) << hub;
    }
    EXPECT_EQ(m_host.busId(4, HubSpeed::SuperSpeed), "4-1");
    EXPECT_FALSE(attach(7, HubSpeed::SuperSpeed));
    EXPECT_EQ(m_error, "vhci_hcd has no free pair of a SuperSpeed and a high-speed port");
    EXPECT_FALSE(attach(7, HubSpeed::HighSpeed)); // beside the SuperSpeed half of another hub
    EXPECT_TRUE(attach(4, HubSpeed::HighSpeed));
    EXPECT_EQ(m_host.busId(4, HubSpeed::HighSpeed), "3-1");
}

TEST_F(VhciHostTest, LeavesAloneAPlaceOfWhichHalfIsTaken)
{
    for (const unsigned taken : {3U, 0U}) { // SuperSpeed, high speed
        SCOPED_TRACE(taken);
        for (const HubSpeed first : {HubSpeed::SuperSpeed, HubSpeed::HighSpeed}) {
            FakeSysfs sysfs;
            FakeKernel kernel(sysfs);
            VhciHost host(kernel, m_clock);
            sysfs.setState(taken, 5); // without an address yet
            VirtualDevice device = someDevice(first);
            EXPECT_TRUE(host.attach(device, m_error));
            sysfs.setState(taken, 4); // free again, but too late
            device = someDevice(first == HubSpeed::SuperSpeed ? HubSpeed::HighSpeed
                                                              : HubSpeed::SuperSpeed);
            EXPECT_TRUE(host.attach(device, m_error));
            EXPECT_EQ(host.busId(3, HubSpeed::SuperSpeed), "2-2");
            EXPECT_EQ(host.busId(3, HubSpeed::HighSpeed), "1-2");
        }
    }
}

TEST_F(VhciHostTest, TakesPortsOnlyWhenItIsItsTurn)
{
    auto otherProgram = std::make_unique<VhciPorts::Turn>(m_kernel);
    ASSERT_TRUE(otherProgram->come());
    int looks = 0;
    m_clock.onSleep = [&](Clock::Duration) {
        EXPECT_TRUE(m_kernel.sockets.empty());
        if (++looks == 10) {
            otherProgram.reset();
        }
    };
    EXPECT_TRUE(attach(1, HubSpeed::SuperSpeed));
    m_clock.onSleep = nullptr;
    EXPECT_EQ(looks, 10);
    EXPECT_TRUE(m_kernel.tookTurns);
    EXPECT_TRUE(VhciPorts::Turn(m_kernel).come()); // over
}

TEST_F(VhciHostTest, SaysWhenTheModuleOrTheRightsAreMissing)
{
    std::string error;
    EXPECT_THAT(VhciPorts(m_sysfs.root() / "nothing").list(error), IsEmpty());
    EXPECT_THAT(error, HasSubstr("modprobe vhci-hcd"));

    m_sysfs.makeReadOnly();
    const WithoutPrivilege ordinary;
    EXPECT_THAT(m_kernel.list(error), IsEmpty());
    EXPECT_THAT(error, HasSubstr("sudo"));
}

} // namespace
} // namespace vornadel::test
