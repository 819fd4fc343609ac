#include "tests/media/StationSteps.h"

#include <sqlite3.h>

#include <QDateTime>
#include <QTemporaryDir>

#include "import/Import.h"
#include "import/StationShape.h"
#include "platform/ado/AdoError.h"
#include "platform/ado/Database.h"
#include "store/FileError.h"
#include "store/Journal.h"
#include "store/ProjectFile.h"
#include "store/RatingStore.h"
#include "store/StationDatabase.h"
#include "tests/support/PlainFiles.h"
#include "tests/support/StationFixture.h"

namespace rillbook {

namespace {

const char* const kDigest =
    "SELECT (SELECT count(*) || ' records of ' || total(chan1) FROM Records) || ', ' || "
    "(SELECT count(*) FROM Calibration) || ' visits, ' || "
    "(SELECT count(*) FROM ConversionEq) || ' ratings, ' || "
    "(SELECT count(*) FROM ConversionT) || ' points, ' || "
    "(SELECT max(channels) FROM Information) || ' channels'";

QString Open(const QString& path) {
    if (!OpenDB(path)) {
        return QStringLiteral("not opened");
    }
    StationPath = path;
    StationTitle = path.section(u'/', -1);
    return {};
}

StationShape ThreeChannels() {
    StationShape shape;
    for (int chan = 1; chan <= 3; ++chan) {
        shape.channels.push_back({.width = 9,
                                  .units = QStringLiteral("ft"),
                                  .label = QStringLiteral("Stage"),
                                  .description = QStringLiteral("Well")});
    }
    return shape;
}

QString SaveProject(const QString& folder) {
    const QString path = folder + QStringLiteral("/basin.prj");
    WriteProjectFile(path, {.stations = {{StationIn(folder), QStringLiteral("Creek")}},
                            .reportBeginDate = At("2002-01-01"),
                            .reportPeriodCode = QStringLiteral("9312"),
                            .name = QStringLiteral("Basin")});
    return ReadProjectFile(path).fault;
}

}  // namespace

QString StationIn(const QString& folder) {
    return folder + QStringLiteral("/creek.mdb");
}

QString OneLine(const QStringList& texts) {
    return texts.join(QStringLiteral(" | ")).replace(u'\n', u' ').replace(u'\t', u' ');
}

QString OpenDigest() {
    sqlite3_stmt* prepared = nullptr;
    sqlite3* handle = StationConnection->database()->handle();
    sqlite3_prepare_v2(handle, kDigest, -1, &prepared, nullptr);
    const std::unique_ptr<sqlite3_stmt, decltype(&sqlite3_finalize)> statement(prepared,
                                                                               &sqlite3_finalize);
    return sqlite3_step(prepared) == SQLITE_ROW
               ? QString::fromUtf8(reinterpret_cast<const char*>(sqlite3_column_text(prepared, 0)))
               : QString::fromUtf8(sqlite3_errmsg(handle));
}

QString FileDigest(const QString& path) {
    return DumpTable(path, QString::fromLatin1(kDigest));
}

bool ImportRows(const QString& from, int rows, double value, MessageLog& messages) {
    QByteArray lines;
    QDateTime moment = QDateTime::fromString(from, Qt::ISODate);
    moment.setTimeSpec(Qt::UTC);
    for (int row = 0; row < rows; ++row) {
        lines += moment.addSecs(60 * row).toString(QStringLiteral("MM/dd/yy HH:mm")).toLatin1() +
                 ',' + QByteArray::number(value) + "\r\n";
    }
    const QTemporaryDir local;
    WriteBytes(local.filePath(QStringLiteral("logger.csv")), lines);
    const qsizetype before = messages.texts.size();
    ImportFile(local.filePath(QStringLiteral("logger.csv")));
    return messages.texts.mid(before) == QStringList(ImportMessage(rows, 0, 0));
}

QString RunStep(const StationStep& step, MessageLog& messages) {
    messages.texts.clear();
    if (step.needsStation && StationConnection->State() == 0) {
        return QStringLiteral("no station open");
    }
    QString reason;
    try {
        reason = step.run();
    } catch (const AdoError& error) {
        reason = error.Description();
    } catch (const FileError& error) {
        reason = error.Reason();
    }
    // A message with an exclamation mark before it reports a fault also if the step went on.
    const bool isWarned =
        std::any_of(messages.texts.cbegin(), messages.texts.cend(),
                    [](const QString& text) { return text.startsWith(u"! "_qs); });
    return reason.isEmpty() && !isWarned ? QString()
                                         : OneLine(QStringList(messages.texts) << reason);
}

std::vector<StationStep> StationSteps(const QString& folder) {
    const QString path = StationIn(folder);
    const auto digest = std::make_shared<QString>();
    return {
        {"new station", false,
         [=] {
             CopyStationTemplate(path);
             return QString();
         }},
        {"open", false, [=] { return Open(path); }},
        {"import", true,
         [=] {
             MessageLog messages;
             const bool isStored =
                 ImportRows(QStringLiteral("2002-01-01T00:00:00"), kImportedRows, 1, messages);
             return isStored ? QString() : OneLine(messages.texts);
         }},
        {"journal", true,
         [] {
             WriteJournal(1, {{true, At("2003-01-01"), 3, 4, {}, QStringLiteral("ice")}});
             return QString();
         }},
        {"equation", true,
         [] {
             WriteEquation(1, At("2002-01-01"),
                           {.time = At("2002-01-01"), .A = 1, .r = 2, .c = 3, .notes = {}});
             return QString();
         }},
        {"table", true,
         [] {
             WriteTable(1, At("2003-01-01"), {.time = At("2003-01-01"), .notes = {}},
                        {{5, 50}, {6, 60}});
             return QString();
         }},
        {"deletion", true,
         [] {
             StationConnection->Execute(
                 QStringLiteral("DELETE * FROM Records WHERE DateTime < #1/1/2002 00:10:00#"));
             return QString();
         }},
        {"setup", true,
         [] {
             ReshapeStation(ThreeChannels());
             return QString();
         }},
        {"project", false, [=] { return SaveProject(folder); }},
        {"close", true,
         [=] {
             *digest = OpenDigest();
             CloseDB();
             return QString();
         }},
        {"reopen", false,
         [=] {
             const QString reason = Open(path);
             return reason.isEmpty() && OpenDigest() != *digest
                        ? OpenDigest() + QStringLiteral(" in the place of ") + *digest
                        : reason;
         }},
        {"close again", true,
         [] {
             CloseDB();
             return QString();
         }},
    };
}

}  // namespace rillbook
