#include "app/FileNames.h"

#include <QFile>
#include <QStringList>

#include <algorithm>
#include <filesystem>
#include <system_error>
#include <vector>

namespace vornadel
{

namespace
{

constexpr char16_t kRawBytes = 0xDC00; ///< plus the byte, which is 0x80 or more
constexpr std::size_t kLongestCharacter = 4;

/// The length of the UTF-8 character at the start of a text, which is not empty; 0 without one.
std::size_t characterLength(std::string_view text)
{
    for (std::size_t length = 1; length <= std::min(text.size(), kLongestCharacter); ++length) {
        const QByteArray bytes(text.data(), static_cast<qsizetype>(length));
        if (QString::fromUtf8(bytes).toUtf8() == bytes) {
            return length;
        }
    }
    return 0;
}

bool isRawByte(const QString& text, qsizetype at)
{
    const char16_t unit = text.at(at).unicode();
    return unit >= kRawBytes + 0x80 && unit <= kRawBytes + 0xFF &&
           (at == 0 || !text.at(at - 1).isHighSurrogate());
}

std::string utf8Path(const QString& text) { return QFile::encodeName(text).toStdString(); }

bool isThere(const std::filesystem::path& path)
{
    std::error_code ignored;
    return std::filesystem::exists(path, ignored);
}

/// The names in a folder that Qt would decode to `name`.
std::vector<std::string> namesDecodedTo(const QString& name, const std::filesystem::path& folder)
{
    std::vector<std::string> found;
    std::error_code ended;
    for (std::filesystem::directory_iterator at(folder, ended), end; !ended && at != end;
         at.increment(ended)) {
        const std::string entry = at->path().filename().string();
        if (QFile::decodeName(entry.c_str()) == name) {
            found.push_back(entry);
        }
    }
    return found;
}

} // namespace

QString nameText(std::string_view name)
{
    QString text;
    while (!name.empty()) {
        const std::size_t length = characterLength(name);
        if (length == 0) {
            text += QChar(kRawBytes + static_cast<unsigned char>(name.front()));
        } else {
            text += QString::fromUtf8(name.data(), static_cast<qsizetype>(length));
        }
        name.remove_prefix(std::max<std::size_t>(length, 1));
    }
    return text;
}

std::string nameBytes(const QString& text)
{
    QByteArray bytes;
    qsizetype done = 0;
    for (qsizetype i = 0; i < text.size(); ++i) {
        if (isRawByte(text, i)) {
            bytes += QStringView(text).mid(done, i - done).toUtf8();
            bytes += static_cast<char>(text.at(i).unicode() & 0xFF);
            done = i + 1;
        }
    }
    bytes += QStringView(text).mid(done).toUtf8();
    return bytes.toStdString();
}

bool isUtf8(std::string_view name)
{
    const QByteArray bytes(name.data(), static_cast<qsizetype>(name.size()));
    return QFile::encodeName(QFile::decodeName(bytes)) == bytes;
}

QString shownName(std::string_view name)
{
    QString text = nameText(name);
    for (qsizetype i = text.size() - 1; i >= 0; --i) {
        if (isRawByte(text, i)) {
            text.replace(i, 1, QString::asprintf("\\x%02X", text.at(i).unicode() & 0xFFU));
        }
    }
    return text;
}

std::string chosenPath(const QString& path)
{
    if (isThere(utf8Path(path)) || !path.contains(QChar::ReplacementCharacter)) {
        return utf8Path(path);
    }
    std::filesystem::path found = "/";
    for (const QString& part : path.split('/', Qt::SkipEmptyParts)) {
        std::string name = utf8Path(part);
        if (!isThere(found / name)) {
            const std::vector<std::string> names = namesDecodedTo(part, found);
            if (names.size() != 1) {
                return utf8Path(path);
            }
            name = names.front();
        }
        found /= name;
    }
    return found.string();
}

} // namespace vornadel
