#include "props/PropertyFile.h"

#include "base/FirstComplaint.h"

#include <iniparser/iniparser.h>

#include <algorithm>
#include <array>
#include <cstdio>
#include <filesystem>
#include <fstream>
#include <string_view>
#include <system_error>
#include <unordered_map>

namespace vornadel
{

namespace
{

namespace fs = std::filesystem;

constexpr unsigned kSections = 0xFF; // HubFF_USB_00 to HubFF_USB_FE
constexpr unsigned kOptionSlots = 16;
constexpr const char* kBlanks = " \t\n\v\f\r";

template <typename Value>
struct Key {
    const char* name;
    Value PropItem::*field;
};

constexpr std::array<Key<std::string>, 5> kTextKeys = {{
    {"PageName", &PropItem::pageName},
    {"GroupName", &PropItem::groupName},
    {"PropName", &PropItem::property},
    {"PropName", &PropItem::propName},
    {"PropDesp", &PropItem::propDesc},
}};
constexpr std::array<Key<std::uint32_t>, 2> kAddressKeys = {{
    {"PropAddr", &PropItem::addr},
    {"BaseOnAddr", &PropItem::baseOnAddr},
}};
constexpr std::array<Key<std::uint8_t>, 2> kMaskKeys = {{
    {"PropMask", &PropItem::mask},
    {"BaseOnMask", &PropItem::baseOnMask},
}};

/// The low 32 bits of the decimal number at the start of a text, which may have any number of
/// digits; 0 if there is none.
std::uint32_t decimal(std::string_view text)
{
    text.remove_prefix(std::min(text.find_first_not_of(kBlanks), text.size()));
    const bool negative = text.starts_with('-');
    text.remove_prefix(negative || text.starts_with('+') ? 1 : 0);
    std::uint32_t value = 0;
    for (const char c : text) {
        if (c < '0' || c > '9') {
            break;
        }
        value = value * 10 + static_cast<std::uint32_t>(c - '0');
    }
    return negative ? 0 - value : value;
}

/// A name in the form that the INI reader stores.
std::string folded(std::string name)
{
    std::transform(name.begin(), name.end(), name.begin(), [](char c) {
        const bool capital = c >= 'A' && c <= 'Z';
        return capital ? static_cast<char>(c - 'A' + 'a') : c;
    });
    return name;
}

std::string numbered(const char* name, unsigned number)
{
    std::array<char, 64> text{};
    std::snprintf(text.data(), text.size(), "%s%02X", name, number);
    return text.data();
}

struct FreeDictionary {
    void operator()(dictionary* entries) const { iniparser_freedict(entries); }
};
using Dictionary = std::unique_ptr<dictionary, FreeDictionary>;

/// The entries of an INI file by name. The reader's own look-up scans all entries each time, which
/// for a full file would take as long as reading it.
class Entries
{
public:
    explicit Entries(Dictionary read) : m_read(std::move(read))
    {
        m_byName.reserve(static_cast<std::size_t>(m_read->n));
        for (ssize_t i = 0; i < m_read->size; ++i) {
            if (m_read->key[i] != nullptr) {
                m_byName.emplace(m_read->key[i], m_read->val[i]);
            }
        }
    }

    /// Empty if there is no such key.
    std::string text(const std::string& section, const std::string& key)
    {
        const auto found = m_byName.find(folded(section + ':' + key));
        if (found == m_byName.end()) {
            return {};
        }
        if (found->second == nullptr) {
            m_sectionNamedLikeAKey = found->first;
            return {};
        }
        return found->second;
    }

