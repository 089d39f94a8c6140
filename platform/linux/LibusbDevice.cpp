#include "platform/linux/LibusbDevice.h"

#include <array>
#include <cstdio>
#include <fcntl.h>
#include <libusb.h>
#include <sys/file.h>
#include <unistd.h>
#include <utility>

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

/// The node opened and locked, or -1. A lock held by anyone, this process included, is a failure.
int openLocked(libusb_device* device)
{
    std::array<char, 32> path{};
    std::snprintf(path.data(), path.size(), "/dev/bus/usb/%03u/%03u", libusb_get_bus_number(device),
                  libusb_get_device_address(device));
    if (access(path.data(), R_OK | W_OK) != 0) {
        return -1;
    }
    const int node = ::open(path.data(), O_RDWR | O_CLOEXEC);
    if (node >= 0 && flock(node, LOCK_EX | LOCK_NB) != 0) {
        ::close(node);
        return -1;
    }
    return node;
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

bool LibusbDevice::open()
{
    if (m_handle != nullptr) {
        return true;
    }
    m_node = openLocked(m_device);
    if (m_node < 0) {
        return false;
    }
    if (libusb_wrap_sys_device(m_context->get(), m_node, &m_handle) != LIBUSB_SUCCESS) {
        m_handle = nullptr;
        close();
        return false;
    }
    return true;
}

std::uint32_t LibusbDevice::control(ControlRequest& request)
{
    request.transferred = 0;
    if (m_handle == nullptr) {
        return static_cast<std::uint32_t>(LIBUSB_ERROR_NO_DEVICE);
    }
    const int result = libusb_control_transfer(
        m_handle, request.bmRequestType, request.bRequest, request.wValue, request.wIndex,
        static_cast<unsigned char*>(request.data), request.wLength, static_cast<unsigned>(m_timeout.count()));
    if (result < 0) {
        return static_cast<std::uint32_t>(result);
    }
    request.transferred = static_cast<std::uint32_t>(result);
    return request.transferred == request.wLength ? 0 : kShortTransfer;
}

void LibusbDevice::close()
{
    if (m_handle != nullptr) {
        libusb_close(m_handle);
        m_handle = nullptr;
    }
    if (m_node >= 0) {
        ::close(m_node); // libusb leaves a wrapped node open; the lock goes with it
        m_node = -1;
    }
}

} // namespace vornadel
