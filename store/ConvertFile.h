#pragma once

#include <QString>

#include "store/AccessStation.h"

namespace rillbook {

struct ConvertedFile {
    QString kept;  // where the Access file now lies, beside the station
    Leftovers left;
};

// Puts a station in the place of an Access file, which gets another name beside it: NAME.access.mdb
// for NAME.mdb, or the next free one. The station is complete, compared with the file and on the
// disk before it takes the name; whatever happens before, and wherever it is cut off, the Access
// file is whole under its name. Raises ConversionError.
ConvertedFile ConvertFile(const QString& path);

}  // namespace rillbook
