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

namespace rillbook {

namespace {

struct SqliteCloser {
    void operator()(sqlite3* database) const { sqlite3_close_v2(database); }
    void operator()(sqlite3_stmt* statement) const { sqlite3_finalize(statement); }
};
using Database = std::unique_ptr<sqlite3, SqliteCloser>;
using Statement = std::unique_ptr<sqlite3_stmt, SqliteCloser>;

Database OpenFile(const QString& path, int flags) {
    sqlite3* database = nullptr;
    sqlite3_open_v2(path.toUtf8().constData(), &database, flags, nullptr);
    return Database(database);
}

void Run(sqlite3* database, const QByteArray& sql) {
    char* error = nullptr;
    if (sqlite3_exec(database, sql.constData(), nullptr, nullptr, &error) != SQLITE_OK) {
        qFatal("%s: %s", sql.constData(), error);
    }
}

QString CellText(sqlite3_stmt* row, int column) {
    const int type = sqlite3_column_type(row, column);
    if (type == SQLITE_NULL) {
        return QStringLiteral("NULL");
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

void Set(Field field, const StationFixture::Reading& reading) {
    if (reading) {
        field.SetValue(*reading);
    }
}

void SetNotes(Recordset& row, const QString& notes) {
    if (!notes.isEmpty()) {
        row.Fields(u"notes").SetValue(notes);
    }
}

void OpenToAppend(Recordset& table, const char* name) {
    table.Open(QString::fromLatin1(name), *StationConnection, adOpenDynamic, adLockOptimistic);
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
    return start.addSecs(std::llround(moment * 86400.0))
        .toString(QStringLiteral("yyyy-MM-dd hh:mm:ss"));
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
    QFile::remove(path);
    const Database database = OpenFile(path, SQLITE_OPEN_READWRITE | SQLITE_OPEN_CREATE);
    Run(database.get(), "PRAGMA synchronous = OFF");  // it needn't survive the machine
    Run(database.get(), script.readAll());
    Run(database.get(), "BEGIN");
    for (int chan = 2; chan <= channels; ++chan) {
        const QByteArray number = QByteArray::number(chan);
        Run(database.get(), "ALTER TABLE Records ADD COLUMN chan" + number + " SINGLE");
        Run(database.get(), "INSERT INTO Information SELECT * FROM Information LIMIT 1");
        Run(database.get(),
            "UPDATE Information SET recsta = 'Channel " + number + "' WHERE rowid = " + number);
    }
    Run(database.get(), "UPDATE Information SET channels = " + QByteArray::number(channels));
    Run(database.get(), "COMMIT");
}

QString DumpTable(const QString& path, const QString& tableOrQuery) {
    const Database database = OpenFile(path, SQLITE_OPEN_READWRITE);
    const QString sql = tableOrQuery.contains(QLatin1Char(' '))
                            ? tableOrQuery
                            : QStringLiteral("SELECT * FROM ") + tableOrQuery;
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
        rows += cells.join(QStringLiteral(" | "));
    }
    if (result != SQLITE_DONE) {
        rows += QStringLiteral("Failed: ") + QString::fromUtf8(sqlite3_errmsg(database.get()));
    }
    return rows.join(QLatin1Char('\n'));
}

QString ImportMessage(int readable, int unreadable, int repeated) {
    return QStringLiteral(" %1 Readable Records,  %2 Unreadable Records(s), and  %3 Dupulicate(s).")
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
    QFile file(folder_.filePath(QStringLiteral("logger.csv")));
    if (!file.open(QIODevice::WriteOnly) || file.write(bytes) != bytes.size()) {
        qFatal("No logger file: %s", qPrintable(file.errorString()));
    }
    return file.fileName();
}

void StationFixture::Open() {
    if (!OpenDB(Path())) {
        qFatal("The station can't be opened: %s", qPrintable(Path()));
    }
    StationPath = Path();
    StationTitle = QStringLiteral("station.mdb");
}

void StationFixture::Close() {
    CloseDB();
}

StationFixture& StationFixture::WithReadings(const char* begin, double stepMinutes,
                                             const std::vector<Reading>& readings, int chan) {
    const auto first = static_cast<std::int64_t>(std::llround(At(begin) * 86400.0));
    const auto step = static_cast<std::int64_t>(std::llround(stepMinutes * 60.0));
    Recordset records;
    OpenToAppend(records, "Records");
    for (std::size_t i = 0; i < readings.size(); ++i) {
        records.AddNew();
        records.Fields(0).SetValue(MomentOf(0, first + static_cast<std::int64_t>(i) * step));
        Set(records.Fields(chan), readings[i]);
        records.Update();
    }
    return *this;
}

StationFixture& StationFixture::WithRecord(const char* time, const std::vector<Reading>& readings) {
    Recordset records;
    OpenToAppend(records, "Records");
    records.AddNew();
    records.Fields(0).SetValue(At(time));
    for (std::size_t i = 0; i < readings.size(); ++i) {
        Set(records.Fields(static_cast<int>(i) + 1), readings[i]);
    }
    records.Update();
    return *this;
}

StationFixture& StationFixture::WithJournalRow(const char* time, int chan, Reading logger,
                                               Reading actual, bool inUse, Reading discharge,
                                               const QString& notes) {
    Recordset journal;
    OpenToAppend(journal, "Calibration");
    journal.AddNew();
    journal.Fields(0).SetValue(At(time));
    journal.Fields(1).SetValue(chan);
    Set(journal.Fields(2), logger);
    Set(journal.Fields(3), actual);
    journal.Fields(4).SetValue(inUse ? 1.0 : 0.0);
    Set(journal.Fields(5), discharge);
    SetNotes(journal, notes);
    journal.Update();
    return *this;
}

StationFixture& StationFixture::WithEquation(const char* from, int chan, double A, double r,
                                             double c, const QString& notes) {
    Recordset ratings;
    OpenToAppend(ratings, "ConversionEq");
    ratings.AddNew();
    ratings.Fields(0).SetValue(At(from));
    ratings.Fields(1).SetValue(chan);
    ratings.Fields(2).SetValue(A);
    ratings.Fields(3).SetValue(r);
    ratings.Fields(4).SetValue(c);
    SetNotes(ratings, notes);
    ratings.Fields(6).SetValue(0.0);
    ratings.Update();
    return *this;
}

StationFixture& StationFixture::WithTable(const char* from, int chan,
                                          const std::vector<RatingPoint>& points,
                                          const QString& notes) {
    Recordset ratings;
    OpenToAppend(ratings, "ConversionEq");
    ratings.AddNew();
    ratings.Fields(0).SetValue(At(from));
    ratings.Fields(1).SetValue(chan);
    SetNotes(ratings, notes);
    ratings.Fields(6).SetValue(1.0);
    ratings.Update();
    Recordset table;
    OpenToAppend(table, "ConversionT");
    for (const RatingPoint& point : points) {
        table.AddNew();
        table.Fields(0).SetValue(chan);
        table.Fields(1).SetValue(At(from));
        table.Fields(2).SetValue(point.depth);
        table.Fields(3).SetValue(point.flow);
        table.Update();
    }
    return *this;
}

QString StationFixture::Dump(const char* tableOrQuery) const {
    return DumpTable(Path(), QString::fromUtf8(tableOrQuery));
}

}  // namespace rillbook
