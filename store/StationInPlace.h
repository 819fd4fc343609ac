#pragma once

#include <QString>

namespace rillbook {

// Before each save of the open station, before and after an import, and before closing: whether the
// station's file is still the one that was opened. If it was removed, replaced or written over, the
// user is asked, and can save all that the connection holds under another name. That file is the
// open station from then on, and the result is true. The file that is in the old place isn't
// touched. REQUIRES: StationConnection open, no transaction.
bool StationIsInPlace();

// The same for a save that raises: AdoError with AdoCause::Moved instead of false.
void RequireStationInPlace();

}  // namespace rillbook
