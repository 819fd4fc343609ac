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

enum class OldProject {
    Replace,
    Keep  // as NAME.bak; as NAME.bak2 and so on if another file has that name
};

// Replaces the file whole, or raises FileError and leaves the folder as it was. REQUIRES: no double
// quote in any text.
void WriteProjectFile(const QString& path, const ProjectContents& contents,
                      OldProject old = OldProject::Replace);

struct ProjectReading {
    // What could be read. The rest is the report period of the program's state, and the name of the
    // file without its extension as the project's name.
    ProjectContents contents;
    // False if the file can't be opened or not even its beginning is that of a project.
    bool isProject = false;
    // What couldn't be read, or why; empty for a whole file.
    QString fault;
};

// Never raises.
ProjectReading ReadProjectFile(const QString& path);

// The last day of the period as text "mmm dd, yyyy". A code that doesn't begin with "9" sets
// ReportPeriodCode to "9312" and counts as it; so does one with an unknown unit.
QString ReportEndFromPeriod(DateTime begin, const QString& code);

// The last day of `count` days (unit 1), weeks (2), months (3) or years (4) that begin on `begin`,
// by the calendar arithmetic of DateSerial: a month from January 31 runs on into March.
DateTime PeriodEnd(DateTime begin, int unit, double count);

void ResetProjectFile();

}  // namespace rillbook
