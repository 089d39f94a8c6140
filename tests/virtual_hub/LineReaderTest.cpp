#include "standins/virtual_hub/LineReader.h"

#include <gmock/gmock.h>
#include <gtest/gtest.h>

#include <string>
#include <vector>

namespace vornadel::test
{
namespace
{

using testing::ElementsAre;
using testing::IsEmpty;

/// The lines that are whole, "!" for one that is too long.
std::vector<std::string> wholeLines(LineReader& lines)
{
    std::vector<std::string> list;
    while (const auto line = lines.next()) {
        list.push_back(line->tooLong ? "!" : line->text);
    }
    return list;
}

TEST(LineReader, PutsLinesTogetherFromPieces)
{
    LineReader lines;
    lines.add("status\nunp");
    EXPECT_THAT(wholeLines(lines), ElementsAre("status"));
    lines.add("lug");
    EXPECT_THAT(wholeLines(lines), IsEmpty());
    lines.add("\n\nquit\n");
    EXPECT_THAT(wholeLines(lines), ElementsAre("unplug", "", "quit"));
}

TEST(LineReader, TakesNothingOfALineThatIsTooLong)
{
    LineReader lines;
    lines.add(std::string(LineReader::kLongestLine, 'x') + "\n");
    EXPECT_THAT(wholeLines(lines), ElementsAre(std::string(LineReader::kLongestLine, 'x')));
    lines.add(std::string(LineReader::kLongestLine, 'x'));
    for (int piece = 0; piece < 10; ++piece) {
        lines.add(std::string(1000, 'x'));
        EXPECT_THAT(wholeLines(lines), IsEmpty());
    }
    lines.add("unplug\nstatus\n");
    EXPECT_THAT(wholeLines(lines), ElementsAre("!", "status"));
}

TEST(LineReader, TakesALastLineWithoutNewline)
{
    LineReader lines;
    lines.add("plug\nquit");
    lines.end();
    EXPECT_THAT(wholeLines(lines), ElementsAre("plug", "quit"));
    lines.end();
    EXPECT_THAT(wholeLines(lines), IsEmpty());
}

} // namespace
} // namespace vornadel::test
