#pragma once

#include <QString>
#include <cstdint>
#include <functional>
#include <vector>

#include "platform/text/DateTime.h"

namespace rillbook {

// The open station's settings as a whole; they keep the last station's values while none is open.
struct StationInfoData {
    std::int16_t Channels = 0;
    std::int16_t ImportType = 0;     // 0 Type 1, 1 Type 2, 2 fixed width, 3 Campbell
    std::int16_t ImportDtWidth = 0;  // characters of the date field in fixed layouts
    QString ImportDir;               // folder in which the import dialog opens
    std::int16_t OutputChannel = 0;  // the channel that reports and editors work on, from 1
    DateTime TimeIncrement = 0;      // nominal span between readings, in days
};
extern StationInfoData StationInfo;

struct ChannelInfoData {
    std::int16_t Conversion = 0;   // 1: readings pass through the rating
    std::int16_t Calibration = 0;  // 1: journal offsets are added
    std::int16_t Secondary = 0;    // carried from the file and back, not used
    std::int16_t DigitsOut = 0;    // decimals of the reports
    std::int16_t ImportWidth = 0;  // characters of the field in fixed layouts
    double GraphMax = 0;
    double GraphMin = 0;
    std::int16_t OutputSeries = 0;  // 1 and a digit each for mean, minimum, maximum, total
    double OutputFactor = 0;        // factor of the annual total
    QString OutputFactorString;     // its unit
    QString RecLabel;               // unit of the raw readings
    QString RecDesc;                // the raw quantity
    QString RecSta;                 // the channel's own description, head of the titles
    QString ConvLabel;              // unit after the rating
    QString ConvDesc;               // the quantity after the rating
};

// One entry a channel, from 1. An entry beyond those in use comes into being, empty, when it is
// asked for; numbers below 1 share entry 0, which stands for no channel.
class ChannelTable {
public:
    ChannelInfoData& operator[](int chan);
    void Clear() { entries_.clear(); }

private:
    std::vector<ChannelInfoData> entries_;
};
extern ChannelTable ChannelInfo;

// What the windows that edit a channel call it: its own description and its quantity.
QString ChannelName(int chan);

// Unit and description under which the reports show a channel: after the rating where it is
// applied.
QString ReportLabel(int chan);
QString ReportDescription(int chan);

// Runs one step whose failure is ignored. Returns its reason; empty on success.
QString Attempt(const std::function<void()>& step);

// Fills StationInfo, ChannelInfo and the panel from the table Information. A step that fails (NULL
// in a number, a missing row or table) leaves its variable as it was. If the file fails (see
// AdoError::IsOfFile), raises AdoError, and none of them has changed.
void ReadStationInfo();

// Writes them back, in one transaction, synced to the disk. If the disk or the file fails, the user
// gets a message; a file that is read-only or locked stays as it is.
void WriteStationInfo();

// WriteStationInfo, with a message also if the user changed the station's name or notes and they
// could not be stored.
void SaveStationInfo();

// WriteStationInfo as a part of a larger change: raises AdoError if the rows can't be written.
// Returns why the name or the notes were refused; empty if they weren't. REQUIRES: a transaction,
// and the columns that UpgradeInformation adds.
QString WriteInformation();

// The count of records and their first and last date, as the panel shows them.
struct RecordStatistics {
    QString count = QStringLiteral("Empty");
    QString first;
    QString last;
};
// Reads them from the table Records. Raises AdoError.
RecordStatistics ReadRecordStatistics();
// They reach the table Information with the next WriteStationInfo.
void ShowRecordStatistics(const RecordStatistics& statistics);
// Reads and shows them, or shows a message if they cannot be read.
void RefreshRecordStats();

// Adds to files of older releases the columns that they lack; harmless on others. Raises AdoError
// if the file fails.
void UpgradeInformation();
void UpgradeCalibration();

void ResetFormStuff();

}  // namespace rillbook
