#pragma once

#include <QString>

namespace rillbook {

class JetEngine {
public:
    // Writes a compacted copy of a closed database under a path that must not exist yet. Raises
    // AdoError and leaves no half-written copy behind where that fails. The source isn't changed.
    void CompactDatabase(const QString& sourceConnection, const QString& targetConnection);
};

}  // namespace rillbook
