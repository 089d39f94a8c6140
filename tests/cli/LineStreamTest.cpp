#include "cli/LineStream.h"
#include "cli/NextCommand.h"

#include <gtest/gtest.h>

#include <string>
#include <vector>

namespace vornadel::test
{

namespace
{

TEST(LineStream, HandsOverLinesAndWhatAFlushFollows)
{
    std::vector<std::string> pieces;
    {
        LineStream stream([&](const std::string& piece) { pieces.push_back(piece); });
        stream << "one\ntw" << 'o' << 22 << '\n' << "three" << std::flush << std::flush << "end";
    }
    EXPECT_EQ(pieces, (std::vector<std::string>{"one\n", "two22\n", "three", "end"}));
}

TEST(LineStream, KeepsControlCharactersFromTerminals)
{
    const struct {
        std::string text;
        std::string shown;
    } rows[] = {
        {"a\tb\n", "a\tb\n"},
        {"\x1b[31m\r\x07\x7f", "?[31m???"},
        {"\u00e4\u20ac\U0001F50C", "\u00e4\u20ac\U0001F50C"},
        {"\u009b2J", "??2J"},                          // a control sequence in one character
        {"\xe4 \xff\xc3", "? ??"},                     // Latin-1, none, a half
        {"\xc0\x8a \xe0\x80\x8a", "?? ???"},           // a line end in too many bytes
        {"\xed\xa0\x80 \xf4\x90\x80\x80", "??? ????"}, // no characters
    };
    for (const auto& row : rows) {
        EXPECT_EQ(withoutControls(row.text), row.shown);
    }
}

TEST(ShellWord, QuotesWhatAShellWouldChange)
{
    EXPECT_EQ(shellWord("/a-b_c.d:e=f,g@h%i+j9"), "/a-b_c.d:e=f,g@h%i+j9");
    for (const std::string special : {"~", " ", "*", "$x", "a;b", "#", "!", "{", "|"}) {
        EXPECT_EQ(shellWord(special), '\'' + special + '\'');
    }
}

} // namespace

} // namespace vornadel::test
