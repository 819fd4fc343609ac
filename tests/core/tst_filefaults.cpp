// A station whose medium fails, or loses its power, at each of the calls that opening, saving and
// closing make on the files of its folder. What was reported as saved is there afterwards, and
// every file opens.
#include <algorithm>
#include <cerrno>
#include <functional>

#include "import/Import.h"
#include "store/Journal.h"
#include "store/RatingStore.h"
#include "store/StationInPlace.h"
#include "tests/support/CoreTest.h"
#include "tests/support/FileCalls.h"

using namespace rillbook;

namespace {

using Lasting = FileCalls::Lasting;
using Item = StationPanel::Item;

// A save raises, or the user gets a message, if it fails.
struct Save {
    const char* name;
    std::function<void(StationFixture&)> run;
};

const std::vector<Save>& Saves() {
    static const std::vector<Save> saves{
        {"journal",
         [](auto&) {
             WriteJournal(1, {{true, At("2003-01-01"), 3, 4, {}, u"ice"_qs}});
         }},
        {"equation",
         [](auto&) {
             WriteEquation(1, At("2002-01-01"),
                           {.time = At("2003-01-01"), .A = 1, .r = 2, .c = 3, .notes = {}});
         }},
        {"table",
         [](auto&) {
             WriteTable(1, At("2002-03-01"), {.time = At("2003-03-01"), .notes = u"new"_qs},
                        {{5, 50}, {6, 60}});
         }},
        {"rating deleted", [](auto&) { DeleteRating(1, At("2003-03-01")); }},
        {"record edited",
         [](auto&) {
             Connection editor;
             editor.Open(StationConnection->ConnectionString());
             Recordset rows;
             rows.Open(u"SELECT DateTime, chan1 FROM Records"_qs, editor, adOpenStatic,
                       adLockOptimistic);
             rows.MoveLast();
             rows.Fields(1).SetValue(7);
             rows.Update();
         }},
        {"import",
         [](auto&) {
             QByteArray lines;
             for (int day = 1; day <= 9; ++day) {
                 lines += "05/0" + QByteArray::number(day) + "/02 00:00,1\r\n";
             }
             QTemporaryDir other;
             WriteBytes(other.filePath(u"logger.csv"_qs), lines);
             ImportFile(other.filePath(u"logger.csv"_qs));
         }},
        {"header",
         [](StationFixture& station) {
             station.panel.texts[Item::Name] = u"Weir"_qs;
             WriteStationInfo();
         }},
        {"records deleted",
         [](auto&) { StationConnection->Execute(u"DELETE * FROM Records WHERE chan1 = 1"_qs); }},
    };
    return saves;
}

const QString kCounts = ImportMessage(9, 0, 0);

// The tables, of which an import that ends early has some rows.
struct Content {
    QString records;
    QString others;
    friend bool operator==(const Content&, const Content&) = default;
    bool IsBetween(const Content& before, const Content& after) const {
        const QStringList some = records.split(u'\n');
        const QStringList all = after.records.split(u'\n');
        const QStringList former = before.records.split(u'\n');
        const auto isIn = [](const QStringList& lines) {
            return [&lines](const QString& line) { return lines.contains(line); };
        };
        return *this == before ||
               (others == before.others && std::all_of(some.begin(), some.end(), isIn(all)) &&
                std::all_of(former.begin(), former.end(), isIn(some)));
    }
};

Content ContentOf(const QString& path) {
    Content content{DumpTable(path, u"Records"_qs), {}};
    for (const auto& table : {u"Information"_qs, u"Calibration"_qs, u"ConversionEq"_qs,
                              u"ConversionT"_qs, u"PRAGMA integrity_check"_qs}) {
        content.others += DumpTable(path, table) + u'\n';
    }
    return content;
}

// Fresh at its path for each trial: opened, and left with the readings in its companion.
class Trial {
public:
    explicit Trial(std::size_t saves) {
        station.WithRecord("2002-01-01 00:15", {1.5, 2.5})
            .WithRecord("2002-01-01 00:30", {1.75, {}})
            .WithJournalRow("2002-01-01", 1, 1, 2)
            .WithEquation("2002-01-01", 1, 0.1, 1.5, 20)
            .WithTable("2002-03-01", 1, {{1, 10}, {2, 20}}, u"old"_qs);
        WriteStationInfo();
        for (std::size_t i = 0; i < saves; ++i) {
            Saves()[i].run(station);
        }
        messages.texts.clear();
    }

    // Whether the messages of a save say that it is done.
    bool IsReportedAsDone() const {
        return messages.texts.isEmpty() || messages.texts == QStringList(kCounts);
    }

