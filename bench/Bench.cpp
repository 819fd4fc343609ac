// Pairs of measurements whose ratios script/bench prints: what Rillbook does against the least that
// SQLite could do for the same rows.
#include <benchmark/benchmark.h>
#include <sqlite3.h>

#include <QAbstractButton>
#include <QAction>
#include <QApplication>
#include <QComboBox>
#include <QTableView>
#include <QTemporaryDir>
#include <memory>

#include "app/SharedState.h"
#include "bench/LoggerYears.h"
#include "compute/Compute.h"
#include "compute/Summary.h"
#include "forms/records/frmDelete.h"
#include "forms/records/frmEditRecords.h"
#include "forms/reference/frmCalibration.h"
#include "forms/reports/frmAnnualT.h"
#include "import/Import.h"
#include "import/frmImport.h"
#include "platform/ado/Database.h"
#include "platform/desktop/CommonDialog.h"
#include "platform/qt/UpDown.h"
#include "store/FormStuff.h"
#include "store/Journal.h"
#include "store/ProjectFile.h"
#include "store/StationDatabase.h"
#include "tests/support/ScriptedDoors.h"
#include "tests/support/StationFixture.h"

using namespace rillbook;

namespace {

void Require(bool fulfilled, const char* what) {
    if (!fulfilled) {
        qFatal("%s", what);
    }
}

QString LoggerFile(int rows) {
    static QTemporaryDir folder;
    const QString path = folder.filePath(QStringLiteral("%1.csv").arg(rows));
    if (!QFile::exists(path)) {
        WriteLoggerYears(path, rows);
    }
    return path;
}

QString Counts(int readable, int duplicates) {
    return QStringLiteral(" %1 Readable Records,  0 Unreadable Records(s), and  %2 Dupulicate(s).")
        .arg(readable)
        .arg(duplicates);
}

void ImportYears(ScriptedDoors& doors, int rows) {
    doors.ExpectMessage(Counts(rows, 0));
    ImportFile(LoggerFile(rows));
}

struct BareRow {
    double values[4];
};

// The rows of the logger file, parsed, as the import would store them.
const std::vector<BareRow>& ParsedRows() {
    static const std::vector<BareRow> rows = [] {
        std::vector<BareRow> parsed;
        QFile file(LoggerFile(kRowsOfTenYears));
        Require(file.open(QIODevice::ReadOnly), "no logger file");
        while (!file.atEnd()) {
            const QList<QByteArray> fields = file.readLine().trimmed().split(',');
            BareRow row{};
            row.values[0] = *ReadLoggerDateTime(fields[0].begin(), fields[0].end());
            for (int i = 1; i <= 3; ++i) {
                row.values[i] = static_cast<double>(fields[i].toFloat());
            }
            parsed.push_back(row);
        }
        return parsed;
    }();
    return rows;
}

void RunSql(sqlite3* database, const char* sql) {
    Require(sqlite3_exec(database, sql, nullptr, nullptr, nullptr) == SQLITE_OK,
            sqlite3_errmsg(database));
}

void BareInsert(benchmark::State& state) {
    const std::vector<BareRow>& rows = ParsedRows();
    for (auto _ : state) {
        state.PauseTiming();
        QTemporaryDir folder;
        const QString path = folder.filePath(QStringLiteral("bare.mdb"));
        CreateStationFile(path, 3);
        sqlite3* database = nullptr;
        Require(sqlite3_open(qPrintable(path), &database) == SQLITE_OK, "open");
        RunSql(database, "PRAGMA journal_mode=WAL");
        RunSql(database, "PRAGMA synchronous=NORMAL");
        sqlite3_stmt* insert = nullptr;
        Require(sqlite3_prepare_v2(database, "INSERT INTO Records VALUES(?,?,?,?)", -1, &insert,
                                   nullptr) == SQLITE_OK,
                "prepare");
        state.ResumeTiming();
        for (const BareRow& row : rows) {
            for (int i = 0; i < 4; ++i) {
                sqlite3_bind_double(insert, i + 1, row.values[i]);
            }
            Require(sqlite3_step(insert) == SQLITE_DONE, "insert");
            sqlite3_reset(insert);
        }
        RunSql(database, "PRAGMA wal_checkpoint(TRUNCATE)");
        state.PauseTiming();
        sqlite3_finalize(insert);
        sqlite3_close(database);
        state.ResumeTiming();
    }
}
BENCHMARK(BareInsert)->Unit(benchmark::kMillisecond)->Iterations(1)->UseRealTime();

void ImportFirst(benchmark::State& state) {
    LoggerFile(kRowsOfTenYears);
    for (auto _ : state) {
        state.PauseTiming();
        ScriptedDoors doors;
        auto station = std::make_unique<StationFixture>(3);
        state.ResumeTiming();
        ImportYears(doors, kRowsOfTenYears);
        state.PauseTiming();
        station.reset();
        state.ResumeTiming();
    }
}
BENCHMARK(ImportFirst)->Unit(benchmark::kMillisecond)->Iterations(1)->UseRealTime();

void ImportSecond(benchmark::State& state) {
    for (auto _ : state) {
        state.PauseTiming();
        ScriptedDoors doors;
        auto station = std::make_unique<StationFixture>(3);
        ImportYears(doors, kRowsOfTenYears);
        doors.ExpectMessage(Counts(0, kRowsOfTenYears));
        state.ResumeTiming();
        ImportFile(LoggerFile(kRowsOfTenYears));
        state.PauseTiming();
        station.reset();
        state.ResumeTiming();
    }
}
BENCHMARK(ImportSecond)->Unit(benchmark::kMillisecond)->Iterations(1)->UseRealTime();

// A station with years of readings, 24 visits in the journal and an equation, all applied.
class RatedStation {
public:
    explicit RatedStation(int rows) : station_(3), rows_(rows) {
        ImportYears(doors_, rows);
        for (int visit = 0; visit < 24; ++visit) {
            const QByteArray time = QByteArray("200") + QByteArray::number(2 + visit / 12) + "-" +
                                    QByteArray::number(101 + visit % 12).mid(1) + "-15 12:00";
            station_.WithJournalRow(time.constData(), 1, 2.0, 2.0 + 0.01 * visit);
        }
        station_.WithEquation("2002-01-01", 1, 0.3, 1.6, 2.5);
        ChannelInfo[1].Calibration = 1;
        ChannelInfo[1].Conversion = 1;
        ChannelInfo[1].DigitsOut = 2;
        StationInfo.OutputChannel = 1;
        StationInfo.TimeIncrement = 1.0 / kReadingsPerDay;
        ReportBeginDate = From();
        ReportEndDate = To() - 1;
    }

