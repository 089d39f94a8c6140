#pragma once

#include "standins/sim/SimulatedHub.h"

#include <cstdint>
#include <filesystem>
#include <string>
#include <utility>
#include <vector>

namespace vornadel
{

/// The virtual ports of the kernel module vhci_hcd, as its files in sysfs show them. Stateless; any
/// thread.
class VhciPorts
{
public:
    struct Port {
        unsigned number = 0; ///< as `attach` takes it; counts over all controllers
        unsigned controller = 0;
        unsigned place = 0; ///< among the controller's ports of that speed, from 0
        HubSpeed speed = HubSpeed::SuperSpeed;
        bool free = false;
    };
    enum class Attach { Done, Taken, Failed };

    /// The turn of a program to choose ports and take them: a lock on the kernel's file `attach`,
    /// from come() until the end of the object. To be used by one thread.
    class Turn
    {
    public:
        explicit Turn(const VhciPorts& ports);
        Turn(const Turn&) = delete;
        Turn& operator=(const Turn&) = delete;
        ~Turn();

        /// False while it is somebody else's turn, another one's of this process included. True as
        /// well when the file cannot be opened; list() says why.
        bool come() const;

    private:
        const int m_file;
    };

    /// `devices` is the folder of the platform devices, /sys/devices/platform on a real system.
    explicit VhciPorts(std::filesystem::path devices) : m_devices(std::move(devices)) {}
    VhciPorts(const VhciPorts&) = delete;
    VhciPorts& operator=(const VhciPorts&) = delete;
    virtual ~VhciPorts() = default;

    /// Every port there is, in the order of the numbers. Empty and a sentence in `error` when the
    /// module is not there or cannot be used.
    std::vector<Port> list(std::string& error) const;

    /// Puts the device at the other end of `socket` into a port; the kernel takes a reference of
    /// its own. Taken: another program was faster.
    virtual Attach attach(const Port& port, int socket, std::uint32_t device,
                          std::string& error) const;

    /// The name that the kernel gives a device in that port, as in "3-1"; empty when the port has
    /// no bus.
    std::string busId(const Port& port) const;
    bool occupied(const Port& port) const; ///< whether the kernel has a device there, still or
                                           ///< already
    bool taken(const Port& port) const;    ///< whether it is no longer free; false when it is gone
                                           ///< altogether

private:
    std::filesystem::path attachFile() const;

    std::filesystem::path m_devices;
};

} // namespace vornadel
