#include "cli/JsonReporter.h"

#include "cli/EventStream.h"

#include <nlohmann/json.hpp>

#include <chrono>

namespace vornadel
{

const char* nameOf(Step step)
{
    switch (step) {
    case Step::Open:
        return "open";
    case Step::Save:
        return "save";
    case Step::Erase:
        return "erase";
    case Step::Write:
        return "write";
    case Step::Read:
        return "read";
    case Step::Verify:
        return "verify";
    case Step::Restart:
        return "restart";
    }
    return "";
}

void JsonReporter::stepStarted(Step step)
{
    m_step = step;
    m_lastWait = {};
    m_events.emit("step", {{"step", nameOf(step)}});
}

void JsonReporter::waiting(Clock::Duration sofar)
{
    const bool goesOn = sofar >= m_lastWait;
    if (goesOn && sofar < m_lastWait + std::chrono::seconds(1)) {
        return;
    }
    m_lastWait = sofar;
    const auto waited = std::chrono::duration_cast<std::chrono::milliseconds>(sofar);
    m_events.emit("progress", {{"step", nameOf(m_step)}, {"waited", waited.count()}});
}

void JsonReporter::progressed(std::int32_t done, std::int32_t total)
{
    m_events.emit("progress", {{"step", nameOf(m_step)}, {"done", done}, {"total", total}});
}

} // namespace vornadel
