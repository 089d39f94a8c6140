#pragma once

#include "flows/FlowReporter.h"
#include "platform/Clock.h"
#include "standins/sim/SimulatedHub.h"
#include "tests/flows/ToldValues.h"

#include <cstdint>
#include <map>
#include <optional>
#include <string>
#include <vector>

namespace vornadel::test
{

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

} // namespace vornadel::test
