#include "driver/HubDriver.h"
#include "flows/FirmwareUpdate.h"
#include "flows/FlashErase.h"
#include "flows/FlashRead.h"
#include "tests/flows/FlowTable.h"
#include "tests/support/SimulatedSetup.h"
#include "tests/support/UsbDevices.h"

#include <gtest/gtest.h>

#include <array>
#include <string>

// Flows with one of several hubs, whose restarts go wrong. The others run their ROM code, so any of
// them could be erased and written.

namespace vornadel::test
{
namespace
{

enum class Work { Update, Read, Erase };

/// What a restart does, and whether the flow may succeed with it.
struct RestartRow {
    const char* fault; ///< without its position; empty: none
    bool works;
};

constexpr std::array<RestartRow, 8> kRestarts = {{
    {"", true},
    {"refused:40", true},
    {"late:3", true},
    {"late:60", false},
    {"never", false},
    {"ignored", false},
    {"moved", false},
    {"swapped", false},
}};

struct Case {
    std::size_t hubs;
    std::size_t worked; ///< the number of the hub that is worked on
    Work work;
    HubCode runs;      ///< the code that this hub runs first
    unsigned restart;  ///< the number of the restart that goes wrong
    std::string fault; ///< what goes wrong
};

const std::vector<std::uint8_t>& imageOf(std::size_t hub)
{
    static const std::array images = {demoImage(kDemoVersion101, 1), demoImage(kDemoVersion101, 2),
                                      demoImage(kDemoVersion101, 3)};
    return images.at(hub - 1);
}

/// One flow on its own bus.
class FlowOnOne
{
public:
    FlowOnOne(const Case& what, bool strict) : m_case(what), m_setup(optionsOf(what))
    {
        FlowOptions options;
        options.hub.strict = strict;
        options.hub.place = {{"sim-" + std::to_string(what.worked), 1}, {}};
        ToldValues told;
        switch (what.work) {
        case Work::Update: {
            FwImage image;
            const std::vector<std::uint8_t>& bytes = imageOf(what.worked);
            EXPECT_TRUE(
                FwImage_Parse(image, bytes.data(), static_cast<std::int32_t>(bytes.size())));
            succeeded = updateFirmware(image, "demo.bin", told, options);
            break;
        }
        case Work::Read:
            succeeded = readFlash(m_read, told, options);
            break;
        case Work::Erase:
            succeeded = eraseFlash(told, options);
            break;
        }
        EXPECT_EQ(told.result.succeeded(), succeeded);
        EXPECT_FALSE(Hub_IsOpen());
    }

    /// Whether what a success says is so.
    bool isDone()
    {
        SimulatedHub& hub = m_setup.hub(m_case.worked);
        const bool isBack =
            !hub.attachedHalves().empty() && hub.place() == "sim-" + std::to_string(m_case.worked);
        switch (m_case.work) {
        case Work::Update:
            return isBack && hub.flash() == imageOf(m_case.worked) &&
                   hub.runningCode() == HubCode::Flash;
        case Work::Read:
            return isBack && hub.flash() == m_read && hub.runningCode() == HubCode::Flash;
        case Work::Erase:
            return isBack && hub.flash() == std::vector<std::uint8_t>(kSimulatedFlashSize, 0xFF);
        }
        return false;
    }

    unsigned requestsToOthers()
    {
        unsigned requests = 0;
        for (std::size_t number = 1; number <= m_case.hubs; ++number) {
            requests += number == m_case.worked ? 0 : m_setup.hub(number).requestCount();
        }
        return requests;
    }

