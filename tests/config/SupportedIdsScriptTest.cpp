// The administrator scripts read config.ini by themselves. Here they meet the tool's own reader on
// many files: whatever ids the script grants access to, the tool supports, and the other way round.

#include "config/ToolConfig.h"
#include "hub/SupportedIds.h"
#include "tests/support/TemporaryFolder.h"

#include <gtest/gtest.h>

#include <algorithm>
#include <array>
#include <cstdio>
#include <cstdlib>
#include <filesystem>
#include <random>
#include <sstream>
#include <string>
#include <vector>

namespace vornadel::test
{

namespace
{

using Random = std::mt19937;

constexpr int kFiles = 400;

unsigned below(Random& random, std::size_t limit)
{
    return static_cast<unsigned>(random() % limit);
}

template <std::size_t count>
std::string oneOf(Random& random, const std::array<const char*, count>& texts)
{
    return texts.at(below(random, count));
}

std::string anyNumber(Random& random)
{
    static constexpr std::array<const char*, 4> kFormats = {"0x%X", "%u", "0%o", "0X%04x"};
    static constexpr std::array<const char*, 10> kOdd = {"0",     "0x",       "09",  "-1", "65536",
                                                         "0x1 2", "\"0x77\"", "'8'", "",   "7k"};
    if (below(random, 40) == 0) {
        return oneOf(random, kOdd);
    }
    char text[16];
    // The format is one of the four above.
    std::snprintf(text, sizeof text, kFormats.at(below(random, 4)),
                  below(random, 2) == 0 ? 0x1209 : below(random, 0x10000));
    return text;
}

/// One key with its value, in one of the ways in which people write them.
std::string anyLine(Random& random)
{
    static constexpr std::array<const char*, 6> kKinds = {"VID", "SSPID", "HSPID",
                                                          "vid", "SsPid", "hspid"};
    static constexpr std::array<const char*, 4> kEquals = {"=", " = ", "\t=\t", " ="};
    static constexpr std::array<const char*, 7> kEnds = {"\n",        "\n",   "\r\n",       "  \n",
                                                         " ; note\n", " #\n", " \\\n ; x\n"};
    static constexpr std::array<unsigned, 6> kIndices = {0, 0, 1, 0x1F, 0x3F, 0x40};
    char key[24];
    std::snprintf(key, sizeof key, below(random, 8) == 0 ? "%s_%02x" : "%s_%02X",
                  oneOf(random, kKinds).c_str(), kIndices.at(below(random, kIndices.size())));
    return key + oneOf(random, kEquals) + anyNumber(random) + oneOf(random, kEnds);
}

std::string anyFile(Random& random)
{
    static constexpr std::array<const char*, 5> kSections = {
        "[Support Vid Pid]\n", "[support vid pid]\n", "[ Support Vid Pid ]  \r\n",
        "  [SUPPORT VID PID]\n", "[DumpTool Config]\nFwBin = \"a;b\"\n"};
    static constexpr std::array<const char*, 6> kBetween = {
        "\n", "; a comment\n", "#x\n", "   \t\n", "[Support Vid Pid]\n", "[Other]\nVID_00 = 1\n"};
    std::string text = oneOf(random, kSections);
    for (unsigned lines = below(random, 24); lines > 0; --lines) {
        text += below(random, 8) == 0 ? oneOf(random, kBetween) : anyLine(random);
    }
    if (below(random, 6) == 0 && !text.empty()) {
        // No NUL: `load` refuses such a file before it starts the script.
        text[below(random, text.size())] = static_cast<char>(1 + below(random, 127));
    }
    return text;
}

/// The pairs in the order of the table, each once, as the script prints them.
std::vector<std::string> supportedPairs()
{
    std::vector<std::string> pairs;
    for (const SupportedIdEntry& entry : SupportedIdList) {
        for (const std::uint16_t pid : {entry.sspid, entry.hspid}) {
            char text[16];
            std::snprintf(text, sizeof text, "%04x %04x", entry.vid, pid);
            if (entry.valid == 1 && std::find(pairs.begin(), pairs.end(), text) == pairs.end()) {
                pairs.emplace_back(text);
            }
        }
    }
    return pairs;
}

std::vector<std::string> linesOf(const std::string& text)
{
    std::istringstream stream(text);
    std::vector<std::string> lines;
    for (std::string line; std::getline(stream, line);) {
        lines.push_back(line);
    }
    return lines;
}

TEST(SupportedIdsScript, FindsTheIdsThatTheToolFinds)
{
    const TemporaryFolder folder;
    Random random(20);
    for (int number = 0; number < kFiles; ++number) {
        folder.write(std::to_string(number) + ".ini", anyFile(random));
    }
    const std::string command = "cd '" + folder.path() +
                                "' && for file in *.ini; do LC_ALL=C awk -f '" SUPPORTED_IDS
                                "' \"$file\" >\"$file.out\" && : >\"$file.ok\"; done; :";
    ASSERT_EQ(std::system(command.c_str()), 0);

    int granted = 0;
    for (int number = 0; number < kFiles; ++number) {
        const std::string file = std::to_string(number) + ".ini";
        const ToolConfig config = readToolConfig(folder.path(file));
        const std::vector<std::string> printed = linesOf(folder.text(file + ".out"));
        if (!std::filesystem::exists(folder.path(file + ".ok"))) {
            // Refused, with the reason; the tool may be more lenient.
            EXPECT_EQ(printed.size(), 1U) << file;
            continue;
        }
        EXPECT_EQ(printed, supportedPairs()) << folder.text(file) << config.problem;
        granted += printed.empty() ? 0 : 1;
    }
    EXPECT_GT(granted, kFiles / 8) << "files of both kinds are needed";
    EXPECT_LT(granted, kFiles);
}

} // namespace

} // namespace vornadel::test
