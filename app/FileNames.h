#pragma once

#include <QString>

#include <string>
#include <string_view>

namespace vornadel
{

// The system's file names are bytes, and need not be UTF-8. Qt's own conversion loses what it
// cannot decode, so a file with such a name could not be opened.

/// A file name as a text that keeps every byte: one that is not part of a UTF-8 character becomes a
/// lone surrogate, U+DC80 to U+DCFF, which no valid text contains.
QString nameText(std::string_view name);

/// The bytes of a text from nameText().
std::string nameBytes(const QString& text);

/// Whether Qt can decode a name without loss.
bool isUtf8(std::string_view name);

/// A file name to show: bytes that are not UTF-8 as "\xFC".
QString shownName(std::string_view name);

/// The path of a chosen file, from a text that may have U+FFFD in place of bytes that are not
/// UTF-8, as the panels of some desktops return it. If several files fit the text, or none, this is
/// just the text in UTF-8.
std::string chosenPath(const QString& path);

} // namespace vornadel
