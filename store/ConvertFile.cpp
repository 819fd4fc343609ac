#include "store/ConvertFile.h"

#include <QDateTime>
#include <QFile>
#include <QFileInfo>

#include "platform/ado/AdoError.h"
#include "platform/desktop/FileDraft.h"
#include "platform/desktop/KeptFile.h"
#include "platform/desktop/ReplaceFile.h"
#include "store/FileError.h"
#include "store/StationDatabase.h"

namespace rillbook {

namespace {

void Require(const QString& reason) {
    if (!reason.isEmpty()) {
        throw ConversionError(reason);
    }
}

// Changes of the file meanwhile would be lost.
class Unchanged {
public:
    explicit Unchanged(const QString& path) : path_(path), size_(Size()), time_(Time()) {}

    void Require() const {
        if (Size() != size_ || Time() != time_) {
            throw ConversionError(
                QStringLiteral("Another program has changed the file meanwhile."));
        }
    }

private:
    qint64 Size() const { return QFileInfo(path_).size(); }
    QDateTime Time() const { return QFileInfo(path_).lastModified(); }

    QString path_;
    qint64 size_;
    QDateTime time_;
};

QString NameOfKept(const QString& file, int number) {
    const QString ending = QStringLiteral(".mdb");
    const QString name =
        file.endsWith(ending, Qt::CaseInsensitive) ? file.chopped(ending.size()) : file;
    return name + QStringLiteral(".access") +
           (number == 1 ? QString() : QStringLiteral(".%1").arg(number)) + ending;
}

ConvertedFile Convert(const QString& file) {
    const Unchanged source(file);
    FileDraft draft(file);
    // An Access file from a read-only disk may be read-only itself; the user works with its
    // station.
    Require(draft.Create(file, true));
    Require(draft.Write(StationTemplate()));
    const TableReader read = [&file](access::TableSink& sink) {
        access::ReadTables(file, StationTables(), sink);
    };
    ConvertedFile result;
    result.left = FillStation(draft.Path(), read);
    RequireSameStation(draft.Path(), read);
    // The station is on the disk before the Access file gets its second name.
    Require(SyncFile(draft.Path()));
    source.Require();
    const KeptFile kept =
        KeepUnderName(file, [&file](int number) { return NameOfKept(file, number); });
    Require(kept.reason);
    if (const QString reason = draft.TakePlace(); !reason.isEmpty()) {
        if (kept.isNew) {
            QFile::remove(kept.path);
        }
        throw ConversionError(reason);
    }
    result.kept = kept.path;
    return result;
}

}  // namespace

ConvertedFile ConvertFile(const QString& path) {
    // Not in the place of a link to it.
    const QString file = QFileInfo(path).canonicalFilePath();
    if (file.isEmpty()) {
        throw ConversionError(QStringLiteral("The file isn't there or can't be read."));
    }
    const QStringList companions = CompanionsOf(file);
    if (!companions.isEmpty()) {
        throw ConversionError(
            QStringLiteral("%1 lies beside the file and belongs to another station.")
                .arg(companions.front()));
    }
    try {
        return Convert(file);
    } catch (const access::ReadError& error) {
        throw ConversionError(QString::fromUtf8(error.what()));
    } catch (const AdoError& error) {
        throw ConversionError(error.Description());
    } catch (const FileError& error) {
        throw ConversionError(QString::fromUtf8(error.what()));
    }
}

}  // namespace rillbook
