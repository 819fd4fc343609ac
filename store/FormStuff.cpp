#include "store/FormStuff.h"

#include <QMap>
#include <array>
#include <cmath>
#include <limits>
#include <variant>

#include "platform/ado/Recordset.h"
#include "platform/desktop/MsgBox.h"
#include "store/FieldTexts.h"
#include "store/StationDatabase.h"
#include "store/StationInPlace.h"
#include "store/StationPanel.h"

namespace rillbook {

StationInfoData StationInfo;
ChannelTable ChannelInfo;

namespace {

using Item = StationPanel::Item;

template <typename Target>
struct ColumnOf {
    const char16_t* name;
    Target target;
};

// The columns in the order in which they are read and written.

constexpr std::array<ColumnOf<Item>, 6> kPanelColumns{{{u"Name", Item::Name},
                                                       {u"notes", Item::Notes},
                                                       {u"channels", Item::Channels},
                                                       {u"noofrec", Item::Records},
                                                       {u"begdate", Item::BeginDate},
                                                       {u"EndDate", Item::EndDate}}};

using ChannelMember = std::variant<std::int16_t ChannelInfoData::*, double ChannelInfoData::*,
                                   QString ChannelInfoData::*>;

constexpr std::array<ColumnOf<ChannelMember>, 15> kChannelColumns{
    {{u"Conversion", &ChannelInfoData::Conversion},
     {u"calibration", &ChannelInfoData::Calibration},
     {u"secondary", &ChannelInfoData::Secondary},
     {u"digitsout", &ChannelInfoData::DigitsOut},
     {u"importwidth", &ChannelInfoData::ImportWidth},
     {u"graphmax", &ChannelInfoData::GraphMax},
     {u"graphmin", &ChannelInfoData::GraphMin},
     {u"outputseries", &ChannelInfoData::OutputSeries},
     {u"outputfactor", &ChannelInfoData::OutputFactor},
     {u"outputfactorstring", &ChannelInfoData::OutputFactorString},
     {u"reclabel", &ChannelInfoData::RecLabel},
     {u"recdesc", &ChannelInfoData::RecDesc},
     {u"recsta", &ChannelInfoData::RecSta},
     {u"convlabel", &ChannelInfoData::ConvLabel},
     {u"convdesc", &ChannelInfoData::ConvDesc}}};

void ReadInto(std::int16_t& variable, Recordset& rows, QStringView column) {
    const double number = std::nearbyint(rows.Fields(column).Number());
    if (number >= std::numeric_limits<std::int16_t>::min() &&
        number <= std::numeric_limits<std::int16_t>::max()) {
        variable = static_cast<std::int16_t>(number);
    }
}

void ReadInto(double& variable, Recordset& rows, QStringView column) {
    variable = rows.Fields(column).Number();
}

void ReadInto(QString& variable, Recordset& rows, QStringView column) {
    variable = TextOrEmpty(rows.Fields(column));
}

void WriteFrom(double value, Recordset& rows, QStringView column) {
    rows.Fields(column).SetValue(value);
}

void WriteFrom(const QString& text, Recordset& rows, QStringView column) {
    SetTextOrNull(rows.Fields(column), text);
}

// Runs one step whose failure is ignored, unless it is one of the file: then the next value may be
// missing for the same reason. Sets the reason of an ignored failure.
template <typename Step>
void TryStep(const Step& step, QString* reason = nullptr) {
    try {
        step();
    } catch (const AdoError& error) {
        if (error.IsOfFile()) {
            throw;
        }
        if (reason != nullptr) {
            *reason = error.Description();
        }
    }
}

// Calls `step(column, value)` for each column of a channel's row, ignoring columns that fail.
template <typename Step>
void ForEachChannelColumn(ChannelInfoData& channel, Step step) {
    for (const auto& column : kChannelColumns) {
        TryStep([&] {
            std::visit([&](auto member) { step(QStringView(column.name), channel.*member); },
                       column.target);
        });
    }
}

// The same for the columns of the first row that StationInfo holds.
template <typename Step>
void ForEachStationColumn(Step step) {
    TryStep([&] { step(u"importdir", StationInfo.ImportDir); });
    TryStep([&] { step(u"importtype", StationInfo.ImportType); });
    TryStep([&] { step(u"importdtwidth", StationInfo.ImportDtWidth); });
    TryStep([&] { step(u"outputchannel", StationInfo.OutputChannel); });
    TryStep([&] { step(u"timeincrement", StationInfo.TimeIncrement); });
    TryStep([&] { step(u"channels", StationInfo.Channels); });
}

// What the user types into the panel, when it was last read or stored.
QStringList storedTexts;

QStringList TypedTexts() {
    return {TheStationPanel->Text(Item::Name), TheStationPanel->Text(Item::Notes)};
}

// Raises if a row can't be written; a value that a column refuses only leaves that column alone.
// Returns why one of the texts that the user types was refused.
QString WriteInformationRows(Recordset& rows) {
    QString refusal;
    rows.MoveFirst();
    for (const auto& column : kPanelColumns) {
        if (column.target == Item::Channels) {
            continue;
        }
        QString reason;
        TryStep(
            [&] {
                WriteFrom(TheStationPanel->Text(column.target), rows, QStringView(column.name));
            },
            &reason);
        if (refusal.isEmpty() && (column.target == Item::Name || column.target == Item::Notes)) {
            refusal = reason;
        }
    }
    ForEachStationColumn(
        [&](QStringView column, const auto& value) { WriteFrom(value, rows, column); });
    for (int chan = 1; chan <= StationInfo.Channels; ++chan) {
        ForEachChannelColumn(ChannelInfo[chan], [&](QStringView column, const auto& value) {
            WriteFrom(value, rows, column);
        });
        rows.MoveNext();
        if (rows.Eof()) {
            break;
        }
    }
    rows.MoveFirst();
    rows.Update();
    return refusal;
}

// Why the rows, or the texts that the user types, could not be stored.
struct HeaderFailure {
    QString reason;           // empty if all were stored, or if the user has had a message
    bool isOfMedium = false;  // not just a read-only or locked file, or a text that is too long
};

HeaderFailure TryToWrite() {
    if (!StationIsInPlace()) {
        return {};
    }
    try {
        UpgradeInformation();
        // All rows or none: if a row in the middle were refused, the next channel's values would be
        // written into it.
        Transaction transaction(*StationConnection);
        const QString refusal = WriteInformation();
        transaction.Commit();
        if (refusal.isEmpty()) {
            storedTexts = TypedTexts();
        }
        return {.reason = refusal};
    } catch (const AdoError& error) {
        const bool isOfMedium = error.Cause() == AdoCause::Full ||
                                (error.IsOfFile() && error.Cause() != AdoCause::Locked);
        return {.reason = error.Description(), .isOfMedium = isOfMedium};
    }
}

void TryStatement(const QString& statement) {
    TryStep([&] { StationConnection->Execute(statement); });
}

}  // namespace

ChannelInfoData& ChannelTable::operator[](int chan) {
    const auto index = static_cast<std::size_t>(chan < 1 ? 0 : chan);
    if (index >= entries_.size()) {
        entries_.resize(index + 1);
    }
    return entries_[index];
}

QString ChannelName(int chan) {
    return ChannelInfo[chan].RecSta + u' ' + ChannelInfo[chan].RecDesc;
}

QString ReportLabel(int chan) {
    const ChannelInfoData& channel = ChannelInfo[chan];
    return channel.Conversion == 0 ? channel.RecLabel : channel.ConvLabel;
}

QString ReportDescription(int chan) {
    const ChannelInfoData& channel = ChannelInfo[chan];
    return channel.Conversion == 0 ? channel.RecDesc : channel.ConvDesc;
}

QString Attempt(const std::function<void()>& step) {
    try {
        step();
        return {};
    } catch (const AdoError& error) {
        return error.Description();
    }
}

namespace {

// Fills StationInfo and ChannelInfo. Returns the texts of the panel.
QMap<Item, QString> ReadHeader() {
    UpgradeInformation();
    Recordset rows;
    TryStep([&] {
        rows.Open(QStringLiteral("Information"), *StationConnection);
        rows.MoveFirst();
    });
    QMap<Item, QString> texts;
    for (const auto& column : kPanelColumns) {
        TryStep([&] {
            texts.insert(column.target, TextOrEmpty(rows.Fields(QStringView(column.name))));
        });
    }
    ForEachStationColumn(
        [&](QStringView column, auto& variable) { ReadInto(variable, rows, column); });
    for (int chan = 1; chan <= StationInfo.Channels; ++chan) {
        ForEachChannelColumn(ChannelInfo[chan], [&](QStringView column, auto& variable) {
            ReadInto(variable, rows, column);
        });
        bool atEnd = true;
        TryStep([&] {
            rows.MoveNext();
            atEnd = rows.Eof();
        });
        if (atEnd) {
            break;
        }
    }
    return texts;
}

}  // namespace

void ReadStationInfo() {
    const StationInfoData formerStation = StationInfo;
    const ChannelTable formerChannels = ChannelInfo;
    try {
        const QMap<Item, QString> texts = ReadHeader();
        for (auto text = texts.cbegin(); text != texts.cend(); ++text) {
            TheStationPanel->SetText(text.key(), text.value());
        }
    } catch (const AdoError&) {
        StationInfo = formerStation;
        ChannelInfo = formerChannels;
        throw;
    }
    storedTexts = TypedTexts();
}

QString WriteInformation() {
    Recordset rows;
    rows.LockType = adLockOptimistic;
    rows.Open(QStringLiteral("Information"), *StationConnection);
    const QString refusal = WriteInformationRows(rows);
    rows.Close();
    return refusal;
}

void WriteStationInfo() {
    const HeaderFailure failure = TryToWrite();
    if (failure.isOfMedium) {
        TellFault(QStringLiteral("The station data could not be saved"), failure.reason);
    }
}

void SaveStationInfo() {
    const HeaderFailure failure = TryToWrite();
    if (!failure.reason.isEmpty() && TypedTexts() != storedTexts) {
        TellFault(
            QStringLiteral("The name and the notes of %1 could not be stored").arg(StationTitle),
            failure.reason);
    } else if (failure.isOfMedium) {
        TellFault(QStringLiteral("The station data could not be saved"), failure.reason);
    }
}

RecordStatistics ReadRecordStatistics() {
    Recordset rows;
    rows.CursorType = adOpenStatic;
    rows.LockType = adLockReadOnly;
    rows.Open(QStringLiteral("SELECT DateTime FROM "
                             "Records"
                             " ORDER BY DateTime "),
              *StationConnection);
    RecordStatistics statistics;
    if (!rows.Eof()) {
        statistics.first = ShortDateText(rows.Fields(0).Number());
        rows.MoveLast();
        statistics.last = ShortDateText(rows.Fields(0).Number());
        statistics.count = QString::number(rows.RecordCount());
    }
    rows.Close();
    return statistics;
}

void ShowRecordStatistics(const RecordStatistics& statistics) {
    TheStationPanel->SetText(Item::BeginDate, statistics.first);
    TheStationPanel->SetText(Item::EndDate, statistics.last);
    TheStationPanel->SetText(Item::Records, statistics.count);
}

void RefreshRecordStats() {
    try {
        ShowRecordStatistics(ReadRecordStatistics());
    } catch (const AdoError& error) {
        TellFault(QStringLiteral("The records could not be counted"), error.Description());
    }
}

void UpgradeInformation() {
    TryStatement(QStringLiteral("ALTER TABLE Information ADD COLUMN RecDesc TEXT(255)"));
    TryStatement(QStringLiteral("ALTER TABLE Information ADD COLUMN ConvDesc TEXT(255)"));
    TryStatement(QStringLiteral("ALTER TABLE Information ADD COLUMN RecSta TEXT(255)"));
}

void UpgradeCalibration() {
    TryStatement(QStringLiteral("ALTER TABLE Calibration ALTER COLUMN notes TEXT(255)"));
}

void ResetFormStuff() {
    StationInfo = {};
    ChannelInfo.Clear();
    storedTexts.clear();
}

}  // namespace rillbook
