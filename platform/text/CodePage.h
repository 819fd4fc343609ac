#pragma once

#include <QByteArray>
#include <QString>

namespace rillbook {

// Windows-1252 where the text fits it; else UTF-8 behind a byte order mark. No character is lost.
QByteArray EncodeText(const QString& text);

// UTF-8 if the bytes begin with its byte order mark, else Windows-1252. The five bytes that the
// code page leaves open stand for the control characters of the same number, so that every byte
// survives.
QString DecodeText(const QByteArray& bytes);

}  // namespace rillbook
