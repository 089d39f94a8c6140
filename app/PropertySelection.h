#pragma once

#include "firmware/FwImage.h"

class QComboBox;

namespace vornadel
{

class AppDelegate;

/// The two selections above the properties: which definition file, and which of its pages. Main
/// thread.
class PropertySelection
{
public:
    PropertySelection(AppDelegate& tool, const FwImage& flashImage)
        : m_tool(tool), m_image(flashImage)
    {
    }

    /// Fills both lists and listens to them; once, after the layout.
    void fill();

    void selectionChanged(QComboBox* sender);
    void typeChanged();
    void pageChanged();
    /// Goes to the first page, and shows it anew where it is selected already.
    void selectFirstPage();

private:
    AppDelegate& m_tool;
    const FwImage& m_image;
};

} // namespace vornadel
