#pragma once

#include <functional>
#include <string>

class QPushButton;

namespace vornadel
{

class RecentFiles;
class TitledBox;

/// Lets a box take images from elsewhere than the panel of its button: dropped on the box, or from
/// a menu of the images used last. Call it once, after the layout. `open` is called with a path.
void takeImages(TitledBox& box, QPushButton& button, RecentFiles& files,
                const std::function<void(const std::string&)>& open);

} // namespace vornadel
