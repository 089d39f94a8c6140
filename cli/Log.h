#pragma once

#include <functional>
#include <string>

namespace vornadel
{

/// Keeps what a command did, for later. Each call is one line; it may be dropped.
struct Log {
    std::string path{}; ///< the file; empty if there is none
    std::function<void(const std::string& line)> note = [](const std::string&) {};
    /// A request to the hub. Null: nobody wants them.
    std::function<void(const std::string& line)> request{};
};

} // namespace vornadel
