#pragma once

#include <QString>

namespace rillbook {

// The program's version record and its place on disk.
namespace Application {

inline QString Title() {
    return QStringLiteral("Rillbook");
}

int Major();
int Minor();
int Revision();

// Major, minor and revision joined with nothing between, as project files carry it.
QString VersionDigits();

QString LegalLine();

// The folder of the program's data files (template.mdb, rillbook.chm), with no separator at its
// end: the program's own folder unless SetPath named another.
QString Path();
void SetPath(const QString& folder);

}  // namespace Application

}  // namespace rillbook
