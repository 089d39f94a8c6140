#include "standins/sim/Fault.h"

#include "standins/sim/TextValues.h"

#include <algorithm>

namespace vornadel
{

namespace
{

constexpr unsigned kMostPositions = 1000000;
constexpr unsigned kMostBytes = 65535;
constexpr unsigned kMostOpens = 1000000;
constexpr unsigned kMostSeconds = 86400;
constexpr unsigned kMostMilliseconds = 1000 * kMostSeconds;

enum class Strikes { Request, Open, Restart };
enum class Argument { None, OptionalCount, Count, Seconds, Milliseconds };

struct FaultRow {
    std::string_view name;
    FaultKind kind;
    Strikes strikes;
    Argument argument;
    unsigned least; // of a numeric argument
    unsigned most;
};

constexpr std::array<FaultRow, 15> kFaultRows = {{
    {"stall", FaultKind::Stall, Strikes::Request, Argument::None, 0, 0},
    {"vanish-before", FaultKind::VanishBefore, Strikes::Request, Argument::None, 0, 0},
    {"vanish-after", FaultKind::VanishAfter, Strikes::Request, Argument::None, 0, 0},
    {"torn", FaultKind::Torn, Strikes::Request, Argument::Count, 0, kMostBytes},
    {"flip", FaultKind::Flip, Strikes::Request, Argument::OptionalCount, 0, kMostBytes},
    {"ignore", FaultKind::Ignore, Strikes::Request, Argument::None, 0, 0},
    {"open-refused", FaultKind::OpenRefused, Strikes::Open, Argument::Count, 1, kMostOpens},
    {"never", FaultKind::Never, Strikes::Restart, Argument::None, 0, 0},
    {"late", FaultKind::Late, Strikes::Restart, Argument::Seconds, 0, 0},
    {"same-mode", FaultKind::SameMode, Strikes::Restart, Argument::None, 0, 0},
    {"bounce", FaultKind::Bounce, Strikes::Restart, Argument::None, 0, 0},
    {"ignored", FaultKind::Ignored, Strikes::Restart, Argument::None, 0, 0},
    {"swapped", FaultKind::Swapped, Strikes::Restart, Argument::None, 0, 0},
    {"moved", FaultKind::Moved, Strikes::Restart, Argument::None, 0, 0},
    {"refused", FaultKind::Refused, Strikes::Restart, Argument::Milliseconds, 1, kMostMilliseconds},
}};

struct RequestName {
    std::string_view name;
    RequestKind kind;
};

constexpr std::array<RequestName, 7> kRequestNames = {{
    {"open-time", RequestKind::OpenTime},
    {"status", RequestKind::Status},
    {"rom", RequestKind::Rom},
    {"flash", RequestKind::Flash},
    {"erase", RequestKind::Erase},
    {"write", RequestKind::Write},
    {"read", RequestKind::Read},
}};

std::size_t index(RequestKind kind) { return static_cast<std::size_t>(kind); }

Strikes struckBy(FaultKind kind)
{
    const auto* row =
        std::find_if(kFaultRows.begin(), kFaultRows.end(),
                     [&](const FaultRow& candidate) { return candidate.kind == kind; });
    return row->strikes;
}

/// Torn and flipped data need a request that moves flash data.
bool fits(FaultKind kind, RequestKind request)
{
    switch (kind) {
    case FaultKind::Torn:
        return request == RequestKind::Write;
    case FaultKind::Flip:
        return request == RequestKind::Write || request == RequestKind::Read;
    default:
        return true;
    }
}

bool refuse(std::string& error, std::string_view fault, std::string_view why)
{
    error = "fault \"";
    error += fault;
    error += "\": ";
    error += why;
    return false;
}

std::optional<Clock::Duration> seconds(std::string_view text)
{
    constexpr std::string_view kMicros = "000000";
    std::string_view fraction = text;
    const std::string_view whole = cutAt(fraction, '.');
    const bool pointed = whole.size() != text.size();
    if ((pointed && fraction.empty()) || fraction.size() > kMicros.size()) {
        return std::nullopt;
    }
    const std::string padded = std::string(fraction).append(kMicros.substr(fraction.size()));
    const std::optional<unsigned> full = wholeNumber(whole, 10, kMostSeconds);
    const std::optional<unsigned> micros = wholeNumber(padded, 10, 999999);
    if (!full || !micros) {
        return std::nullopt;
    }
    return std::chrono::seconds(*full) + Clock::Duration(*micros);
}

bool parseArgument(const FaultRow& row, std::string_view argument, bool given, Fault& fault,
                   std::string& why)
{
    if (row.argument == Argument::None) {
        why = "takes no argument";
        return !given;
    }
    if (row.argument == Argument::OptionalCount && !given) {
        return true;
    }
    if (row.argument == Argument::Seconds) {
        const std::optional<Clock::Duration> delay = seconds(argument);
        why = "needs seconds, as in late:2.5";
        fault.delay = delay.value_or(Clock::Duration(0));
        return delay.has_value();
    }
    const std::optional<unsigned> amount = wholeNumber(argument, 10, row.most);
    why = "needs a number from " + std::to_string(row.least) + " to " + std::to_string(row.most) +
          " after a colon";
    if (row.argument == Argument::Milliseconds) {
        fault.delay = std::chrono::milliseconds(amount.value_or(0));
    } else {
        fault.amount = amount.value_or(0);
    }
    return amount && *amount >= row.least;
}

bool parsePosition(const FaultRow& row, std::string_view text, Fault& fault, std::string& why)
{
    std::string_view number = text;
    const bool named =
        row.strikes == Strikes::Request && (text.empty() || text[0] < '0' || text[0] > '9');
    if (named) {
        const std::string_view name = cutAt(number, '#');
        const auto* request =
            std::find_if(kRequestNames.begin(), kRequestNames.end(),
                         [&](const RequestName& candidate) { return candidate.name == name; });
        if (request == kRequestNames.end()) {
            why = "unknown request \"" + std::string(name) + '"';
            return false;
        }
        if (!fits(row.kind, request->kind)) {
            why = "that request moves no flash data";
            return false;
        }
        fault.on = request->kind;
        if (name.size() == text.size()) {
            number = "1";
        }
    }
    const std::optional<unsigned> position = wholeNumber(number, 10, kMostPositions);
    if (!position || *position == 0) {
        why = "the position must be a whole number above 0";
        return false;
    }
    fault.position = *position;
    return true;
}

} // namespace

bool parseFault(std::string_view text, Fault& fault, std::string& error)
{
    std::string_view position = text;
    const std::string_view what = cutAt(position, '@');
    const bool positioned = what.size() != text.size();
    std::string_view argument = what;
    const std::string_view name = cutAt(argument, ':');

    const auto* row =
        std::find_if(kFaultRows.begin(), kFaultRows.end(),
                     [&](const FaultRow& candidate) { return candidate.name == name; });
    if (row == kFaultRows.end()) {
        return refuse(error, text, "unknown fault");
    }
    Fault parsed;
    parsed.kind = row->kind;
    std::string why;
    if (!parseArgument(*row, argument, name.size() != what.size(), parsed, why)) {
        return refuse(error, text, why);
    }
    if (positioned) {
        if (!parsePosition(*row, position, parsed, why)) {
            return refuse(error, text, why);
        }
    } else if (row->kind == FaultKind::Torn) {
        parsed.on = RequestKind::Write;
    } else if (row->strikes == Strikes::Request) {
        return refuse(error, text, "needs a position, as in stall@5 or stall@write#2");
    }
    fault = parsed;
    return true;
}

void FaultList::add(const Fault& fault)
{
    Fault resolved = fault;
    if (resolved.position == 0) {
        switch (struckBy(fault.kind)) {
        case Strikes::Request:
            resolved.position = (fault.on ? m_requestsOfKind[index(*fault.on)] : m_requests) + 1;
            break;
        case Strikes::Open:
            resolved.position = m_opens + 1;
            break;
        case Strikes::Restart:
            resolved.position = m_restarts + 1;
            break;
        }
    }
    m_faults.push_back(resolved);
}

RequestEffects FaultList::countRequest(RequestKind kind)
{
    ++m_requests;
    const unsigned ofKind = ++m_requestsOfKind[index(kind)];
    RequestEffects effects;
    const auto strike = [&](const Fault& fault) {
        const bool here =
            fault.on ? *fault.on == kind && fault.position == ofKind : fault.position == m_requests;
        if (!here || struckBy(fault.kind) != Strikes::Request || !fits(fault.kind, kind)) {
            return false;
        }
        effects.vanishBefore |= fault.kind == FaultKind::VanishBefore;
        effects.stall |= fault.kind == FaultKind::Stall;
        effects.ignore |= fault.kind == FaultKind::Ignore;
        effects.vanishAfter |= fault.kind == FaultKind::VanishAfter;
        if (fault.kind == FaultKind::Torn) {
            effects.torn = fault.amount;
        }
        if (fault.kind == FaultKind::Flip) {
            effects.flip = fault.amount;
        }
        return true;
    };
    m_triggered += static_cast<unsigned>(std::erase_if(m_faults, strike));
    return effects;
}

bool FaultList::countOpen()
{
    ++m_opens;
    bool refused = false;
    for (const Fault& fault : m_faults) {
        if (fault.kind == FaultKind::OpenRefused && m_opens >= fault.position &&
            m_opens - fault.position < fault.amount) {
            refused = true;
            m_triggered += m_opens == fault.position ? 1 : 0;
        }
    }
    return refused;
}

RestartEffects FaultList::countRestart()
{
    ++m_restarts;
    RestartEffects effects;
    const auto strike = [&](const Fault& fault) {
        if (struckBy(fault.kind) != Strikes::Restart || fault.position != m_restarts) {
            return false;
        }
        effects.never |= fault.kind == FaultKind::Never;
        effects.sameMode |= fault.kind == FaultKind::SameMode;
        effects.bounce |= fault.kind == FaultKind::Bounce;
        effects.ignored |= fault.kind == FaultKind::Ignored;
        effects.swapped |= fault.kind == FaultKind::Swapped;
        effects.moved |= fault.kind == FaultKind::Moved;
        if (fault.kind == FaultKind::Refused) {
            effects.refused = fault.delay;
        }
        if (fault.kind == FaultKind::Late) {
            effects.late = fault.delay;
        }
        return true;
    };
    m_triggered += static_cast<unsigned>(std::erase_if(m_faults, strike));
    return effects;
}

} // namespace vornadel
