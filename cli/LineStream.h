#pragma once

#include <functional>
#include <ostream>
#include <streambuf>
#include <string>
#include <string_view>

namespace vornadel
{

/// A stream that hands over what is printed to it, in pieces that end with a line or a flush.
class LineStream final : public std::ostream
{
public:
    /// `take` gets each piece, with its line end if it has one.
    explicit LineStream(std::function<void(const std::string& piece)> take);
    LineStream(const LineStream&) = delete;
    LineStream& operator=(const LineStream&) = delete;
    ~LineStream() override;

private:
    class Buffer final : public std::streambuf
    {
    public:
        std::function<void(const std::string&)> take;
        int sync() override;

    private:
        std::streamsize xsputn(const char* text, std::streamsize size) override;
        int_type overflow(int_type character) override;

        std::string m_piece;
    };

    Buffer m_buffer;
};

/// Text from files and devices for a terminal: without control characters other than line ends and
/// tabs, and without bytes that are not UTF-8. Each becomes "?".
std::string withoutControls(std::string_view text);

} // namespace vornadel
