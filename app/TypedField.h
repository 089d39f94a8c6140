#pragma once

#include <QLineEdit>

namespace vornadel
{

/// A field for a person to type into. What assistive technology puts into it is reported as typed
/// text is (textEdited) and can be undone; a plain QLineEdit does not tell it from what the program
/// puts in.
class TypedField final : public QLineEdit
{
public:
    explicit TypedField(QWidget* parent);
};

} // namespace vornadel
