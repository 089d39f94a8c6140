#include "standins/virtual_hub/LineReader.h"

#include <utility>

namespace vornadel
{

void LineReader::add(std::string_view piece)
{
    for (const char letter : piece) {
        if (letter == '\n') {
            m_whole.push_back(std::exchange(m_begun, {}));
        } else if (m_begun.text.size() == kLongestLine) {
            m_begun.tooLong = true;
        } else {
            m_begun.text += letter;
        }
    }
}

void LineReader::end()
{
    if (!m_begun.text.empty()) {
        add("\n");
    }
}

std::optional<LineReader::Line> LineReader::next()
{
    if (m_whole.empty()) {
        return std::nullopt;
    }
    Line line = std::move(m_whole.front());
    m_whole.pop_front();
    return line;
}

} // namespace vornadel
