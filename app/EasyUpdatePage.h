#pragma once

#include "app/ChosenFile.h"
#include "firmware/FwImage.h"

#include <string>

namespace vornadel
{

class AppDelegate;

/// The easy-update box: choose an image, check its ids, write it. Main thread, except run().
class EasyUpdatePage
{
public:
    explicit EasyUpdatePage(AppDelegate& tool) : m_tool(tool) {}

    /// Lets the box take images from elsewhere than its panel. Call it once, after the layout.
    void connectBox();
    void choose();
    void open(const std::string& path); ///< as if the panel had returned it
    void start();
    void run(); ///< on a flow's thread

    /// Writes the box's fields into its image. False if there is no image, if a length is wrong
    /// (nothing is written) or if the ids are not supported (they stay written).
    bool takeFields();

private:
    AppDelegate& m_tool;
    FwImage m_image;
    ChosenFile m_file{"Update"};
};

} // namespace vornadel
