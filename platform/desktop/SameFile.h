#pragma once

#include <QString>

namespace rillbook {

// Whether two paths lead to one file: by a link, by another name of it, or by a name in another
// case on a medium that ignores case. Paths of files that are missing or out of reach are compared
// as texts.
bool IsSameFile(const QString& path, const QString& other);

}  // namespace rillbook
