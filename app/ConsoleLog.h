#pragma once

#include <QString>

namespace vornadel
{

/// Writes one line to the console log, which is standard error. Adds a line end if there is none.
/// Any thread; lines are never interleaved.
void ConsoleLog(const QString& text);

} // namespace vornadel
