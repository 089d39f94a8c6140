// What one whole update costs beyond the hub's own time and the fixed pauses, without a window.

#include "bench/RecordingClock.h"
#include "bench/Table.h"
#include "config/ToolConfig.h"
#include "flows/FirmwareUpdate.h"
#include "hub/HubTransport.h"
#include "platform/StdClock.h"
#include "sim/DemoImage.h"
#include "sim/SimulatedBus.h"
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

/// Takes what a flow tells and shows it nowhere.
class SilentReporter final : public FlowReporter
{
public:
    void resetProgressInfo() override {}
    void appendProgressInfo_Blue(const std::string& /*text*/) override {}
    void appendProgressInfo_Red(const std::string& text) override { m_complaint += text; }
    void updateProgressBar(double /*percent*/, Wait /*wait*/) override {}

    const std::string& complaint() const { return m_complaint; }

private:
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

/// Updates a fresh hub; the wall time that went by.
Milliseconds timeOneUpdate(SimulatedBus& bus, Clock& flowClock)
{
    const std::vector<std::uint8_t> bytes = demoImage(kDemoVersion101);
    FwImage image;
    FwImage_Parse(image, bytes.data(), static_cast<std::int32_t>(bytes.size()));
    Hub_UsePlatform(bus, flowClock);
    SilentReporter reporter;
    const auto begin = std::chrono::steady_clock::now();
    const bool succeeded = updateFirmware(image, "demo-1.01.bin", reporter);
    const Milliseconds wall = std::chrono::steady_clock::now() - begin;
    if (!succeeded || bus.hub().flash() != bytes) {
        giveUp("an update failed: " + reporter.complaint());
    }
    return wall;
}

/// Pauses and the hub's own time take no wall time on the virtual clock: what is left is the overhead.
Row onVirtualTime(const std::string& what, SimulatedLatency latency)
{
    constexpr int kRuns = 200;
    Series overhead;
    for (int run = 0; run < kRuns; ++run) {
        test::VirtualClock clock;
        const std::unique_ptr<SimulatedBus> bus = makeBus(latency, clock);
        overhead.add(timeOneUpdate(*bus, clock).count());
    }
    return rowOf(what, overhead, kTargetMilliseconds);
}

void onTheWall(std::vector<Row>& overheads, std::vector<Row>& parts)
{
    StdClock clock;
    RecordingClock flowClock(clock);
    RecordingClock hubClock(clock);
    const std::unique_ptr<SimulatedBus> bus = makeBus(SimulatedLatency::Real, hubClock);
    const Milliseconds wall = timeOneUpdate(*bus, flowClock);
    const Milliseconds pauses = flowClock.asked();
    const Milliseconds hub = hubClock.asked();
    overheads.push_back(
        {"real time, a hub that takes its time", 1, kTargetMilliseconds, (wall - pauses - hub).count(), 0});
    parts = {{"fixed pauses", 1, 0, pauses.count(), 0},
             {"the hub's own time", 1, 0, hub.count(), 0},
             {"wall time", 1, 0, wall.count(), 0}};
}

} // namespace

int main()
{
    readToolConfig(VORNADEL_RESOURCES "/config.ini");
    std::vector<Row> overheads = {
        onVirtualTime("virtual time, a hub that takes none", SimulatedLatency::None),
        onVirtualTime("virtual time, a hub that takes its time", SimulatedLatency::Real),
    };
    std::vector<Row> parts;
    onTheWall(overheads, parts);
    bench::printTable("One whole update: wall time less fixed pauses and the hub's own time", "milliseconds",
                      overheads);
    bench::printTable("Where the real time went", "milliseconds", parts);
    return 0;
}
