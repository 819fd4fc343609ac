#pragma once

#include <QString>

namespace rillbook {

// Gives the open file `to` the mode, group, owner and access list of the file `from`, as far as the
// system allows this user. A right that would pass to another group or person is withheld instead.
// `ownerMayWrite` adds that right for a file that may come from a read-only disk.
// REQUIRES: this user owns `to`.
void CarryAccess(int to, const QString& from, bool ownerMayWrite);

}  // namespace rillbook
