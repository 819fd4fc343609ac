#pragma once

#include <QString>
#include <functional>

namespace rillbook {

struct KeptFile {
    QString path;
    bool isNew = false;
    QString reason;  // of the system if it failed; the folder is unchanged then
};

// Gives a file a second name in its folder, so that another one may take the first: `name(1)`, or
// the first of name(2), name(3), ... that is free or belongs to a file with the same bytes. If the
// file system allows one name per file only, the second name is that of a copy. Never replaces a
// file, even if another program takes the same names meanwhile. Bytes and name are on the disk when
// it returns.
KeptFile KeepUnderName(const QString& path, const std::function<QString(int)>& name);

}  // namespace rillbook
