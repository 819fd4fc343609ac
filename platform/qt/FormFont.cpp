#include "platform/qt/FormFont.h"

#include <QStringList>

namespace rillbook {

QFont FormFont() {
    QFont font(QStringList{QStringLiteral("Arial"), QStringLiteral("Liberation Sans")});
    font.setStyleHint(QFont::SansSerif);
    font.setPixelSize(11);
    return font;
}

}  // namespace rillbook
