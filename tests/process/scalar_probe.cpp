// The window program with a configured image, on a simulated hub with its flash in a file and
// virtual time: it updates the hub and ends by itself.
//
//   scalar_probe FLASH

#include "app/AppDelegate.h"
#include "app/Tool.h"
#include "standins/sim/SimulatedBus.h"
#include "tests/app/PatientClock.h"
#include "tests/support/FakeMachine.h"

#include <QApplication>

#include <cstdio>
#include <filesystem>
#include <string>

int main(int argc, char** argv)
{
    using namespace vornadel;
    if (argc != 2) {
        return 64;
    }
    const QApplication application(argc, argv);
    test::PatientClock clock;
    SimulatedHubOptions options;
    options.image = argv[1];
    options.latency = SimulatedLatency::None;
    std::string error;
    const auto bus = SimulatedBus::create(options, clock, error);
    if (!bus) {
        std::fprintf(stderr, "%s\n", error.c_str());
        return 65;
    }
    test::FakeShell shell;
    test::FakePrivilegedRun privileged;
    test::FakeSystemVersion version;
    Platform platform{*bus, shell, privileged, version, clock};
    runTool(platform, toolPlaceOf(std::filesystem::canonical(argv[0])), {},
            [&clock](AppDelegate& tool) { clock.mainThread = &tool.mainThread(); });
    return 66; // something else has ended it
}
