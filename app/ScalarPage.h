#pragma once

#include "firmware/FwImage.h"

namespace vornadel
{

class AppDelegate;

/// The unattended update: at every start, and by hand from its box, an image of its own goes into
/// the hub.
class ScalarPage
{
public:
    explicit ScalarPage(AppDelegate& tool) : m_tool(tool) {}

    void choose(); ///< main thread
    void start();  ///< from any thread
    void run();    ///< on a flow's thread; a success ends the process after five seconds

private:
    AppDelegate& m_tool;
    FwImage m_image;
};

} // namespace vornadel
