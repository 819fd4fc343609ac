#pragma once

#include <QString>

#include "platform/ado/Statement.h"

namespace rillbook {

class JetEngine {
public:
    // Writes a compacted copy of a closed database to a file that is empty or does not exist. From
    // then until the end of the engine no other connection can open the source, so that the copy
    // can take its place without the loss of a change. Raises AdoError; the source is unchanged
    // then, and what was written to the target is removed. The copy is not synced to the disk.
    void CompactDatabase(const QString& sourceConnection, const QString& targetConnection);

private:
    ado::Handle source_;
};

}  // namespace rillbook
