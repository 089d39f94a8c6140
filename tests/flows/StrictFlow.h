#pragma once

#include "flows/FirmwareUpdate.h"
#include "flows/FlashErase.h"
#include "flows/FlashRead.h"
#include "flows/FlashVerify.h"
#include "flows/HubRestart.h"
#include "hub/HubCommands.h"
#include "tests/flows/FlowTable.h"
#include "tests/support/SimulatedSetup.h"

#include <gtest/gtest.h>

#include <atomic>
#include <vector>

namespace vornadel::test
{

inline SimulatedHubOptions inMemory()
{
    SimulatedHubOptions options;
    options.keepInMemory = true;
    return options;
}

/// Strict flows on one simulated hub with demo firmware 1.00, which take the time of a real one.
class StrictFlow : public testing::Test
{
protected:
    StrictFlow()
    {
        EXPECT_TRUE(FwImage_Parse(image, bytes.data(), static_cast<std::int32_t>(bytes.size())));
        options.hub.strict = true;
        options.stop = &isAskedToStop;
    }

    bool update()
    {
        return run([this](FlowReporter& told) {
            return updateFirmware(image, "demo.bin", told, options);
        });
    }
    bool erase()
    {
        return run([this](FlowReporter& told) { return eraseFlash(told, options); });
    }
    bool read()
    {
        return run([this](FlowReporter& told) { return readFlash(flash, told, options); });
    }
    bool restore(const std::vector<std::uint8_t>& content)
    {
        return run(
            [&](FlowReporter& told) { return restoreFlash(content, "backup.bin", told, options); });
    }
    bool verify(const std::vector<std::uint8_t>& content)
    {
        return run([&](FlowReporter& told) {
            return verifyFlash(content, "demo.bin", flash, told, options);
        });
    }
    bool restart(std::uint8_t mode)
    {
        return run([&](FlowReporter& told) { return restartHub(mode, told, options); });
    }

    void failedWith(const FlowResult& expected)
    {
        EXPECT_EQ(failureIn(result), expected);
        EXPECT_FALSE(Hub_IsOpen());
    }

    void addFault(const Fault& fault) { setup.hub().addFault(fault); }

    HubSetup setup{inMemory()};
    const std::vector<std::uint8_t> bytes = demoImage(0x0101);
    FwImage image;
    std::vector<std::uint8_t> flash;
    std::atomic<bool> isAskedToStop = false;
    FlowOptions options;
    FlowResult result;
    std::vector<Step> steps;
    std::vector<Clock::Duration> waits;

private:
    template <typename Flow>
    bool run(Flow flow)
    {
        ToldValues told;
        const bool succeeded = flow(told);
        result = told.result;
        steps = told.steps;
        waits = told.waits;
        return succeeded;
    }
};

} // namespace vornadel::test
