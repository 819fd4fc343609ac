#include <QtTest/QtTest>
#include <cmath>

#include "compute/Compute.h"
#include "compute/Summary.h"
#include "import/Import.h"
#include "store/FormStuff.h"
#include "tests/support/PlainFiles.h"
#include "tests/support/ScriptedDoors.h"
#include "tests/support/SeriesText.h"
#include "tests/support/StationFixture.h"

namespace rillbook {

namespace {

const QString kFolder = QStringLiteral(RILLBOOK_SOURCE_DIR "/../shared/data/");

// The lines of a file as columns.
QList<QStringList> Lines(const char* name) {
    QList<QStringList> lines;
    for (const QString& line : QString::fromLatin1(ReadBytes(kFolder + QLatin1String(name)))
                                   .split(QLatin1Char('\n'), Qt::SkipEmptyParts)) {
        lines += line.trimmed().split(QLatin1Char(','));
    }
    return lines;
}

void Import(ScriptedDoors& doors, const char* name, const QString& message) {
    doors.ExpectMessage(message);
    ImportFile(kFolder + QLatin1String(name));
}

}  // namespace

// Loggers' own files against what their owners published.
class TestFieldSeries : public QObject {
    Q_OBJECT

private Q_SLOTS:
    void initTestCase() {
        if (!QDir(kFolder).exists()) {
            QSKIP("The field data isn't on this machine");
        }
    }

    void StageCorrectedByTheJournal() {
        ScriptedDoors doors;
        StationFixture station;
        Import(doors, "type1_stage_raw.csv", ImportMessage(8841, 0, 0));
        Tell(station,
             QStringLiteral("visit 2019-08-21 11:45: 0 9; visit 2019-09-20 10:45: 0 9.75; "
                            "visit 2019-09-20 11:15: 0 9; visit 2019-10-24 11:00: 0 9.3; "
                            "visit 2019-10-24 11:30: 0 9; visit 2019-11-21 13:45: 0 10.5"));
        ChannelInfo[1].Calibration = 1;
        LoadSeries(At("2019-08-21"), At("2019-11-22"), 1);

        const QList<QStringList> expected = Lines("type1_stage_corrected_expected.csv");
        QCOMPARE(InstCount, static_cast<std::int32_t>(expected.size()));
        QStringList differing;
        int byHand = 0;
        for (std::size_t i = 1; i <= static_cast<std::size_t>(InstCount); ++i) {
            const QStringList& row = expected[static_cast<qsizetype>(i) - 1];
            QCOMPARE(MomentText(InstTimes[i]), row[0] + QStringLiteral(":00"));
            if (row[3] == QStringLiteral("1")) {
                ++byHand;
            } else if (!(std::abs(InstValues[i] - row[2].toDouble()) <= 1e-5)) {
                differing += QStringLiteral("%1 %2").arg(row[0], row[2]);
            }
        }
        QCOMPARE(differing.join(QLatin1Char('\n')), QString());
        QCOMPARE(byHand, 3);
    }

    void DailyMeansOfDischarge() {
        ScriptedDoors doors;
        StationFixture station;
        StationInfo.ImportType = 1;
        StationInfo.TimeIncrement = MomentOf(0, 15 * 60);
        Import(doors, "type2_discharge_15min.csv", ImportMessage(216115, 0, 24));
        LoadDailySeries(At("2008-01-01"), At("2016-01-01"), 1);

        QHash<QString, double> means;
        for (std::size_t i = 1; i <= static_cast<std::size_t>(DailyCount); ++i) {
            means.insert(MomentText(DailyDates[i]).left(10), DailyMean[i]);
        }
        int compared = 0;
        int withinHalf = 0;
        int withinOne = 0;
        int withinFive = 0;
        for (const QStringList& row : Lines("type2_discharge_published_daily.csv")) {
            if (row.last() == QStringLiteral("1") && means.contains(row[0])) {
                const double published = row[1].toDouble();
                const double difference = std::abs(means.value(row[0]) - published);
                ++compared;
                withinHalf += difference <= std::max(0.0051 * published, 0.005) ? 1 : 0;
                withinOne += difference <= std::max(0.01 * published, 0.01) ? 1 : 0;
                withinFive += difference <= 0.05 * published ? 1 : 0;
            }
        }
        // The published rule takes trapezoids from midnight to midnight, so that not every day
        // agrees.
        QCOMPARE(QStringLiteral("%1 %2 %3 %4")
                     .arg(compared)
                     .arg(withinHalf)
                     .arg(withinOne)
                     .arg(withinFive),
                 QStringLiteral("1575 1415 1536 1573"));
    }
};

}  // namespace rillbook

QTEST_GUILESS_MAIN(rillbook::TestFieldSeries)
#include "tst_field_series.moc"
