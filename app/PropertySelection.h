#pragma once

#include "firmware/FwImage.h"

class QComboBox;

namespace vornadel
{

class AppDelegate;

/// The two selections above the properties: the property file, and the page. Main thread.
class PropertySelection
{
public:
    PropertySelection(AppDelegate& tool, const FwImage& flashImage)
        : m_tool(tool), m_image(flashImage)
    {
    }

    /// Fills both lists and connects to them. Call it once, after the layout.
    void fill();

    void selectionChanged(QComboBox* sender);
    void typeChanged();
    void pageChanged();
    /// Selects the first page; refreshes it if it is already selected.
    void selectFirstPage();

private:
    AppDelegate& m_tool;
    const FwImage& m_image;
};

} // namespace vornadel
