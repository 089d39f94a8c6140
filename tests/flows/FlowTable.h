#pragma once

#include "flows/FlowReporter.h"
#include "tests/support/SimulatedSetup.h"

#include <gtest/gtest.h>

#include <cstdint>
#include <functional>
#include <map>
#include <optional>
#include <string>
#include <vector>

namespace vornadel::test
{

/// Records the values that a flow reports, and checks their order.
class ToldValues final : public FlowReporter
{
public:
    void started(const FlowStart& /*start*/) override
    {
        ++starts;
        EXPECT_TRUE(steps.empty());
    }
    void stepStarted(Step step) override
    {
        EXPECT_EQ(starts, 1);
        EXPECT_EQ(m_done, m_total) << "the step before is not done";
        m_done = m_total = 0;
        steps.push_back(step);
    }
    void progressed(std::int32_t done, std::int32_t total) override
    {
        EXPECT_GT(done, m_done);
        EXPECT_LE(done, total);
        m_done = done;
        m_total = total;
    }
    void waiting(Clock::Duration sofar) override { waits.push_back(sofar); }
    void finished(const FlowResult& told) override
    {
        EXPECT_EQ(ends, 0);
        result = told;
    }
    void closed() override
    {
        ++ends;
        if (onClosed) {
            onClosed();
        }
    }

    int starts = 0;
    std::vector<Step> steps;
    std::vector<Clock::Duration> waits;
    FlowResult result;
    int ends = 0;
    std::function<void()> onClosed;

private:
    std::int32_t m_done = 0; // of the step
    std::int32_t m_total = 0;
};

/// A result without what it says of the flash and the hub.
FlowResult failureIn(const FlowResult& result);

// The requests and reports of each flow without a fault. Each request is one letter, by its purpose
// in the flow:
//
// | letter | request |
// |---|---|
// | `o`, `O`, `H` | the open-time request: at first, in ROM code, and after the last restart |
// | `s`, `S` | status block: does ROM code run? at first, and after the restart into it |
// | `v` | status block: how quick are restarts? |
// | `m`, `f` | restart into ROM code, into flash code |
// | `e`, `w`, `r` | erase, write, read |

struct Flow {
    const char* name;
    bool (*run)(SimulatedHub& hub, FlowReporter& reporter);
    const char* work; ///< its requests to a hub in ROM code, between opening and restarting it
    std::vector<Step> steps;             ///< none: it reports nothing
    std::map<Step, const char*> reasons; ///< the first red text when that step fails
    const char* success;                 ///< the last blue text
    const char* failure;                 ///< the last red text

    std::string wireFrom(HubCode runs) const;
    bool writes() const; ///< and then verifies
};

const Flow& easyUpdate(); ///< with demoImage(kDemoVersion101)
const Flow& flashRead();
const Flow& flashErase();
const Flow& driverUnload();

/// The image that the update writes, and the flash before it.
const std::vector<std::uint8_t>& newFlash();
const std::vector<std::uint8_t>& oldFlash();

/// The requests in the letters of an observer, who does not know their purpose: `o`, `O`, `H` are
/// `h`, and `v`, `S` are `s`.
std::string asObserved(std::string wire);
char observedLetter(const ControlRequest& request);

/// Expects a flow to have reported the steps up to `fails`, or all of them, and this end; without
/// `fails`, a failure of the last reported step.
void expectTold(const Flow& flow, const ToldValues& told, bool succeeded,
                std::optional<Step> fails = std::nullopt);

/// The longest allowed duration of a flow with these requests, on a hub that takes no time.
Clock::Duration longestFor(const std::string& observed);

/// A hub with its flash in memory, which starts with this code.
SimulatedHubOptions hubThatRuns(HubCode code, const std::vector<std::uint8_t>& flash = oldFlash());

/// Runs a flow and checks what must hold with every fault: it ends in time, the hub is closed,
/// success means that the image is in the flash and the hub came back, and nothing was sent before
/// the first step was reported.
struct FaultyRun {
    FaultyRun(const Flow& flow, SimulatedSetup& setup);

    bool succeeded = false;
    ToldValues told;
    std::string wire; ///< the requests that reached the hub, in the letters of an observer
};

/// Powers the hub up again, and lets it refuse the rest of the opens.
void powerUp(SimulatedSetup& setup, unsigned opensStillRefused = 0);

/// The same, and expects an update to succeed then.
void expectHealthyUpdate(SimulatedSetup& setup, unsigned opensStillRefused = 0);

} // namespace vornadel::test
