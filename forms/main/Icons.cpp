#include "forms/main/Icons.h"

#include <QString>

// The linker drops the resources of a static library unless they are initialised by name, which
// works in no namespace only.
static void InitialiseIcons() {
    Q_INIT_RESOURCE(icons);
}

namespace rillbook {

namespace {

QString NameOf(Picture picture) {
    switch (picture) {
        case Picture::New:
            return QStringLiteral("new");
        case Picture::Open:
            return QStringLiteral("open");
        case Picture::Save:
            return QStringLiteral("save");
        case Picture::Station:
            return QStringLiteral("station");
        case Picture::Channel:
            return QStringLiteral("channel");
        case Picture::Program:
            return QStringLiteral("rillbook");
    }
    return {};
}

}  // namespace

QIcon PictureIcon(Picture picture) {
    InitialiseIcons();
    return QIcon(QStringLiteral(":/icons/") + NameOf(picture) + QStringLiteral(".svg"));
}

}  // namespace rillbook
