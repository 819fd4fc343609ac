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

}  // namespace rillbook
