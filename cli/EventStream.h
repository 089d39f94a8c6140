#pragma once

#include "cli/Environment.h"
#include "cli/Json.h"

#include <cstdint>
#include <mutex>
#include <ostream>
#include <string>

namespace vornadel
{

struct CommandResult;

/// What a flow's command prints with --json: one JSON object a line. docs/events.schema.json
/// describes them. Any thread.
class EventStream
{
public:
    /// Takes the hub's place for each event from `result`.
    EventStream(std::ostream& out, const Environment& env, const CommandResult& result);

    /// Adds what every event has to the fields of this one, and prints it.
    void emit(const char* event, const Json& fields);

private:
    std::ostream& m_out;
    const Environment& m_env;
    const CommandResult& m_result;
    std::string m_job;
    std::mutex m_mutex;
    std::uint64_t m_next = 0; // sequence number
};

/// "2026-11-22T13:47:09.123Z"
std::string utcText(Environment::Time time);

} // namespace vornadel
