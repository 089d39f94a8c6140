// Time from the start of the process to the window's first picture, and the memory used: the tool
// compared with a bare window.

#include "bench/Child.h"
#include "bench/Table.h"

#include <cstdio>
#include <cstdlib>
#include <filesystem>
#include <string>
#include <vector>

namespace
{

using namespace vornadel::bench;

constexpr int kRuns = 15;
constexpr double kTimeRatio = 1.3;
constexpr double kMemoryRatio = 1.15;

struct Costs {
    Series milliseconds;
    Series mebibytes;

    void add(const StartCost& cost)
    {
        milliseconds.add(cost.milliseconds);
        mebibytes.add(cost.mebibytes);
    }
};

StartCost startOnce(const std::vector<std::string>& command,
                    const std::vector<std::string>& environment)
{
    const auto cost = runUntilPainted(command, environment);
    if (!cost) {
        std::fprintf(stderr, "bench_start: %s did not paint\n", command.front().c_str());
        std::exit(EXIT_FAILURE);
    }
    return *cost;
}

void compare(const std::string& title, const std::vector<std::string>& environment,
             const std::string& flash)
{
    const std::vector<std::string> bareCommand{BARE_WINDOW};
    const std::vector<std::string> toolCommand{TOOL_WINDOW,
                                               "--simulated-hub=latency=none,image=" + flash};
    startOnce(bareCommand, environment); // from now on their files are in the disk cache
    startOnce(toolCommand, environment);

    Costs bare;
    Costs tool;
    for (int run = 0; run < kRuns; ++run) { // alternately, so that other load hits both
        bare.add(startOnce(bareCommand, environment));
        tool.add(startOnce(toolCommand, environment));
    }
    printTable("Start to first picture, " + title, "milliseconds",
               {rowOf("bare window with one text view", bare.milliseconds, 0),
                rowOf("the tool", tool.milliseconds, kTimeRatio * bare.milliseconds.median()),
                {"the tool / bare window (ratio)", kRuns, kTimeRatio,
                 tool.milliseconds.median() / bare.milliseconds.median(), 0}});
    printTable("Peak resident memory, " + title, "MiB",
               {rowOf("bare window with one text view", bare.mebibytes, 0),
                rowOf("the tool", tool.mebibytes, kMemoryRatio * bare.mebibytes.median()),
                {"the tool / bare window (ratio)", kRuns, kMemoryRatio,
                 tool.mebibytes.median() / bare.mebibytes.median(), 0}});
}

} // namespace

int main()
{
    std::string folder =
        (std::filesystem::temp_directory_path() / "vornadel-bench-XXXXXX").string();
    if (::mkdtemp(folder.data()) == nullptr) {
        std::perror("bench_start");
        return EXIT_FAILURE;
    }
    const std::string flash = folder + "/flash.bin";

    compare("offscreen", {"QT_QPA_PLATFORM=offscreen"}, flash);
    const VirtualDisplay display;
    if (display.name().empty()) {
        std::printf("Xvfb is not there: not measured on a display\n");
    } else {
        compare("on a display", {"QT_QPA_PLATFORM=xcb", "DISPLAY=" + display.name()}, flash);
    }
    std::filesystem::remove_all(folder);
    return 0;
}
