#include "cli/Json.h"

#include "cli/Verbs.h"

#include <nlohmann/json.hpp>

namespace vornadel
{

std::string textOf(const Json& value, int indent)
{
    // ASCII only, because a terminal obeys some characters beyond it.
    return value.dump(indent, ' ', true, Json::error_handler_t::replace);
}

Json orNull(const std::string& text) { return text.empty() ? Json() : Json(text); }

void printObject(const Command& command, const Json& object)
{
    Json whole = {{"v", 1}};
    whole.update(object);
    command.out << textOf(whole, 2) << '\n';
    command.result.printed = true;
}

} // namespace vornadel
