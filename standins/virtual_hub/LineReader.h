#pragma once

#include <cstddef>
#include <deque>
#include <optional>
#include <string>
#include <string_view>

namespace vornadel
{

/// Cuts what comes on standard input, in pieces of any size, into lines. Not thread-safe.
class LineReader
{
public:
    static constexpr std::size_t kLongestLine = 4096; ///< without its newline

    struct Line {
        std::string text;
        bool tooLong = false; ///< the line was longer than kLongestLine; the text is not to be used
    };

    void add(std::string_view piece);
    void end(); ///< nothing more comes: what is there without a newline is a line too

    std::optional<Line> next(); ///< the oldest line that is whole; nothing when there is none

private:
    Line m_begun;
    std::deque<Line> m_whole;
};

} // namespace vornadel
