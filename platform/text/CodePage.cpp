#include "platform/text/CodePage.h"

#include <algorithm>
#include <array>

namespace rillbook {

namespace {

constexpr char kByteOrderMark[] = "\xEF\xBB\xBF";

// Bytes 80 to 9F; all others stand for the character of their own number.
constexpr std::array<char16_t, 32> kHighControls = {
    0x20AC, 0x0081, 0x201A, 0x0192, 0x201E, 0x2026, 0x2020, 0x2021, 0x02C6, 0x2030, 0x0160,
    0x2039, 0x0152, 0x008D, 0x017D, 0x008F, 0x0090, 0x2018, 0x2019, 0x201C, 0x201D, 0x2022,
    0x2013, 0x2014, 0x02DC, 0x2122, 0x0161, 0x203A, 0x0153, 0x009D, 0x017E, 0x0178};

// False if the code page doesn't have the character.
bool AppendByte(QByteArray& bytes, char16_t character) {
    if (character < 0x80 || (character >= 0xA0 && character <= 0xFF)) {
        bytes.append(static_cast<char>(character));
        return true;
    }
    const auto found = std::find(kHighControls.begin(), kHighControls.end(), character);
    if (found == kHighControls.end()) {
        return false;
    }
    bytes.append(static_cast<char>(0x80 + (found - kHighControls.begin())));
    return true;
}

}  // namespace

QByteArray EncodeText(const QString& text) {
    QByteArray bytes;
    bytes.reserve(text.size());
    const bool fits = std::all_of(text.cbegin(), text.cend(), [&bytes](QChar character) {
        return AppendByte(bytes, character.unicode());
    });
    // A text whose own bytes look like the mark would be read as UTF-8.
    if (fits && !bytes.startsWith(kByteOrderMark)) {
        return bytes;
    }
    return kByteOrderMark + text.toUtf8();
}

QString DecodeText(const QByteArray& bytes) {
    if (bytes.startsWith(kByteOrderMark)) {
        return QString::fromUtf8(bytes);  // takes the mark off
    }
    QString text;
    text.reserve(bytes.size());
    for (const char byte : bytes) {
        const auto number = static_cast<unsigned char>(byte);
        const bool highControl = number >= 0x80 && number < 0xA0;
        text.append(QChar(highControl ? kHighControls[number - 0x80U] : char16_t{number}));
    }
    return text;
}

}  // namespace rillbook
