#pragma once

#include <QString>

namespace vornadel
{

/// Writes one line to the console log, which is standard error. A text without a line end gets one.
/// From any thread; a line is never mixed with another.
void ConsoleLog(const QString& text);

} // namespace vornadel
