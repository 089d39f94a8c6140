// The time of an update on a kernel's bus: with the fixed pauses of the window, and with waiting
// for the hub as vornadelctl does. The two alternate on the same hub.
//
// It needs a hub with ids 1209:0001 and 1209:0002, and replaces its firmware. tests/kernel/bench
// runs it in a virtual machine that has one.

#include "bench/Table.h"
#include "flows/FirmwareUpdate.h"
#include "flows/FlowTexts.h"
#include "hub/HubTransport.h"
#include "hub/SupportedIds.h"
#include "platform/StdClock.h"
#include "platform/linux/LibusbBus.h"
#include "standins/sim/DemoImage.h"

#include <chrono>
#include <cstdio>
#include <cstdlib>
#include <string>
#include <vector>

namespace
{

using namespace vornadel;
using bench::Series;

constexpr int kPairs = 5;

using Milliseconds = std::chrono::duration<double, std::milli>;

/// Shows nothing but failures.
class SilentReporter final : public FlowTextReporter
{
    void resetProgressInfo() override {}
    void appendProgressInfo_Blue(const std::string& /*text*/) override {}
    void appendProgressInfo_Red(const std::string& text) override
    {
        std::fputs(text.c_str(), stderr);
    }
    void updateProgressBar(double /*percent*/, Wait /*wait*/) override {}
};

double timeUpdate(bool strict)
{
    const std::vector<std::uint8_t> bytes = demoImage(kDemoVersion101);
    FwImage image;
    FwImage_Parse(image, bytes.data(), static_cast<std::int32_t>(bytes.size()));
    SilentReporter reporter;
    const auto begin = std::chrono::steady_clock::now();
    if (!updateFirmware(image, "demo-1.01.bin", reporter, {.hub = {.strict = strict}})) {
        std::fputs("bench_update: an update failed\n", stderr);
        std::exit(EXIT_FAILURE);
    }
    return Milliseconds(std::chrono::steady_clock::now() - begin).count();
}

} // namespace

int main()
{
    SupportedIdList.at(0) = {1, 0x1209, 0x0001, 0x0002};
    StdClock clock;
    LibusbBus bus(clock);
    Hub_UsePlatform(bus, clock);
    Series pausing;
    Series waiting;
    timeUpdate(false); // the first one may find the hub in its ROM code
    for (int pair = 0; pair < kPairs; ++pair) {
        pausing.add(timeUpdate(false));
        waiting.add(timeUpdate(true));
    }
    const bench::Row slow = rowOf("with fixed pauses", pausing, 0);
    const bench::Row quick = rowOf("waiting for the hub", waiting, 0);
    bench::printTable("An update on a kernel's bus", "milliseconds", {slow, quick});
    std::printf("waiting takes %.2f of the time\n", quick.measured / slow.measured);
    return 0;
}