    DateTime From() const { return DateSerial(2002, 1, 1); }
    DateTime To() const { return From() + rows_ / kReadingsPerDay; }
    QString Path() const { return station_.Path(); }

private:
    ScriptedDoors doors_;
    StationFixture station_;
    int rows_;
};

// Steps over the rows and reads nothing of them.
void BareWalk(benchmark::State& state) {
    const RatedStation station(static_cast<int>(state.range(0)));
    sqlite3* database = nullptr;
    Require(sqlite3_open(qPrintable(station.Path()), &database) == SQLITE_OK, "open");
    sqlite3_stmt* select = nullptr;
    Require(sqlite3_prepare_v2(database,
                               "SELECT * FROM Records WHERE DateTime >= ? AND DateTime <= ? "
                               "ORDER BY DateTime",
                               -1, &select, nullptr) == SQLITE_OK,
            "prepare");
    for (auto _ : state) {
        sqlite3_bind_double(select, 1, station.From());
        sqlite3_bind_double(select, 2, station.To());
        int rows = 0;
        while (sqlite3_step(select) == SQLITE_ROW) {
            ++rows;
        }
        sqlite3_reset(select);
        Require(rows >= state.range(0) - 1, "rows are missing");
    }
    sqlite3_finalize(select);
    sqlite3_close(database);
}
BENCHMARK(BareWalk)->Arg(kRowsOfYear)->Unit(benchmark::kMillisecond);

void Series(benchmark::State& state) {
    const RatedStation station(static_cast<int>(state.range(0)));
    for (auto _ : state) {
        LoadSeries(station.From(), station.To(), 1);
    }
    Require(InstCount >= state.range(0) - 1, "readings are missing");
}
BENCHMARK(Series)->Arg(kRowsOfYear)->Arg(kRowsOfTenYears)->Unit(benchmark::kMillisecond);

void DailySeries(benchmark::State& state) {
    const RatedStation station(static_cast<int>(state.range(0)));
    for (auto _ : state) {
        LoadDailySeries(station.From(), station.To(), 1);
    }
    Require(DailyCount >= state.range(0) / kReadingsPerDay, "days are missing");
}
BENCHMARK(DailySeries)->Arg(kRowsOfYear)->Arg(kRowsOfTenYears)->Unit(benchmark::kMillisecond);

void FillSheet(benchmark::State& state) {
    const RatedStation station(static_cast<int>(state.range(0)));
    CommonDialog printerDialog;
    frmAnnualT sheet(QStringLiteral("Bench"), printerDialog);
    sheet.show();
    QApplication::processEvents();
    for (auto _ : state) {
        sheet.FillGrid();
    }
}
BENCHMARK(FillSheet)->Arg(kRowsOfYear)->Unit(benchmark::kMillisecond);

// A closed station of ten years in its own folder, the same one for each measurement.
class TenYears {
public:
    TenYears() : station_(3) {
        ImportYears(doors_, kRowsOfTenYears);
        station_.Close();
        Require(QFile::copy(station_.Path(), Original()), "copy");
    }

