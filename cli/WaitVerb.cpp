#include "cli/HubChoices.h"
#include "cli/Options.h"
#include "cli/Verbs.h"
#include "hub/BusEvents.h"
#include "hub/HubTransport.h"

#include <algorithm>
#include <chrono>
#include <string>

namespace vornadel
{

namespace
{

using namespace std::chrono_literals;

constexpr Clock::Duration kLookPause = 1s;
constexpr Clock::Duration kSilence = 5s;

/// The place of a selected hub that is attached; empty if there is none.
std::string attachedPlace(const Command& command)
{
    const auto choices = findHubChoices(command.platform.usb);
    if (!choices) {
        return {};
    }
    const auto found = std::find_if(choices->begin(), choices->end(), [&](const HubChoice& choice) {
        return !choice.isAway() && isSelected(choice, command.line.hub);
    });
    return found == choices->end() ? std::string() : found->place();
}

std::string secondsOf(Clock::Duration duration)
{
    return std::to_string(std::chrono::duration_cast<std::chrono::seconds>(duration).count()) +
           " s";
}

int waitVerb(const Command& command)
{
    if (const int status = requireConfiguration(command); status != kExitSuccess) {
        return status;
    }
    Clock& clock = command.platform.clock;
    const BusEvents events(command.platform.usb, clock);
    const Clock::Duration begin = clock.now();
    const Clock::Duration end = command.line.timeout
                                    ? begin + std::chrono::seconds(*command.line.timeout)
                                    : Clock::Duration::max();
    Clock::Duration nextWord = begin + kSilence;
    for (;;) {
        const unsigned seen = events.count();
        if (const std::string place = attachedPlace(command); !place.empty()) {
            command.result.place = place;
            command.out << "attached: " << place << '\n' << std::flush;
            return kExitSuccess;
        }
        const Clock::Duration now = clock.now();
        if (Hub_IsAbandoned()) {
            return fail(command, FailureId::Interrupted, "stopped");
        }
        if (now >= end) {
            return fail(command, FailureId::NoHub,
                        "no such hub was attached within " + secondsOf(now - begin));
        }
        if (now >= nextWord) {
            nextWord = now + kSilence;
            command.err << "waiting for the hub, " << secondsOf(now - begin) << '\n' << std::flush;
        }
        clock.sleepUntil([&] { return events.count() != seen; }, std::min(kLookPause, end - now));
    }
}

void addWaitOptions(CLI::App& verb, CommandLine& line)
{
    addNumber(verb, "--timeout", "SECONDS", line.timeout,
              "Give up after so many seconds; otherwise never");
}

} // namespace

const Verb kWaitVerb = {
    .name = "wait",
    .summary = "Wait until a hub is attached: the selected one, or any",
    .run = waitVerb,
    .addOptions = addWaitOptions,
    .isFlow = true,
    .examples = "vornadelctl --path 2-3 wait --timeout 30\n",
};

} // namespace vornadel
