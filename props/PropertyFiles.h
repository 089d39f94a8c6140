#pragma once

#include <string>
#include <vector>

namespace vornadel
{

/// Everything below the tool directory with the exact extension "INI", as paths relative to it
/// ("A.INI", "sub/C.INI"). The order is that in which the system lists each folder, with the
/// content of a folder right after it. Only names are checked: an entry may turn out to be a folder
/// or a dangling link.
///
/// Links are not followed, except those directly in the tool directory that are called
/// "definitions" or "local-definitions": an installed tool has its property files elsewhere. A
/// folder that cannot be read, or lies 256 folders deep, counts as empty.
/// Files are not opened, and their type is not queried if the system reports it with the name.
std::vector<std::string> findPropertyFiles(const std::string& toolDirectory);

} // namespace vornadel
