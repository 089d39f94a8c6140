// The cost of each whole flow, without a window, beyond the hub's own time and the fixed pauses.

#include "bench/RecordingClock.h"
#include "bench/Table.h"
#include "config/ToolConfig.h"
#include "flows/FirmwareUpdate.h"
#include "flows/FlashErase.h"
#include "flows/FlashRead.h"
#include "flows/FlowTexts.h"
#include "flows/ScalarUpdate.h"
#include "hub/HubTransport.h"
#include "platform/StdClock.h"
#include "standins/sim/DemoImage.h"
#include "standins/sim/SimulatedBus.h"
#include "tests/support/VirtualClock.h"

#include <chrono>
#include <cstdint>
#include <cstdio>
#include <cstdlib>
#include <memory>
#include <string>
#include <vector>

namespace
{

using namespace vornadel;
using bench::RecordingClock;
using bench::Row;
using bench::Series;

constexpr double kTargetMilliseconds = 50;

using Milliseconds = std::chrono::duration<double, std::milli>;

/// Shows nothing, but makes the texts and values as a front end does.
class SilentReporter final : public FlowTextReporter
{
public:
    const std::string& complaint() const { return m_complaint; }

private:
    void resetProgressInfo() override {}
    void appendProgressInfo_Blue(const std::string& /*text*/) override {}
    void appendProgressInfo_Red(const std::string& text) override { m_complaint += text; }
    void updateProgressBar(double /*percent*/, Wait /*wait*/) override {}

    std::string m_complaint;
};

[[noreturn]] void giveUp(const std::string& why)
{
    std::fprintf(stderr, "bench_flow: %s\n", why.c_str());
    std::exit(EXIT_FAILURE);
}

std::unique_ptr<SimulatedBus> makeBus(SimulatedLatency latency, Clock& clock)
{
    SimulatedHubOptions options;
    options.latency = latency;
    options.keepInMemory = true;
    std::string error;
    std::unique_ptr<SimulatedBus> bus = SimulatedBus::create(options, clock, error);
    return bus ? std::move(bus) : (giveUp(error), nullptr);
}

bool update(FlowReporter& reporter, const FlowOptions& options)
{
    const std::vector<std::uint8_t> bytes = demoImage(kDemoVersion101);
    FwImage image;
    FwImage_Parse(image, bytes.data(), static_cast<std::int32_t>(bytes.size()));
    return updateFirmware(image, "demo-1.01.bin", reporter, options);
}

bool scalarUpdate(FlowReporter& reporter, const FlowOptions& options)
{
    FwImage image;
    return loadConfiguredImage(image, VORNADEL_RESOURCES, "../examples/demo-1.01.bin") &&
           updateFirmware(image, "demo-1.01.bin", reporter, options);
}

bool read(FlowReporter& reporter, const FlowOptions& options)
{
    std::vector<std::uint8_t> flash;
    return readFlash(flash, reporter, options) && flash == demoImage();
}

/// A flow, and the flash that it leaves in a hub that held the demo image 1.00.
struct Flow {
    const char* name;
    bool (*run)(FlowReporter& reporter, const FlowOptions& options);
    std::vector<std::uint8_t> flashAfterwards;
    bool erases;
};

std::vector<Flow> flows()
{
    return {{"update", update, demoImage(kDemoVersion101), true},
            {"scalar update", scalarUpdate, demoImage(kDemoVersion101), true},
            {"read", read, demoImage(), false},
            {"erase", eraseFlash, std::vector<std::uint8_t>(kSimulatedFlashSize, 0xFF), true}};
}

/// Runs the flow on a fresh hub and returns the wall time.
Milliseconds timeOne(const Flow& flow, SimulatedBus& bus, Clock& flowClock,
                     const FlowOptions& options = {})
{
    Hub_UsePlatform(bus, flowClock);
    SilentReporter reporter;
    const auto begin = std::chrono::steady_clock::now();
    const bool succeeded = flow.run(reporter, options);
    const Milliseconds wall = std::chrono::steady_clock::now() - begin;
    if (!succeeded || bus.hub().flash() != flow.flashAfterwards) {
        giveUp(std::string(flow.name) + " failed: " + reporter.complaint());
    }
    return wall;
}

/// On the virtual clock, pauses and the hub's own time take no wall time. The rest is overhead.
Row onVirtualTime(const Flow& flow, const std::string& hub, SimulatedLatency latency)
{
    constexpr int kRuns = 200;
    Series overhead;
    for (int run = 0; run < kRuns; ++run) {
        test::VirtualClock clock;
        const std::unique_ptr<SimulatedBus> bus = makeBus(latency, clock);
        overhead.add(timeOne(flow, *bus, clock).count());
    }
    return rowOf(flow.name + (", virtual time, " + hub), overhead, kTargetMilliseconds);
}

/// The overhead in real time; adds the rows of where the time went to `parts`.
Row onTheWall(const Flow& flow, std::vector<Row>& parts)
{
    StdClock clock;
    RecordingClock flowClock(clock);
    RecordingClock hubClock(clock);
    const std::unique_ptr<SimulatedBus> bus = makeBus(SimulatedLatency::Real, hubClock);
    const std::string name = flow.name;
    const Milliseconds wall = timeOne(flow, *bus, flowClock);
    const Milliseconds pauses = flowClock.asked();
    const Milliseconds hub = hubClock.asked();
    parts.push_back({name + ", fixed pauses", 1, 0, pauses.count(), 0});
    parts.push_back({name + ", the hub's own time", 1, 0, hub.count(), 0});
    parts.push_back({name + ", wall time", 1, 0, wall.count(), 0});
    return {name + ", real time, unhurried hub", 1, kTargetMilliseconds,
            (wall - pauses - hub).count(), 0};
}

/// The same for a flow that waits for the hub instead of pausing. Of its pauses only the one after
/// an erase is fixed.
Row onTheWallStrictly(const Flow& flow)
{
    constexpr Milliseconds kAfterErase = std::chrono::milliseconds(128);
    StdClock clock;
    RecordingClock hubClock(clock);
    const std::unique_ptr<SimulatedBus> bus = makeBus(SimulatedLatency::Real, hubClock);
    const Milliseconds wall = timeOne(flow, *bus, clock, {.hub = {.strict = true}});
    const Milliseconds hub = hubClock.asked() + hubClock.delayed();
    return {flow.name + std::string(", real time, waiting for the hub"), 1, kTargetMilliseconds,
            (wall - hub - (flow.erases ? kAfterErase : Milliseconds(0))).count(), 0};
}

} // namespace

int main()
{
    readToolConfig(VORNADEL_RESOURCES "/config.ini");
    std::vector<Row> overheads;
    std::vector<Row> parts;
    for (const Flow& flow : flows()) {
        overheads.push_back(onVirtualTime(flow, "instant hub", SimulatedLatency::None));
        overheads.push_back(onVirtualTime(flow, "unhurried hub", SimulatedLatency::Real));
        overheads.push_back(onTheWall(flow, parts));
        overheads.push_back(onTheWallStrictly(flow));
    }
    bench::printTable("Whole flows: wall time less fixed pauses and the hub's own time",
                      "milliseconds", overheads);
    bench::printTable("Where the real time went", "milliseconds", parts);
    return 0;
}
