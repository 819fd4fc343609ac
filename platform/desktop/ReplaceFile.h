#pragma once

#include <QByteArray>
#include <QString>
#include <functional>

namespace rillbook {

// Puts these bytes in place of a file, or makes it: written beside and renamed when all of them are
// in the file. Returns the system's reason where that fails, and the old file is as it was; empty
// if it was done. `beforeRename` runs when the bytes are safe; a reason that it returns ends the
// work.
QString ReplaceFile(const QString& path, const QByteArray& bytes,
                    const std::function<QString()>& beforeRename = {});

// Puts a finished file in the place of another one of the same folder, at once: whoever opens
// `path`, also after a loss of power, finds either the one or the other. Returns the system's
// reason where that fails, and both are as they were; empty if it was done. REQUIRES: the bytes of
// `finished` are on the disk.
QString MoveOver(const QString& finished, const QString& path);

// Waits until the bytes of a file are on the disk. Returns the system's reason where that fails;
// empty if it was done.
QString SyncFile(const QString& path);

// The same for the names in the folder of a file.
void SyncFolderOf(const QString& path);

}  // namespace rillbook
