#include "platform/ado/JetEngine.h"

#include <unistd.h>

#include <QFile>
#include <QFileInfo>

#include "platform/ado/AdoError.h"
#include "platform/ado/DatabaseFile.h"

namespace rillbook {

namespace {

// The copy takes the station's place: it must be on the disk before the station goes.
void RequireOnDisk(const QString& path) {
    QFile file(path);
    if (!file.open(QIODevice::ReadWrite) || ::fsync(file.handle()) != 0) {
        throw AdoError(adErrGeneral, QStringLiteral("The copy can't be written: %1").arg(path));
    }
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
    ado::RequireSound(handle.get());
    try {
        ado::Statement compaction(handle.get(), "VACUUM INTO ?1");
        compaction.Bind(1, QFileInfo(target).absoluteFilePath());
        compaction.Step();
        RequireOnDisk(target);
    } catch (const AdoError&) {
        QFile::remove(target);
        QFile::remove(target + QStringLiteral("-journal"));
        throw;
    }
}

}  // namespace rillbook
