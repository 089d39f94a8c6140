#include "platform/linux/LibusbDevice.h"

#include <algorithm>
#include <array>
#include <cerrno>
#include <chrono>
#include <cstdio>
#include <fcntl.h>
#include <libusb.h>
#include <span>
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

/// What the kernel tells of the port of a device, and so of the device while it is there.
SysfsDevice sysfsOf(libusb_device* device)
{
    std::array<std::uint8_t, 7> ports{}; // as deep as USB goes
    const int depth = libusb_get_port_numbers(device, ports.data(), static_cast<int>(ports.size()));
    const std::string bus = std::to_string(libusb_get_bus_number(device));
    if (depth <= 0) {
        return SysfsDevice("usb" + bus);
    }
    std::string path = bus;
    for (int i = 0; i < depth; ++i) {
        path += (i == 0 ? '-' : '.') + std::to_string(ports[static_cast<std::size_t>(i)]);
    }
    return SysfsDevice(path);
}

/// The same hub's half at the other speed. A connector has a port on each of two buses, and the
/// kernel knows which two belong together. None if there is no hub.
std::optional<SysfsDevice> otherHalfOf(const SysfsDevice& half)
{
    const SysfsDevice other(half.otherPort().path);
    return other.isHub() ? std::optional(other) : std::nullopt;
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

UsbPlace LibusbDevice::place() const
{
    const SysfsDevice sysfs = sysfsOf(m_device);
    return {.own = {sysfs.name(), libusb_get_device_address(m_device)}, .other = sysfs.otherPort()};
}

UsbTexts LibusbDevice::texts() const
{
    const std::optional<SysfsDevice> sysfs = attached();
    return sysfs ? sysfs->texts() : UsbTexts{};
}

std::string LibusbDevice::containerId()
{
    const std::optional<SysfsDevice> sysfs = attached();
    std::string id = sysfs ? sysfs->containerId() : std::string();
    const bool wasOpen = m_handle != nullptr;
    if (!sysfs || !id.empty() || open() != UsbOpenStatus::Opened) {
        return id;
    }
    std::array<std::uint8_t, 256> descriptor{};
    const int length = libusb_get_descriptor(m_handle, LIBUSB_DT_BOS, 0, descriptor.data(),
                                             static_cast<int>(descriptor.size()));
    if (!wasOpen) {
        close();
    }
    return containerIdIn(
        std::span(descriptor).first(static_cast<std::size_t>(std::max(length, 0))));
}

std::vector<std::string> LibusbDevice::attachedBelow() const
{
    std::vector<std::string> texts;
    if (const std::optional<SysfsDevice> sysfs = attached()) {
        texts = sysfs->attachedBelow();
        if (const std::optional<SysfsDevice> other = otherHalfOf(*sysfs)) {
            const std::vector<std::string> below = other->attachedBelow();
            texts.insert(texts.end(), below.begin(), below.end());
        }
    }
    return texts;
}

UsbOpenStatus LibusbDevice::open()
{
    if (m_handle != nullptr) {
        return UsbOpenStatus::Opened;
    }
    const std::string path =
        nodeOf(libusb_get_bus_number(m_device), libusb_get_device_address(m_device));
    const std::optional<SysfsDevice> other = otherHalfOf(sysfsOf(m_device));
    const std::string otherPath = other ? nodeOf(other->bus(), other->address()) : std::string();
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
    const std::chrono::milliseconds limit =
        request.limit > std::chrono::milliseconds::zero() ? request.limit : m_timeout;
    const int result = libusb_control_transfer(
        m_handle, request.bmRequestType, request.bRequest, request.wValue, request.wIndex,
        request.fromDevice() ? request.in.data() : copyOfOut.data(), request.wLength(),
        static_cast<unsigned>(limit.count()));
    if (result < 0) {
        return static_cast<std::uint32_t>(result);
    }
    request.transferred = static_cast<std::uint32_t>(result);
    return request.transferred == request.wLength() ? 0 : kShortTransfer;
}

UsbFailure LibusbDevice::failureOf(std::uint32_t status) const
{
    if (status == kShortTransfer) {
        return UsbFailure::Short;
    }
    switch (static_cast<std::int32_t>(status)) {
    case LIBUSB_ERROR_PIPE:
        return UsbFailure::Stalled;
    case LIBUSB_ERROR_NO_DEVICE:
        return UsbFailure::Gone;
    case LIBUSB_ERROR_TIMEOUT:
        return UsbFailure::TimedOut;
    default:
        return UsbFailure::Other;
    }
}

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

std::optional<SysfsDevice> LibusbDevice::attached() const
{
    const SysfsDevice sysfs = sysfsOf(m_device);
    return sysfs.address() == libusb_get_device_address(m_device) ? std::optional(sysfs)
                                                                  : std::nullopt;
}

} // namespace vornadel
