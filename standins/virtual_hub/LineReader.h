#pragma once

#include <cstddef>
#include <deque>
#include <optional>
#include <string>
#include <string_view>

namespace vornadel
{

/// Splits standard input, which arrives in pieces of any size, into lines. Not thread-safe.
class LineReader
{
public:
    static constexpr std::size_t kLongestLine = 4096; ///< without its newline

    struct Line {
        std::string text;
        bool tooLong = false; ///< longer than kLongestLine; do not use the text
    };

    void add(std::string_view piece);
    void end(); ///< end of input: a rest without a newline is a line too

    std::optional<Line> next(); ///< the oldest complete line, if there is one

private:
    Line m_begun;
    std::deque<Line> m_whole;
};

} // namespace vornadel
