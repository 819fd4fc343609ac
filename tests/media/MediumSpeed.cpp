#include "tests/media/MediumSpeed.h"

#include <sqlite3.h>
#include <sys/stat.h>

#include <QElapsedTimer>
#include <QFile>
#include <QTemporaryDir>
#include <algorithm>
#include <array>
#include <cstdio>
#include <thread>

#include "bench/LoggerYears.h"
#include "import/Import.h"
#include "platform/ado/Database.h"
#include "store/StationDatabase.h"
#include "tests/media/StationSteps.h"
#include "tests/support/PlainFiles.h"
#include "tests/support/StationFixture.h"

namespace rillbook {

namespace {

// How the engine works on a file during an import.
struct EngineMode {
    QString vfs;
    QString journal;
    QString synchronous;
    QString locking;
    QString pageSize;
};

// The first column of a statement's row; empty if it has none.
QString Ask(sqlite3* database, const char* sql) {
    sqlite3_stmt* statement = nullptr;
    QString text;
    if (sqlite3_prepare_v2(database, sql, -1, &statement, nullptr) == SQLITE_OK) {
        while (sqlite3_step(statement) == SQLITE_ROW) {
            text =
                QString::fromUtf8(reinterpret_cast<const char*>(sqlite3_column_text(statement, 0)));
        }
    }
    sqlite3_finalize(statement);
    return text;
}

// Opens a new station of three channels. Returns why it was refused.
QString OpenNew(const QString& folder, MessageLog& messages) {
    for (const StationStep& step : StationSteps(folder)) {
        const QString name = QString::fromLatin1(step.name);
        if (name == u"new station" || name == u"open" || name == u"setup") {
            const QString reason = RunStep(step, messages);
            if (!reason.isEmpty()) {
                return name + u": "_qs + reason;
            }
        }
    }
    return {};
}

// Imports some rows from a pipe, and looks at the engine while the importer waits for more of it.
EngineMode ModeOfImport() {
    EngineMode mode;
    const QTemporaryDir local;
    const QString pipe = local.filePath(QStringLiteral("logger.csv"));
    if (::mkfifo(qPrintable(pipe), 0600) != 0) {
        qFatal("No pipe: %s", qPrintable(pipe));
    }
    sqlite3* handle = StationConnection->database()->handle();
    std::thread logger([&] {
        QFile file(pipe);
        if (!file.open(QIODevice::WriteOnly | QIODevice::Unbuffered)) {
            qFatal("No pipe: %s", qPrintable(pipe));
        }
        // More than the importer reads at once: it has stored the rows when it waits again.
        constexpr int longLine = 600'000;
        file.write("01/01/99 00:00,1,1,1\r\n01/01/99 00:15,1,1,1\r\n" + QByteArray(longLine, 'x'));
        std::this_thread::sleep_for(std::chrono::seconds(1));
        char* vfs = nullptr;
        sqlite3_file_control(handle, "main", SQLITE_FCNTL_VFSNAME, &vfs);
        mode = {.vfs = QString::fromUtf8(vfs).section(u'/', -1),
                .journal = Ask(handle, "PRAGMA journal_mode"),
                .synchronous = Ask(handle, "PRAGMA synchronous"),
                .locking = Ask(handle, "PRAGMA locking_mode"),
                .pageSize = Ask(handle, "PRAGMA page_size")};
        sqlite3_free(vfs);
    });
    ImportFile(pipe);
    logger.join();
    return mode;
}

void Run(sqlite3* database, const QString& sql) {
    char* message = nullptr;
    if (sqlite3_exec(database, qPrintable(sql), nullptr, nullptr, &message) != SQLITE_OK) {
        qFatal("%s: %s", qPrintable(sql), message);
    }
}

// The rows of a logger file, with times of their own.
qint64 BareImport(const QString& path, const EngineMode& mode, int rows) {
    sqlite3* database = nullptr;
    if (sqlite3_open_v2(qPrintable(path), &database, SQLITE_OPEN_READWRITE,
                        mode.vfs.isEmpty() ? nullptr : qPrintable(mode.vfs)) != SQLITE_OK) {
        qFatal("%s", sqlite3_errmsg(database));
    }
    Run(database, QStringLiteral("PRAGMA locking_mode=%1; PRAGMA journal_mode=%2; "
                                 "PRAGMA synchronous=%3")
                      .arg(mode.locking, mode.journal, mode.synchronous));
    QElapsedTimer timer;
    timer.start();
    sqlite3_stmt* insert = nullptr;
    sqlite3_prepare_v2(database, "INSERT INTO Records VALUES(?,?,?,?)", -1, &insert, nullptr);
    for (int row = 0; row < rows; ++row) {
        sqlite3_bind_double(insert, 1, 37257 + row / double(kReadingsPerDay));
        for (int chan = 2; chan <= 4; ++chan) {
            sqlite3_bind_double(insert, chan, 2.5 + row % 7);
        }
        if (sqlite3_step(insert) != SQLITE_DONE) {
            qFatal("%s", sqlite3_errmsg(database));
        }
        sqlite3_reset(insert);
    }
    sqlite3_finalize(insert);
    if (mode.journal == u"wal") {
        Run(database, QStringLiteral("PRAGMA wal_checkpoint(TRUNCATE)"));
    }
    const qint64 elapsed = timer.elapsed();
    sqlite3_close(database);
    return elapsed;
}

}  // namespace

void MeasureImport(const QString& folder, int rows) {
    const QTemporaryDir local;
    const QString file = local.filePath(QStringLiteral("logger.csv"));
    WriteLoggerYears(file, rows);
    MessageLog messages;
    QString reason = OpenNew(folder, messages);
    EngineMode mode;
    if (reason.isEmpty()) {
        mode = ModeOfImport();
        CloseDB();
    }
    std::array<qint64, 3> program{};
    std::array<qint64, 3> bare{};
    for (std::size_t round = 0; reason.isEmpty() && round < program.size(); ++round) {
        reason = OpenNew(folder, messages);
        messages.texts.clear();
        QElapsedTimer timer;
        timer.start();
        ImportFile(file);
        program[round] = timer.elapsed();
        CloseOpenStation();
        if (messages.texts != QStringList(ImportMessage(rows, 0, 0))) {
            reason += OneLine(messages.texts);
        }
        reason += OpenNew(folder, messages);
        CloseOpenStation();
        if (reason.isEmpty()) {
            bare[round] = BareImport(StationIn(folder), mode, rows);
        }
    }
    if (!reason.isEmpty()) {
        std::printf("refused\t%s\n", qPrintable(reason));
        return;
    }
    std::sort(program.begin(), program.end());
    std::sort(bare.begin(), bare.end());
    std::printf("import\t%lld\nbare\t%lld\nmode\t%s, %s, synchronous %s, %s, pages of %s\n",
                program[1], bare[1], qPrintable(mode.vfs), qPrintable(mode.journal),
                qPrintable(mode.synchronous), qPrintable(mode.locking), qPrintable(mode.pageSize));
}

}  // namespace rillbook
