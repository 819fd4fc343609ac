#pragma once

#include <QString>

namespace rillbook {

// Imports so many rows of three channels into a new station of the folder, and into another one by
// the bare engine in the mode that the program had during its import; three times in turn. Prints
// the medians in milliseconds and the mode, or why the program refused a step.
void MeasureImport(const QString& folder, int rows);

}  // namespace rillbook
