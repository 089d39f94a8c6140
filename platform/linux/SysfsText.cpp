#include "platform/linux/SysfsText.h"

#include <algorithm>
#include <array>
#include <cstdlib>
#include <dirent.h>
#include <fstream>
#include <string_view>

namespace vornadel
{

namespace
{

std::vector<std::string> entries(const std::string& folder, bool onlyFolders)
{
    std::vector<std::string> names;
    DIR* const stream = opendir(folder.c_str());
    if (stream == nullptr) {
        return names;
    }
    while (const dirent* const entry = readdir(stream)) {
        const std::string_view name = static_cast<const char*>(entry->d_name);
        if (name != "." && name != ".." && (!onlyFolders || entry->d_type == DT_DIR)) {
            names.emplace_back(name);
        }
    }
    closedir(stream);
    std::sort(names.begin(), names.end());
    return names;
}

} // namespace

std::string contentOf(const std::string& file)
{
    std::ifstream stream(file, std::ios::binary);
    std::string content;
    std::array<char, 4096> piece{};
    // Not by iterators: they throw if a read fails, as it does when the device has just left.
    while (stream.read(piece.data(), piece.size()) || stream.gcount() > 0) {
        content.append(piece.data(), static_cast<std::size_t>(stream.gcount()));
    }
    return content;
}

std::string withoutControls(const std::string& text)
{
    constexpr unsigned char kDelete = 0x7F;
    constexpr unsigned char kFirstOfTwo = 0xC2; // of a control character in UTF-8: C2 80 to C2 9F
    const auto byteAt = [&](std::size_t i) { return static_cast<unsigned char>(text[i]); };
    std::string clean;
    for (std::size_t i = 0; i < text.size(); ++i) {
        if (byteAt(i) == kFirstOfTwo && i + 1 < text.size() && byteAt(i + 1) < 0xA0) {
            ++i;
        } else if (byteAt(i) >= ' ' && byteAt(i) != kDelete) {
            clean += text[i];
        }
    }
    return clean;
}

std::string textIn(const std::string& file) { return withoutControls(contentOf(file)); }

std::uint64_t numberIn(const std::string& file, int base)
{
    return std::strtoull(contentOf(file).c_str(), nullptr, base);
}

std::vector<std::string> entriesOf(const std::string& folder) { return entries(folder, false); }

std::vector<std::string> foldersIn(const std::string& folder) { return entries(folder, true); }

} // namespace vornadel
