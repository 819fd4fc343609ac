#include "import/Import.h"

#include <QElapsedTimer>
#include <QFile>
#include <QFileInfo>
#include <algorithm>
#include <cstdint>
#include <limits>
#include <optional>
#include <vector>

#include "import/LineReader.h"
#include "import/LoggerLine.h"
#include "platform/ado/Connection.h"
#include "platform/ado/Recordset.h"
#include "platform/desktop/MsgBox.h"
#include "store/FormStuff.h"
#include "store/StationDatabase.h"
#include "store/StationInPlace.h"

namespace rillbook {

namespace {

struct ImportCounts {
    std::int32_t lines = 0;
    std::int32_t unreadable = 0;
    std::int32_t duplicates = 0;  // refused by the store's key
    std::int32_t unstored = 0;    // refused by the store for another reason
    QString unstoredReason;       // of the first of them
    std::int64_t stored = 0;
    Unsynced unsynced;  // of the stored ones
    QString readFault;  // why the file couldn't be read to its end; empty if it could
};

// Counts have 32 bits and stay at the limit.
void CountUp(std::int32_t& count) {
    if (count < std::numeric_limits<std::int32_t>::max()) {
        ++count;
    }
}

LoggerLayout StationLayout() {
    LoggerLayout layout;
    layout.type = StationInfo.ImportType;
    layout.dateWidth = static_cast<std::size_t>(std::max<int>(StationInfo.ImportDtWidth, 0));
    for (int chan = 1; chan <= StationInfo.Channels; ++chan) {
        const int width = std::max<int>(ChannelInfo[chan].ImportWidth, 0);
        layout.channelWidths.push_back(static_cast<std::size_t>(width));
    }
    return layout;
}

// Appends readings to the table Records. What the store refuses is counted, and no value of it
// reaches the next record.
//
// While another program holds the file, each attempt waits for it. After some in a row the rest is
// counted without an attempt: an hour before a dead window helps nobody.
class RecordAppender {
public:
    explicit RecordAppender(ImportCounts& counts) : counts_(counts) {
        records_.LockType = adLockOptimistic;
        try {
            records_.Open(QStringLiteral("Records"), *StationConnection);
            // Channel i belongs to the column at position i; without a column it has no place.
            const int last = std::clamp<int>(StationInfo.Channels, 0, records_.FieldCount() - 1);
            for (int position = 0; position <= last; ++position) {
                fields_.push_back(records_.Fields(position));
            }
        } catch (const AdoError& error) {
            isGivenUp_ = true;
            counts_.unstoredReason = error.Description();
        }
    }

    void Append(const LoggerReading& reading) {
        if (isGivenUp_) {
            CountUp(counts_.unstored);
            return;
        }
        try {
            records_.AddNew();
        } catch (const AdoError& error) {
            // Nothing may be assigned now: the current row could be one that is stored.
            CountRefused(error);
            return;
        }
        try {
            fields_[0].SetValue(reading.moment);
            for (std::size_t chan = 1; chan < fields_.size(); ++chan) {
                SetChannel(fields_[chan], reading.channels[chan - 1]);
            }
            records_.Update();
            ++counts_.stored;
            failuresInRow_ = 0;
        } catch (const AdoError& error) {
            CountRefused(error);
            Attempt([this] { records_.CancelUpdate(); });
        }
    }

    void Close() {
        Attempt([this] { records_.Close(); });
    }

private:
    static void SetChannel(Field& field, const std::optional<double>& value) {
        if (!value) {
            return;
        }
        try {
            field.SetValue(*value);
        } catch (const AdoError&) {
            // A number beyond the range of the column: the channel stays without a value.
        }
    }

    void CountRefused(const AdoError& error) {
        if (error.Number() == adErrDuplicate) {
            CountUp(counts_.duplicates);
            failuresInRow_ = 0;
            return;
        }
        if (counts_.unstored == 0) {
            counts_.unstoredReason = error.Description();
        }
        CountUp(counts_.unstored);
        CountFailure();
    }

    // A locked file fails after a wait, a full disk at once.
    void CountFailure() {
        constexpr int mostWaits = 6;
        constexpr qint64 wait = 100;  // milliseconds
        if (failuresInRow_ == 0) {
            sinceFirstFailure_.start();
        }
        ++failuresInRow_;
        isGivenUp_ =
            failuresInRow_ > mostWaits && sinceFirstFailure_.elapsed() > wait * failuresInRow_;
    }

