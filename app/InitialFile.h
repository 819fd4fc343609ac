#pragma once

#include <QString>
#include <array>
#include <cstdint>

namespace rillbook {

// Positions and sizes are in twips; a window state is 0 normal, 1 minimised, 2 maximised.
extern QString InitDir;  // folder in which the project and station dialogs open
extern std::int16_t MainTop, MainLeft;
extern std::int16_t GraphH, GraphW, GraphT, GraphL, GraphM;  // both graph windows share them
extern std::int16_t AnnualH, AnnualW, AnnualT, AnnualL, AnnualM;

// "Jan" to "Dec" at 1 to 12; entry 0 is not used.
extern std::array<QString, 13> MonthNames;

// Fills the variables from the per-user settings, a missing key giving its default. A stored text
// that is not a number of 16 bits ends the load there: it and the variables after it are 0.
void LoadAppSettings();
// All of them or none.
void SaveAppSettings();
void FillMonthNames();

void ResetInitialFile();

}  // namespace rillbook