    MessageLog messages;
    StationFixture station{2};
};

// The content after so many saves, in a file at rest.
const Content& After(std::size_t saves) {
    static std::map<std::size_t, Content> known;
    if (known.find(saves) == known.end()) {
        Trial trial(saves);
        StationConnection->Close();
        known[saves] = ContentOf(trial.station.Path());
    }
    return known[saves];
}

// What the file holds for whoever opens it next.
Content ContentAtNextOpening(const QString& path) {
    if (!OpenDB(path)) {
        return {u"It does not open"_qs, {}};
    }
    StationConnection->Close();
    return ContentOf(path);
}

// SQLite waits ten seconds for a lock that never comes.
unsigned KindsOf(Lasting lasting) {
    return lasting == Lasting::Once ? FileCalls::Any : FileCalls::Any & ~FileCalls::Lock;
}

QString Place(int call, Lasting lasting, const Trial& trial) {
    return u"call %1%2: %3"_qs.arg(call)
        .arg(lasting == Lasting::Once ? u""_qs : u" and all that follow"_qs)
        .arg(trial.messages.texts.join(u'|'));
}

}  // namespace

class TestFileFaults : public QObject {
    Q_OBJECT

private Q_SLOTS:
    // Before there is another station.
    void initTestCase() {
        for (std::size_t saves = 0; saves <= Saves().size(); ++saves) {
            After(saves);
        }
    }

    void failingSave_data() { AddSaves(); }
    void failingSave() {
        QFETCH(std::size_t, save);
        int failures = 0;
        for (const Lasting lasting : {Lasting::Once, Lasting::FromThenOn}) {
            for (int call = 1;; ++call) {
                Trial trial(save);
                FileCalls calls(trial.station.Folder());
                calls.Fail(call, lasting, EIO, KindsOf(lasting));
                bool isDone = false;
                try {
                    Saves()[save].run(trial.station);
                    isDone = trial.IsReportedAsDone();
                } catch (const AdoError&) {
                }
                if (!calls.HasStruck()) {
                    break;
                }
                failures += isDone ? 0 : 1;
                StationConnection->Close();
                calls.Fail(0);
                const Content found = ContentAtNextOpening(trial.station.Path());
                QVERIFY2(found == After(save + 1) ||
                             (!isDone && found.IsBetween(After(save), After(save + 1))),
                         qPrintable(Place(call, lasting, trial)));
            }
        }
        QVERIFY(failures >= 5);
    }

    // The header of a station that couldn't be read whole would be written over another's.
    void failingOpening_data() {
        const DataRows<QString, bool> row("state", "companion");
        row("at rest", false);
        row("of a killed program", true);
    }
    void failingOpening() {
        QFETCH(bool, companion);
        const std::size_t all = Saves().size();
        int failures = 0;
        // The opening of a station that was left open counts the records.
        const auto storeStatistics = [] {
            RefreshRecordStats();
            WriteStationInfo();
        };
        Trial counted(all);
        storeStatistics();
        StationConnection->Close();
        const Content after = ContentOf(counted.station.Path());
        for (const Lasting lasting : {Lasting::Once, Lasting::FromThenOn}) {
            for (int call = 1;; ++call) {
                Trial trial(all);
                const StationFixture& station = trial.station;
                storeStatistics();
                FileCalls::Medium killed;
                {
                    FileCalls calls(station.Folder());
                    calls.KeepMedia();
                    CloseDB();
                    killed = calls.Media().front();
                }
                if (companion) {
                    killed.WriteTo(station.Folder());
                }
                trial.station.panel.texts = {{Item::Name, u"another station"_qs}};
                StationInfo.Channels = 77;
                ChannelInfo[1].RecDesc = u"another channel"_qs;
                FileCalls calls(station.Folder());
                calls.Fail(call, lasting, EIO, KindsOf(lasting));
                const bool isOpen = OpenDB(station.Path());
                if (!calls.HasStruck()) {
                    break;
                }
                calls.Fail(0);
                if (isOpen) {
                    QCOMPARE(trial.messages.texts, QStringList());
                    CloseDB();
                } else {
                    ++failures;
                    QCOMPARE(StationConnection->State(), 0);
                    QCOMPARE(StationInfo.Channels, 77);
                    QCOMPARE(station.panel.texts.size(), 1);
                    const QString line = station.Path() + u" not found!\n"_qs;
                    QVERIFY(trial.messages.texts.join(u'|').startsWith(line) &&
                            trial.messages.texts.join(u'|').size() > line.size() + 5);
                }
                QVERIFY2(ContentAtNextOpening(station.Path()) == after,
                         qPrintable(Place(call, lasting, trial)));
            }
        }
        QVERIFY(failures >= 10);
    }

