#include "tests/support/StationFixture.h"

#include <sqlite3.h>

#include <QDateTime>
#include <QFile>
#include <QStringList>
#include <cmath>
#include <cstring>
#include <memory>

#include "app/SharedState.h"
#include "platform/ado/Connection.h"
#include "platform/ado/Recordset.h"
#include "store/StationDatabase.h"
#include "tests/support/PlainFiles.h"

namespace rillbook {

namespace {

struct SqliteCloser {
    void operator()(sqlite3* database) const { sqlite3_close_v2(database); }
    void operator()(sqlite3_stmt* statement) const { sqlite3_finalize(statement); }
};
using Database = std::unique_ptr<sqlite3, SqliteCloser>;
using Statement = std::unique_ptr<sqlite3_stmt, SqliteCloser>;

QString CellText(sqlite3_stmt* row, int column) {
    const int type = sqlite3_column_type(row, column);
    if (type == SQLITE_NULL) {
        return u"NULL"_qs;
    }
    if (type == SQLITE_TEXT) {
        return QString::fromUtf8(reinterpret_cast<const char*>(sqlite3_column_text(row, column)));
    }
    const char* declared = sqlite3_column_decltype(row, column);
    const double value = sqlite3_column_double(row, column);
    if (declared != nullptr && qstricmp(declared, "DATETIME") == 0) {
        return MomentText(value);
    }
    const bool single = declared != nullptr && qstricmp(declared, "SINGLE") == 0;
    return QString::number(value, 'g', single ? 7 : 15);
}

using Cells = std::vector<Variant>;

Variant CellOf(const StationFixture::Reading& reading) {
    return reading ? Variant(*reading) : Variant(Null{});
}

Variant CellOf(const QString& notes) {
    return notes.isEmpty() ? Variant(Null{}) : Variant(notes);
}

void Append(const char* table, const Cells& cells) {
    Recordset rows;
    rows.Open(QString::fromLatin1(table), *StationConnection, adOpenDynamic, adLockOptimistic);
    rows.AddNew();
    for (std::size_t i = 0; i < cells.size(); ++i) {
        rows.Fields(static_cast<int>(i)).SetValue(cells[i]);
    }
    rows.Update();
}

}  // namespace

DateTime At(const char* text) {
    const std::optional<DateTime> moment = ReadLoggerDateTime(text, text + std::strlen(text));
    if (!moment) {
        qFatal("No date-time: %s", text);
    }
    return *moment;
}

QString MomentText(DateTime moment) {
    const QDateTime start(QDate(1899, 12, 30), QTime(0, 0), Qt::UTC);
    return start.addSecs(std::llround(moment * 86400.0)).toString(u"yyyy-MM-dd hh:mm:ss"_qs);
}

FakePanel::FakePanel() {
    TheStationPanel = this;
}

FakePanel::~FakePanel() {
    TheStationPanel = nullptr;
}

void CreateStationFile(const QString& path, int channels) {
    QFile script(QStringLiteral(RILLBOOK_SOURCE_DIR "/data/template.sql"));
    if (!script.open(QIODevice::ReadOnly)) {
        qFatal("No template: %s", qPrintable(script.fileName()));
    }
    QByteArray sql = script.readAll() + "BEGIN;";
    for (int chan = 2; chan <= channels; ++chan) {
        const QByteArray number = QByteArray::number(chan);
        sql += "ALTER TABLE Records ADD COLUMN chan" + number +
               " SINGLE; INSERT INTO Information SELECT * FROM Information LIMIT 1;"
               "UPDATE Information SET recsta = 'Channel " +
               number + "' WHERE rowid = " + number + ';';
    }
    sql += "UPDATE Information SET channels = " + QByteArray::number(channels) + "; COMMIT";
    QFile::remove(path);
    RunPlainSql(path, sql);
}

QString DumpTable(const QString& path, const QString& tableOrQuery) {
    sqlite3* opened = nullptr;
    sqlite3_open_v2(path.toUtf8().constData(), &opened, SQLITE_OPEN_READWRITE, nullptr);
    const Database database(opened);
    const QString sql =
        tableOrQuery.contains(u' ') ? tableOrQuery : u"SELECT * FROM "_qs + tableOrQuery;
    sqlite3_stmt* prepared = nullptr;
    sqlite3_prepare_v2(database.get(), sql.toUtf8().constData(), -1, &prepared, nullptr);
    const Statement statement(prepared);
    QStringList rows;
    int result = SQLITE_ERROR;
    while (statement && (result = sqlite3_step(statement.get())) == SQLITE_ROW) {
        QStringList cells;
        for (int column = 0; column < sqlite3_column_count(statement.get()); ++column) {
            cells += CellText(statement.get(), column);
        }
        rows += cells.join(u" | "_qs);
    }
    if (result != SQLITE_DONE) {
        rows += u"Failed: "_qs + QString::fromUtf8(sqlite3_errmsg(database.get()));
    }
    return rows.join(u'\n');
}

QString ImportMessage(int readable, int unreadable, int repeated) {
    return u" %1 Readable Records,  %2 Unreadable Records(s), and  %3 Dupulicate(s)."_qs
        .arg(readable)
        .arg(unreadable)
        .arg(repeated);
}

StationFixture::StationFixture(int channels) {
    ResetSharedState();
    CreateStationFile(Path(), channels);
    Open();
}

StationFixture::~StationFixture() {
    ResetSharedState();
}

QString StationFixture::LoggerFile(const QByteArray& bytes) const {
    const QString path = folder_.filePath(u"logger.csv"_qs);
    WriteBytes(path, bytes);
    return path;
}

void StationFixture::Open() {
    if (!OpenDB(Path())) {
        qFatal("The station can't be opened: %s", qPrintable(Path()));
    }
    StationPath = Path();
    StationTitle = u"station.mdb"_qs;
}

void StationFixture::Close() {
    CloseDB();
}

StationFixture& StationFixture::WithReadings(const char* begin, double stepMinutes,
                                             const std::vector<Reading>& readings, int chan) {
    const auto first = static_cast<std::int64_t>(std::llround(At(begin) * 86400.0));
    const auto step = static_cast<std::int64_t>(std::llround(stepMinutes * 60.0));
    Transaction oneSync(*StationConnection);
    for (std::size_t i = 0; i < readings.size(); ++i) {
        Cells cells(static_cast<std::size_t>(chan) + 1, Null{});
        cells.front() = MomentOf(0, first + static_cast<std::int64_t>(i) * step);
        cells.back() = CellOf(readings[i]);
        Append("Records", cells);
    }
    oneSync.Commit();
    return *this;
}

StationFixture& StationFixture::WithRecord(const char* time, const std::vector<Reading>& readings) {
    Cells cells{At(time)};
    for (const Reading& reading : readings) {
        cells.push_back(CellOf(reading));
    }
    Append("Records", cells);
    return *this;
}

StationFixture& StationFixture::WithJournalRow(const char* time, int chan, Reading logger,
                                               Reading actual, bool inUse, Reading discharge,
                                               const QString& notes) {
    Append("Calibration", {At(time), double(chan), CellOf(logger), CellOf(actual),
                           inUse ? 1.0 : 0.0, CellOf(discharge), CellOf(notes)});
    return *this;
}

StationFixture& StationFixture::WithEquation(const char* from, int chan, double A, double r,
                                             double c, const QString& notes) {
    Append("ConversionEq", {At(from), double(chan), A, r, c, CellOf(notes), 0.0});
    return *this;
}

StationFixture& StationFixture::WithTable(const char* from, int chan,
                                          const std::vector<RatingPoint>& points,
                                          const QString& notes) {
    Append("ConversionEq", {At(from), double(chan), Null{}, Null{}, Null{}, CellOf(notes), 1.0});
    for (const RatingPoint& point : points) {
        Append("ConversionT", {double(chan), At(from), point.depth, point.flow});
    }
    return *this;
}

QString StationFixture::Dump(const char* tableOrQuery) const {
    return DumpTable(Path(), QString::fromUtf8(tableOrQuery));
}

}  // namespace rillbook
