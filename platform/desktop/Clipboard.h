#pragma once

#include <QByteArray>
#include <QString>

namespace rillbook {

class Clipboard {
public:
    virtual ~Clipboard() = default;
    virtual void Clear() = 0;
    virtual void SetText(const QString& text) = 0;
    virtual QString GetText() = 0;
    // A picture, given as the bytes of a BMP file.
    virtual void SetBitmap(const QByteArray& bmp) = 0;
};

}  // namespace rillbook
