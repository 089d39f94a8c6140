#pragma once

#include <QString>

namespace vornadel
{

/// A text as a tool tip that shows it to the letter. Tool tips take markup for markup, and even
/// load what it names.
QString plainToolTip(const QString& text);

} // namespace vornadel