    void failingClosing() {
        const std::size_t all = Saves().size();
        Trial closed(all);
        closed.station.panel.texts[Item::Notes] = u"typed"_qs;
        CloseDB();
        const Content after = ContentOf(closed.station.Path());
        for (const Lasting lasting : {Lasting::Once, Lasting::FromThenOn}) {
            for (int call = 1;; ++call) {
                Trial trial(all);
                trial.station.panel.texts[Item::Notes] = u"typed"_qs;
                FileCalls calls(trial.station.Folder());
                calls.Fail(call, lasting, EIO, KindsOf(lasting));
                CloseDB();
                if (!calls.HasStruck()) {
                    break;
                }
                calls.Fail(0);
                const QString companion = trial.station.Path() + u"-wal"_qs;
                const bool isFolded = QFileInfo(companion).size() == 0;
                const Content found = ContentAtNextOpening(trial.station.Path());
                QVERIFY2(found == after || (!trial.IsReportedAsDone() && found == After(all)),
                         qPrintable(Place(call, lasting, trial)));
                QVERIFY2(isFolded || !trial.IsReportedAsDone(),
                         qPrintable(Place(call, lasting, trial)));
            }
        }
    }

    // A loss of power at each call from a station's opening to its closing.
    void lossOfPower() {
        const std::size_t all = Saves().size();
        Trial trial(0);
        trial.station.Close();
        std::vector<FileCalls::Medium> media;
        {
            FileCalls calls(trial.station.Folder());
            calls.KeepMedia();
            trial.station.Open();
            for (const Save& save : Saves()) {
                save.run(trial.station);
                calls.Report();
            }
            CloseDB();
            media = calls.Media();
        }
        QVERIFY(trial.IsReportedAsDone());
        QVERIFY(media.size() > 50);
        for (const FileCalls::Medium& medium : media) {
            medium.WriteTo(trial.station.Folder());
            const auto saves = static_cast<std::size_t>(medium.reports);
            const Content found = ContentAtNextOpening(trial.station.Path());
            QVERIFY2(found == After(saves) ||
                         (saves < all && (found == After(saves + 1) ||
                                          found.IsBetween(After(saves), After(saves + 1)))),
                     qPrintable(u"%1 after %2 saves\n%3"_qs.arg(medium.call)
                                    .arg(saves)
                                    .arg(found.records + found.others)));
        }
    }

    // A new station, a project and a station saved elsewhere: complete, and under their names.
    void lossOfPowerAfterANewFile() {
        const QTemporaryDir elsewhere;
        ScriptedDoors doors;
        StationFixture station;
        station.WithRecord("2002-01-01", {1.5});
        const QString path = station.Folder() + u"/new.mdb"_qs;
        FileCalls calls(station.Folder());
        calls.KeepMedia();
        CopyStationTemplate(path);
        calls.Report();
        WriteProjectFile(station.Folder() + u"/p.prj"_qs, {});
        calls.Report();
        QFile::remove(station.Path());
        doors.ExpectMessage(station.Path() +
                                u" was removed or replaced by another program while it "
                                "was open. Nothing can be saved in it. Save the "
                                "station under another name?"_qs,
                            MsgBoxAnswer::Yes);
        doors.AnswerFileDialog(station.Folder() + u"/saved.mdb"_qs);
        QVERIFY(StationIsInPlace());
        calls.Report();
        CloseDB();
        const QByteArray project = ReadBytes(station.Folder() + u"/p.prj"_qs);
        for (const FileCalls::Medium& medium : calls.Media()) {
            medium.WriteTo(elsewhere.path());
            const QString place = QString::number(medium.call);
            const QString copy = elsewhere.filePath(u"new.mdb"_qs);
            QVERIFY2(medium.reports < 1 || ReadBytes(copy) == StationTemplate(), qPrintable(place));
            QVERIFY2(medium.reports < 2 || medium.files[u"p.prj"_qs] == project, qPrintable(place));
            QVERIFY2(medium.reports < 3 ||
                         DumpTable(elsewhere.filePath(u"saved.mdb"_qs), u"Records"_qs) ==
                             u"2002-01-01 00:00:00 | 1.5"_qs,
                     qPrintable(place));
        }
    }

    void reportsRecordsThatAreNotOnTheDisk() {
        Trial trial(5);
        FileCalls calls(trial.station.Folder());
        calls.Fail(1, Lasting::FromThenOn, EIO, FileCalls::Sync);
        Saves()[5].run(trial.station);
        QCOMPARE(trial.messages.texts,
                 QStringList({u"! 9 of the stored records could not be brought to the disk!\n"
                              "disk I/O error"_qs,
                              kCounts}));
        calls.Fail(0);
    }

private:
    static void AddSaves() {
        QTest::addColumn<std::size_t>("save");
        for (std::size_t i = 0; i < Saves().size(); ++i) {
            QTest::newRow(Saves()[i].name) << i;
        }
    }
};

QTEST_GUILESS_MAIN(TestFileFaults)
#include "tst_filefaults.moc"
