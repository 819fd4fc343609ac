#include <QtTest/QtTest>
#include <cmath>

#include "compute/Compute.h"
#include "platform/ado/Recordset.h"
#include "store/FormStuff.h"
#include "store/StationDatabase.h"
#include "tests/support/DataRows.h"
#include "tests/support/ScriptedDoors.h"
#include "tests/support/SeriesText.h"
#include "tests/support/StationFixture.h"

namespace rillbook {

const DateTime kBegin = At("2002-03-01");
const DateTime kEnd = At("2002-03-02");

class TestSeries : public QObject {
    Q_OBJECT

private Q_SLOTS:
    void BoundsAreInclusive_data() {
        const DataRows<QString, DateTime, DateTime, QString> row("bounds", "from", "to", "series");
        // Reports pass their last day + 1, the yearly sheet its last day + 0.99: 23:45:36.
        row("a whole day and the midnight behind it", kBegin, kBegin + 1.0,
            "2002-03-01 00:00:00 2\n2002-03-01 23:45:36 3\n2002-03-01 23:45:37 4\n"
            "2002-03-02 00:00:00 5");
        row("to 0.99 of a day", kBegin, kBegin + 0.99,
            "2002-03-01 00:00:00 2\n2002-03-01 23:45:36 3");
        row("one instant", kEnd, kEnd, "2002-03-02 00:00:00 5");
        row("with a time of day", At("2002-02-28 23:59:59"), At("2002-03-01 00:00:01"),
            "2002-02-28 23:59:59 1\n2002-03-01 00:00:00 2");
    }
    void BoundsAreInclusive() {
        QFETCH(DateTime, from);
        QFETCH(DateTime, to);
        ScriptedDoors doors;
        StationFixture station;
        station.WithRecord("2002-03-02", {5})
            .WithRecord("2002-02-28 23:59:59", {1})
            .WithRecord("2002-03-01", {2})
            .WithRecord("2002-03-01 23:45:37", {4})
            .WithRecord("2002-03-01 23:45:36", {3})
            .WithRecord("2002-03-02 00:00:01", {6});
        LoadSeries(from, to, 1);
        QTEST(SeriesText(), "series");
    }

    void Corrections_data() {
        const DataRows<QString, bool, bool, QString, QString> row("rule", "offset", "rating",
                                                                  "story", "series");
        // 3 * (1 + 1 - 1)^2; 3 * (2 + 2 - 1)^2; 100 * (3 + 3)
        row("the rating sees the corrected reading", true, true,
            "readings 2002-03-01 every 60: 1 2 3; visit 2002-03-01: 1 2; "
            "visit 2002-03-01 02:00: 1 4; equation 2002-01-01: 1 2 3; "
            "table 2002-03-01 01:00: 0 0 1 100",
            "2002-03-01 00:00:00 3\n2002-03-01 01:00:00 27\n2002-03-01 02:00:00 600");
        // The table gives 30 whatever the depth.
        row("a reading that the journal voids", true, true,
            "readings 2002-03-01 every 60: 1 2 3; visit 2002-03-01: 0 1; "
            "visit 2002-03-01 01:00: 0 -; visit 2002-03-01 01:30: 0 1; table 2002-01-01: 2 30",
            "2002-03-01 00:00:00 30\n2002-03-01 01:00:00 nan\n2002-03-01 02:00:00 30");
        row("records without a reading are left out", false, false,
            "readings 2002-03-01 every 15: 1 - 3; visit 2002-03-01: 0 1; equation 2002-01-01: 1 1 "
            "1",
            "2002-03-01 00:00:00 1\n2002-03-01 00:30:00 3");
    }
    void Corrections() {
        QFETCH(bool, offset);
        QFETCH(bool, rating);
        QFETCH(QString, story);
        ScriptedDoors doors;
        StationFixture station(2);
        Tell(station, story);
        Tell(station, QStringLiteral("visit2 2002-01-01: 0 1"));
        ChannelInfo[1].Calibration = offset ? 1 : 2;  // only 1 turns a step on
        ChannelInfo[1].Conversion = rating ? 1 : 2;
        ChannelInfo[2].Calibration = 1;
        LoadSeries(kBegin, kEnd, 1);
        LoadSeries(kBegin, kEnd, 2);  // rows, but no reading in any: nothing is told
        QCOMPARE(InstCount, 0);
        QCOMPARE(InstTimes.size(), 5U);  // 0 to N + 1
        QCOMPARE(InstValues.size(), 5U);
        LoadSeries(kBegin, kEnd, 1);  // nothing is carried over
        QTEST(SeriesText(), "series");
    }

