#pragma once

#include "firmware/FwImage.h"

#include <string>

namespace vornadel
{

class AppDelegate;

/// The flash box's four buttons: read the hub's flash or a file, erase the flash, save to a file.
/// Main thread, except the two flows.
class FlashPage
{
public:
    explicit FlashPage(AppDelegate& tool) : m_tool(tool) {}

    /// Lets the box take images from elsewhere than its panel. Call it once, after the layout.
    void connectBox();
    void read();
    void runRead(); ///< on a flow's thread
    /// Fills the property editor from the image.
    void readFinished();
    void load();
    void open(const std::string& path); ///< as if the panel had returned it
    void erase();
    void runErase(); ///< on a flow's thread
    void save();

    /// The image that is edited. Main thread only.
    FwImage& image() { return m_image; }

private:
    void openSavePanel();

    AppDelegate& m_tool;
    FwImage m_image;
};

} // namespace vornadel
