#pragma once

#include <string>
#include <vector>

namespace vornadel
{

/// Everything below the tool directory whose extension is exactly "INI", as paths relative to it
/// ("A.INI", "sub/C.INI"), in the order in which the system lists a folder's entries and with what
/// a folder holds directly after it. Only names are looked at: what has the extension may turn out
/// to be a folder or a link to nothing.
///
/// Links are not followed; a folder that cannot be read, or lies 256 folders deep, counts as empty.
/// A file is neither opened nor asked for its type where the system tells the type with the name.
std::vector<std::string> findPropertyFiles(const std::string& toolDirectory);

} // namespace vornadel
