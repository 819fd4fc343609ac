#pragma once

#include <QString>
#include <functional>
#include <vector>

#include "tests/support/MessageLog.h"

namespace rillbook {

constexpr int kImportedRows = 200;

// One step of a station's life, on the paths of one medium.
struct StationStep {
    const char* name;
    bool needsStation;             // an open one
    std::function<QString()> run;  // why it was refused, if no message or error says so
};

// From a new station to its reopening, in order. `folder` is on the medium.
std::vector<StationStep> StationSteps(const QString& folder);

// Runs one step. Returns why it was refused: the messages and the error, on one line; empty if it
// was done.
QString RunStep(const StationStep& step, MessageLog& messages);

// The file of StationSteps.
QString StationIn(const QString& folder);

// What the open station holds: counts of all its tables, and the sum of the readings.
QString OpenDigest();
// The same of a file that is on a local disk, without Rillbook.
QString FileDigest(const QString& path);

// Imports rows of one channel from a file on the local disk, a minute apart from a date on, with
// one value. True if the messages report all of them as stored, and nothing else.
bool ImportRows(const QString& from, int rows, double value, MessageLog& messages);

QString OneLine(const QStringList& texts);

}  // namespace rillbook
