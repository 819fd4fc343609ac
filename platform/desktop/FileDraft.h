#pragma once

#include <QByteArray>
#include <QString>
#include <QStringList>
#include <functional>

namespace rillbook {

// Files that a database, or a killed program, may leave beside a database file, and that an opening
// of that file under the same name takes in. Only those that exist.
QStringList CompanionsOf(const QString& path);

// A file that is to take another one's place, or to become a new file. It is written beside that
// place, under its name followed by "qvx", and renamed when it is complete: whoever opens the name,
// also after a loss of power, finds the old file or the new one, whole. From its first byte on only
// those can open it who can open the file that it is made after.
//
// A draft that did not take its place is removed at the end of this object, with its companions. A
// draft that a killed program left is written again; a lock on it shows that another program is
// still writing one.
//
// Create, Write and TakePlace return the reason of a failure, empty on success.
class FileDraft {
public:
    // REQUIRES: `place` is not a link.
    explicit FileDraft(const QString& place);
    ~FileDraft();
    FileDraft(const FileDraft&) = delete;
    FileDraft& operator=(const FileDraft&) = delete;

    // Makes the empty file, with the mode, owner, group and access list of `model`; as any new file
    // if there is no such file.
    [[nodiscard]] QString Create(const QString& model, bool ownerMayWrite = false);
    [[nodiscard]] QString Create() { return Create(place_); }

    // For those who write it by other means.
    QString Path() const;

    // Appends.
    [[nodiscard]] QString Write(const QByteArray& bytes);

    // Waits until the bytes are on the disk, calls `beforeRename`, which may object with a reason,
    // and renames. The object is closed afterwards. REQUIRES: nobody has the draft open.
    [[nodiscard]] QString TakePlace(const std::function<QString()>& beforeRename = {});

private:
    bool RemoveLeftover() const;
    void Remove() const;
    void Close();

    QString place_;
    int file_ = -1;
};

}  // namespace rillbook
