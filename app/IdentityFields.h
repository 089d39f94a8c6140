#pragma once

#include "firmware/FwImage.h"

class QLineEdit;

namespace vornadel
{

class AppDelegate;

/// The identity fields of the flash box: every edit by the user goes into the flash image at once.
/// Main thread.
class IdentityFields
{
public:
    IdentityFields(AppDelegate& tool, FwImage& flashImage) : m_tool(tool), m_image(flashImage) {}

    /// Connects to the fields. Call it once, after the layout.
    void connectFields();

    void textChanged(QLineEdit* field);
    void idChanged(QLineEdit* field);
    void stringChanged(QLineEdit* field); ///< a string or the Container ID

private:
    void tellHistory(const QLineEdit* field);

    AppDelegate& m_tool;
    FwImage& m_image;
};

} // namespace vornadel
