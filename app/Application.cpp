#include "app/Application.h"

#include <QCoreApplication>

namespace rillbook::Application {

namespace {

QString& NamedFolder() {
    static QString folder;
    return folder;
}

}  // namespace

int Major() {
    return RILLBOOK_MAJOR;
}
int Minor() {
    return RILLBOOK_MINOR;
}
int Revision() {
    return RILLBOOK_REVISION;
}

QString VersionDigits() {
    return QString::number(Major()) + QString::number(Minor()) + QString::number(Revision());
}

QString LegalLine() {
    return QStringLiteral("Copyright 2026, the developers of Rillbook");
}

QString Path() {
    return NamedFolder().isEmpty() ? QCoreApplication::applicationDirPath() : NamedFolder();
}

void SetPath(const QString& folder) {
    NamedFolder() = folder;
}

}  // namespace rillbook::Application
