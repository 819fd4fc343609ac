#pragma once

#include <cstdint>

#include "platform/text/DateTime.h"

namespace rillbook {

// The report for which the output settings are opened.
enum class ReportMode : std::int16_t {
    AnnualTable = 0,
    InstantaneousGraph = 1,
    DailyGraph = 2,
    InstantaneousTable = 3,
    DailyTable = 4
};
extern ReportMode SettingsMode;

// Set by a modal dialog when nothing changed, cleared when something did.
extern bool DialogCancelled;

// "Include Measured Values" of the graphs, held until the program ends.
extern bool ShowMeasured;

// The printer dialog's orientation as the program found it at start.
extern std::int32_t PrinterOrientation;

// Puts every module's shared state back to its start values: the open station is closed without
// being written. For tests.
void ResetSharedState();

}  // namespace rillbook
