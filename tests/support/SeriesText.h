#pragma once

#include <QString>
#include <functional>

namespace rillbook {

class StationFixture;

// How a data row of a test fills its station.
using Story = std::function<void(StationFixture&)>;

// Nine digits: what spans of time in doubles leave behind them isn't hydrography.
QString ValueText(double value);

// The instantaneous series, "2002-01-01 00:15:00 1.2" a line.
QString SeriesText();

// The daily series, "2002-01-01 mean minimum maximum total" a line.
QString DaysText();

// Asks `correct` at each of the times, given as "2002-01-01,2002-01-02 12:00", in one pass; the
// answers with a blank between them.
QString AtEach(const QString& times, const std::function<QString(double)>& correct);

}  // namespace rillbook