    bool succeeded = false;

private:
    static std::vector<SimulatedHubOptions> optionsOf(const Case& what)
    {
        std::vector<SimulatedHubOptions> hubs(what.hubs);
        for (std::size_t number = 1; number <= what.hubs; ++number) {
            SimulatedHubOptions& hub = hubs[number - 1];
            hub.keepInMemory = true;
            hub.mode = number == what.worked ? what.runs : HubCode::Rom;
        }
        if (!what.fault.empty()) {
            std::string error;
            Fault fault;
            EXPECT_TRUE(parseFault(what.fault + '@' + std::to_string(what.restart), fault, error))
                << error;
            hubs[what.worked - 1].faults.push_back(fault);
        }
        return hubs;
    }

    const Case m_case;
    HubSetup m_setup;
    std::vector<std::uint8_t> m_read;
};

std::string textOf(const Case& what)
{
    static constexpr std::array kWorks = {"update", "read", "erase"};
    return std::string(kWorks.at(static_cast<std::size_t>(what.work))) + " of hub " +
           std::to_string(what.worked) + " of " + std::to_string(what.hubs) + " from " +
           (what.runs == HubCode::Rom ? "ROM" : "flash") + " code, restart " +
           std::to_string(what.restart) + ": " + what.fault;
}

/// Calls `check` for each hub of two and three, each work, and each restart of a flow.
template <typename Check>
void forEachCase(const std::string& fault, const Check& check)
{
    for (const std::size_t hubs : {std::size_t{2}, std::size_t{3}}) {
        for (std::size_t worked = 1; worked <= hubs; ++worked) {
            for (const Work work : {Work::Update, Work::Read, Work::Erase}) {
                check(Case{hubs, worked, work, HubCode::Flash, 1, fault});
                check(Case{hubs, worked, work, HubCode::Flash, 2, fault});
                check(Case{hubs, worked, work, HubCode::Rom, 1, fault});
            }
        }
    }
}

/// Runs the strict flow. Fails the test after a false success, and if another hub was asked.
bool succeeds(const Case& what)
{
    SCOPED_TRACE(textOf(what));
    FlowOnOne run(what, true);
    EXPECT_TRUE(run.isDone() || !run.succeeded) << "a false success";
    EXPECT_EQ(run.requestsToOthers(), 0U);
    return run.succeeded;
}

TEST(OneHubOfMany, IsTheOnlyOneAskedAndToldOfHoweverItsRestartsEnd)
{
    for (const RestartRow& row : kRestarts) {
        forEachCase(row.fault, [&](const Case& what) {
            EXPECT_EQ(succeeds(what), row.works) << textOf(what);
        });
    }
}

TEST(OneHubOfMany, MustRunTheCodeThatItWasSentTo)
{
    forEachCase("same-mode", [](const Case& what) {
        // A blank flash has no other code to run.
        const bool isLast = what.restart == 2 || what.runs == HubCode::Rom;
        EXPECT_EQ(succeeds(what), what.work == Work::Erase && isLast) << textOf(what);
    });
}

TEST(OneHubOfMany, IsTheOnlyOneAskedByTheWindow)
{
    for (const char* fault : {"", "refused:40", "late:3", "late:60", "never", "ignored", "moved",
                              "swapped", "same-mode"}) {
        forEachCase(fault, [](const Case& what) {
            EXPECT_EQ(FlowOnOne(what, false).requestsToOthers(), 0U) << textOf(what);
        });
    }
}

TEST(OneHubOfMany, MayMoveToAFreePlaceInTheWindow)
{
    forEachCase("moved", [](const Case& what) {
        EXPECT_TRUE(FlowOnOne(what, false).succeeded) << textOf(what);
    });
}

TEST(OneHubOfMany, IsTheOnlyOneAskedByTheWindowAfterTheDriverIsUnloaded)
{
    std::vector<SimulatedHubOptions> hubs(2);
    hubs[0].faults = {{.kind = FaultKind::Never}};
    hubs[1].mode = HubCode::Rom;
    SimulatedSetup setup(hubs);
    returnHubToFlash();
    EXPECT_GT(setup.hub(1).requestCount(), 0U);
    EXPECT_EQ(setup.hub(2).requestCount(), 0U);
}

} // namespace
} // namespace vornadel::test
