#pragma once

#include <QString>
#include <vector>

#include "platform/text/DateTime.h"

namespace rillbook {

extern QString ProjectPath;  // empty when no project is open
extern DateTime ReportBeginDate;
extern DateTime ReportEndDate;    // computed, not stored
extern QString ReportPeriodCode;  // "9", unit digit, count: "921" one week

struct ProjectStation {
    QString path;
    QString title;
    friend bool operator==(const ProjectStation&, const ProjectStation&) = default;
};

struct ProjectContents {
    std::vector<ProjectStation> stations;
    DateTime reportBeginDate = 0;
    QString reportPeriodCode;
    QString name;
};

// Replaces the file whole, or raises FileError and leaves it as it was. REQUIRES: no double quote
// in any text.
void WriteProjectFile(const QString& path, const ProjectContents& contents);

struct ProjectReading {
    ProjectContents contents;  // what could be read; the report period starts as the state has it
    QString fault;             // what couldn't be read and why; empty for a whole file
};

// Never raises. `defaults` stands for what the file doesn't hold.
ProjectReading ReadProjectFile(const QString& path, const ProjectContents& defaults);

// Copies a file that couldn't be read whole to NAME.bak, replacing an older one, before it is
// written over. Nothing to do where there is no file. Raises FileError.
void KeepOldProjectFile(const QString& path);

// The last day of the period as text "mmm dd, yyyy". A code that doesn't begin with "9" sets
// ReportPeriodCode to "9312" and counts as it; so does one with an unknown unit.
QString ReportEndFromPeriod(DateTime begin, const QString& code);

// The last day of `count` days (unit 1), weeks (2), months (3) or years (4) that begin on `begin`,
// by the calendar arithmetic of DateSerial: a month from January 31 runs on into March.
DateTime PeriodEnd(DateTime begin, int unit, double count);

void ResetProjectFile();

}  // namespace rillbook
