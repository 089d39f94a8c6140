#include "editor/ImageText.h"

#include <QLineEdit>
#include <QStringDecoder>
#include <QVariant>

#include <algorithm>

namespace vornadel
{

namespace
{

constexpr const char* kOneByteCharacters = "oneByteCharacters"; // a field that shows Latin-1

} // namespace

void showImageText(QLineEdit& field, const char* bytes)
{
    QStringDecoder decoder(QStringDecoder::Utf8, QStringDecoder::Flag::Stateless |
                                                     QStringDecoder::Flag::ConvertInitialBom);
    const QString text = decoder(QByteArrayView(bytes));
    const bool oneByte = decoder.hasError();
    field.setProperty(kOneByteCharacters, oneByte);
    field.setText(oneByte ? QString::fromLatin1(bytes) : text);
}

std::string imageText(const QLineEdit& field)
{
    const QString text = field.text();
    const bool oneByte = field.property(kOneByteCharacters).toBool() &&
                         std::all_of(text.begin(), text.end(),
                                     [](QChar character) { return character.unicode() <= 0xFF; });
    return oneByte ? text.toLatin1().toStdString() : text.toStdString();
}

std::string idText(const QLineEdit& field)
{
    std::string digits;
    for (const char32_t character : field.text().toStdU32String()) {
        digits += character < 0x80 ? static_cast<char>(character) : '?';
    }
    return digits;
}

} // namespace vornadel
