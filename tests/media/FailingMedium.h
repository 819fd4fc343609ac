#pragma once

#include <QString>

namespace rillbook {

// An import, a save and a closing on a medium that fails at each of their writes in turn, once or
// from then on. Prints how many writes failed, and how often a reported change was missing at the
// next opening without a message. Returns false if one was. In a build without the watch on file
// calls, prints that.
bool FailEachWrite(const QString& folder);

}  // namespace rillbook
