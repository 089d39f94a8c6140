#pragma once

#include "platform/Platform.h"

#include <QString>

namespace vornadel
{

/// Where PrintNormalLog() writes to.
inline constexpr const char* kLogFile = "/tmp/Vornadel.log";

/// Helpers of the window program. Main thread only.
class GeneralFunction
{
public:
    GeneralFunction() = delete;

    /// The system version as major.minor.bugfix. If it cannot be read: 10.0.0, and a line in the
    /// console log.
    static QString GetCurrentSystemVersion(SystemVersion& system);

    /// The part of a path before its last "/", empty without one. A character with the same low
    /// eight bits as "/" (for example U+012F) separates too: the comparison uses 8 bits on purpose.
    static QString GetDirFromPath(const QString& path);

    /// The last component of a path; "/" for the root, empty for an empty path.
    static QString GetNameFromPath(const QString& path);

    /// A modal alert with one "OK" button; returns when it has closed.
    static void AlertString(const QString& message);

    /// Appends a line to the log file by way of the shell, which interprets the text: it is not
    /// quoted. A text that does not fit into the command ends the process. A log file that is not
    /// the caller's own plain file is left alone; a line on the console log says so.
    static void PrintNormalLog(Shell& shell, const QString& text);

    /// The whole file as text; empty if it cannot be opened, null if it is not UTF-8.
    static QString GetStringFromFile(const QString& path);
};

/// Runs `command` in the shell with its standard output appended to the log file, as
/// PrintNormalLog() does. A command that does not fit into the buffer ends the process.
void LogShellOutput(Shell& shell, const char* command);

/// Runs one command without placeholders out of the same buffer, with standard error discarded.
void RunBufferedCommand(Shell& shell, const char* command);

} // namespace vornadel
