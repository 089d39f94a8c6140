#pragma once

#include "app/PropertySearch.h"
#include "firmware/FwImage.h"
#include "props/PropItem.h"

class QComboBox;

namespace vornadel
{

class AppDelegate;

/// The two selections above the properties, the property file and the page, and the search beside
/// them. Main thread.
class PropertySelection
{
public:
    PropertySelection(AppDelegate& tool, const FwImage& flashImage)
        : m_tool(tool), m_image(flashImage), m_search(tool)
    {
    }

    /// Fills both lists and connects to them. Call it once, after the layout.
    void fill();

    void selectionChanged(QComboBox* sender);
    void typeChanged();
    void pageChanged();
    /// Selects the first page; refreshes it if it is already selected.
    void selectFirstPage();
    /// Selects the row of a property, on its page if the table does not show it.
    void show(const PropItem& item);

private:
    void selectPage(int page);
    void showByte(int byte);

    AppDelegate& m_tool;
    const FwImage& m_image;
    PropertySearch m_search;
};

} // namespace vornadel
