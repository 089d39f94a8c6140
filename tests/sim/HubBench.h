#pragma once

#include "standins/sim/SimulatedBus.h"
#include "tests/support/UsbDevices.h"
#include "tests/support/VirtualClock.h"

#include <array>
#include <cstddef>
#include <cstdint>
#include <gtest/gtest.h>
#include <memory>
#include <string>
#include <vector>

namespace vornadel::test
{

using Bytes = std::vector<std::uint8_t>;
using namespace std::chrono_literals;

inline constexpr std::size_t kFlashSize = 32768;

/// In memory, without latency, running ROM code, so ready for flash requests.
inline SimulatedHubOptions romOptions()
{
    SimulatedHubOptions options;
    options.keepInMemory = true;
    options.latency = SimulatedLatency::None;
    options.mode = HubCode::Rom;
    return options;
}

inline SimulatedHubOptions withFault(const std::string& text,
                                     SimulatedHubOptions options = romOptions())
{
    Fault fault;
    std::string error;
    EXPECT_TRUE(parseFault(text, fault, error)) << error;
    options.faults.push_back(fault);
    return options;
}

/// The bus with a simulated hub, and the hub's requests written byte by byte.
class HubBench
{
public:
    explicit HubBench(const SimulatedHubOptions& options = romOptions())
        : bus(SimulatedBus::create(options, clock, error))
    {
        EXPECT_NE(bus, nullptr) << error;
    }

    SimulatedHub& hub() const { return bus->hub(); }

    /// Opens the first listed device; false if there is none or it cannot be opened.
    bool open()
    {
        std::vector<std::unique_ptr<UsbDevice>> devices = allDevices(*bus);
        if (devices.empty()) {
            return false;
        }
        device = std::move(devices.front());
        return device->open() == UsbOpenStatus::Opened;
    }

    std::uint32_t send(ControlRequest request)
    {
        const std::uint32_t status = device->control(request);
        transferred = request.transferred;
        return status;
    }
    std::uint32_t openTime() { return send({0x40, 0x02, 0x0001, 0x1209}); }
    std::uint32_t restartIntoRom() { return send({0x40, 0x00, 0, 0}); }
    std::uint32_t restartIntoFlash() { return send({0x40, 0xE9, 0x0101, 0}); }
    std::uint32_t erase() { return send({0x40, 0xE8, 0, 0}); }
    std::uint32_t status(std::array<std::uint8_t, 32>& block)
    {
        return send({0xC0, 0x09, 0, 0, {}, block});
    }
    std::uint32_t write(std::uint32_t address, const Bytes& data)
    {
        return send({0x40, 0xC8, static_cast<std::uint16_t>(address),
                     static_cast<std::uint16_t>(address >> 16), data});
    }
    std::uint32_t read(std::uint32_t address, Bytes& data)
    {
        return send({0xC0,
                     0xD8,
                     static_cast<std::uint16_t>(address),
                     static_cast<std::uint16_t>(address >> 16),
                     {},
                     data});
    }

    /// Version word and running code from the status block; all zero if it cannot be read.
    std::uint16_t version()
    {
        std::array<std::uint8_t, 32> block{};
        status(block);
        return static_cast<std::uint16_t>(block[10] * 256 + block[11]);
    }
    bool runsRom()
    {
        std::array<std::uint8_t, 32> block{};
        EXPECT_EQ(status(block), 0U);
        return (block[15] & 0x02) == 0;
    }

    VirtualClock clock;
    std::string error;
    std::unique_ptr<SimulatedBus> bus;
    std::unique_ptr<UsbDevice> device;
    std::uint32_t transferred = 0; ///< by the last request
};

} // namespace vornadel::test
