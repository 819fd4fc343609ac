#include "store/ConvertFile.h"

#include <sys/file.h>

#include <QDateTime>
#include <QFile>
#include <QFileInfo>
#include <QThread>
#include <cerrno>

#include "platform/ado/AdoError.h"
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

// The station to be, beside the file whose place it takes; goes with this object unless it has
// taken it. One that a killed program left is written anew; the lock tells it from one that another
// program is at.
class Draft {
public:
    explicit Draft(const QString& file) : file_(file + QStringLiteral("qvx")) {
        const QByteArray bytes = StationTemplate();
        if (file_.open(QIODevice::ReadOnly)) {
            Lock();
            file_.close();
        }
        Remove();
        if (!file_.open(QIODevice::NewOnly | QIODevice::WriteOnly | QIODevice::Unbuffered)) {
            throw ConversionError(
                QStringLiteral("The folder can't be written to: %1").arg(file_.errorString()));
        }
        Lock();
        file_.setPermissions(QFileDevice::ReadOwner | QFileDevice::WriteOwner);
        if (const qint64 written = file_.write(bytes); written != bytes.size()) {
            const QString reason =
                written < 0 ? file_.errorString() : QStringLiteral("The disk is full");
            Remove();
            throw ConversionError(reason);
        }
    }
    ~Draft() { Remove(); }
    Draft(const Draft&) = delete;
    Draft& operator=(const Draft&) = delete;

    QString Path() const { return file_.fileName(); }

private:
    // The reading part of a program that was killed may hold it a moment longer.
    void Lock() const {
        for (int attempt = 1; ::flock(file_.handle(), LOCK_EX | LOCK_NB) != 0; ++attempt) {
            if (errno != EWOULDBLOCK) {
                return;  // no locks in this file system
            }
            if (attempt == 10) {
                throw ConversionError(QStringLiteral("Another program is converting the file."));
            }
            QThread::msleep(50);
        }
    }

    void Remove() const {
        for (const QString& name : CompanionsOf(Path()) + QStringList(Path())) {
            QFile::remove(name);
        }
    }

    QFile file_;
};

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
    const Draft draft(file);
    const TableReader read = [&file](access::TableSink& sink) {
        access::ReadTables(file, StationTables(), sink);
    };
    ConvertedFile result;
    result.left = FillStation(draft.Path(), read);
    RequireSameStation(draft.Path(), read);
    // An Access file from a read-only disk may be read-only itself; its station is to be worked
    // with.
    QFile::setPermissions(draft.Path(), QFile::permissions(file) | QFileDevice::WriteOwner);
    Require(SyncFile(draft.Path()));
    source.Require();
    const KeptFile kept =
        KeepUnderName(file, [&file](int number) { return NameOfKept(file, number); });
    Require(kept.reason);
    if (const QString reason = MoveOver(draft.Path(), file); !reason.isEmpty()) {
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
