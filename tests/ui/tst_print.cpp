#include <QAction>
#include <QLineEdit>
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

QString Name(const char* text) {
    return QString::fromLatin1(text);
}

// Shows the sheet and, in it, prints; `choose` is done in the dialog that asks what.
void PrintSheet(const std::function<void(QWidget&)>& choose) {
    frmAnnualT form(QStringLiteral("Upper basin"));
    const NextWindow window([&](QWidget& opened) {
        {
            const NextWindow dialog(choose);
            Trigger(opened, Name("mnuFilePrint"));
        }
        opened.close();
    });
    form.exec();
}

void Confirm(QWidget& dialog) {
    Click(dialog, Name("cmdOK"));
}

// A page of the sheet, the cells that hold a text gathered under the right edge of their column:
// "2152: 2048 *1" is a bold 1 that ends at 2152, 2048 from the top.
QString PageText(const Recording& recording) {
    static const QRegularExpression cell(
        QStringLiteral("^text (\\d+),(\\d+) Arial 8( bold)? black \"(?!Inst)(.*)\"$"));
    QMap<int, QStringList> columns;
    QStringList lines;
    int firstCell = 0;
    for (const QString& line : recording.lines) {
        const QRegularExpressionMatch found = cell.match(line);
        const QString text = found.captured(4);
        if (!found.hasMatch()) {
            lines << line;
        } else if (!text.isEmpty()) {
            const int edge = found.captured(1).toInt() + 100 * static_cast<int>(text.size());
            columns[edge] << found.captured(2) + u' ' +
                                 (found.captured(3).isEmpty() ? QString() : QStringLiteral("*")) +
                                 text;
            firstCell = firstCell == 0 ? static_cast<int>(lines.size()) : firstCell;
        }
    }
    for (auto column = columns.cbegin(); column != columns.cend(); ++column) {
        lines.insert(firstCell++,
                     QStringLiteral("%1: %2").arg(column.key()).arg(column->join(u", ")));
    }
    return lines.join(u'\n').replace(ShortDateText(Now()), QStringLiteral("today"));
}

}  // namespace

class TestPrint : public QObject {
    Q_OBJECT

private Q_SLOTS:
    void init();
    void cleanup();
    void Page_data();
    void Page();
    void LeavesOutWhatIsNotWanted_data();
    void LeavesOutWhatIsNotWanted();
    void PrintsThePeakAsItStands();
    void CancelledPrintsNothing_data();
    void CancelledPrintsNothing();
    void PrinterFails();

private:
    std::unique_ptr<ScriptedDoors> doors_;
    std::unique_ptr<StationFixture> station_;
};

void TestPrint::init() {
    FailOnAnyWarning();
    doors_ = std::make_unique<ScriptedDoors>();
    station_ = std::make_unique<StationFixture>();
    DescribeReportedChannel();
    station_->WithReadings("2002-01-30", 720, {10, 15, 20, 30, 30, 0.5})
        .WithReadings("2002-02-03", 720, {1, 2});
}

void TestPrint::cleanup() {
    station_.reset();
    doors_.reset();
}

void TestPrint::Page_data() {
    QTest::addColumn<double>("width");
    QTest::addColumn<double>("height");
    QTest::addColumn<QString>("page");
    QTest::newRow("Letter")
        << 12240.0 << 15840.0
        << "text 1152,1008 Arial 10 black \"Kettle Creek - Daily Mean Stage (ft)\"\n"
           "text 1152,1258 Arial 10 black \"Jan-2002 to Dec-2002\"\n"
           "text 1152,1608 Arial 8 black \"Instantaneous Peak: 30.00 ft on Jan 31, 2002\"\n"
           "2152: 2048 *1, 2287 *2, 2527 *3, 2766 *4, 3006 *5, 3245 *6, 3485 *7, 3724 *8, 3964 "
           "*9, 4204 *10, 4443 *11, 4683 *12, 4922 *13, 5162 *14, 5401 *15, 5641 *16, 5880 *17, "
           "6120 *18, 6360 *19, 6599 *20, 6839 *21, 7078 *22, 7318 *23, 7557 *24, 7797 *25, "
           "8036 *26, 8276 *27, 8516 *28, 8755 *29, 8995 *30, 9234 *31, 9713 *Avg, 9953 *Min, "
           "10192 *Max, 10432 *Total (ac-ft)\n"
           "3092: 1808 *Jan, 8995 12.50, 9234 25.00, 9713 18.75, 9953 12.5, 10192 25, 10432 "
           "74.25\n"
           "4031: 1808 *Feb, 2048 15.25, 2527 1.50, 9713 8.38, 9953 1.5, 10192 15.25, 10432 "
           "33.17\n"
           "4971: 1808 *Mar\n"
           "5911: 1808 *Apr\n"
           "6850: 1808 *May\n"
           "7790: 1808 *Jun\n"
           "8730: 1808 *Jul\n"
           "9670: 1808 *Aug\n"
           "10609: 1808 *Sep\n"
           "11549: 1808 *Oct\n"
           "12489: 1808 *Nov\n"
           "13428: 1808 *Dec\n"
           "14368: 1808 *Total, 9713 13.57, 9953 1.5, 10192 25, 10432 107.42\n"
           "text 1152,10732 Arial 8 italic black \"station.mdb    today\"\n"
           "text 1152,10932 Arial 8 italic black \"Rillbook v1.0.0\"\n"
           "end of document";
    QTest::newRow("A4")
        << 11906.0 << 16838.0
        << "text 1152,1008 Arial 10 black \"Kettle Creek - Daily Mean Stage (ft)\"\n"
           "text 1152,1258 Arial 10 black \"Jan-2002 to Dec-2002\"\n"
           "text 1152,1608 Arial 8 black \"Instantaneous Peak: 30.00 ft on Jan 31, 2002\"\n"
           "2152: 2038 *1, 2269 *2, 2499 *3, 2729 *4, 2959 *5, 3190 *6, 3420 *7, 3650 *8, 3881 "
           "*9, 4111 *10, 4341 *11, 4571 *12, 4802 *13, 5032 *14, 5262 *15, 5492 *16, 5723 *17, "
           "5953 *18, 6183 *19, 6414 *20, 6644 *21, 6874 *22, 7104 *23, 7335 *24, 7565 *25, "
           "7795 *26, 8026 *27, 8256 *28, 8486 *29, 8716 *30, 8947 *31, 9407 *Avg, 9637 *Min, "
           "9868 *Max, 10098 *Total (ac-ft)\n"
           "3168: 1808 *Jan, 8716 12.50, 8947 25.00, 9407 18.75, 9637 12.5, 9868 25, 10098 "
           "74.25\n"
           "4185: 1808 *Feb, 2038 15.25, 2499 1.50, 9407 8.38, 9637 1.5, 9868 15.25, 10098 "
           "33.17\n"
           "5201: 1808 *Mar\n"
           "6218: 1808 *Apr\n"
           "7234: 1808 *May\n"
           "8251: 1808 *Jun\n"
           "9267: 1808 *Jul\n"
           "10284: 1808 *Aug\n"
           "11300: 1808 *Sep\n"
           "12317: 1808 *Oct\n"
           "13333: 1808 *Nov\n"
           "14350: 1808 *Dec\n"
           "15366: 1808 *Total, 9407 13.57, 9637 1.5, 9868 25, 10098 107.42\n"
           "text 1152,10398 Arial 8 italic black \"station.mdb    today\"\n"
           "text 1152,10598 Arial 8 italic black \"Rillbook v1.0.0\"\n"
           "end of document";
}

