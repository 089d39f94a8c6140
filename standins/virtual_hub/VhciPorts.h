#pragma once

#include "standins/sim/SimulatedHub.h"

#include <cstdint>
#include <filesystem>
#include <string>
#include <utility>
#include <vector>

namespace vornadel
{

/// The virtual ports of the kernel module vhci_hcd, from its files in sysfs. Stateless; any thread.
class VhciPorts
{
public:
    struct Port {
        unsigned number = 0; ///< for the file `attach`; counts over all controllers
        unsigned controller = 0;
        unsigned place = 0; ///< among the controller's ports of that speed, from 0
        HubSpeed speed = HubSpeed::SuperSpeed;
        bool free = false;
    };
    enum class Attach { Done, Taken, Failed };

    /// A program's turn to choose and take ports: a lock on the kernel's file `attach`, from come()
    /// until the object is destroyed. For one thread.
    class Turn
    {
    public:
        explicit Turn(const VhciPorts& ports);
        Turn(const Turn&) = delete;
        Turn& operator=(const Turn&) = delete;
        ~Turn();

        /// False while somebody else has the turn, even in this process. Also true if the file
        /// cannot be opened; list() says why.
        bool come() const;

    private:
        const int m_file;
    };

    /// Keeps the places that a program's hubs use from those of other programs, also while a hub is
    /// away for a restart: locks on bytes of the kernel's file `attach`, until the object is
    /// destroyed. Where the file cannot be opened, nothing is reserved.
    class Reservations
    {
    public:
        explicit Reservations(const VhciPorts& ports);
        Reservations(const Reservations&) = delete;
        Reservations& operator=(const Reservations&) = delete;
        ~Reservations();

        bool isOfAnother(const Port& port) const; ///< of either speed at that place
        void take(const Port& port) const;

    private:
        const int m_file;
    };

    /// `devices` is the folder of the platform devices, /sys/devices/platform on a real system.
    explicit VhciPorts(std::filesystem::path devices) : m_devices(std::move(devices)) {}
    VhciPorts(const VhciPorts&) = delete;
    VhciPorts& operator=(const VhciPorts&) = delete;
    virtual ~VhciPorts() = default;

    /// All ports, ordered by number. Empty and a sentence in `error` if the module is unusable.
    std::vector<Port> list(std::string& error) const;

    /// Attaches the device at the other end of `socket` to a port; the kernel takes its own
    /// reference. Taken: another program was faster.
    virtual Attach attach(const Port& port, int socket, std::uint32_t device,
                          std::string& error) const;

    /// The kernel's name for a device in that port, such as "3-1"; empty if the port has no bus.
    std::string busId(const Port& port) const;
    bool occupied(const Port& port) const; ///< whether the kernel has a device there
    /// The kernel's number for this stay of a device in that port; empty if it has none there.
    std::string deviceAt(const Port& port) const;
    bool taken(const Port& port) const; ///< whether the port exists and is not free

private:
    std::filesystem::path attachFile() const;

    std::filesystem::path m_devices;
};

} // namespace vornadel
