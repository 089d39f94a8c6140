#include "standins/virtual_hub/VhciPorts.h"

#include "tests/virtual_hub/FakeSysfs.h"

#include <gmock/gmock.h>
#include <gtest/gtest.h>

#include <string>
#include <unistd.h>
#include <vector>

namespace vornadel::test
{
namespace
{

using testing::HasSubstr;
using testing::IsEmpty;
using testing::SizeIs;

class VhciPortsTest : public testing::Test
{
protected:
    std::vector<VhciPorts::Port> list()
    {
        std::string error;
        std::vector<VhciPorts::Port> ports = m_ports.list(error);
        EXPECT_THAT(error, IsEmpty());
        return ports;
    }

    FakeSysfs m_sysfs;
    VhciPorts m_ports{m_sysfs.root()};
};

TEST_F(VhciPortsTest, AreThoseOfAllControllers)
{
    const std::vector<VhciPorts::Port> ports = list();
    ASSERT_THAT(ports, SizeIs(12));
    for (unsigned number = 0; number < 12; ++number) {
        SCOPED_TRACE(number);
        EXPECT_EQ(ports[number].number, number);
        EXPECT_EQ(ports[number].controller, number / 6);
        EXPECT_EQ(ports[number].place, number % 3);
        EXPECT_EQ(ports[number].speed, number % 6 < 3 ? HubSpeed::HighSpeed : HubSpeed::SuperSpeed);
        EXPECT_TRUE(ports[number].free);
    }
}

TEST_F(VhciPortsTest, AreFreeInOneStateAlone)
{
    m_sysfs.setState(1, 5); // taken, without an address yet
    m_sysfs.setState(2, 6); // in use
    m_sysfs.setState(7, 7); // broken
    const std::vector<VhciPorts::Port> ports = list();
    for (unsigned number = 0; number < 12; ++number) {
        EXPECT_EQ(ports[number].free, number != 1 && number != 2 && number != 7) << number;
    }
}

TEST_F(VhciPortsTest, TakeADeviceAsFourNumbers)
{
    const std::vector<VhciPorts::Port> ports = list();
    std::string error;
    EXPECT_EQ(m_ports.attach(ports[10], 7, 0x00020001, error), VhciPorts::Attach::Done);
    EXPECT_EQ(m_sysfs.attached(), "10 7 131073 5");
    EXPECT_EQ(m_ports.attach(ports[1], 12, 0x00010001, error), VhciPorts::Attach::Done);
    EXPECT_THAT(m_sysfs.attached(), testing::StartsWith("1 12 65537 3"));
}

TEST_F(VhciPortsTest, SayWhenTheModuleIsMissing)
{
    std::string error;
    EXPECT_THAT(VhciPorts(m_sysfs.root() / "nothing").list(error), IsEmpty());
    EXPECT_THAT(error, HasSubstr("modprobe vhci-hcd"));
}

TEST_F(VhciPortsTest, SayWhenTheRightsAreMissing)
{
    using std::filesystem::perms;
    std::filesystem::permissions(m_sysfs.root(),
                                 perms::owner_all | perms::others_read | perms::others_exec);
    std::filesystem::permissions(m_sysfs.root() / "vhci_hcd.0/attach",
                                 perms::owner_read | perms::others_read);
    const bool root = geteuid() == 0; // file permissions do not stop root
    ASSERT_TRUE(!root || seteuid(65534) == 0);
    std::string error;
    const std::vector<VhciPorts::Port> ports = m_ports.list(error);
    ASSERT_TRUE(!root || seteuid(0) == 0);
    EXPECT_THAT(ports, IsEmpty());
    EXPECT_THAT(error, HasSubstr("sudo"));
}

} // namespace
} // namespace vornadel::test
