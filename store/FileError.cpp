#include "store/FileError.h"

namespace rillbook {

FileError::FileError(const QString& path, const QString& reason)
    : path_(path), reason_(reason), utf8_((path + QStringLiteral(": ") + reason).toUtf8()) {}

}  // namespace rillbook