    void RawReadingsNeedNoReferences() {
        ScriptedDoors doors;
        StationFixture station(2);
        station.WithRecord("2002-03-01", {7, 0.1});
        for (const char* table : {"Calibration", "ConversionEq", "ConversionT"}) {
            StationConnection->Execute(QStringLiteral("DROP TABLE ") + QLatin1String(table));
        }
        LoadSeries(kBegin, kEnd, 2);
        QCOMPARE(InstCount, 1);
        QCOMPARE(InstValues[1], static_cast<double>(0.1F));  // as the store keeps it, in 32 bits
    }

    void WhatIsMissingIsTold_data() {
        const QString noRating = QStringLiteral("No rating/conversion data this channel");
        const QString noOffset = QStringLiteral("No offset data for this channel");
        const QString noData = QStringLiteral("No data within dates!");
        const DataRows<bool, bool, DateTime, QString> row("offset", "rating", "from", "message");
        row(false, true, kBegin, noRating);
        row(true, false, kBegin, noOffset);
        row(true, true, kBegin, noRating);
        row(true, false, At("2010-01-01"), noOffset);
        row(false, false, At("2010-01-01"), noData);
        row(false, false, At("2002-03-03"), noData);  // behind the end
    }
    void WhatIsMissingIsTold() {
        QFETCH(bool, offset);
        QFETCH(bool, rating);
        QFETCH(DateTime, from);
        QFETCH(QString, message);
        ScriptedDoors doors;
        StationFixture station(2);
        Tell(station, QStringLiteral("readings 2002-03-01 every 720: 1 2 3 4 5 6; "
                                     "equation2 2002-01-01: 0 1 1; unused 2002-01-01: 1 2"));
        LoadSeries(kBegin, kEnd, 1);
        QCOMPARE(InstCount, 3);
        ChannelInfo[1].Calibration = offset ? 1 : 0;
        ChannelInfo[1].Conversion = rating ? 1 : 0;
        doors.ExpectMessage(message);
        LoadSeries(from, std::max(kEnd, std::floor(from) - 1), 1);
        QCOMPARE(InstCount, 0);
        doors.Verify();
        QCOMPARE(doors.shownMessages[0].title, QStringLiteral("Rillbook"));
        QCOMPARE(doors.shownMessages[0].icon, MsgBoxIcon::Exclamation);
        QCOMPARE(doors.shownMessages[0].buttons, MsgBoxButtons::Ok);
    }

    void DatabaseFailureLeavesNoSeries_data() {
        const DataRows<QString> row("lost");
        for (const char* table : {"Records", "Calibration", "ConversionEq", "ConversionT"}) {
            row(table);
        }
    }
    void DatabaseFailureLeavesNoSeries() {
        QFETCH(QString, lost);
        ScriptedDoors doors;
        StationFixture station;
        Tell(station, QStringLiteral("readings 2002-03-01 every 60: 1 2; visit 2002-01-01: 1 2; "
                                     "equation 2002-01-01: 0 1 1"));
        ChannelInfo[1].Calibration = ChannelInfo[1].Conversion = 1;
        LoadSeries(kBegin, kEnd, 1);
        QCOMPARE(InstCount, 2);
        StationConnection->Execute(QStringLiteral("DROP TABLE ") + lost);
        doors.ExpectMessage(QStringLiteral("The readings can't be read: no such table: ") + lost);
        LoadSeries(kBegin, kEnd, 1);
        QCOMPARE(InstCount, 0);
        QCOMPARE(doors.shownMessages[0].icon, MsgBoxIcon::Exclamation);
    }
};

}  // namespace rillbook

QTEST_GUILESS_MAIN(rillbook::TestSeries)
#include "tst_series.moc"
