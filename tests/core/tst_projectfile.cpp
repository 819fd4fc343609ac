#include <QTemporaryDir>
#include <QtTest>

#include "store/FileError.h"
#include "store/ProjectFile.h"
#include "tests/support/CompareEach.h"
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

    void writesItsLinesAndReadsThemBack() {
        ProjectContents contents{.stations = {{u"C:\\Data\\creek.mdb"_qs, u"creek.mdb"_qs}},
                                 .reportBeginDate = At("2002-01-01"),
                                 .reportPeriodCode = u"921"_qs,
                                 .name = u"Upper basin"_qs};
        WriteProjectFile(path_, contents);
        QCOMPARE(ReadBytes(path_), QByteArray(kCreek).replace("202\"", "100\""));
        contents.stations.push_back({u"/a,b/Øvre Δέλτα/川.mdb"_qs, u"t"_qs});
        contents.reportBeginDate = At("2002-01-01 13:05:09");
        contents.name = u"Rhône, \u2013 Река"_qs;
        WriteProjectFile(path_, contents);
        QCOMPARE(Story(ReadProjectFile(path_, {})),
                 u"C:\\Data\\creek.mdb|creek.mdb\n/a,b/Øvre Δέλτα/川.mdb|t\n"
                 "2002-01-01 13:05:09|921|Rhône, \u2013 Река|"_qs);
    }

    // Whatever the byte at which a file ends, what stands before it is read and nothing is made up.
    void readsWhatACutFileHolds() {
        const ProjectContents defaults{.stations = {},
                                       .reportBeginDate = At("1990-05-05"),
                                       .reportPeriodCode = u"911"_qs,
                                       .name = u"kept"_qs};
        const QString station = u"C:\\Data\\creek.mdb|creek.mdb\n"_qs;
        const QString kept = u"1990-05-05 00:00:00|911|kept|"_qs;
        const QString read = u"2002-01-01 00:00:00|921|kept|"_qs;
        const qsizetype afterStation = kCreek.indexOf("creek.mdb\"\r") + 10;
        const qsizetype afterPeriod = kCreek.indexOf("921\"\r") + 4;
        for (qsizetype size = 0; size < kCreek.size() - 2; ++size) {
            WriteBytes(path_, kCreek.left(size));
            const QString expected = (size < afterStation ? QString() : station) +
                                     (size < afterPeriod ? kept : read) + u"It could not be"_qs;
            const QString story = Story(ReadProjectFile(path_, defaults));
            QCOMPARE(story.left(expected.size()), expected);
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
        const auto end = [](const QString& beginAndCode) {
            ReportPeriodCode = u"kept"_qs;
            const DateTime begin = At(qPrintable(beginAndCode.left(10)));
            return ReportEndFromPeriod(begin, beginAndCode.mid(11)) + u' ' + ReportPeriodCode;
        };
        // February has no day 30.
        CompareEach(end,
                    "2002-01-01 941 => Dec 31, 2002 kept; 2003-03-01 941 => Feb 29, 2004 kept; "
                    "2002-03-15 9312 => Mar 14, 2003 kept; 2002-01-01 922 => Jan 14, 2002 kept; "
                    "2002-01-01 911 => Jan 01, 2002 kept; 2002-01-31 931 => Mar 02, 2002 kept; "
                    "2002-11-15 933 => Feb 14, 2003 kept; 2002-01-01 7312 => Dec 31, 2002 9312; "
                    "2002-01-01  => Dec 31, 2002 9312; 2002-01-01 95 => Dec 31, 2002 9312; "
                    "2002-01-01 94999999999999999999 => Dec 30, 9999 kept");
    }

private:
    QTemporaryDir folder_;
    QString path_;
};

QTEST_GUILESS_MAIN(TestProjectFile)
#include "tst_projectfile.moc"
