#pragma once

#include <QString>
#include <cstdint>

namespace rillbook {

// The last commits of a run of appends, if they could not be brought to the disk.
struct Unsynced {
    std::int64_t commits = 0;  // 0 if all of them are there
    QString reason;
};

}  // namespace rillbook
