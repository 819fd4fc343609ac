
#include "graphs/Chart.h"
#include "tests/support/CoreTest.h"
#include "tests/support/RecordingSurface.h"

namespace rillbook {

class TestChart : public QObject {
    Q_OBJECT

private Q_SLOTS:
    void init() { ResetSharedState(); }
    void cleanup() {
        ResetSharedState();
        RegionalSettings() = Regional();
    }

    void DateLines() {
        RegionalSettings().shortDate = u"dd.MM.yyyy"_qs;  // labels put the month first
        // How many light and dark lines; the first two labels and the last.
        const auto lines = [](const QString& fromAndDays) {
            const DateTime from = At(qPrintable(fromAndDays.left(10)));
            const DateAxis axis = DateAxisLines(from, from + fromAndDays.mid(11).toDouble());
            QString text = u"%1 %2"_qs.arg(axis.minorLines.size()).arg(axis.majorLines.size());
            for (std::size_t i = 0; i < axis.labels.size(); ++i) {
                if (i < 2 || i + 1 == axis.labels.size()) {
                    text += u", "_qs + DateLabelText(axis.labels[i], axis.labelsHaveTime);
                }
            }
            return text;
        };
        CompareEach(lines,
                    "2005-01-10 0.5 => 0 0; 2005-01-10 3.5 => 0 0; "
                    "2005-01-10 1 => 25 3, 1/10/05 00:00, 1/10/05 12:00, 1/11/05 00:00; "
                    "2005-01-10 3 => 73 7, 1/10/05 00:00, 1/10/05 12:00, 1/13/05 00:00; "
                    "2005-01-10 4 => 17 5, 1/10/05, 1/11/05, 1/14/05; "
                    "2005-01-10 10 => 41 11, 1/10/05, 1/11/05, 1/20/05; "
                    "2005-01-10 11 => 23 6, 1/10/05, 1/12/05, 1/20/05; "
                    "2005-01-10 24 => 49 13, 1/10/05, 1/12/05, 2/3/05; "
                    "2005-01-10 25 => 26 4, 1/10/05, 1/17/05, 1/31/05; "
                    "2005-01-10 89 => 90 13, 1/10/05, 1/17/05, 4/4/05; "
                    "2005-01-10 90 => 0 3, 2/1/05, 3/1/05, 4/1/05; "
                    "2007-10-01 366 => 0 13, 10/1/07, 11/1/07, 10/1/08; "
                    "1999-11-15 367 => 0 12, 12/1/99, 3/1/00, 9/1/00; "
                    "9999-10-15 1e12 => 0 2, 11/1/99");
    }

    // Four days of 1000 twips and 50 units of 40, where the plot is 4000 by 2000; curves and marks
    // are tested with the graphs.
    void Labels() {
        RegionalSettings().decimalSign = u","_qs;
        RecordingSurface surface(5240, 3140);
        const DateTime day = At("2002-01-30");
        DrawChart(ChartTable(1), day, day + 4, 0.5, 50.5, {}, 1, 0, false, surface);
        const QStringList labels = surface.recording.lines.filter(u" 8 black "_qs);
        QCOMPARE(QString(labels.join(u'\n')).remove(u" Arial 8 black"_qs),
                 u"text 470,2640 \"1/30/02\"\ntext 1470,2640 \"1/31/02\"\n"
                 "text 2520,2640 \"2/1/02\"\ntext 3520,2640 \"2/2/02\"\ntext 4520,2640 \"2/3/02\"\n"
                 "text 420,2520 \"0,5\"\ntext 320,2120 \"10,5\"\ntext 320,1720 \"20,5\"\n"
                 "text 320,1320 \"30,5\"\ntext 320,920 \"40,5\"\ntext 320,520 \"50,5\""_qs);
    }
};

}  // namespace rillbook

QTEST_GUILESS_MAIN(rillbook::TestChart)
#include "tst_chart.moc"
