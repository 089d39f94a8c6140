#pragma once

#include "cli/Environment.h"
#include "cli/Log.h"

#include <string>

namespace vornadel
{

/// A log that is kept in a file, each line with its time and the process. Several processes may
/// write to it at once. A file that has grown to a mebibyte becomes FILE.1 and is begun anew.
///
/// A null request function if `withRequests` is false. Without a path, or if the file cannot be
/// written, the log drops everything; then `problem` says why.
Log openLog(const std::string& path, bool withRequests, const Environment& env,
            std::string& problem);

/// The usual file; empty if there is none.
std::string usualLogFile(const Environment& env);

} // namespace vornadel
