#pragma once

#include "standins/virtual_hub/HubHalf.h"
#include "tests/virtual_hub/Frames.h"

#include <cstdint>
#include <gtest/gtest.h>

namespace vornadel::test
{

/// A half of hub 3 with its own ids, which refuses vendor requests.
inline VirtualDevice someDevice(HubSpeed half)
{
    return {3,
            half,
            0x1A2B,
            static_cast<std::uint16_t>(half == HubSpeed::SuperSpeed ? 0x3C4D : 0x3C4E),
            static_cast<std::uint16_t>(half == HubSpeed::SuperSpeed ? 0x3C4E : 0x3C4D),
            [](ControlRequest&) { return kSimulatedStall; },
            [] { return true; }};
}

/// One half, with requests written as they are on the wire.
class HalfBench
{
public:
    explicit HalfBench(HubSpeed speed) : half(someDevice(speed)) {}

    TransferResult send(const SetupPacket& setup, const Bytes& out = {})
    {
        return half.control(setup, out);
    }
    /// The data of a request to the host; it must succeed.
    Bytes read(const SetupPacket& setup)
    {
        const TransferResult result = send(setup);
        EXPECT_EQ(result.status, 0);
        EXPECT_EQ(result.moved, result.data.size());
        return result.data;
    }
    bool accepts(const SetupPacket& setup, const Bytes& out = {})
    {
        return send(setup, out).status == 0;
    }
    bool stalls(const SetupPacket& setup) { return send(setup).status == -32; }

    Bytes descriptor(std::uint16_t typeAndIndex, std::uint16_t length = 0xFFFF)
    {
        return read({0x80, 6, typeAndIndex, 0, length});
    }
    void configure() { EXPECT_TRUE(accepts({0x00, 9, 1, 0, 0})); }

    HubHalf half;
};

/// A test that runs for each half.
class EachHalf : public testing::TestWithParam<HubSpeed>
{
protected:
    HalfBench m_bench{GetParam()};
};

} // namespace vornadel::test
