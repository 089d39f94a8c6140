#include "cli/LineStream.h"

#include <cstddef>
#include <utility>

namespace vornadel
{

namespace
{

/// The size of the UTF-8 character that a text begins with; 0 if it begins with none, or with a
/// control character beyond ASCII.
std::size_t utf8Size(std::string_view text)
{
    const auto byte = [&](std::size_t index) {
        return index < text.size() ? static_cast<unsigned char>(text[index]) : 0U;
    };
    const unsigned first = byte(0);
    const std::size_t size = first < 0x80                    ? 1
                             : first >= 0xC2 && first < 0xE0 ? 2
                             : first >= 0xE0 && first < 0xF0 ? 3
                             : first >= 0xF0 && first < 0xF5 ? 4
                                                             : 0;
    unsigned code = size == 1 ? first : first & (0xFFU >> (size + 1));
    for (std::size_t i = 1; i < size; ++i) {
        if ((byte(i) & 0xC0U) != 0x80U) {
            return 0;
        }
        code = code << 6U | (byte(i) & 0x3FU);
    }
    const bool overlong = (size == 3 && code < 0x800) || (size == 4 && code < 0x10000);
    const bool surrogate = code >= 0xD800 && code < 0xE000;
    const bool control = code < 0x20 || (code >= 0x7F && code < 0xA0);
    return overlong || surrogate || control || code > 0x10FFFF ? 0 : size;
}

} // namespace

LineStream::LineStream(std::function<void(const std::string&)> take) : std::ostream(nullptr)
{
    m_buffer.take = std::move(take);
    rdbuf(&m_buffer);
}

LineStream::~LineStream() { m_buffer.sync(); }

std::streamsize LineStream::Buffer::xsputn(const char* text, std::streamsize size)
{
    for (std::streamsize i = 0; i < size; ++i) {
        overflow(traits_type::to_int_type(text[i]));
    }
    return size;
}

LineStream::Buffer::int_type LineStream::Buffer::overflow(int_type character)
{
    if (!traits_type::eq_int_type(character, traits_type::eof())) {
        m_piece += traits_type::to_char_type(character);
        if (m_piece.back() == '\n') {
            take(std::exchange(m_piece, {}));
        }
    }
    return traits_type::not_eof(character);
}

int LineStream::Buffer::sync()
{
    if (!m_piece.empty()) {
        take(std::exchange(m_piece, {}));
    }
    return 0;
}

std::string withoutControls(std::string_view text)
{
    std::string clean;
    while (!text.empty()) {
        const bool kept = text[0] == '\n' || text[0] == '\t';
        const std::size_t size = kept ? 1 : utf8Size(text);
        clean += size == 0 ? "?" : text.substr(0, size);
        text.remove_prefix(size == 0 ? 1 : size);
    }
    return clean;
}

} // namespace vornadel
