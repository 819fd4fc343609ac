// Saves that replace rows and the change of a station's shape, cut off at each of their statements:
// what stands in the file afterwards is the old or the new, whole.
#include <sys/wait.h>
#include <unistd.h>

#include <functional>

#include "import/StationShape.h"
#include "platform/ado/AdoError.h"
#include "store/Journal.h"
#include "store/RatingStore.h"
#include "tests/support/CoreTest.h"
#include "tests/support/StatementFault.h"

using namespace rillbook;

namespace {

using Save = std::function<void()>;
using Kind = StatementFault::Kind;

void SaveJournal() {
    const JournalRow used{true, At("2003-01-01"), 3, 4, {}, {}};
    const JournalRow unused{false, At("2003-02-01"), {}, {}, 25, u"ice"_qs};
    WriteJournal(1, {used, unused});
}

void SaveEquation() {
    WriteEquation(1, At("2002-01-01"),
                  {.time = At("2003-01-01"), .A = 1, .r = 2, .c = 3, .notes = {}});
}

void SaveTable() {
    WriteTable(1, At("2002-03-01"), {.time = At("2003-03-01"), .notes = u"new"_qs},
               {{5, 50}, {6, 60}, {7, 70}});
}

void Reshape(int channels) {
    StationShape shape{.importType = 3, .dateWidth = 12, .channels = {}};
    for (int chan = 1; chan <= channels; ++chan) {
        shape.channels.push_back({.width = static_cast<std::int16_t>(chan),
                                  .units = u"ft"_qs,
                                  .label = u"Stage %1"_qs.arg(chan),
                                  .description = u"Well"_qs});
    }
    ReshapeStation(shape);
}

void Grow() {
    Reshape(4);
}

void Shrink() {
    Reshape(1);
}

void Fill(StationFixture& station) {
    station.WithRecord("2002-01-01 00:15", {1.5, 2.5})
        .WithRecord("2002-01-01 00:30", {1.75, {}})
        .WithJournalRow("2002-01-01", 1, 1, 2)
        .WithJournalRow("2002-02-01", 1, 2, 2, false, 40, u"weeds"_qs)
        .WithJournalRow("2002-02-01", 2, 7, 8)
        .WithEquation("2002-01-01", 1, 0.1, 1.5, 20)
        .WithTable("2002-03-01", 1, {{1, 10}, {2, 20}}, u"old"_qs);
    // As the opening after a kill would count them.
    RefreshRecordStats();
    WriteStationInfo();
}

QString Content(const StationFixture& station) {
    QStringList text;
    for (const char* table : {"Information", "Records", "Calibration", "ConversionEq",
                              "ConversionT", "PRAGMA integrity_check"}) {
        text += station.Dump(table);
    }
    return text.join(u'\n');
}

QString Contents(const Save& save) {
    StationFixture station(2);
    Fill(station);
    if (save) {
        save();
    }
    station.Close();
    return Content(station);
}

// What another process makes of the station before its end; nothing where the end was its own.
bool IsKilledWhileSaving(const QString& path, const Save& save, int statement) {
    const pid_t child = fork();
    if (child == 0) {
        OpenDB(path);
        {
            const StatementFault fault(statement, Kind::Kills);
            save();
        }
        _exit(0);
    }
    int status = 0;
    waitpid(child, &status, 0);
    return WIFSIGNALED(status);
}

}  // namespace

class TestSaveFaults : public QObject {
    Q_OBJECT

private Q_SLOTS:
    void failed_data() { AddSaves(); }
    void failed() {
        QFETCH(Save, save);
        const QString before = Contents({});
        const QString after = Contents(save);
        QVERIFY(before != after);
        int failures = 0;
        for (int statement = 1;; ++statement) {
            MessageLog messages;
            StationFixture station(2);
            Fill(station);
            const StationInfoData info = StationInfo;
            bool hasStruck = false;
            bool hasFailed = false;
            {
                const StatementFault fault(statement, Kind::Fails);
                try {
                    save();
                } catch (const AdoError&) {
                    hasFailed = true;
                }
                hasStruck = fault.HasStruck();
            }
            if (!hasStruck) {
                break;
            }
            failures += hasFailed ? 1 : 0;
            QCOMPARE(StationConnection->State(), 1);
            if (hasFailed) {
                QCOMPARE(StationInfo.Channels, info.Channels);
            }
            station.Close();
            QVERIFY2(Content(station) == (hasFailed ? before : after),
                     qPrintable(QString::number(statement)));
            QCOMPARE(FolderNames(station), u"station.mdb"_qs);
        }
        QVERIFY(failures >= 5);
    }

    void killed_data() { AddSaves(); }
    void killed() {
        QFETCH(Save, save);
        const QString before = Contents({});
        const QString after = Contents(save);
        for (int statement = 1;; ++statement) {
            MessageLog messages;
            StationFixture station(2);
            Fill(station);
            station.Close();
            const bool isKilled = IsKilledWhileSaving(station.Path(), save, statement);
            station.Open();
            QCOMPARE(StationConnection->State(), 1);
            station.Close();
            const QString found = Content(station);
            QVERIFY2(found == after || (isKilled && found == before),
                     qPrintable(QString::number(statement)));
            if (!isKilled) {
                QVERIFY(statement > 5);
                break;
            }
        }
    }

private:
    static void AddSaves() {
        QTest::addColumn<Save>("save");
        QTest::newRow("journal") << Save(SaveJournal);
        QTest::newRow("equation") << Save(SaveEquation);
        QTest::newRow("table") << Save(SaveTable);
        QTest::newRow("more channels") << Save(Grow);
        QTest::newRow("fewer channels") << Save(Shrink);
    }

    static QString FolderNames(const StationFixture& station) {
        return QDir(station.Folder()).entryList(QDir::Files).join(u' ');
    }
};

QTEST_GUILESS_MAIN(TestSaveFaults)
#include "tst_savefaults.moc"
