#include "driver/AccessRule.h"

#include "hub/SupportedIds.h"
#include "tests/support/TemporaryFolder.h"

#include <gtest/gtest.h>

#include <fstream>
#include <iterator>
#include <regex>
#include <string>
#include <vector>

namespace vornadel::test
{

namespace
{

/// The rule that `load` makes of the shipped template.
std::string ruleFor(const std::vector<std::pair<std::string, std::string>>& devices)
{
    std::ifstream file(SOURCE_ROOT "/resources/linux/HubUpdaterDriver.kext/hub-access.rules");
    EXPECT_TRUE(file.is_open());
    std::string rule;
    for (std::string line; std::getline(file, line);) {
        if (line.find("@VID@") == std::string::npos) {
            rule += line + '\n';
            continue;
        }
        for (const auto& [vendor, product] : devices) {
            const std::string named = std::regex_replace(line, std::regex("@VID@"), vendor);
            rule += std::regex_replace(named, std::regex("@PID@"), product) + '\n';
        }
    }
    return rule;
}

TEST(AccessRule, NamesItsDevices)
{
    const TemporaryFolder folder;
    EXPECT_EQ(idsOfAccessRule(folder.path("missing")), std::nullopt);
    const std::string path =
        folder.write("rule", ruleFor({{"1209", "0001"}, {"1209", "00af"}, {"abcd", "ffff"}}));
    EXPECT_EQ(idsOfAccessRule(path),
              (std::vector<UsbIds>{{0x1209, 1}, {0x1209, 0xAF}, {0xABCD, 0xFFFF}}));
    EXPECT_EQ(idsOfAccessRule(folder.write("no rule", "# ATTR{idVendor}==\"1209\"\n")),
              std::vector<UsbIds>());
}

TEST(AccessRule, MayNotNameEveryHubOfTheConfiguration)
{
    const auto before = SupportedIdList;
    SupportedIdList.fill({});
    SupportedIdList[0] = {1, 0x1209, 1, 2};
    SupportedIdList[1] = {0, 0x1209, 7, 8}; // not in use
    SupportedIdList[2] = {1, 0x1209, 3, 2};
    EXPECT_EQ(idsMissingIn({{0x1209, 1}}), (std::vector<UsbIds>{{0x1209, 2}, {0x1209, 3}}));
    EXPECT_EQ(idsMissingIn({{0x1209, 1}, {0x1209, 2}, {0x1209, 3}}), std::vector<UsbIds>());
    SupportedIdList = before;
}

TEST(AccessRule, BelongsToTheSystemsWhoseBundleHasATemplate)
{
    EXPECT_TRUE(hasAccessRule(SOURCE_ROOT "/resources/linux"));
    EXPECT_FALSE(hasAccessRule(SOURCE_ROOT "/resources/macos"));
}

} // namespace

} // namespace vornadel::test
