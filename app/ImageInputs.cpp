#include "app/ImageInputs.h"

#include "app/ImageDrop.h"
#include "app/RecentMenu.h"

namespace vornadel
{

void takeImages(TitledBox& box, QPushButton& button, RecentFiles& files,
                const std::function<void(const std::string&)>& open)
{
    new ImageDrop(box, button, open);
    new RecentMenu(button, files, open);
}

} // namespace vornadel