    /// A section with the name of a key that text() looked for, so that the key's text is lost;
    /// empty for none.
    const std::string& sectionNamedLikeAKey() const { return m_sectionNamedLikeAKey; }

private:
    Dictionary m_read;
    std::unordered_map<std::string_view, const char*> m_byName; // null for a section's heading
    std::string m_sectionNamedLikeAKey;
};

void readOptions(Entries& entries, const std::string& section, PropItem& item)
{
    for (unsigned slot = 0; slot < kOptionSlots; ++slot) {
        const std::string label = entries.text(section, numbered("PropOption_", slot));
        const std::string data = entries.text(section, numbered("DataOption_", slot));
        if (!label.empty()) {
            item.propList.push_back(label);
            item.dataList.push_back(data.empty() ? std::to_string(slot) : data);
        }
    }
    item.curValue = item.dataList.empty() ? kConstValue : item.dataList.front();
}

/// Null if there is no such property; one look-up finds that out.
std::shared_ptr<PropItem> readItem(Entries& entries, unsigned number)
{
    const std::string section = numbered("HubFF_USB_", number);
    if (entries.text(section, "PropName").empty()) {
        return nullptr;
    }
    auto item = std::make_shared<PropItem>();
    item->key = static_cast<std::uint8_t>(number);
    for (const auto& [name, field] : kTextKeys) {
        (*item).*field = entries.text(section, name);
    }
    for (const auto& [name, field] : kAddressKeys) {
        (*item).*field = decimal(entries.text(section, name));
    }
    for (const auto& [name, field] : kMaskKeys) {
        (*item).*field = static_cast<std::uint8_t>(decimal(entries.text(section, name)));
    }
    readOptions(entries, section, *item);
    return item;
}

/// How many lines could be entries. Each costs the INI reader a search through all earlier entries.
std::size_t entryLines(std::string_view content)
{
    std::size_t count = 0;
    while (!content.empty()) {
        const std::string_view line = content.substr(0, content.find('\n'));
        const std::size_t first = line.find_first_not_of(kBlanks);
        if (first != std::string_view::npos && line[first] != ';' && line[first] != '#') {
            ++count;
        }
        content.remove_prefix(std::min(line.size() + 1, content.size()));
    }
    return count;
}

/// What is wrong with the file, before the INI reader sees it; empty if nothing is.
std::string faultBeforeReading(const std::string& path)
{
    std::error_code failed;
    const fs::file_status status = fs::status(path, failed);
    if (!fs::exists(status)) {
        return "cannot be found";
    }
    if (!fs::is_regular_file(status)) {
        return "is not a regular file"; // opening it could block for ever
    }
    std::ifstream file(path, std::ios::binary);
    if (!file) {
        return "cannot be opened";
    }
    const std::uintmax_t size = fs::file_size(path, failed);
    std::string content(std::min(size, kLargestPropertyFile) + 1, '\0');
    file.read(content.data(), static_cast<std::streamsize>(content.size()));
    content.resize(static_cast<std::size_t>(file.gcount()));
    if (content.size() > kLargestPropertyFile) {
        return "is larger than 1 MiB";
    }
    // The INI reader takes a NUL for the end of a line. At the end of the file that does no harm.
    const std::size_t nul = std::min(content.find('\0'), content.size());
    const bool atTheEnd = content.find_first_not_of('\0', nul) == std::string::npos;
    content.resize(nul);
    if (!atTheEnd) {
        return "has a NUL character in line " +
               std::to_string(std::count(content.begin(), content.end(), '\n') + 1);
    }
    if (entryLines(content) > kMostPropertyLines) {
        return "has more than " + std::to_string(kMostPropertyLines) +
               " lines that are not comments";
    }
    return {};
}

/// The file's entries. If it is no INI file: null, with the reason in firstComplaint().
Dictionary load(const std::string& path)
{
    resetFirstComplaint();
    iniparser_set_error_callback(keepFirstComplaint);
    Dictionary read(iniparser_load(path.c_str()));
    iniparser_set_error_callback(nullptr);
    return read;
}

} // namespace

PropItemList readPropertyFile(const std::string& path, std::string& problem)
{
    problem.clear();
    const std::string fault = faultBeforeReading(path);
    if (!fault.empty()) {
        problem = path + " " + fault + " and was not read";
        return {};
    }
    Dictionary read = load(path);
    if (!read) {
        problem = path + " was not read: " + firstComplaint();
        return {};
    }
    Entries entries(std::move(read));
    PropItemList items;
    for (unsigned number = 0; number < kSections; ++number) {
        if (std::shared_ptr<PropItem> item = readItem(entries, number)) {
            items.push_back(std::move(item));
        }
    }
    if (!entries.sectionNamedLikeAKey().empty()) {
        problem = path + " was not read: its section [" + entries.sectionNamedLikeAKey() +
                  "] has the name of a key";
        return {};
    }
    return items;
}

} // namespace vornadel
