#include "driver/AccessRule.h"

#include "hub/SupportedIds.h"

#include <algorithm>
#include <charconv>
#include <cstdint>
#include <filesystem>
#include <fstream>
#include <string_view>

namespace vornadel
{

namespace
{

/// The number in hex after `key` in a line of the rule; 0 if there is none.
std::uint16_t numberAfter(std::string_view line, std::string_view key)
{
    const std::size_t found = line.find(key);
    std::uint16_t number = 0;
    if (found != std::string_view::npos) {
        const char* const digits = line.data() + found + key.size();
        std::from_chars(digits, line.data() + line.size(), number, 16);
    }
    return number;
}

bool contains(const std::vector<UsbIds>& all, const UsbIds& ids)
{
    return std::find(all.begin(), all.end(), ids) != all.end();
}

} // namespace

bool hasAccessRule(const std::string& resourcePath)
{
    std::error_code ignored;
    return std::filesystem::exists(resourcePath + "/HubUpdaterDriver.kext/hub-access.rules",
                                   ignored);
}

std::optional<std::vector<UsbIds>> idsOfAccessRule(const std::string& path)
{
    std::ifstream file(path);
    if (!file) {
        return {};
    }
    std::vector<UsbIds> rule;
    for (std::string line; std::getline(file, line);) {
        const UsbIds ids{numberAfter(line, "ATTR{idVendor}==\""),
                         numberAfter(line, "ATTR{idProduct}==\"")};
        if (line.starts_with("SUBSYSTEM") && ids.vendor != 0) {
            rule.push_back(ids);
        }
    }
    return rule;
}

std::vector<UsbIds> idsMissingIn(const std::vector<UsbIds>& rule)
{
    std::vector<UsbIds> missing;
    for (const SupportedIdEntry& entry : SupportedIdList) {
        for (const std::uint16_t product : {entry.sspid, entry.hspid}) {
            const UsbIds ids{entry.vid, product};
            if (entry.valid == 1 && !contains(rule, ids) && !contains(missing, ids)) {
                missing.push_back(ids);
            }
        }
    }
    return missing;
}

} // namespace vornadel
