#pragma once

#include "firmware/FwImage.h"

#include <string>

class QLineEdit;

namespace vornadel
{

/// Which file the image of a box is from, for the box's path field. If the box's button would not
/// write the file that the field names, the field says so: by a warning sign, in its tool tip and
/// in its description. Main thread.
class ChosenFile
{
public:
    /// `button` is the label of the button that writes the image.
    explicit ChosenFile(const char* button) : m_button(button) {}

    /// Loads a file into the image and names it in the field. True if it has been read and is an
    /// image.
    bool load(FwImage& image, const std::string& path, QLineEdit& field);

    /// Says that the button prefers another image to that of the file.
    void yieldsTo(const std::string& preferred, const std::string& path, QLineEdit& field) const;

    /// Names a file from which the image has been loaded meanwhile.
    void loaded(const std::string& path, QLineEdit& field);

private:
    const char* m_button;
    std::string m_source;
};

} // namespace vornadel
