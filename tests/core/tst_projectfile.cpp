#include <QTemporaryDir>
#include <QtTest>

#include "store/FileError.h"
#include "store/ProjectFile.h"
#include "tests/support/Hardship.h"
#include "tests/support/PlainFiles.h"
#include "tests/support/StationFixture.h"

using namespace rillbook;

namespace {

QString Story(const ProjectReading& reading) {
    QString text;
    for (const ProjectStation& station : reading.contents.stations) {
        text += station.path + u'|' + station.title + u'\n';
    }
    return text + MomentText(reading.contents.reportBeginDate) + u'|' +
           reading.contents.reportPeriodCode + u'|' + reading.contents.name + u'|' + reading.fault;
}

const QByteArray kCreek =
    "\"Rillbook\",\"202\"\r\n1\r\n\"C:\\Data\\creek.mdb\",\"creek.mdb\"\r\n"
    "#2002-01-01#,\"921\"\r\n\"Upper basin\"\r\n";

}  // namespace

class TestProjectFile : public QObject {
    Q_OBJECT

private Q_SLOTS:
    void init() { path_ = folder_.filePath(QStringLiteral("basin.prj")); }

    void writesTheDocumentedLines() {
        WriteProjectFile(
            path_,
            {.stations = {{QStringLiteral("C:\\Data\\creek.mdb"), QStringLiteral("creek.mdb")}},
             .reportBeginDate = At("2002-01-01"),
             .reportPeriodCode = QStringLiteral("921"),
             .name = QStringLiteral("Upper basin")});
        QCOMPARE(ReadBytes(path_), QByteArray(kCreek).replace("202\"", "100\""));
    }

    void readsBackWhatItWrote() {
        for (const char* begin : {"2002-01-01", "2002-01-01 13:05:09"}) {
            WriteProjectFile(path_, {.stations = {{u"/a,b/c.mdb"_qs, u"t"_qs},
                                                  {u"/Øvre Δέλτα/川.mdb"_qs, u"u"_qs}},
                                     .reportBeginDate = At(begin),
                                     .reportPeriodCode = u"9312"_qs,
                                     .name = u"Rhône, \u2013 Река"_qs});
            QCOMPARE(Story(ReadProjectFile(path_, {})), u"/a,b/c.mdb|t\n/Øvre Δέλτα/川.mdb|u\n"_qs +
                                                            MomentText(At(begin)) +
                                                            u"|9312|Rhône, \u2013 Река|"_qs);
        }
    }

    // Whatever the byte at which a file ends, what stands before it is read and nothing is made up.
    void readsWhatACutFileHolds() {
        const ProjectContents defaults{.stations = {},
                                       .reportBeginDate = At("1990-05-05"),
                                       .reportPeriodCode = u"911"_qs,
                                       .name = u"kept"_qs};
        const QString station = u"C:\\Data\\creek.mdb|creek.mdb\n"_qs;
        const QString kept = u"1990-05-05 00:00:00|911|kept|"_qs;
        const qsizetype afterStation = kCreek.indexOf("creek.mdb\"\r") + 10;
        const qsizetype afterPeriod = kCreek.indexOf("921\"\r") + 4;
        for (qsizetype size = 0; size < kCreek.size() - 2; ++size) {
            WriteBytes(path_, kCreek.left(size));
            const QString story = Story(ReadProjectFile(path_, defaults));
            const QString expected = size < afterStation ? kept
                                     : size < afterPeriod
                                         ? station + kept
                                         : station + u"2002-01-01 00:00:00|921|kept|"_qs;
            QVERIFY2(story.startsWith(expected + u"It could not be read from "_qs),
                     qPrintable(QString::number(size) + u": "_qs + story));
        }
        WriteBytes(path_, kCreek.chopped(2));
        QVERIFY(Story(ReadProjectFile(path_, defaults)).endsWith(u"|921|Upper basin|"_qs));
    }

    // The first line may hold any two items.
    void doesNotBelieveAnAbsurdCount() {
        WriteBytes(path_, "\"x, y\",202\r\n99999999999\r\n\"a.mdb\",\"a\"\r\n");
        QCOMPARE(Story(ReadProjectFile(path_, {})),
                 u"a.mdb|a\n"_qs + MomentText(0) +
                     u"|||It could not be read from station 2 of 99999999999 on."_qs);
    }

    void leavesTheOldFileWhereTheNewOneCannotBeWritten() {
        const QString inNoFolder = folder_.filePath(QStringLiteral("gone/basin.prj"));
        QVERIFY_EXCEPTION_THROWN(WriteProjectFile(inNoFolder, {}), FileError);
        WriteBytes(path_, kCreek);
        {
            const FullDisk full(8);
            QVERIFY_EXCEPTION_THROWN(WriteProjectFile(path_, {}), FileError);
            QVERIFY_EXCEPTION_THROWN(KeepOldProjectFile(path_), FileError);
        }
        QCOMPARE(ReadBytes(path_), kCreek);
        KeepOldProjectFile(path_);
        WriteProjectFile(path_, {});
        QCOMPARE(ReadBytes(path_ + u".bak"_qs), kCreek);
        QVERIFY(ReadBytes(path_) != kCreek);
    }

    void periodEndsOn() {
        const auto end = [](const char* begin, const char* code) {
            ReportPeriodCode = u"kept"_qs;
            const QString day = ReportEndFromPeriod(At(begin), QString::fromLatin1(code));
            return day + u' ' + ReportPeriodCode;
        };
        QCOMPARE(end("2002-01-01", "941"), u"Dec 31, 2002 kept"_qs);
        QCOMPARE(end("2003-03-01", "941"), u"Feb 29, 2004 kept"_qs);
        QCOMPARE(end("2002-03-15", "9312"), u"Mar 14, 2003 kept"_qs);
        QCOMPARE(end("2002-01-01", "922"), u"Jan 14, 2002 kept"_qs);
        QCOMPARE(end("2002-01-01", "911"), u"Jan 01, 2002 kept"_qs);
        QCOMPARE(end("2002-01-31", "931"), u"Mar 02, 2002 kept"_qs);  // February has no day 30
        QCOMPARE(end("2002-11-15", "933"), u"Feb 14, 2003 kept"_qs);
        QCOMPARE(end("2002-01-01", "7312"), u"Dec 31, 2002 9312"_qs);
        QCOMPARE(end("2002-01-01", ""), u"Dec 31, 2002 9312"_qs);
        QCOMPARE(end("2002-01-01", "95"), u"Dec 31, 2002 9312"_qs);
        QCOMPARE(end("2002-01-01", "94999999999999999999"), u"Dec 30, 9999 kept"_qs);
    }

private:
    QTemporaryDir folder_;
    QString path_;
};

QTEST_GUILESS_MAIN(TestProjectFile)
#include "tst_projectfile.moc"
