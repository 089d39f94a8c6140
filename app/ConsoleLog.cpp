#include "app/ConsoleLog.h"

#include <algorithm>
#include <cstdio>

namespace vornadel
{

void ConsoleLog(const QString& text)
{
    QByteArray line = text.toUtf8();
    // Texts come from files and users; a terminal would interpret control characters in them.
    std::replace_if(
        line.begin(), line.end(),
        [](char c) { return (c >= 0 && c < ' ' && c != '\n' && c != '\t') || c == '\x7F'; }, '?');
    if (!line.endsWith('\n')) {
        line += '\n';
    }
    std::fwrite(line.constData(), 1, static_cast<std::size_t>(line.size()), stderr);
}

} // namespace vornadel
