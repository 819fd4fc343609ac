// Kills a process at random moments while it opens a station, saves all that can be saved, and
// closes it, over and over; then opens what it left. Prints how many kills there were and what was
// lost; the exit code is 0 if nothing was.
//
//     kill_saves 1000 [seed]
#include <signal.h>
#include <sys/wait.h>
#include <unistd.h>

#include <QCoreApplication>
#include <QFile>
#include <QRandomGenerator>
#include <QTemporaryDir>
#include <algorithm>
#include <array>
#include <cstdio>

#include "import/Import.h"
#include "import/StationShape.h"
#include "platform/ado/Recordset.h"
#include "store/FormStuff.h"
#include "store/Journal.h"
#include "store/RatingStore.h"
#include "store/StationDatabase.h"
#include "tests/support/MessageLog.h"
#include "tests/support/PlainFiles.h"
#include "tests/support/ScriptedDoors.h"
#include "tests/support/StationFixture.h"

using namespace rillbook;
using Item = StationPanel::Item;

namespace {

constexpr int kKinds = 8;
constexpr int kImported = 20;  // records of an import

// What a save of a round stores: its number, in its own place.
void Save(int kind, int round, FakePanel& panel, const QString& folder) {
    const double time = At("2003-01-01");
    const QString number = QString::number(round);
    switch (kind) {
        case 0:
            return WriteJournal(1, {{true, time, round, round, {}, number},
                                    {true, time + 1, round, round, {}, number}});
        case 1:
            return WriteEquation(1, time, {.time = time, .A = 1, .r = 2, .c = round, .notes = {}});
        case 2:
            return WriteTable(1, time, {.time = time, .notes = number},
                              {{1, double(round)}, {2, double(round)}});
        case 3:
            panel.texts[Item::Notes] = number;
            return WriteStationInfo();
        case 4: {
            Connection editor;
            editor.Open(StationConnection->ConnectionString());
            Recordset rows;
            rows.Open(QStringLiteral("SELECT DateTime, chan1 FROM Records ORDER BY DateTime"),
                      editor, adOpenStatic, adLockOptimistic);
            rows.MoveFirst();
            rows.Fields(1).SetValue(double(round));
            return rows.Update();
        }
        case 5: {
            QByteArray lines;
            for (int i = 0; i < kImported; ++i) {
                const QDateTime moment = QDateTime(QDate(2009, 7, 6), QTime(0, 0), Qt::UTC)
                                             .addSecs(60 * (round * kImported + i));
                lines += moment.toString(QStringLiteral("MM/dd/yy HH:mm")).toLatin1() + ',' +
                         number.toLatin1() + "\r\n";
            }
            WriteBytes(folder + QStringLiteral("/logger.csv"), lines);
            return ImportFile(folder + QStringLiteral("/logger.csv"));
        }
        case 6:  // the records of the imports before this round's
            return StationConnection->Execute(
                QStringLiteral("DELETE * FROM Records WHERE chan1 < %1 AND DateTime > #1/1/2000#")
                    .arg(round));
        default: {
            StationShape shape{
                .importType = 0,
                .dateWidth = static_cast<std::int16_t>(round % 30000),
                .channels = {
                    {.width = 9, .units = number, .label = number, .description = number}}};
            return ReshapeStation(shape);
        }
    }
}

// The round that the station holds of a kind; -1 if it holds parts of several, or nothing.
int RoundIn(const QString& path, int kind) {
    static const std::array<const char*, kKinds> queries{
        "SELECT CASE WHEN count(*) = 2 AND min(read1) = max(read1) AND min(notes) = max(notes) "
        "THEN min(notes) END FROM Calibration",
        "SELECT c FROM ConversionEq WHERE RatingTable = 0",
        "SELECT CASE WHEN count(*) = 2 AND min(flow) = max(flow) AND min(flow) = max(notes) + 0 "
        "THEN "
        "min(flow) END FROM ConversionT JOIN ConversionEq USING (chan) WHERE RatingTable = 1",
        "SELECT notes FROM Information LIMIT 1",
        "SELECT chan1 FROM Records WHERE \"DateTime\" < 31000",
        "SELECT max(chan1) FROM Records WHERE \"DateTime\" > 31000",
        "SELECT min(chan1) FROM Records WHERE \"DateTime\" > 31000",
        "SELECT CASE WHEN reclabel = recdesc AND recdesc = recsta THEN reclabel END FROM "
        "Information LIMIT 1",
    };
    bool isNumber = false;
    const double round =
        DumpTable(path, QString::fromLatin1(queries[static_cast<std::size_t>(kind)]))
            .toDouble(&isNumber);
    return isNumber ? static_cast<int>(round) : -1;
}

// Reports each begun and each finished save through the pipe: kind and round, positive or negative.
[[noreturn]] void SaveUntilKilled(const QString& path, int round, int pipe) {
    FakePanel panel;
    MessageLog messages;
    for (;; ++round) {
        if (!OpenDB(path)) {
            _exit(2);
        }
        StationPath = path;
        for (int kind = 0; kind < kKinds; ++kind) {
            const std::array<int, 2> begun{kind, round};
            const std::array<int, 2> done{kind, -round};
            if (::write(pipe, begun.data(), sizeof begun) < 0) {
                _exit(2);
            }
            messages.texts.clear();
            Save(kind, round, panel, QFileInfo(path).absolutePath());
            const bool isDone = messages.texts.isEmpty() ||
                                messages.texts == QStringList(ImportMessage(kImported, 0, 0));
            if (!isDone || ::write(pipe, done.data(), sizeof done) < 0) {
                _exit(2);
            }
        }
        CloseDB();
    }
}

}  // namespace

