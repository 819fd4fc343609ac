#pragma once

#include <QString>

namespace rillbook {

// Appends the readings of a logger file to the open station's table Records, in the layout of
// StationInfo.ImportType, and ends with one message that gives the counts. Each record is final
// when it is written, and on the disk when the counts are shown; otherwise a message before them
// says how many are not. A time that is stored already is refused by the table's key and counted.
// An empty name does nothing. Every failure is reported to the user or counted. Raises
// nothing.
void ImportFile(const QString& fileName);

}  // namespace rillbook
