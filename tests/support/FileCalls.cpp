#include "tests/support/FileCalls.h"

#include <sys/stat.h>

#include <QDir>
#include <QFile>
#include <QFileInfo>
#include <QRandomGenerator>
#include <cerrno>
#include <cstring>
#include <utility>

namespace rillbook {

namespace {

FileCalls* active = nullptr;

// The watch's own reading isn't watched.
class Unwatched {
public:
    Unwatched() : former_(std::exchange(active, nullptr)) {}
    ~Unwatched() { active = former_; }
    Unwatched(const Unwatched&) = delete;
    Unwatched& operator=(const Unwatched&) = delete;

private:
    FileCalls* former_;
};

std::uint64_t InodeOf(const QString& path) {
    struct stat status {};
    return ::stat(QFile::encodeName(path).constData(), &status) == 0 ? status.st_ino : 0;
}

QByteArray BytesOf(const QString& path) {
    QFile file(path);
    return file.open(QIODevice::ReadOnly) ? file.readAll() : QByteArray();
}

QStringList NamesIn(const QString& folder) {
    return QDir(folder).entryList(QDir::Files | QDir::Hidden | QDir::NoDotAndDotDot, QDir::Name);
}

// Each sector of the one or of the other.
QByteArray SectorsOfBoth(const QByteArray& synced, const QByteArray& present,
                         QRandomGenerator& chance) {
    constexpr qsizetype sector = 512;
    QByteArray mixed = chance.bounded(2) == 0 ? present : present.left(synced.size());
    for (qsizetype at = 0; at < mixed.size() && at < synced.size(); at += sector) {
        if (chance.bounded(2) == 0) {
            const QByteArray former = synced.mid(at, sector);
            mixed.replace(at, std::min(former.size(), mixed.size() - at),
                          former.left(mixed.size() - at));
        }
    }
    for (qsizetype at = synced.size(); at < mixed.size(); at += sector) {
        if (chance.bounded(2) == 0) {
            const qsizetype length = std::min(sector, mixed.size() - at);
            mixed.replace(at, length, QByteArray(length, '\0'));
        }
    }
    return mixed;
}

}  // namespace

FileCalls::FileCalls(const QString& folder)
    : folder_(folder), prefix_(QFile::encodeName(folder + u'/')) {
    for (const QString& name :
         QDir(u"/proc/self/fd"_qs)
             .entryList(QDir::NoDotAndDotDot | QDir::AllEntries | QDir::System)) {
        const QString target = QFile::symLinkTarget(u"/proc/self/fd/"_qs + name);
        if (target.startsWith(folder + u'/')) {
            handles_.insert(name.toInt());
        }
    }
    if (active != nullptr) {
        qFatal("Two watches at a time");
    }
    active = this;
}

FileCalls::~FileCalls() {
    active = nullptr;
}

FileCalls* FileCalls::Active() {
    return active;
}

void FileCalls::Fail(int call, Lasting lasting, int error, unsigned kinds) {
    count_ = 0;
    failing_ = call;
    lasting_ = lasting;
    error_ = error;
    kinds_ = kinds;
    hasStruck_ = false;
}

bool FileCalls::Watches(const char* path) const {
    return std::strncmp(path, prefix_.constData(), static_cast<std::size_t>(prefix_.size())) == 0 ||
           prefix_.chopped(1) == path;
}

bool FileCalls::Strikes(Kind kind) {
    if ((kind & kinds_) == 0) {
        return false;
    }
    ++count_;
    if (BeforeEach) {
        const Unwatched unwatched;
        BeforeEach(kind);
    }
    if (keeps_ && (kind & (Read | Lock | Map)) == 0) {
        KeepMedium();
    }
    const bool strikes = failing_ > 0 && (count_ == failing_ ||
                                          (count_ > failing_ && lasting_ == Lasting::FromThenOn));
    if (strikes) {
        hasStruck_ = true;
        errno = error_;
    }
    return strikes;
}

void FileCalls::Opened(int handle, bool isNew) {
    handles_.insert(handle);
    struct stat status {};
    if (isNew && ::fstat(handle, &status) == 0) {
        // The number may have been that of a file that is gone, but not from the medium.
        nodes_.erase(status.st_ino);
    }
}

std::shared_ptr<FileCalls::Node>& FileCalls::NodeOf(std::uint64_t inode) {
    std::shared_ptr<Node>& node = nodes_[inode];
    if (!node) {
        node = std::make_shared<Node>();
    }
    return node;
}

FileCalls::Names FileCalls::PresentNames() {
    Names names;
    for (const QString& name : NamesIn(folder_)) {
        names.insert(name, NodeOf(InodeOf(folder_ + u'/' + name)));
    }
    return names;
}

void FileCalls::Synced(int handle) {
    struct stat status {};
    if (!keeps_ || ::fstat(handle, &status) != 0) {
        return;
    }
    const Unwatched unwatched;
    if (S_ISDIR(status.st_mode)) {
        syncedNames_ = PresentNames();
        return;
    }
    NodeOf(status.st_ino)->synced = BytesOf(u"/proc/self/fd/%1"_qs.arg(handle));
}

void FileCalls::KeepMedia() {
    const Unwatched unwatched;
    keeps_ = true;
    count_ = 0;
    nodes_.clear();
    syncedNames_ = PresentNames();
    for (auto name = syncedNames_.cbegin(); name != syncedNames_.cend(); ++name) {
        name.value()->synced = BytesOf(folder_ + u'/' + name.key());
    }
}

void FileCalls::KeepMedium() {
    const Unwatched unwatched;
    QMap<QString, QByteArray> files;
    for (auto name = syncedNames_.cbegin(); name != syncedNames_.cend(); ++name) {
        files.insert(name.key(), name.value()->synced);
    }
    Keep(files);
    QRandomGenerator chance(static_cast<quint32>(count_));
    const Names present = PresentNames();
    QMap<const Node*, QByteArray> bytes;
    for (auto name = present.cbegin(); name != present.cend(); ++name) {
        bytes.insert(name.value().get(), BytesOf(folder_ + u'/' + name.key()));
    }
    const Names& names = chance.bounded(2) == 0 ? present : syncedNames_;
    files.clear();
    for (auto name = names.cbegin(); name != names.cend(); ++name) {
        const QByteArray& synced = name.value()->synced;
        files.insert(name.key(),
                     SectorsOfBoth(synced, bytes.value(name.value().get(), synced), chance));
    }
    Keep(files);
}

void FileCalls::Keep(QMap<QString, QByteArray> files) {
    const bool isKnown = media_.size() > 1 && media_.back().reports == reports_ &&
                         (media_.back().files == files || media_[media_.size() - 2].files == files);
    if (!isKnown) {
        media_.push_back({count_, reports_, std::move(files)});
    }
}

void FileCalls::Medium::WriteTo(const QString& folder) const {
    for (const QString& name : NamesIn(folder)) {
        QFile::remove(folder + u'/' + name);
    }
    for (auto file = files.cbegin(); file != files.cend(); ++file) {
        QFile copy(folder + u'/' + file.key());
        if (!copy.open(QIODevice::WriteOnly) || copy.write(file.value()) != file.value().size()) {
            qFatal("Can't write %s", qPrintable(copy.fileName()));
        }
    }
}

}  // namespace rillbook
