#include "standins/virtual_hub/VhciPorts.h"

#include "standins/virtual_hub/VirtualDevice.h"

#include <algorithm>
#include <array>
#include <cerrno>
#include <cstring>
#include <fcntl.h>
#include <fstream>
#include <sstream>
#include <string_view>
#include <sys/file.h>
#include <system_error>
#include <unistd.h>

namespace vornadel
{

namespace
{

constexpr const char* kFirstController = "vhci_hcd.0"; // its folder has all the files

/// The file that lists the ports of one controller.
std::string statusFile(unsigned controller)
{
    return controller == 0 ? "status" : "status." + std::to_string(controller);
}

/// Reads one line, for example "hs  0000 004 000 00000000 000000 0-0": the speed, the number, and
/// the state, which is 4 for a free port. False for the header line.
bool readPort(const std::string& line, VhciPorts::Port& port)
{
    constexpr unsigned kFree = 4;
    std::istringstream words(line);
    std::string speed;
    unsigned state = 0;
    if (!(words >> speed >> port.number >> state) || (speed != "hs" && speed != "ss")) {
        return false;
    }
    port.speed = speed == "ss" ? HubSpeed::SuperSpeed : HubSpeed::HighSpeed;
    port.free = state == kFree;
    return true;
}

/// The lock of one place: a byte of its own.
struct flock lockOf(const VhciPorts::Port& port)
{
    constexpr unsigned kPlacesOfOne = 64; // more than a controller has
    struct flock lock {
    };
    lock.l_type = F_WRLCK;
    lock.l_whence = SEEK_SET;
    lock.l_start = port.controller * kPlacesOfOne + port.place;
    lock.l_len = 1;
    return lock;
}

} // namespace

VhciPorts::Turn::Turn(const VhciPorts& ports)
    : m_file(open(ports.attachFile().c_str(), O_WRONLY | O_CLOEXEC))
{
}

VhciPorts::Turn::~Turn()
{
    if (m_file >= 0) {
        close(m_file); // the lock goes with it
    }
}

bool VhciPorts::Turn::come() const { return m_file < 0 || flock(m_file, LOCK_EX | LOCK_NB) == 0; }

VhciPorts::Reservations::Reservations(const VhciPorts& ports)
    : m_file(open(ports.attachFile().c_str(), O_WRONLY | O_CLOEXEC))
{
}

VhciPorts::Reservations::~Reservations()
{
    if (m_file >= 0) {
        close(m_file); // the locks go with it
    }
}

bool VhciPorts::Reservations::isOfAnother(const Port& port) const
{
    struct flock lock = lockOf(port);
    return fcntl(m_file, F_OFD_GETLK, &lock) == 0 && lock.l_type != F_UNLCK;
}

void VhciPorts::Reservations::take(const Port& port) const
{
    struct flock lock = lockOf(port);
    fcntl(m_file, F_OFD_SETLK, &lock);
}

std::filesystem::path VhciPorts::attachFile() const
{
    return m_devices / kFirstController / "attach";
}

std::vector<VhciPorts::Port> VhciPorts::list(std::string& error) const
{
    std::vector<Port> ports;
    const std::filesystem::path folder = m_devices / kFirstController;
    for (unsigned controller = 0;; ++controller) {
        std::ifstream file(folder / statusFile(controller));
        if (!file) {
            break;
        }
        std::array<unsigned, kHubSpeedCount> places{};
        for (std::string line; std::getline(file, line);) {
            Port port;
            if (readPort(line, port)) {
                port.controller = controller;
                port.place = places.at(static_cast<std::size_t>(port.speed))++;
                ports.push_back(port);
            }
        }
    }
    if (ports.empty()) {
        error = "the kernel module vhci_hcd is not loaded; \"sudo modprobe vhci-hcd\" loads it";
    } else if (faccessat(AT_FDCWD, attachFile().c_str(), W_OK, AT_EACCESS) != 0) {
        error = "only root can attach virtual devices; run the program with sudo";
        ports.clear();
    }
    return ports;
}

VhciPorts::Attach VhciPorts::attach(const Port& port, int socket, std::uint32_t device,
                                    std::string& error) const
{
    const std::string text = std::to_string(port.number) + ' ' + std::to_string(socket) + ' ' +
                             std::to_string(device) + ' ' + std::to_string(speedNumber(port.speed));
    const int file = open(attachFile().c_str(), O_WRONLY | O_CLOEXEC);
    const bool done =
        file >= 0 && write(file, text.data(), text.size()) == static_cast<ssize_t>(text.size());
    const int problem = errno;
    if (file >= 0) {
        close(file);
    }
    if (done) {
        return Attach::Done;
    }
    error = "vhci_hcd did not take the device: " + std::string(std::strerror(problem));
    return problem == EBUSY ? Attach::Taken : Attach::Failed;
}

/// Each controller has two buses, distinguished by the speed of their root hubs in Mbit/s.
std::string VhciPorts::busId(const Port& port) const
{
    const std::string_view speed = port.speed == HubSpeed::SuperSpeed ? "5000" : "480";
    std::error_code none;
    const std::filesystem::path folder =
        m_devices / ("vhci_hcd." + std::to_string(port.controller));
    for (const auto& entry : std::filesystem::directory_iterator(folder, none)) {
        const std::string name = entry.path().filename().string();
        std::ifstream file(entry.path() / "speed");
        std::string found;
        if (name.starts_with("usb") && file >> found && found == speed) {
            return name.substr(3) + '-' + std::to_string(port.place + 1);
        }
    }
    return {};
}

bool VhciPorts::taken(const Port& port) const
{
    std::string unused;
    const std::vector<Port> ports = list(unused);
    return std::any_of(ports.begin(), ports.end(), [&](const Port& found) {
        return found.number == port.number && !found.free;
    });
}

bool VhciPorts::occupied(const Port& port) const { return !deviceAt(port).empty(); }

std::string VhciPorts::deviceAt(const Port& port) const
{
    std::string number;
    if (const std::string id = busId(port); !id.empty()) {
        std::ifstream(m_devices / ("vhci_hcd." + std::to_string(port.controller)) /
                      ("usb" + id.substr(0, id.find('-'))) / id / "devnum") >>
            number;
    }
    return number;
}

} // namespace vornadel
