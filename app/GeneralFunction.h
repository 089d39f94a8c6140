#pragma once

#include "platform/Platform.h"

#include <QString>

namespace vornadel
{

/// Where PrintNormalLog() writes to.
inline constexpr const char* kLogFile = "/tmp/Vornadel.log";

/// Helpers of the shell around the flows, all on the main thread.
class GeneralFunction
{
public:
    GeneralFunction() = delete;

    /// The system version as major.minor.bugfix; 10.0.0 with a line on the console log when the
    /// system does not say.
    static QString GetCurrentSystemVersion(SystemVersion& system);

    /// The part of a path before its last "/", empty without one. Any character whose low eight
    /// bits are those of
    /// "/" separates too (U+012F, say): the comparison is that narrow on purpose.
    static QString GetDirFromPath(const QString& path);

    /// The last component of a path; "/" for the root, empty for an empty path.
    static QString GetNameFromPath(const QString& path);

    /// A modal alert with one "OK" button; returns when it has closed.
    static void AlertString(const QString& message);

    /// Appends a line to the log file by way of the shell, which interprets the text: it is not
    /// quoted. A text that does not fit into the command ends the process. A log file that is not
    /// the caller's own plain file is left alone; a line on the console log says so.
    static void PrintNormalLog(Shell& shell, const QString& text);

    /// The whole file as text; empty when it cannot be opened, null when it is not UTF-8.
    static QString GetStringFromFile(const QString& path);
};

/// Runs `command` in the shell with its standard output appended to the log file, as
/// PrintNormalLog() does. A command that does not fit into the buffer ends the process.
void LogShellOutput(Shell& shell, const char* command);

/// Runs one command without placeholders out of the same buffer, with standard error discarded.
void RunBufferedCommand(Shell& shell, const char* command);

} // namespace vornadel