    ImportCounts& counts_;
    Recordset records_;
    std::vector<Field> fields_;  // DateTime, then the channels
    QElapsedTimer sinceFirstFailure_;
    std::int64_t failuresInRow_ = 0;
    bool isGivenUp_ = false;
};

// Holds the station's file for the length of an import. At its end the records are on the disk, or
// counted as those that are not.
class ExclusiveUse {
public:
    explicit ExclusiveUse(ImportCounts& counts) : counts_(counts) {
        StationConnection->BeginExclusiveUse();
    }
    ~ExclusiveUse() { counts_.unsynced = StationConnection->EndExclusiveUse(); }
    ExclusiveUse(const ExclusiveUse&) = delete;
    ExclusiveUse& operator=(const ExclusiveUse&) = delete;

private:
    ImportCounts& counts_;
};

void ImportLines(QFile& file, RecordAppender& appender, ImportCounts& counts) {
    const LoggerLayout layout = StationLayout();
    if (!IsKnownLayout(layout.type)) {
        return;
    }
    // A fixed layout never looks behind the line width.
    constexpr std::size_t longestKept = 1024 * 1024;
    LineReader lines(file, std::max(longestKept, layout.LineWidth()));
    LoggerLineParser parser(layout);
    LoggerReading reading;
    std::string_view line;
    while (lines.ReadLine(line)) {
        CountUp(counts.lines);
        if (parser.Parse(line, reading)) {
            appender.Append(reading);
        } else {
            CountUp(counts.unreadable);
        }
    }
    if (lines.Failed()) {
        counts.readFault = file.errorString();
    }
}

// A count with a blank in the place of its sign.
QString CountText(std::int32_t count) {
    return QStringLiteral(" %1").arg(count);
}

void ReportCounts(const ImportCounts& counts) {
    if (counts.unsynced.commits > 0) {
        MsgBox(QStringLiteral("%1 of the stored records could not be brought to the disk!\n%2")
                   .arg(QString::number(counts.unsynced.commits), counts.unsynced.reason),
               MsgBoxButtons::Ok, MsgBoxIcon::Exclamation);
    }
    const std::int32_t readable = counts.lines - counts.duplicates - counts.unreadable;
    MsgBox(CountText(readable) + QStringLiteral(" Readable Records, ") +
           CountText(counts.unreadable) + QStringLiteral(" Unreadable Records(s), and ") +
           CountText(counts.duplicates) + QStringLiteral(" Dupulicate(s)."));
    if (counts.unstored > 0) {
        MsgBox(QStringLiteral("%1 of the readable records could not be stored!\n%2")
                   .arg(QString::number(counts.unstored), counts.unstoredReason),
               MsgBoxButtons::Ok, MsgBoxIcon::Exclamation);
    }
    if (!IsKnownLayout(StationInfo.ImportType)) {
        MsgBox(QStringLiteral("The layout of the station's logger files is unknown!\n"
                              "Open the import setup and choose the Import File Type."),
               MsgBoxButtons::Ok, MsgBoxIcon::Exclamation);
    }
    if (!counts.readFault.isEmpty()) {
        MsgBox(QStringLiteral("The file could not be read to its end!\n%1").arg(counts.readFault),
               MsgBoxButtons::Ok, MsgBoxIcon::Exclamation);
    }
}

}  // namespace

void ImportFile(const QString& fileName) {
    if (fileName.isEmpty() || !StationIsInPlace()) {
        return;
    }
    ImportCounts counts;
    {
        RecordAppender appender(counts);
        QFile file(fileName);
        // Opening or reading a pipe or a device may never end.
        if (!QFileInfo(fileName).isFile() ||
            !file.open(QIODevice::ReadOnly | QIODevice::Unbuffered)) {
            MsgBox(QStringLiteral("Not able to open that file!"), MsgBoxButtons::Ok,
                   MsgBoxIcon::Exclamation);
            return;
        }
        const ExclusiveUse exclusive(counts);
        ImportLines(file, appender, counts);
        appender.Close();
    }
    if (!StationConnection->IsInPlace()) {
        counts.unsynced = StationIsInPlace()
                              ? Unsynced()
                              : Unsynced{counts.stored, QStringLiteral("The file was "
                                                                       "removed or replaced.")};
    }
    ReportCounts(counts);
}

}  // namespace rillbook
