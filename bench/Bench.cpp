// Pairs of measurements whose ratios script/bench prints: what Rillbook does against the least that
// SQLite could do for the same rows.
#include <benchmark/benchmark.h>
#include <sqlite3.h>

#include <QApplication>
#include <QTemporaryDir>
#include <memory>

#include "bench/LoggerYears.h"
#include "compute/Compute.h"
#include "compute/Summary.h"
#include "forms/reports/frmAnnualT.h"
#include "import/Import.h"
#include "store/FormStuff.h"
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
    frmAnnualT sheet(QStringLiteral("Bench"));
    sheet.show();
    QApplication::processEvents();
    for (auto _ : state) {
        sheet.FillGrid();
    }
}
BENCHMARK(FillSheet)->Arg(kRowsOfYear)->Unit(benchmark::kMillisecond);

}  // namespace

int main(int argc, char** argv) {
    QApplication application(argc, argv);
    benchmark::Initialize(&argc, argv);
    benchmark::RunSpecifiedBenchmarks();
    return 0;
}
