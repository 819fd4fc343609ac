#pragma once

#include <QByteArray>
#include <QString>
#include <functional>

namespace rillbook {

// Replaces a file by one with these bytes, or makes it (see FileDraft.h). Returns the reason of a
// failure, and the old file is as it was; empty on success. `beforeRename` runs when the bytes are
// on the disk; a reason that it returns ends the work.
QString ReplaceFile(const QString& path, const QByteArray& bytes,
                    const std::function<QString()>& beforeRename = {});

// The reason for not touching a folder, a device or a pipe, which may block its reader for ever.
QString NotAFileText();

// Waits until the bytes of a file are on the disk. Returns the system's reason on a failure, empty
// on success.
QString SyncFile(const QString& path);

// The same for the names in the folder of a file.
void SyncFolderOf(const QString& path);

}  // namespace rillbook
