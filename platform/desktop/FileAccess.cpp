#include "platform/desktop/FileAccess.h"

#include <sys/stat.h>
#include <sys/xattr.h>
#include <unistd.h>

#include <QByteArray>
#include <QFile>
#include <QtEndian>

namespace rillbook {

namespace {

// The system's form of an access list: a version (4 bytes), then for each entry its kind (2), its
// rights (2) and whom it names (4), in little endian.
constexpr const char* kAccessList = "system.posix_acl_access";
constexpr qsizetype kListHead = 4;
constexpr qsizetype kEntrySize = 8;
constexpr quint16 kOwningGroup = 0x04;
constexpr quint16 kMask = 0x10;

constexpr mode_t kGroupShift = 3;

QByteArray AccessListOf(const QByteArray& path) {
    const ssize_t size = ::getxattr(path.constData(), kAccessList, nullptr, 0);
    if (size <= 0) {
        return {};
    }
    QByteArray list(size, '\0');
    const ssize_t got = ::getxattr(path.constData(), kAccessList, list.data(),
                                   static_cast<std::size_t>(list.size()));
    return got == size ? list : QByteArray();
}

template <typename Change>
void ForEachEntry(QByteArray& list, Change change) {
    for (qsizetype at = kListHead; at + kEntrySize <= list.size(); at += kEntrySize) {
        const auto kind = qFromLittleEndian<quint16>(list.constData() + at);
        auto rights = qFromLittleEndian<quint16>(list.constData() + at + 2);
        change(kind, rights);
        qToLittleEndian(rights, list.data() + at + 2);
    }
}

mode_t WithGroupRights(mode_t mode, mode_t rights) {
    return (mode & ~mode_t{S_IRWXG}) | (rights << kGroupShift);
}

}  // namespace

void CarryAccess(int to, const QString& from, bool ownerMayWrite) {
    const QByteArray path = QFile::encodeName(from);
    struct stat wanted {};
    if (::stat(path.constData(), &wanted) != 0) {
        return;
    }
    // One that the folder passes on to new files would give rights that `from` doesn't give.
    ::fremovexattr(to, kAccessList);
    const auto keep = static_cast<uid_t>(-1);
    const bool hasGroup = ::fchown(to, keep, wanted.st_gid) == 0;
    const bool hasOwner = ::fchown(to, wanted.st_uid, keep) == 0;
    mode_t mode = wanted.st_mode & ACCESSPERMS;
    if (!hasOwner) {
        mode |= S_IRUSR | S_IWUSR;
    } else if (ownerMayWrite) {
        mode |= S_IWUSR;
    }
    const mode_t others = mode & S_IRWXO;
    QByteArray list = AccessListOf(path);
    if (!list.isEmpty()) {
        // The group's bits of the mode are the mask then.
        mode_t group = 0;
        ForEachEntry(list, [&](quint16 kind, quint16& rights) {
            if (kind == kOwningGroup) {
                rights = static_cast<quint16>(hasGroup ? rights : rights & others);
                group = rights;
            } else if (kind == kMask) {
                group &= rights;
            }
        });
        if (::fsetxattr(to, kAccessList, list.constData(), static_cast<std::size_t>(list.size()),
                        0) != 0) {
            mode = WithGroupRights(mode, group);
        }
    } else if (!hasGroup) {
        mode = WithGroupRights(mode, ((mode & S_IRWXG) >> kGroupShift) & others);
    }
    ::fchmod(to, mode);
}

}  // namespace rillbook
