#pragma once

#include <QString>
#include <functional>

namespace rillbook {

class StationFixture;

// How a data row of a test fills its station.
using Story = std::function<void(StationFixture&)>;

// Fills a station from sentences with "; " between them. "-" is a missing value, a digit behind the
// first word another channel than 1:
//   readings 2002-03-01 every 15: 1 2.5 -       minutes; the readings
//   visit 2002-03-01 10:00: 1.5 2               a used row of the journal: logger, actual
//   unused 2002-03-01: 1.5 2
//   equation2 2002-01-01: 1 2 3                 A, r, c
//   table 2002-01-01: 1 10 2 30                 depth and flow of each point
void Tell(StationFixture& station, const QString& story);

// The instantaneous series, "2002-01-01 00:15:00 1.2" a line. Here and below nine digits: what
// spans of time in doubles leave behind them isn't hydrography.
QString SeriesText();
// The values alone, with a blank between them.
QString ValuesText();

// The daily series, "2002-01-01 mean minimum maximum total" a line.
QString DaysText();

}  // namespace rillbook
