#pragma once

#include "flows/FlowReporter.h"
#include "platform/Clock.h"
#include "standins/sim/SimulatedHub.h"
#include "tests/support/RecordingReporter.h"

#include <cstdint>
#include <optional>
#include <string>
#include <vector>

namespace vornadel::test
{

// What each flow sends and says when all goes well. The requests are written as one letter each, by
// the part they have in a flow:
//
// | letter | request |
// |---|---|
// | `o`, `O`, `H` | the open-time request: at first, in ROM code, and after the last restart |
// | `s`, `S` | status block: does ROM code run? at first, and after the restart into it |
// | `v` | status block: how quick are restarts? |
// | `m`, `f` | restart into ROM code, into flash code |
// | `e`, `w`, `r` | erase, write, read |

enum class Step { Open, Erase, Write, Read, Verify, Reset };

/// A step as the user sees it: the line at its beginning, if it has one, and the reason when it
/// fails.
struct StepTexts {
    Step step;
    std::string begins;
    std::string fails;
};

struct Flow {
    const char* name;
    bool (*run)(SimulatedHub& hub, FlowReporter& reporter);
    const char* work; ///< its requests to a hub in ROM code, between opening and restarting it
    bool writes;      ///< and then compares what it wrote
    std::vector<StepTexts> steps; ///< none: it tells nothing
    const char* success;
    const char* failure;

    std::string wireFrom(HubCode runs) const;
};

const Flow& easyUpdate();   ///< with demoImage(kDemoVersion101)
const Flow& scalarUpdate(); ///< with the same, from a file
const Flow& flashRead();
const Flow& flashErase();
const Flow& driverUnload();

/// The image that the updates write, and the flash before them.
const std::vector<std::uint8_t>& newFlash();
const std::vector<std::uint8_t>& oldFlash();

/// The requests in the letters of an observer, who sees no parts: `o`, `O`, `H` are `h`, and `v`,
/// `S` are `s`.
std::string asObserved(std::string wire);
char observedLetter(const ControlRequest& request);

/// Whether what was told is a run of the flow with this end, to the letter; without `fails`, any
/// failing step will do whose line was the last.
void expectTold(const Flow& flow, const RecordingReporter& reporter, bool succeeded,
                std::optional<Step> fails = std::nullopt);

/// The longest that a flow may have taken whose requests these are, with a hub that needs no time
/// for them.
Clock::Duration longestFor(const std::string& observed);

} // namespace vornadel::test
