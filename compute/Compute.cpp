#include "compute/Compute.h"

#include <cmath>
#include <optional>

#include "compute/Offsets.h"
#include "compute/Ratings.h"
#include "platform/ado/Recordset.h"
#include "platform/desktop/MsgBox.h"
#include "store/FormStuff.h"
#include "store/StationDatabase.h"

namespace rillbook {

std::vector<DateTime> InstTimes;
std::vector<double> InstValues;
std::int32_t InstCount = 0;

namespace {

// What a channel asks for, read once and not for each of its readings.
struct Corrections {
    bool offset = false;
    bool rating = false;
};

void Tell(const QString& text) {
    MsgBox(text, MsgBoxButtons::Ok, MsgBoxIcon::Exclamation);
}

QString reportedUntimed;  // since BeginReport

// The rows that apply at no time, in one message for all tables and for the whole report: a graph
// loads its series again with each change of its size.
class UntimedRows {
public:
    void Add(const char* table, int count) {
        if (count > 0) {
            counts_ += QStringLiteral("%1: %2").arg(QLatin1String(table)).arg(count);
        }
    }
    void Report() const {
        const QString counts = counts_.join(QStringLiteral(", "));
        if (!counts.isEmpty() && counts != reportedUntimed) {
            Tell(QStringLiteral("Rows without a date and time are left out (%1).").arg(counts));
        }
        reportedUntimed = counts;
    }

private:
    QStringList counts_;
};

// False, after a message, if the channel lacks what it asks for.
bool LoadReferences(int chan, const Corrections& wanted) {
    UntimedRows untimed;
    if (wanted.rating) {
        untimed.Add("ratings", LoadRatingRows(chan));
        untimed.Add("points of rating tables", LoadRatingTables(chan));
    }
    if (wanted.offset) {
        untimed.Add("journal", LoadOffsetRows(chan));
    }
    untimed.Report();
    if (wanted.rating && RatingRows.empty()) {
        Tell(QStringLiteral("No rating/conversion data this channel"));
        return false;
    }
    if (wanted.offset && OffsetRows.empty()) {
        Tell(QStringLiteral("No offset data for this channel"));
        return false;
    }
    return true;
}

double Corrected(DateTime t, double stored, const Corrections& wanted) {
    const double value = wanted.offset ? ApplyOffset(t, stored) : stored;
    return wanted.rating && !std::isnan(value) ? ApplyRating(t, value) : value;
}

QString RecordsBetween(DateTime from, DateTime to) {
    return QStringLiteral("SELECT * FROM Records WHERE DateTime >= #") +
           SqlDateText(ToWholeSecond(from)) + QStringLiteral("# AND DateTime <= #") +
           SqlDateText(ToWholeSecond(to)) + QStringLiteral("# ORDER BY DateTime ");
}

void ReadSeries(DateTime from, DateTime to, int chan, const Corrections& wanted) {
    Recordset records;
    records.Open(RecordsBetween(from, to), *StationConnection, adOpenStatic, adLockReadOnly);
    if (records.Eof()) {
        Tell(QStringLiteral("No data within dates!"));
        return;
    }
    RatingCursor = 1;
    TableCursor = 1;
    OffsetCursor = 1;
    const Field time = records.Fields(u"DateTime");
    const Field reading = records.Fields(chan);
    InstTimes.resize(1);
    InstValues.resize(1);
    std::size_t rows = 0;  // counted on the way: to ask for their number would walk them twice
    for (; !records.Eof(); records.MoveNext()) {
        ++rows;
        if (const std::optional<double> stored = reading.NumberIfAny()) {
            const DateTime t = time.Number();
            InstTimes.push_back(t);
            InstValues.push_back(Corrected(t, *stored, wanted));
        }
    }
    InstCount = static_cast<std::int32_t>(InstTimes.size()) - 1;
    InstTimes.resize(rows + 2);
    InstValues.resize(rows + 2);
}

}  // namespace

void BeginReport() {
    reportedUntimed.clear();
}

void LoadSeries(DateTime from, DateTime to, int chan) {
    ResetCompute();
    const ChannelInfoData& channel = ChannelInfo[chan];
    const Corrections wanted{.offset = channel.Calibration == 1, .rating = channel.Conversion == 1};
    try {
        if (LoadReferences(chan, wanted)) {
            ReadSeries(from, to, chan, wanted);
        }
    } catch (const AdoError& error) {
        ResetCompute();
        Tell(QStringLiteral("The readings can't be read: ") + error.Description());
    }
}

void ResetCompute() {
    OffsetRows.clear();
    RatingRows.clear();
    RatingTables.clear();
    OffsetCursor = RatingCursor = TableCursor = 1;
    InstTimes.assign(2, 0);
    InstValues.assign(2, 0);
    InstCount = 0;
}

}  // namespace rillbook
