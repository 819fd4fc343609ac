#pragma once

#include <QString>
#include <functional>

namespace rillbook {

struct KeptFile {
    QString path;
    bool isNew = false;
    QString reason;  // the system's, where it failed; the folder is as it was then
};

// Gives a file a second name in its folder, so that another one may take the first: `name(1)`, or
// the first of name(2), name(3), ... that is free or stands for the same bytes already. Where the
// file system has one name a file, the second is a copy's. Bytes and name are on the disk when it
// returns.
KeptFile KeepUnderName(const QString& path, const std::function<QString(int)>& name);

}  // namespace rillbook
