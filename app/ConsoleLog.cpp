#include "app/ConsoleLog.h"

#include <cstdio>

namespace vornadel
{

void ConsoleLog(const QString& text)
{
    QByteArray line = text.toUtf8();
    if (!line.endsWith('\n')) {
        line += '\n';
    }
    std::fwrite(line.constData(), 1, static_cast<std::size_t>(line.size()), stderr);
}

} // namespace vornadel
