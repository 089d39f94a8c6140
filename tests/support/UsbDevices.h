#pragma once

#include "platform/UsbBus.h"

#include <cstdint>
#include <memory>
#include <utility>
#include <vector>

namespace vornadel::test
{

/// All devices of one search, in order; empty also if the bus gives no list.
inline std::vector<std::unique_ptr<UsbDevice>> allDevices(UsbBus& bus)
{
    std::vector<std::unique_ptr<UsbDevice>> devices;
    if (const std::unique_ptr<UsbSearch> search = bus.search()) {
        std::unique_ptr<UsbDevice> device;
        while (search->next(device) == UsbSearch::Step::Device) {
            devices.push_back(std::move(device));
        }
        search->release();
    }
    return devices;
}

/// The first device with these ids, or null.
inline std::unique_ptr<UsbDevice> findDevice(UsbBus& bus, std::uint16_t vendorId,
                                             std::uint16_t productId)
{
    for (std::unique_ptr<UsbDevice>& device : allDevices(bus)) {
        if (device->vendorId() == vendorId && device->productId() == productId) {
            return std::move(device);
        }
    }
    return nullptr;
}

} // namespace vornadel::test