int main(int argc, char** argv) {
    const QCoreApplication application(argc, argv);
    const int kills = argc > 1 ? std::atoi(argv[1]) : 0;
    QRandomGenerator chance(argc > 2 ? static_cast<quint32>(std::atoi(argv[2])) : 1);
    const ScriptedDoors doors;
    StationFixture station;
    station.WithRecord("1982-02-18", {1});
    for (int kind = 0; kind < kKinds; ++kind) {
        const MessageLog messages;
        Save(kind, 1, station.panel, station.Folder());
    }
    station.Close();
    std::array<int, kKinds> begun{};
    std::array<int, kKinds> done{};
    begun.fill(1);
    done.fill(1);
    int lost = 0;
    int unopened = 0;
    for (int kill = 0; kill < kills; ++kill) {
        int ends[2];
        if (::pipe(ends) != 0) {
            return 2;
        }
        const int round = *std::max_element(begun.begin(), begun.end()) + 1;
        const pid_t child = fork();
        if (child == 0) {
            SaveUntilKilled(station.Path(), round, ends[1]);
        }
        ::close(ends[1]);
        ::usleep(static_cast<useconds_t>(chance.bounded(150'000)));
        ::kill(child, SIGKILL);
        int status = 0;
        ::waitpid(child, &status, 0);
        std::array<int, 2> report{};
        while (::read(ends[0], report.data(), sizeof report) == sizeof report) {
            const auto kind = static_cast<std::size_t>(report[0]);
            (report[1] < 0 ? done : begun)[kind] = std::abs(report[1]);
        }
        ::close(ends[0]);
        const MessageLog messages;
        if (!WIFSIGNALED(status) || !OpenDB(station.Path())) {
            ++unopened;
            std::printf("kill %d: %s\n", kill, qPrintable(messages.texts.join(u'|')));
            break;
        }
        StationConnection->Close();
        for (int kind = 0; kind < kKinds; ++kind) {
            const auto index = static_cast<std::size_t>(kind);
            const int found = RoundIn(station.Path(), kind);
            if (found < done[index] || found > begun[index]) {
                ++lost;
                std::printf("kill %d: kind %d holds %d, saved %d, begun %d\n", kill, kind, found,
                            done[index], begun[index]);
            }
        }
        const QString imported =
            QStringLiteral("SELECT count(*) FROM Records WHERE chan1 = %1 AND \"DateTime\" > 31000")
                .arg(done[5]);
        if (begun[6] <= done[5] &&
            DumpTable(station.Path(), imported) != QString::number(kImported)) {
            ++lost;
            std::printf("kill %d: records of import %d are missing\n", kill, done[5]);
        }
        if (DumpTable(station.Path(), QStringLiteral("PRAGMA integrity_check")) !=
            QStringLiteral("ok")) {
            ++unopened;
        }
    }
    std::printf("%d kills, %d saves missing, %d files unopened, %d rounds\n", kills, lost, unopened,
                *std::max_element(begun.begin(), begun.end()));
    return lost + unopened == 0 ? 0 : 1;
}
