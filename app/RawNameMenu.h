#pragma once

#include <functional>
#include <string>

class QMenu;

namespace vornadel
{

/// Fills a menu with what the toolkit's file panel leaves out of a folder: the files whose names
/// are not UTF-8, and the folders with such names, as menus of all that they contain. `chosen` is
/// called with a file's path. The menu stays empty if all names are UTF-8, and is cut at 200 names.
void fillRawNameMenu(QMenu& menu, const std::string& folder,
                     const std::function<void(const std::string&)>& chosen);

} // namespace vornadel
