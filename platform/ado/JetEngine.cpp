#include "platform/ado/JetEngine.h"

#include <unistd.h>

#include <QFile>
#include <QFileInfo>
#include <filesystem>
#include <system_error>

#include "platform/ado/AdoError.h"
#include "platform/ado/DatabaseFile.h"

namespace rillbook {

namespace {

// The copy takes the station's place: it must be on the disk before the station goes.
void RequireOnDisk(const QString& path) {
    QFile file(path);
    if (!file.open(QIODevice::ReadOnly) || ::fsync(file.handle()) != 0) {
        throw AdoError(adErrGeneral, QStringLiteral("The copy can't be written: %1").arg(path));
    }
}

// Nothing is to be won from pages that are all in use: copied as they are, they are there several
// times sooner.
bool IsCompact(sqlite3* handle, const QString& path) {
    return !ado::HasCompanion(path) && ado::Ask(handle, "PRAGMA journal_mode") == u"delete" &&
           ado::Ask(handle, "PRAGMA freelist_count") == u"0";
}

void CopyPages(sqlite3* handle, const QString& source, const QString& target) {
    // Nobody can write meanwhile. The copying opens the file anew, and its closing ends this lock.
    ado::Run(handle, "BEGIN; SELECT count(*) FROM sqlite_schema");
    std::error_code error;
    std::filesystem::copy_file(QFile::encodeName(source).toStdString(),
                               QFile::encodeName(target).toStdString(), error);
    if (error) {
        throw AdoError(adErrGeneral, QString::fromStdString(error.message()));
    }
}

void CopyCompacted(sqlite3* handle, const QString& target) {
    ado::Statement compaction(handle, "VACUUM INTO ?1");
    compaction.Bind(1, QFileInfo(target).absoluteFilePath());
    compaction.Step();
}

}  // namespace

void JetEngine::CompactDatabase(const QString& sourceConnection, const QString& targetConnection) {
    const QString source = ado::PathInConnection(sourceConnection);
    const QString target = ado::PathInConnection(targetConnection);
    if (QFileInfo::exists(target)) {
        throw AdoError(adErrGeneral, QStringLiteral("The file exists already: %1").arg(target));
    }
    if (ado::WriterMark::CountOf(source) > 0) {
        throw AdoError(adErrGeneral, QStringLiteral("The file is open: %1").arg(source));
    }
    const ado::Handle handle = ado::OpenUntouched(source);
    ado::RequireSound(handle.get(), source);
    try {
        if (IsCompact(handle.get(), source)) {
            CopyPages(handle.get(), source, target);
        } else {
            CopyCompacted(handle.get(), target);
        }
        RequireOnDisk(target);
        ado::NoteSound(target);
    } catch (const AdoError&) {
        QFile::remove(target);
        QFile::remove(target + QStringLiteral("-journal"));
        throw;
    }
}

}  // namespace rillbook
