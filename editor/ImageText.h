#pragma once

#include <string>

class QLineEdit;

namespace vornadel
{

/// Shows a string of an image in a field: UTF-8 where it is UTF-8, otherwise one character for each
/// byte (Latin-1).
void showImageText(QLineEdit& field, const char* bytes);

/// What a field's text is in an image. The bytes last shown come back as they were, and an edit of
/// a string that is not UTF-8 changes the bytes of the edited characters alone. A text with a
/// character above U+00FF is always UTF-8.
std::string imageText(const QLineEdit& field);

/// The text of an id field with one byte for each character, as an id has one digit for each. What
/// is not ASCII is no digit and becomes "?".
std::string idText(const QLineEdit& field);

} // namespace vornadel
