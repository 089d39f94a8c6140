#pragma once

#include "tests/support/TemporaryFolder.h"

#include <filesystem>
#include <fstream>
#include <iomanip>
#include <map>
#include <string>

namespace vornadel::test
{

/// The files of vhci_hcd for two controllers with three ports of each speed, in a temporary folder.
/// Buses 1 and 3 are high-speed, 2 and 4 SuperSpeed.
class FakeSysfs
{
public:
    static constexpr unsigned kControllers = 2;
    static constexpr unsigned kPortsOfASpeed = 3;

    FakeSysfs()
    {
        for (unsigned bus = 1; bus <= 2 * kControllers; ++bus) {
            std::filesystem::create_directories(busFolder(bus));
            std::ofstream(busFolder(bus) / "speed") << (bus % 2 == 0 ? "5000\n" : "480\n");
        }
        std::ofstream(m_root / "vhci_hcd.0/attach").flush();
        writeStatus();
    }

    const std::filesystem::path& root() const { return m_root; }

    /// The value of `sta`: 4 is free, 6 in use.
    void setState(unsigned port, unsigned state)
    {
        m_states[port] = state;
        writeStatus();
    }
    /// Makes the kernel show a device in its port, for example ("2-1"), with another number for
    /// each stay; or no longer.
    void show(const std::string& busId)
    {
        std::filesystem::create_directory(deviceFolder(busId));
        std::ofstream(deviceFolder(busId) / "devnum") << ++m_stays << '\n';
    }
    /// False if it showed none.
    bool hide(const std::string& busId) const
    {
        return std::filesystem::remove_all(deviceFolder(busId)) > 0;
    }
    /// Only root may attach devices.
    void makeReadOnly() const
    {
        std::filesystem::permissions(m_root, std::filesystem::perms(0755));
        std::filesystem::permissions(m_root / "vhci_hcd.0/attach", std::filesystem::perms(0444));
    }

private:
    std::filesystem::path busFolder(unsigned bus) const
    {
        return m_root / ("vhci_hcd." + std::to_string((bus - 1) / 2)) /
               ("usb" + std::to_string(bus));
    }
    std::filesystem::path deviceFolder(const std::string& busId) const
    {
        return busFolder(static_cast<unsigned>(std::stoi(busId))) / busId;
    }
    void writeStatus()
    {
        unsigned port = 0;
        for (unsigned controller = 0; controller < kControllers; ++controller) {
            std::ofstream file(
                m_root / ("vhci_hcd.0/status" +
                          (controller == 0 ? std::string() : "." + std::to_string(controller))));
            file << "hub port sta spd dev      sockfd local_busid\n";
            for (const char* const speed : {"hs", "ss"}) {
                for (unsigned place = 0; place < kPortsOfASpeed; ++place, ++port) {
                    const unsigned state = m_states.count(port) != 0 ? m_states[port] : 4;
                    file << speed << "  " << std::setfill('0') << std::setw(4) << port << ' '
                         << std::setw(3) << state << " 000 00000000 000000 0-0\n";
                }
            }
        }
    }

    const TemporaryFolder m_folder;
    const std::filesystem::path m_root = m_folder.path();
    unsigned m_stays = 0;
    std::map<unsigned, unsigned> m_states;
};

} // namespace vornadel::test
