#pragma once

#include "app/ChosenFile.h"
#include "firmware/FwImage.h"

#include <string>

namespace vornadel
{

class AppDelegate;

/// The unattended update: writes an image of its own to the hub, at every start and by hand from
/// its box.
class ScalarPage
{
public:
    explicit ScalarPage(AppDelegate& tool) : m_tool(tool) {}

    /// Lets the box take images from elsewhere than its panel. Call it once, after the layout.
    void connectBox();
    void choose();                      ///< main thread
    void open(const std::string& path); ///< as if the panel had returned it; main thread
    void start();                       ///< from any thread
    void run(); ///< on a flow's thread; a success ends the process after five seconds

private:
    AppDelegate& m_tool;
    FwImage m_image;
    ChosenFile m_file{"ScalarUpdate"};
};

} // namespace vornadel
