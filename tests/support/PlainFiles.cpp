#include "tests/support/PlainFiles.h"

#include <sqlite3.h>

#include <QCryptographicHash>
#include <QDir>
#include <QFile>

namespace rillbook {

void RunPlainSql(const QString& path, const QByteArray& sql, bool leaveCompanion) {
    sqlite3* database = nullptr;
    if (sqlite3_open(QFile::encodeName(path).constData(), &database) != SQLITE_OK ||
        sqlite3_exec(database, "PRAGMA synchronous = OFF", nullptr, nullptr, nullptr) !=
            SQLITE_OK ||
        sqlite3_exec(database, sql.constData(), nullptr, nullptr, nullptr) != SQLITE_OK) {
        qFatal("%s: %s", sql.constData(), sqlite3_errmsg(database));
    }
    if (leaveCompanion) {
        sqlite3_db_config(database, SQLITE_DBCONFIG_NO_CKPT_ON_CLOSE, 1, nullptr);
    }
    sqlite3_close(database);
    if (leaveCompanion) {
        QFile::remove(path + u"-shm"_qs);
    }
}

QByteArray ReadBytes(const QString& path) {
    QFile file(path);
    return file.open(QIODevice::ReadOnly) ? file.readAll() : QByteArray();
}

void WriteBytes(const QString& path, const QByteArray& bytes) {
    QFile file(path);
    if (!file.open(QIODevice::WriteOnly) || file.write(bytes) != bytes.size()) {
        qFatal("Can't write %s", qPrintable(path));
    }
}

QString FolderText(const QString& folder) {
    QString text;
    const QDir directory(folder);
    for (const QString& name : directory.entryList(QDir::Files | QDir::Hidden, QDir::Name)) {
        const QByteArray bytes = ReadBytes(directory.filePath(name));
        text += u"%1 %2 %3\n"_qs.arg(name)
                    .arg(bytes.size())
                    .arg(QString::fromLatin1(
                        QCryptographicHash::hash(bytes, QCryptographicHash::Md5).toHex()));
    }
    return text;
}

}  // namespace rillbook
