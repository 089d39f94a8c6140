#pragma once

#include <cstdint>
#include <string>
#include <vector>

namespace vornadel
{

/// Without control characters, which a device can put into its texts and a terminal would obey.
std::string withoutControls(const std::string& text);

/// All that can be read of a file.
std::string contentOf(const std::string& file);

/// The text in a file, cleaned; empty if the file cannot be read.
std::string textIn(const std::string& file);

/// The number in a file; 0 if there is none.
std::uint64_t numberIn(const std::string& file, int base = 10);

/// The names of the entries of a folder but "." and "..", sorted.
std::vector<std::string> entriesOf(const std::string& folder);

/// The same, but only of its folders. Links to folders do not count.
std::vector<std::string> foldersIn(const std::string& folder);

} // namespace vornadel
