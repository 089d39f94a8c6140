#include "cli/Json.h"

#include "cli/Verbs.h"

#include <nlohmann/json.hpp>

namespace vornadel
{

void printObject(const Command& command, const Json& object)
{
    // Bytes that are not UTF-8, from a device or a file name, do not make the output invalid.
    command.out << object.dump(2, ' ', false, Json::error_handler_t::replace) << '\n';
}

} // namespace vornadel
