#include <QRegularExpression>
#include <QtTest/QtTest>

#include "app/SharedState.h"
#include "forms/reports/frmAnnualT.h"
#include "platform/text/DateTime.h"
#include "tests/support/RecordingSurface.h"
#include "tests/support/ReportedChannel.h"
#include "tests/support/ScriptedDoors.h"
#include "tests/support/StationFixture.h"
#include "tests/support/UiDriver.h"

namespace rillbook {

namespace {

// Clicks on these buttons of the dialog that asks what to print.
void PrintSheet(const QStringList& buttons = {u"cmdOK"_qs}, const QString& peak = {}) {
    frmAnnualT form(u"Upper basin"_qs);
    form.show();
    if (!peak.isNull()) {
        TypeText(form, u"tbPMax"_qs, peak);
    }
    const NextWindow dialog([&](QWidget& opened) {
        for (const QString& button : buttons) {
            Click(opened, button);
        }
        opened.close();
    });
    Trigger(form, u"mnuFilePrint"_qs);
}

// A page of the sheet, the cells that hold a text gathered under the right edge of their column:
// "2152: 2048 *1" is a bold 1 that ends at 2152, 2048 from the top.
QString PageText(const Recording& recording) {
    static const QRegularExpression cell(
        u"^text (\\d+),(\\d+) Arial 8( bold)? black \"(?!Inst)(.*)\"$"_qs);
    QMap<int, QStringList> columns;
    QStringList lines;
    for (const QString& line : recording.lines) {
        const QRegularExpressionMatch found = cell.match(line);
        const QString text = found.captured(4);
        if (!found.hasMatch()) {
            lines << line;
        } else if (!text.isEmpty()) {
            const int edge = found.captured(1).toInt() + 100 * static_cast<int>(text.size());
            const QString bold = found.captured(3).isEmpty() ? u" "_qs : u" *"_qs;
            columns[edge] << found.captured(2) + bold + text;
        }
    }
    for (auto column = columns.cbegin(); column != columns.cend(); ++column) {
        lines << u"%1: %2"_qs.arg(column.key()).arg(column->join(u", "));
    }
    return lines.join(u'\n').replace(ShortDateText(Now()), u"today"_qs);
}

}  // namespace

class TestPrint : public QObject {
    Q_OBJECT

private Q_SLOTS:
    void init() {
        FailOnAnyWarning();
        doors_ = std::make_unique<ScriptedDoors>();
        station_ = std::make_unique<StationFixture>();
        DescribeReportedChannel();
        station_->WithReadings("2002-01-30", 720, {10, 15, 20, 30, 30, 0.5})
            .WithReadings("2002-02-03", 720, {1, 2});
    }
    void cleanup() {
        station_.reset();
        doors_.reset();
    }

    void PrintsAPage() {
        const auto recording = doors_->ExpectPrint();
        PrintSheet();
        QCOMPARE(recording->name, u"Summary Table - Upper basin"_qs);
        QCOMPARE(recording->orientation, 2);
        QCOMPARE(
            PageText(*recording),
            u"text 1152,1008 Arial 10 black \"Kettle Creek - Daily Mean Stage (ft)\"\n"
            "text 1152,1258 Arial 10 black \"Jan-2002 to Dec-2002\"\n"
            "text 1152,1608 Arial 8 black \"Instantaneous Peak: 30.00 ft on Jan 31, 2002\"\n"
            "text 1152,10732 Arial 8 italic black \"station.mdb    today\"\n"
            "text 1152,10932 Arial 8 italic black \"Rillbook v1.0.0\"\nend of document\n"
            "2152: 2048 *1, 2287 *2, 2527 *3, 2766 *4, 3006 *5, 3245 *6, 3485 *7, 3724 *8, 3964 "
            "*9, 4204 *10, 4443 *11, 4683 *12, 4922 *13, 5162 *14, 5401 *15, 5641 *16, 5880 *17, "
            "6120 *18, 6360 *19, 6599 *20, 6839 *21, 7078 *22, 7318 *23, 7557 *24, 7797 *25, "
            "8036 *26, 8276 *27, 8516 *28, 8755 *29, 8995 *30, 9234 *31, 9713 *Avg, 9953 *Min, "
            "10192 *Max, 10432 *Total (ac-ft)\n"
            "3092: 1808 *Jan, 8995 12.50, 9234 25.00, 9713 18.75, 9953 12.5, 10192 25, 10432 "
            "74.25\n"
            "4031: 1808 *Feb, 2048 15.25, 2527 1.50, 9713 8.38, 9953 1.5, 10192 15.25, 10432 "
            "33.17\n"
            "4971: 1808 *Mar\n5911: 1808 *Apr\n6850: 1808 *May\n7790: 1808 *Jun\n8730: 1808 *Jul\n"
            "9670: 1808 *Aug\n10609: 1808 *Sep\n11549: 1808 *Oct\n12489: 1808 *Nov\n"
            "13428: 1808 *Dec\n14368: 1808 *Total, 9713 13.57, 9953 1.5, 10192 25, 10432 107.42"_qs);
    }

    void FitsItsPaper() {
        const auto recording = doors_->ExpectPrint(11906, 16838);  // A4
        PrintSheet({u"cmdOK"_qs}, u"by the high-water mark"_qs);
        const QString page = PageText(*recording);
        for (const QString& part : {u"Instantaneous Peak: by the high-water mark\""_qs,
                                    u"\ntext 1152,10398 "_qs, u"\n2152: 2038 *1, 2269 *2, "_qs,
                                    u", 10098 *Total (ac-ft)\n3168: "_qs, u"\n15366: "_qs}) {
            QVERIFY2(page.contains(part), qPrintable(part));
        }
    }

    // All else stands where it does on the whole page.
    void LeavesOutWhatIsNotWanted() {
        const auto whole = doors_->ExpectPrint();
        PrintSheet();
        for (const auto& [box, place] :
             {std::pair(u"chkTotal"_qs, u",10432 "_qs), std::pair(u"chkPMax"_qs, u",1608 "_qs)}) {
            const auto part = doors_->ExpectPrint();
            PrintSheet({box, u"cmdOK"_qs});
            QStringList expected = whole->lines;
            QVERIFY(expected.removeIf([&](const QString& s) { return s.contains(place); }) > 0);
            QCOMPARE(part->lines, expected);
        }
    }

    void CancelledPrintsNothing() {
        for (const QStringList& buttons : {QStringList{u"cmdCancel"_qs}, QStringList()}) {
            DialogCancelled = false;
            PrintSheet(buttons);
            QVERIFY(DialogCancelled);
        }
        doors_->CancelPrinter();
        PrintSheet();
        QVERIFY(!DialogCancelled);
    }

private:
    std::unique_ptr<ScriptedDoors> doors_;
    std::unique_ptr<StationFixture> station_;
};

}  // namespace rillbook

QTEST_MAIN(rillbook::TestPrint)
#include "tst_print.moc"