void TestPrint::Page() {
    QFETCH(double, width);
    QFETCH(double, height);
    const auto recording = doors_->ExpectPrint(width, height);
    PrintSheet(Confirm);
    QCOMPARE(recording->name, QStringLiteral("Summary Table - Upper basin"));
    QCOMPARE(recording->orientation, 2);
    QTEST(PageText(*recording), "page");
}

void TestPrint::LeavesOutWhatIsNotWanted_data() {
    QTest::addColumn<QString>("box");
    QTest::addColumn<QString>("leftOut");
    QTest::newRow("no totals") << "chkTotal"
                               << ",10432 ";
    QTest::newRow("no peak") << "chkPMax"
                             << ",1608 ";
}

// All else stands where it does on the whole page.
void TestPrint::LeavesOutWhatIsNotWanted() {
    QFETCH(QString, box);
    QFETCH(QString, leftOut);
    const auto whole = doors_->ExpectPrint();
    PrintSheet(Confirm);
    const auto part = doors_->ExpectPrint();
    PrintSheet([&](QWidget& dialog) {
        Click(dialog, box);
        Confirm(dialog);
    });
    QStringList expected = whole->lines;
    QVERIFY(expected.removeIf([&](const QString& line) { return line.contains(leftOut); }) > 0);
    QCOMPARE(part->lines, expected);
}

void TestPrint::PrintsThePeakAsItStands() {
    const auto recording = doors_->ExpectPrint();
    frmAnnualT form(QStringLiteral("Upper basin"));
    form.show();
    TypeText(form, Name("tbPMax"), QStringLiteral("by the high-water mark"));
    const NextWindow dialog(Confirm);
    Trigger(form, Name("mnuFilePrint"));
    QVERIFY(recording->Text().contains(
        QStringLiteral("\"Instantaneous Peak: by the high-water mark\"")));
}

void TestPrint::CancelledPrintsNothing_data() {
    QTest::addColumn<Qt::Key>("key");
    QTest::addColumn<bool>("cancelsPrinter");
    QTest::newRow("cmdCancel") << Qt::Key_Space << false;
    QTest::newRow("Esc") << Qt::Key_Escape << false;
    QTest::newRow("title bar") << Qt::Key_unknown << false;
    QTest::newRow("no printer, no file") << Qt::Key_Return << true;
}

void TestPrint::CancelledPrintsNothing() {
    QFETCH(Qt::Key, key);
    QFETCH(bool, cancelsPrinter);
    if (cancelsPrinter) {
        doors_->CancelPrinter();
    }
    DialogCancelled = cancelsPrinter;
    PrintSheet([&](QWidget& dialog) {
        QCOMPARE(dialog.windowTitle(), QStringLiteral("Print Settings"));
        if (key == Qt::Key_unknown) {
            dialog.close();
        } else if (key == Qt::Key_Space) {
            Click(dialog, Name("cmdCancel"));
        } else {
            QTest::keyClick(&dialog, key);
        }
    });
    QCOMPARE(DialogCancelled, !cancelsPrinter);
}

// Half a page comes to nothing; the sheet prints again.
void TestPrint::PrinterFails() {
    const auto broken = doors_->ExpectPrint();
    broken->linesUntilFailure = 100;
    doors_->ExpectMessage(
        QStringLiteral("Summary Table - Upper basin could not be printed: Out of paper"));
    PrintSheet(Confirm);
    QCOMPARE(broken->lines.last(), QStringLiteral("given up"));
    QCOMPARE(doors_->shownMessages.back().icon, MsgBoxIcon::Exclamation);
    const auto refilled = doors_->ExpectPrint();
    PrintSheet(Confirm);
    QCOMPARE(refilled->lines.last(), QStringLiteral("end of document"));
}

}  // namespace rillbook

QTEST_MAIN(rillbook::TestPrint)
#include "tst_print.moc"