    QString Original() const { return station_.Folder() + QStringLiteral("/original.mdb"); }
    QString Path() const { return station_.Path(); }
    // The station as it was imported, open.
    void Renew() {
        if (StationConnection->State() != 0) {
            station_.Close();
        }
        QFile::remove(Path());
        Require(QFile::copy(Original(), Path()), "copy");
        station_.Open();
    }

private:
    ScriptedDoors doors_;
    StationFixture station_;
};

void BareNewChannel(benchmark::State& state) {
    const TenYears years;
    const QString copy = years.Original() + QStringLiteral(".copy");
    for (auto _ : state) {
        Require(QFile::copy(years.Original(), copy), "copy");
        sqlite3* database = nullptr;
        Require(sqlite3_open(qPrintable(copy), &database) == SQLITE_OK, "open");
        RunSql(database, "ALTER TABLE Records ADD COLUMN chan4 SINGLE");
        sqlite3_close(database);
        state.PauseTiming();
        QFile::remove(copy);
        state.ResumeTiming();
    }
}
BENCHMARK(BareNewChannel)->Unit(benchmark::kMillisecond)->Iterations(5)->UseRealTime();

void NewChannel(benchmark::State& state) {
    TenYears years;
    for (auto _ : state) {
        state.PauseTiming();
        years.Renew();
        frmImport setup;
        setup.show();
        setup.findChild<UpDown*>(QStringLiteral("updChan"))->Step(1);
        state.ResumeTiming();
        setup.findChild<QAbstractButton*>(QStringLiteral("cmdOK"))->click();
        Require(setup.result() == QDialog::Accepted && StationInfo.Channels == 4, "no channel");
    }
}
BENCHMARK(NewChannel)->Unit(benchmark::kMillisecond)->Iterations(5)->UseRealTime();

constexpr int kVisits = 200;

std::vector<JournalRow> Visits() {
    std::vector<JournalRow> visits;
    for (int i = 0; i < kVisits; ++i) {
        visits.push_back({i % 2 == 0, DateSerial(1990, 1, 1 + 30 * i), 1.25, 1.3, 40.5,
                          QStringLiteral("weeds cut, logger cleaned")});
    }
    return visits;
}

void BareJournal(benchmark::State& state) {
    const ScriptedDoors doors;
    StationFixture station;
    WriteJournal(1, Visits());
    sqlite3* database = StationConnection->database()->handle();
    for (auto _ : state) {
        RunSql(database, "SELECT * FROM Calibration WHERE chan = 1 ORDER BY DateTime");
        RunSql(database, "BEGIN; DELETE FROM Calibration WHERE chan = 1");
        sqlite3_stmt* insert = nullptr;
        Require(
            sqlite3_prepare_v2(database, "INSERT INTO Calibration VALUES(?,1,1.25,1.3,1,40.5,?)",
                               -1, &insert, nullptr) == SQLITE_OK,
            "prepare");
        for (int i = 0; i < kVisits; ++i) {
            sqlite3_bind_double(insert, 1, 32874 + 30 * i);
            sqlite3_bind_text(insert, 2, "weeds cut, logger cleaned", -1, SQLITE_STATIC);
            Require(sqlite3_step(insert) == SQLITE_DONE, "insert");
            sqlite3_reset(insert);
        }
        sqlite3_finalize(insert);
        RunSql(database, "COMMIT");
    }
}
BENCHMARK(BareJournal)->Unit(benchmark::kMillisecond)->UseRealTime();

void StoredJournal(benchmark::State& state) {
    const ScriptedDoors doors;
    StationFixture station;
    WriteJournal(1, Visits());
    for (auto _ : state) {
        WriteJournal(1, ReadJournal(1));
    }
}
BENCHMARK(StoredJournal)->Unit(benchmark::kMillisecond)->UseRealTime();

// The window opened, a row changed, and closed with a save.
void JournalWindow(benchmark::State& state) {
    ScriptedDoors doors;
    StationFixture station;
    WriteJournal(1, Visits());
    CommonDialog printerDialog;
    for (auto _ : state) {
        doors.ExpectMessage(QStringLiteral("Save changes?"), MsgBoxAnswer::Yes);
        frmCalibration journal(printerDialog);
        journal.show();
        QApplication::processEvents();
        journal.findChild<QAction*>(QStringLiteral("mnuEditIns"))->trigger();
        journal.close();
        Require(!DialogCancelled, "not saved");
    }
}
BENCHMARK(JournalWindow)->Unit(benchmark::kMillisecond)->UseRealTime();

// A station of ten years with four channels, open; chan4 is empty.
class FourChannels {
public:
    FourChannels() : station_(4) { ImportYears(doors_, kRowsOfTenYears); }
    sqlite3* Handle() const { return StationConnection->database()->handle(); }
    void FillStage() const { RunSql(Handle(), "UPDATE Records SET chan1 = 2.5"); }
    bool StageIsEmpty() const {
        return DumpTable(station_.Path(), QStringLiteral("SELECT count(chan1) FROM Records")) ==
               u'0';
    }

private:
    ScriptedDoors doors_;
    StationFixture station_;
};

void BareKeys(benchmark::State& state) {
    const FourChannels station;
    for (auto _ : state) {
        RunSql(station.Handle(), "SELECT DateTime FROM Records ORDER BY DateTime");
    }
}
BENCHMARK(BareKeys)->Unit(benchmark::kMillisecond)->UseRealTime();

// The window opened, painted, and a cell in edit.
void OpenRecords(benchmark::State& state) {
    const FourChannels station;
    for (auto _ : state) {
        frmEditRecords records;
        records.show();
        QApplication::processEvents();
        auto* grid = records.findChild<QTableView*>(QStringLiteral("DataGrid1"));
        const QModelIndex stage = grid->model()->index(0, 1);
        grid->edit(stage);
        Require(grid->indexWidget(stage) != nullptr && grid->model()->rowCount() == kRowsOfTenYears,
                "not in edit");
    }
}
BENCHMARK(OpenRecords)->Unit(benchmark::kMillisecond)->UseRealTime();

void BareEmptyChannel(benchmark::State& state) {
    const FourChannels station;
    for (auto _ : state) {
        state.PauseTiming();
        station.FillStage();
        state.ResumeTiming();
        RunSql(station.Handle(), "UPDATE Records SET chan1 = NULL");
    }
}
BENCHMARK(BareEmptyChannel)->Unit(benchmark::kMillisecond)->Iterations(3)->UseRealTime();

void EmptyChannel(benchmark::State& state) {
    const FourChannels station;
    for (auto _ : state) {
        state.PauseTiming();
        station.FillStage();
        frmEditRecords records;
        records.show();
        frmDelete deletion(records);
        deletion.findChild<QComboBox*>(QStringLiteral("cboChannels"))->setCurrentIndex(1);
        deletion.findChild<QAbstractButton*>(QStringLiteral("cmdSelectALl"))->click();
        state.ResumeTiming();
        deletion.findChild<QAbstractButton*>(QStringLiteral("cmdOK"))->click();
        state.PauseTiming();
        Require(station.StageIsEmpty(), "not emptied");
        state.ResumeTiming();
    }
}
BENCHMARK(EmptyChannel)->Unit(benchmark::kMillisecond)->Iterations(3)->UseRealTime();

}  // namespace

int main(int argc, char** argv) {
    QApplication application(argc, argv);
    benchmark::Initialize(&argc, argv);
    benchmark::RunSpecifiedBenchmarks();
    return 0;
}
