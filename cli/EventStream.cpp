#include "cli/EventStream.h"

#include "cli/Failures.h"

#include <nlohmann/json.hpp>

#include <cstdio>
#include <ctime>

#include <unistd.h>

namespace vornadel
{

std::string utcText(Environment::Time time)
{
    using std::chrono::duration_cast;
    using std::chrono::milliseconds;
    using std::chrono::seconds;
    const auto sinceEpoch = std::chrono::floor<milliseconds>(time.time_since_epoch());
    const auto wholeSeconds = std::chrono::floor<seconds>(sinceEpoch);
    const auto stamp = static_cast<std::time_t>(wholeSeconds.count());
    std::tm utc{};
    ::gmtime_r(&stamp, &utc);
    char text[64];
    const std::size_t size = std::strftime(text, sizeof text, "%Y-%m-%dT%H:%M:%S", &utc);
    std::snprintf(text + size, sizeof text - size, ".%03dZ",
                  static_cast<int>((sinceEpoch - wholeSeconds).count()));
    return text;
}

EventStream::EventStream(std::ostream& out, const Environment& env, const CommandResult& result)
    : m_out(out), m_env(env), m_result(result),
      m_job(utcText(env.now()) + '/' + std::to_string(::getpid()))
{
}

void EventStream::emit(const char* event, const Json& fields)
{
    const std::lock_guard lock(m_mutex);
    Json whole = {{"v", 1},
                  {"event", event},
                  {"time", utcText(m_env.now())},
                  {"job", m_job},
                  {"seq", m_next++},
                  {"path", m_result.place.empty() ? Json() : Json(m_result.place)}};
    whole.update(fields);
    m_out << textOf(whole) << '\n' << std::flush;
}

} // namespace vornadel
