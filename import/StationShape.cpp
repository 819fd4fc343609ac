#include "import/StationShape.h"

#include <QFileInfo>
#include <algorithm>

#include "platform/ado/AdoError.h"
#include "platform/ado/JetEngine.h"
#include "platform/ado/Recordset.h"
#include "platform/desktop/FileDraft.h"
#include "store/FormStuff.h"
#include "store/StationDatabase.h"
#include "store/StationInPlace.h"

namespace rillbook {

namespace {

// Puts a compacted copy in the place of the closed station. Until the copy is complete and on the
// disk the station is unchanged, and until the copy has its place nobody else can open the station.
void CompactFile() {
    // Not in the place of a link to it.
    const QString station = QFileInfo(StationPath).canonicalFilePath();
    FileDraft copy(station);
    QString reason = copy.Create();
    if (reason.isEmpty()) {
        JetEngine engine;
        engine.CompactDatabase(ConnectionTo(station), ConnectionTo(copy.Path()));
        reason = copy.TakePlace();
    }
    if (!reason.isEmpty()) {
        throw AdoError(adErrGeneral, reason);
    }
}

// The connection is open again afterwards, also where the compaction failed.
void CompactStation() {
    if (StationConnection->IsReadOnly()) {
        throw AdoError(adErrGeneral,
                       QStringLiteral("The file can't be changed: %1").arg(StationPath));
    }
    StationConnection->Close();
    try {
        CompactFile();
        StationConnection->Open(StationConnectionString);
    } catch (const AdoError&) {
        StationConnection->Open(StationConnectionString);
        throw;
    }
}

// A header that disagrees with the table is put right.
void FitRecords(int channels) {
    const int present = CountReadingColumns();
    for (int chan = present + 1; chan <= channels; ++chan) {
        StationConnection->Execute(
            QStringLiteral("ALTER TABLE Records ADD COLUMN chan%1 SINGLE").arg(chan));
    }
    for (int chan = channels + 1; chan <= present; ++chan) {
        StationConnection->Execute(
            QStringLiteral("ALTER TABLE Records DROP COLUMN chan%1").arg(chan));
    }
}

// Rows come and go at the end, so that each stays with its channel.
void FitInformation(int channels) {
    Recordset rows;
    rows.Open(QStringLiteral("Information"), *StationConnection, adOpenKeyset, adLockOptimistic);
    rows.MoveFirst();
    const auto present = static_cast<int>(rows.RecordCount());
    for (int chan = present + 1; chan <= channels; ++chan) {
        rows.MoveLast();
        rows.Fields(u"importwidth").SetValue(1.0);
        rows.AddNew();
    }
    for (int chan = channels + 1; chan <= present; ++chan) {
        rows.MoveLast();
        rows.Delete();
    }
    rows.Update();
    rows.Close();
}

// As in a new station; not what a channel of another station, or a dropped one, has left behind.
ChannelInfoData NewChannel() {
    ChannelInfoData channel;
    channel.DigitsOut = 2;
    channel.GraphMax = 10;
    channel.OutputSeries = 11000;  // the daily means
    channel.OutputFactor = 1.98;   // daily mean cubic feet a second to acre-feet
    channel.OutputFactorString = QStringLiteral("ac-ft");
    return channel;
}

void TakeShape(const StationShape& shape) {
    const int former = StationInfo.Channels;
    StationInfo.Channels = static_cast<std::int16_t>(shape.channels.size());
    StationInfo.ImportType = shape.importType;
    StationInfo.OutputChannel = std::min(StationInfo.OutputChannel, StationInfo.Channels);
    StationInfo.ImportDtWidth = shape.dateWidth;
    int chan = 0;
    for (const StationShape::Channel& channel : shape.channels) {
        ChannelInfoData& info = ChannelInfo[++chan];
        if (chan > former) {
            info = NewChannel();
        }
        info.ImportWidth = channel.width;
        info.RecLabel = channel.units;
        info.RecDesc = channel.label;
        info.RecSta = channel.description;
    }
}

}  // namespace

int CountReadingColumns() {
    Recordset readings;
    readings.Open(QStringLiteral("Records"), *StationConnection);
    return readings.FieldCount() - 1;
}

void ReshapeStation(const StationShape& shape) {
    const StationInfoData formerStation = StationInfo;
    const ChannelTable formerChannels = ChannelInfo;
    try {
        RequireStationInPlace();
        CompactStation();
        Transaction transaction(*StationConnection);
        FitRecords(static_cast<int>(shape.channels.size()));
        FitInformation(static_cast<int>(shape.channels.size()));
        TakeShape(shape);
        WriteInformation();
        transaction.Commit();
    } catch (const AdoError&) {
        StationInfo = formerStation;
        ChannelInfo = formerChannels;
        throw;
    }
}

}  // namespace rillbook
