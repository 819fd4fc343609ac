#pragma once

#include <QByteArray>
#include <QString>

namespace rillbook {

// Runs statements on a database file past the program's own layer; makes the file where there is
// none. `leaveCompanion` leaves the file as a killed program would: in write-ahead mode, with its
// latest rows in the companion alone. A failure ends the process.
void RunPlainSql(const QString& path, const QByteArray& sql, bool leaveCompanion = false);

// Empty where there is no file.
QByteArray ReadBytes(const QString& path);
void WriteBytes(const QString& path, const QByteArray& bytes);

// Every file of a folder with its size and a digest of its bytes, one a line, by name.
QString FolderText(const QString& folder);

}  // namespace rillbook
