#include "platform/linux/LibusbDevice.h"

#include <algorithm>
#include <array>
#include <cerrno>
#include <cstdio>
#include <fcntl.h>
#include <fstream>
#include <libusb.h>
#include <optional>
#include <string>
#include <sys/file.h>
#include <unistd.h>
#include <utility>
#include <vector>

namespace vornadel
{

namespace
{

libusb_device_descriptor descriptorOf(libusb_device* device)
{
    libusb_device_descriptor descriptor{};
    if (libusb_get_device_descriptor(device, &descriptor) != LIBUSB_SUCCESS) {
        return {};
    }
    return descriptor;
}

std::string nodeOf(unsigned bus, unsigned address)
{
    std::array<char, 32> path{};
    std::snprintf(path.data(), path.size(), "/dev/bus/usb/%03u/%03u", bus, address);
    return path.data();
}

UsbOpenStatus statusOfErrno(int error)
{
    switch (error) {
    case EACCES:
    case EPERM:
        return UsbOpenStatus::NoAccess;
    case ENOENT:
    case ENODEV:
    case ENXIO:
        return UsbOpenStatus::Gone;
    case EWOULDBLOCK: // of a lock
    case EBUSY:
        return UsbOpenStatus::Busy;
    default:
        return UsbOpenStatus::Other;
    }
}

UsbOpenStatus statusOfLibusb(int result)
{
    switch (result) {
    case LIBUSB_SUCCESS:
        return UsbOpenStatus::Opened;
    case LIBUSB_ERROR_ACCESS:
        return UsbOpenStatus::NoAccess;
    case LIBUSB_ERROR_BUSY:
        return UsbOpenStatus::Busy;
    case LIBUSB_ERROR_NO_DEVICE:
    case LIBUSB_ERROR_NOT_FOUND:
        return UsbOpenStatus::Gone;
    default:
        return UsbOpenStatus::Other;
    }
}

/// The open node, or -1 and errno.
int openNode(const std::string& path, int flags)
{
    if (access(path.c_str(), flags == O_RDWR ? R_OK | W_OK : R_OK) != 0) {
        return -1;
    }
    return ::open(path.c_str(), flags | O_CLOEXEC);
}

/// False and errno if anyone holds the lock, including this process. A node that is not open needs
/// no lock.
bool lockNode(int node) { return node < 0 || flock(node, LOCK_EX | LOCK_NB) == 0; }

/// The number in a sysfs file; empty if there is no such file.
std::optional<unsigned> numberIn(const std::string& file, std::ios_base& (*base)(std::ios_base&))
{
    std::ifstream stream(file);
    unsigned number = 0;
    return stream >> base >> number ? std::optional(number) : std::nullopt;
}

/// Node of the same hub's half at the other speed: a connector has a port on each of the two buses,
/// and the kernel knows which two belong together. Empty if there is none, or if it is not a hub.
std::string nodeOfOtherHalf(libusb_device* device)
{
    constexpr unsigned kHubClass = 9;
    std::array<std::uint8_t, 7> ports{}; // as deep as USB goes
    const int depth = libusb_get_port_numbers(device, ports.data(), static_cast<int>(ports.size()));
    std::string folder = "/sys/bus/usb/devices/" + std::to_string(libusb_get_bus_number(device));
    for (int i = 0; i < depth; ++i) {
        folder += (i == 0 ? '-' : '.') + std::to_string(ports[static_cast<std::size_t>(i)]);
    }
    folder += "/port/peer/device/";
    const std::optional<unsigned> bus = numberIn(folder + "busnum", std::dec);
    const std::optional<unsigned> address = numberIn(folder + "devnum", std::dec);
    if (!bus || !address || numberIn(folder + "bDeviceClass", std::hex) != kHubClass) {
        return {};
    }
    return nodeOf(*bus, *address);
}

} // namespace

LibusbDevice::LibusbDevice(std::shared_ptr<LibusbContext> context, libusb_device* device,
                           std::chrono::milliseconds timeout)
    : m_context(std::move(context)), m_device(libusb_ref_device(device)), m_timeout(timeout)
{
}

LibusbDevice::~LibusbDevice()
{
    LibusbDevice::close();
    libusb_unref_device(m_device);
}

std::uint16_t LibusbDevice::vendorId() const { return descriptorOf(m_device).idVendor; }

std::uint16_t LibusbDevice::productId() const { return descriptorOf(m_device).idProduct; }

UsbPlace LibusbDevice::place() const { return {}; }

UsbTexts LibusbDevice::texts() const { return {}; }

std::string LibusbDevice::containerId() { return {}; }

std::vector<std::string> LibusbDevice::attachedBelow() const { return {}; }

UsbOpenStatus LibusbDevice::open()
{
    if (m_handle != nullptr) {
        return UsbOpenStatus::Opened;
    }
    const std::string path =
        nodeOf(libusb_get_bus_number(m_device), libusb_get_device_address(m_device));
    const std::string otherPath = nodeOfOtherHalf(m_device);
    m_node = openNode(path, O_RDWR);
    if (m_node < 0) {
        return statusOfErrno(errno);
    }
    // Locks both halves of a hub, because another program may see them in another order and would
    // open the other one. If a half cannot be opened, it has left, or no program with our rights
    // can open it.
    m_otherNode = openNode(otherPath, O_RDONLY);
    // Always in the same order; otherwise two programs that open different halves at once would
    // lock each other out.
    const auto [first, second] =
        std::minmax({std::pair(path, m_node), std::pair(otherPath, m_otherNode)});
    if (!lockNode(first.second) || !lockNode(second.second)) {
        const UsbOpenStatus status = statusOfErrno(errno);
        close();
        return status;
    }
    const UsbOpenStatus status =
        statusOfLibusb(libusb_wrap_sys_device(m_context->get(), m_node, &m_handle));
    if (status != UsbOpenStatus::Opened) {
        m_handle = nullptr;
        close();
    }
    return status;
}

std::uint32_t LibusbDevice::control(ControlRequest& request)
{
    request.transferred = 0;
    if (m_handle == nullptr) {
        return static_cast<std::uint32_t>(LIBUSB_ERROR_NO_DEVICE);
    }
    // libusb wants a writable buffer in both directions.
    std::vector<std::uint8_t> copyOfOut(request.out.begin(), request.out.end());
    const int result = libusb_control_transfer(
        m_handle, request.bmRequestType, request.bRequest, request.wValue, request.wIndex,
        request.fromDevice() ? request.in.data() : copyOfOut.data(), request.wLength(),
        static_cast<unsigned>(m_timeout.count()));
    if (result < 0) {
        return static_cast<std::uint32_t>(result);
    }
    request.transferred = static_cast<std::uint32_t>(result);
    return request.transferred == request.wLength() ? 0 : kShortTransfer;
}

UsbFailure LibusbDevice::failureOf(std::uint32_t /*status*/) const { return UsbFailure::Other; }

void LibusbDevice::close()
{
    if (m_handle != nullptr) {
        libusb_close(m_handle);
        m_handle = nullptr;
    }
    for (int* const node : {&m_node, &m_otherNode}) {
        if (*node >= 0) {
            ::close(*node); // libusb leaves a wrapped node open; the lock goes with it
            *node = -1;
        }
    }
}

} // namespace vornadel
