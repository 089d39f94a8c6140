#pragma once

#include <QString>

namespace vornadel
{

/// A text as a tool tip that shows it literally. Without this, tool tips render markup, and even
/// load the files it names.
QString plainToolTip(const QString& text);

} // namespace vornadel
