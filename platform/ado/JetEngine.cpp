#include "platform/ado/JetEngine.h"

#include <QFile>
#include <QFileInfo>
#include <algorithm>
#include <cerrno>

#include "platform/ado/AdoError.h"
#include "platform/ado/DatabaseFile.h"
#include "platform/text/SystemReason.h"

namespace rillbook {

namespace {

// If all pages are in use, copying them as they are takes a fraction of the time.
bool IsCompact(sqlite3* handle) {
    return ado::Ask(handle, "PRAGMA freelist_count") == u"0";
}

// By the connection's own descriptor: closing another one would end its lock.
void CopyPages(sqlite3* handle, const QString& target) {
    ado::Run(handle, "BEGIN; SELECT count(*) FROM sqlite_schema");
    sqlite3_file* source = nullptr;
    sqlite3_file_control(handle, "main", SQLITE_FCNTL_FILE_POINTER, &source);
    sqlite3_int64 size = 0;
    if (source->pMethods->xFileSize(source, &size) != SQLITE_OK) {
        throw AdoError(adErrGeneral, SystemReason(sqlite3_system_errno(handle)));
    }
    QFile copy(target);
    if (!copy.open(QIODevice::WriteOnly | QIODevice::Unbuffered)) {
        throw AdoError(adErrGeneral, copy.errorString());
    }
    constexpr sqlite3_int64 kBlock = 1 << 20;
    QByteArray block;
    for (sqlite3_int64 at = 0; at < size; at += block.size()) {
        block.resize(static_cast<qsizetype>(std::min(kBlock, size - at)));
        if (source->pMethods->xRead(source, block.data(), static_cast<int>(block.size()), at) !=
            SQLITE_OK) {
            throw AdoError(adErrGeneral, QStringLiteral("The file can't be read to its end"));
        }
        if (copy.write(block) != block.size()) {
            throw AdoError(adErrGeneral, copy.error() == QFileDevice::NoError
                                             ? SystemReason(ENOSPC)
                                             : SystemReason(errno));
        }
    }
    ado::Run(handle, "COMMIT");
}

void CopyCompacted(sqlite3* handle, const QString& target) {
    ado::Statement compaction(handle, "VACUUM INTO ?1");
    const QString path = QFileInfo(target).absoluteFilePath();
    compaction.Bind(1, path);
    compaction.Step();
}

}  // namespace

void JetEngine::CompactDatabase(const QString& sourceConnection, const QString& targetConnection) {
    const QString source = ado::PathInConnection(sourceConnection);
    const QString target = ado::PathInConnection(targetConnection);
    if (QFileInfo(target).size() > 0) {
        throw AdoError(adErrGeneral, QStringLiteral("The file exists already: %1").arg(target));
    }
    if (ado::WriterMark::CountOf(source) > 0) {
        throw AdoError(adErrGeneral, QStringLiteral("The file is open: %1").arg(source));
    }
    source_ = ado::OpenAlone(source);
    try {
        ado::RequireSound(source_.get(), source);
        if (IsCompact(source_.get())) {
            CopyPages(source_.get(), target);
        } else {
            CopyCompacted(source_.get(), target);
        }
    } catch (const AdoError&) {
        source_.reset();
        QFile::remove(target);
        QFile::remove(target + QStringLiteral("-journal"));
        throw;
    }
}

}  // namespace rillbook
