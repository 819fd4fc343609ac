#include <QAbstractItemModelTester>
#include <QCalendarWidget>
#include <QElapsedTimer>
#include <QHelpEvent>
#include <QLineEdit>
#include <QSignalSpy>
#include <QToolTip>
#include <QtTest/QTest>

#include "platform/qt/DTPicker.h"
#include "platform/qt/MSFlexGrid.h"
#include "platform/qt/Twips.h"
#include "platform/qt/UpDown.h"
#include "tests/support/UiDriver.h"

namespace rillbook {

namespace {

// Every cell of a grid, rows on lines, columns apart by "|".
QString Dump(const MSFlexGrid& grid) {
    QStringList rows;
    for (int row = 0; row < grid.Rows(); ++row) {
        QStringList cells;
        for (int col = 0; col < grid.Cols(); ++col) {
            cells += grid.TextMatrix(row, col);
        }
        rows += cells.join(u'|');
    }
    return rows.join(u'\n');
}

// Current cell and far corner: "2,1 to 4,3".
QString Selection(const MSFlexGrid& grid) {
    return u"%1,%2 to %3,%4"_qs.arg(grid.Row())
        .arg(grid.Col())
        .arg(grid.RowSel())
        .arg(grid.ColSel());
}

// A grid on the screen whose cells hold their row and column: "23" is row 2, column 3.
class NumberedGrid : public MSFlexGrid {
public:
    NumberedGrid(int rows, int cols) {
        SetRows(rows);
        SetCols(cols);
        for (int row = 1; row < rows; ++row) {
            for (int col = 1; col < cols; ++col) {
                SetTextMatrix(row, col, QString::number(10 * row + col));
            }
        }
        resize(420, 260);
        show();
        Refresh();
    }

    // The widget and the point in it that the user meets inside a cell's top left, off the handles
    // with which headers are resized.
    std::pair<QWidget*, QPoint> Spot(int row, int col) {
        const QPoint inside(ToPixels(ColPos(col)) + 8, ToPixels(RowPos(row)) + 5);
        QWidget* hit = childAt(inside);
        return {hit, hit->mapFrom(this, inside)};
    }

    void ClickOn(int row, int col, Qt::KeyboardModifiers modifiers = {}) {
        const auto [widget, point] = Spot(row, col);
        QTest::mouseClick(widget, Qt::LeftButton, modifiers, point);
    }
};

}  // namespace

class tst_controls : public QObject {
    Q_OBJECT

private Q_SLOTS:
    void init() { FailOnAnyWarning(); }

    void modelHoldsToTheRulesOfModels() {
        MSFlexGrid grid;
        const QAbstractItemModelTester tester(
            grid.model(), QAbstractItemModelTester::FailureReportingMode::QtTest);
        for (const int count : {5, 1, 3, 2}) {
            grid.SetRows(count);
            grid.SetCols(6 - count);
            grid.BeginFill();
            grid.SetTextMatrix(0, 0, u"x"_qs);
            grid.SetTextMatrix(count - 1, 5 - count, u"1.5"_qs);
            grid.EndFill();
            grid.ClearTexts();
        }
    }

    void textsStayWhereRowsAndColumnsStay() {
        NumberedGrid grid(3, 3);
        grid.SetTextMatrix(0, 1, u"Depth"_qs);
        grid.SetTextMatrix(2, 0, u"b"_qs);
        grid.SetCols(4);
        grid.SetRows(4);
        QCOMPARE(Dump(grid), u"|Depth||\n|11|12|\nb|21|22|\n|||"_qs);
        grid.SetCols(2);
        grid.SetRows(2);
        grid.SetCols(3);
        grid.SetRows(0);
        QCOMPARE(Dump(grid), u"|Depth|"_qs);
        QCOMPARE(grid.TextMatrix(1, 1), QString());
        QCOMPARE(Selection(grid), u"0,0 to 0,0"_qs);
        QCOMPARE(grid.Clip(), QString());
        grid.SetRows(2);
        QCOMPARE(Dump(grid), u"|Depth|\n||"_qs);
        QCOMPARE(Selection(grid), u"1,1 to 1,1"_qs);
    }

    void clipIsTheSelectedRange_data() {
        QTest::addColumn<QList<int>>("range");
        QTest::addColumn<QString>("clip");
        QTest::newRow("one cell") << QList<int>{2, 2, 2, 2} << u"22"_qs;
        QTest::newRow("rows and columns") << QList<int>{1, 2, 2, 3} << u"12\t13\r22\t23"_qs;
        QTest::newRow("from bottom right") << QList<int>{2, 3, 1, 2} << u"12\t13\r22\t23"_qs;
        QTest::newRow("from top right") << QList<int>{1, 3, 2, 2} << u"12\t13\r22\t23"_qs;
        QTest::newRow("beyond the end") << QList<int>{3, 3, 9, 9} << u"33"_qs;
    }
    void clipIsTheSelectedRange() {
        QFETCH(const QList<int>, range);
        NumberedGrid grid(4, 4);
        grid.SetSelection(range[0], range[1], range[2], range[3]);
        QTEST(grid.Clip(), "clip");
        QCOMPARE(Selection(grid), u"%1,%2 to %3,%4"_qs.arg(range[0])
                                      .arg(range[1])
                                      .arg(std::min(range[2], 3))
                                      .arg(std::min(range[3], 3)));
    }

    void pastingFillsTheSelectedRange_data() {
        QTest::addColumn<QString>("text");
        QTest::addColumn<QString>("cells");
        QTest::newRow("fits") << u"a\tb\rc\td"_qs << u"|||\n|a|b|13\n|c|d|23\n|31|32|33"_qs;
        QTest::newRow("too much") << u"a\tb\tx\rc\td\ty\re\tf"_qs
                                  << u"|||\n|a|b|13\n|c|d|23\n|31|32|33"_qs;
        QTest::newRow("less") << u"a\r"_qs << u"|||\n|a|12|13\n||22|23\n|31|32|33"_qs;
    }
    void pastingFillsTheSelectedRange() {
        QFETCH(const QString, text);
        NumberedGrid grid(4, 4);
        grid.SetSelection(2, 2, 1, 1);
        grid.SetClip(text);
        QTEST(Dump(grid), "cells");
    }

    void keysMoveAndExtend() {
        NumberedGrid grid(40, 5);
        grid.SetColWidth(2, 1);
        const auto press = [&](Qt::Key key, Qt::KeyboardModifiers modifiers = {}) {
            QTest::keyClick(&grid, key, modifiers);
            return Selection(grid);
        };
        QCOMPARE(press(Qt::Key_Up), u"1,1 to 1,1"_qs);
        // Column 2 has no width.
        QCOMPARE(press(Qt::Key_Right), u"1,3 to 1,3"_qs);
        QCOMPARE(press(Qt::Key_Down, Qt::ShiftModifier), u"1,3 to 2,3"_qs);
        QCOMPARE(press(Qt::Key_Right, Qt::ShiftModifier), u"1,3 to 2,4"_qs);
        QCOMPARE(press(Qt::Key_Up, Qt::ShiftModifier), u"1,3 to 1,4"_qs);
        QCOMPARE(press(Qt::Key_Down), u"2,3 to 2,3"_qs);
        QCOMPARE(press(Qt::Key_End, Qt::ControlModifier), u"39,4 to 39,4"_qs);
        QVERIFY(grid.RowIsVisible(39));
        QVERIFY(!grid.RowIsVisible(1));
        QCOMPARE(press(Qt::Key_Home, Qt::ControlModifier | Qt::ShiftModifier), u"39,4 to 1,1"_qs);
        QVERIFY(grid.RowIsVisible(1));
        press(Qt::Key_A, Qt::ControlModifier);
        QCOMPARE(Selection(grid), u"1,1 to 39,4"_qs);
    }

    void mouseSelects() {
        NumberedGrid grid(9, 5);
        const auto drag = [&](int row, int col, int toRow, int toCol) {
            const auto [from, start] = grid.Spot(row, col);
            QTest::mousePress(from, Qt::LeftButton, {}, start);
            for (const int step : {1, 2}) {
                QMouseEvent move(QEvent::MouseMove,
                                 grid.Spot(toRow, toCol).second + QPoint(step, 0),
                                 from->mapToGlobal(grid.Spot(toRow, toCol).second), Qt::NoButton,
                                 Qt::LeftButton, {});
                QCoreApplication::sendEvent(from, &move);
            }
            QTest::mouseRelease(from, Qt::LeftButton, {}, grid.Spot(toRow, toCol).second);
        };
        const QSignalSpy entered(&grid, &MSFlexGrid::EnterCell);
        drag(2, 1, 4, 3);
        QCOMPARE(Selection(grid), u"2,1 to 4,3"_qs);
        drag(4, 3, 2, 1);
        QCOMPARE(Selection(grid), u"4,3 to 2,1"_qs);
        grid.ClickOn(5, 2, Qt::ShiftModifier);
        QCOMPARE(Selection(grid), u"4,3 to 5,2"_qs);
        QCOMPARE(entered.count(), 2);
        grid.SetRow(7);
        grid.ClickOn(8, 3, Qt::ShiftModifier);
        QCOMPARE(Selection(grid), u"7,3 to 8,3"_qs);
        grid.ClickOn(0, 2);
        QCOMPARE(Selection(grid), u"1,2 to 8,2"_qs);
        grid.ClickOn(3, 0);
        QCOMPARE(Selection(grid), u"3,1 to 3,4"_qs);
        grid.ClickOn(0, 0);
        QCOMPARE(Selection(grid), u"1,1 to 8,4"_qs);
    }

    void clicksTellTheCellUnderThePointer() {
        NumberedGrid grid(4, 3);
        QStringList events;
        const auto note = [&](const QString& what) {
            events += u"%1 %2,%3"_qs.arg(what).arg(grid.MouseRow()).arg(grid.MouseCol());
        };
        connect(&grid, &MSFlexGrid::Click, this, [&] { note(u"click"_qs); });
        connect(&grid, &MSFlexGrid::DblClick, this, [&] { note(u"double"_qs); });
        QCOMPARE(grid.MouseRow(), -1);
        for (const auto& [row, col] : {std::pair{2, 1}, {0, 2}, {3, 0}, {0, 0}, {2, 2}}) {
            grid.ClickOn(row, col);
        }
        const QPoint empty(grid.viewport()->width() - 2, grid.viewport()->height() - 2);
        QTest::mouseClick(grid.viewport(), Qt::LeftButton, {}, empty);
        QCOMPARE(grid.MouseRow(), -1);
        QCOMPARE(Selection(grid), u"2,2 to 2,2"_qs);
        QTest::mouseClick(grid.viewport(), Qt::RightButton, {}, grid.Spot(1, 1).second);
        QCOMPARE(events.join(u"; "_qs),
                 u"click 2,1; click 0,2; click 3,0; click 0,0; click 2,2"_qs);

        events.clear();
        for (const auto& [row, col] : {std::pair{1, 1}, {0, 1}}) {
            const auto [widget, point] = grid.Spot(row, col);
            QTest::mouseClick(widget, Qt::LeftButton, {}, point);
            QTest::mouseDClick(widget, Qt::LeftButton, {}, point);
            QTest::mouseRelease(widget, Qt::LeftButton, {}, point);
        }
        QCOMPARE(events.join(u"; "_qs), u"click 1,1; double 1,1; click 0,1; double 0,1"_qs);
    }

    void positionsFollowTheScrolledCells() {
        NumberedGrid grid(100, 4);
        grid.SetColWidth(0, 300);
        grid.SetColWidth(1, 2000);
        grid.SetRowHeight(2, 600);
        grid.SetRow(2);
        grid.Refresh();
        QCOMPARE(grid.ColPos(2) - grid.ColPos(1), grid.ColWidth(1));
        QCOMPARE(grid.ColPos(1) - grid.ColPos(0), grid.ColWidth(0));
        QCOMPARE(grid.RowPos(3) - grid.RowPos(2), grid.CellHeight());
        QCOMPARE(grid.CellHeight(), 600);
        QCOMPARE(grid.CellWidth(), ToTwips(ToPixels(2000)));
        QCOMPARE(grid.TopRow(), 1);
        grid.SetRow(50);
        QCOMPARE(grid.TopRow(), 1);
        QVERIFY(!grid.RowIsVisible(50));
        grid.SetTopRow(50);
        QCOMPARE(grid.TopRow(), 50);
        QVERIFY(grid.RowIsVisible(50) && grid.RowIsVisible(0) && !grid.RowIsVisible(99));
        grid.ClickOn(50, 2);
        QCOMPARE(Selection(grid), u"50,2 to 50,2"_qs);
        QVERIFY(grid.RowPos(1) < 0);
    }

    // Forms place their grids before they show them.
    void scrollsBeforeItIsShown() {
        MSFlexGrid grid;
        grid.resize(300, 200);
        grid.SetRows(90);
        grid.SetRow(60);
        QVERIFY(grid.RowIsVisible(10));
        QVERIFY(!grid.RowIsVisible(60));
        grid.SetTopRow(55);
        QVERIFY(grid.RowIsVisible(60));
        grid.show();
        QCOMPARE(grid.TopRow(), 55);
        grid.SetTopRow(1);
        grid.SetTopRow(90);
        QVERIFY(grid.RowIsVisible(89));
    }

    void heightsHoldForRowsToCome() {
        MSFlexGrid grid;
        const int head = grid.RowHeight(0);
        grid.SetRowHeight(1, 450);
        grid.SetRowHeights(2, 195);
        grid.SetRows(38);
        QCOMPARE(grid.RowHeight(0), head);
        QCOMPARE(grid.RowHeight(1), 450);
        QCOMPARE(grid.RowHeight(2), 195);
        QCOMPARE(grid.RowHeight(37), 195);
    }

    // Ten years of readings each quarter of an hour.
    void tenYearsFillAndScrollAtOnce() {
        constexpr int kRows = 350'593;
        MSFlexGrid grid;
        grid.resize(400, 500);
        grid.show();
        QElapsedTimer clock;
        clock.start();
        grid.SetRows(kRows);
        grid.SetCols(3);
        grid.BeginFill();
        for (int row = 1; row < kRows; ++row) {
            grid.SetTextMatrix(row, 1, u"1/31/2002 11:45:00 PM"_qs);
            grid.SetTextMatrix(row, 2, u"1.25"_qs);
        }
        grid.EndFill();
        for (const int row : {1, 200'000, 350'000, 5}) {
            grid.SetTopRow(row);
            grid.grab();
            QCOMPARE(grid.TopRow(), row);
        }
        grid.selectAll();
        grid.grab();
        const QString clip = grid.Clip();
        const qint64 elapsed = clock.elapsed();
        QCOMPARE(clip.size(), (kRows - 1) * qsizetype{27} - 1);
        QVERIFY2(elapsed < 3000, qPrintable(u"%1 ms"_qs.arg(elapsed)));
    }

    // Each source counts its own rows: neither is asked for one of the other's.
    void textsComeFromASource() {
        MSFlexGrid grid;
        grid.show();
        const auto fill = [&grid](int rows, const QString& station) {
            grid.SetCellSource(rows, [rows, station](int row, int col) {
                return row < rows ? u"%1 %2.%3"_qs.arg(station).arg(row).arg(col)
                                  : u"no such row"_qs;
            });
            grid.grab();
            grid.selectAll();
            return grid.Clip();
        };
        grid.SetCols(3);
        grid.SetTextMatrix(0, 1, u"Date"_qs);
        QCOMPARE(fill(3, u"a"_qs), u"a 1.1\ta 1.2\ra 2.1\ta 2.2"_qs);
        QCOMPARE(fill(2, u"b"_qs), u"b 1.1\tb 1.2"_qs);
        QCOMPARE(fill(4, u"c"_qs), u"c 1.1\tc 1.2\rc 2.1\tc 2.2\rc 3.1\tc 3.2"_qs);
        grid.SetCols(2);
        QCOMPARE(grid.TextMatrix(0, 1), u"Date"_qs);
        QCOMPARE(grid.TextMatrix(3, 0), u"c 3.0"_qs);
        grid.ClearTexts();
        grid.SetTextMatrix(3, 1, u"typed"_qs);
        QCOMPARE(grid.TextMatrix(0, 1) + grid.TextMatrix(2, 1) + grid.TextMatrix(3, 1),
                 u"typed"_qs);
    }

    void cutOffTextsShowUnderThePointer() {
        NumberedGrid grid(4, 3);
        grid.SetTextMatrix(1, 2, u"gauge <b>moved</b> to the left bank"_qs);
        const auto tip = [&](int col) {
            const QPoint spot = grid.Spot(1, col).second;
            QHelpEvent rest(QEvent::ToolTip, spot, grid.viewport()->mapToGlobal(spot));
            QCoreApplication::sendEvent(grid.viewport(), &rest);
            return QToolTip::text();
        };
        QCOMPARE(tip(1), QString());
        QVERIFY(tip(2).contains(u"&lt;b&gt;moved"_qs));
    }

    void keysOfTheFormPassThrough() {
        class Form : public QWidget {
        public:
            QString keys;

        private:
            void keyPressEvent(QKeyEvent* event) override {
                if (event->key() != Qt::Key_Control) {
                    keys += QKeySequence(event->keyCombination()).toString() + u' ';
                }
            }
        };
        Form form;
        MSFlexGrid grid(&form);
        grid.SetRows(5);
        form.show();
        grid.SetTextMatrix(3, 1, u"7"_qs);
        for (const Qt::Key key : {Qt::Key_7, Qt::Key_Return, Qt::Key_Delete, Qt::Key_Space}) {
            QTest::keyClick(&grid, key);
        }
        QTest::keyClick(&grid, Qt::Key_C, Qt::ControlModifier);
        QCOMPARE(form.keys, u"7 Return Del Space Ctrl+C "_qs);
        QCOMPARE(Selection(grid), u"1,1 to 1,1"_qs);
    }

    void pickerSpeaksEnglish() {
        QLocale::setDefault(QLocale(QLocale::German));
        DTPicker picker;
        QLocale::setDefault(QLocale::c());
        picker.SetValue(DateSerial(2002, 10, 5));
        QCOMPARE(picker.text(), u"Oct 05, 2002"_qs);
        QCOMPARE(picker.calendarWidget()->locale().language(), QLocale::English);
    }

    void pickerOfMonthsKeepsTheDay() {
        DTPicker picker;
        picker.SetCustomFormat(u"MMM, yyy"_qs);
        picker.SetValue(DateSerial(2002, 10, 1));
        QCOMPARE(picker.text(), u"Oct, 2002"_qs);
        QCOMPARE(picker.calendarWidget(), nullptr);
        picker.show();
        QTest::keyClick(&picker, Qt::Key_Up);
        QCOMPARE(picker.Value(), DateSerial(2002, 11, 1));
    }

    void pickerKeepsToItsYears_data() {
        QTest::addColumn<double>("set");
        QTest::addColumn<double>("got");
        QTest::newRow("first") << -36157.0 << -36157.0;
        QTest::newRow("before the first") << -36158.0 << -36157.0;
        QTest::newRow("an afternoon") << 37257.75 << 37257.0;
        QTest::newRow("an afternoon before 1899") << -10.25 << -11.0;
        QTest::newRow("last") << 2958465.0 << 2958465.0;
    }
    void pickerKeepsToItsYears() {
        QFETCH(const double, set);
        DTPicker picker;
        picker.SetValue(set);
        QTEST(picker.Value(), "got");
    }

    void pickerTellsEachChange() {
        DTPicker picker;
        picker.SetValue(DateSerial(2002, 1, 31));
        const QSignalSpy changes(&picker, &DTPicker::Change);
        picker.SetValue(DateSerial(2002, 1, 31));
        QCOMPARE(changes.count(), 0);
        picker.show();
        QTest::keyClick(&picker, Qt::Key_Up);
        QCOMPARE(picker.text(), u"Feb 28, 2002"_qs);
        QCOMPARE(changes.count(), 1);
        picker.SetValue(DateSerial(2003, 1, 1));
        QCOMPARE(changes.count(), 2);
    }

    void spinButtonsStepTheirBuddy_data() {
        QTest::addColumn<QString>("text");
        QTest::addColumn<QString>("button");
        QTest::addColumn<QString>("stepped");
        QTest::addColumn<int>("changes");
        QTest::newRow("up") << u"7"_qs << u"up"_qs << u"8"_qs << 1;
        QTest::newRow("down") << u"7"_qs << u"down"_qs << u"6"_qs << 1;
        QTest::newRow("at the top") << u"12"_qs << u"up"_qs << u"12"_qs << 0;
        QTest::newRow("at the bottom") << u"1"_qs << u"down"_qs << u"1"_qs << 0;
        QTest::newRow("above the top") << u"80"_qs << u"down"_qs << u"12"_qs << 1;
        QTest::newRow("no number") << u"abc"_qs << u"up"_qs << u"1"_qs << 1;
        QTest::newRow("beyond integers") << u"1E300"_qs << u"up"_qs << u"12"_qs << 1;
    }
    void spinButtonsStepTheirBuddy() {
        QFETCH(const QString, text);
        QFETCH(const QString, button);
        QFETCH(const int, changes);
        QWidget form;
        auto* box = new QLineEdit(text, &form);
        box->setReadOnly(true);
        auto* spin = new UpDown(&form);
        spin->setGeometry(100, 0, 16, 20);
        spin->SetBuddy(box);
        spin->SetMin(1);
        spin->SetMax(12);
        form.show();
        const QSignalSpy spy(spin, &UpDown::Change);
        Click(form, button);
        QTEST(box->text(), "stepped");
        QCOMPARE(spy.count(), changes);

        box->setText(text);
        QTest::keyClick(box, button == u"up"_qs ? Qt::Key_Up : Qt::Key_Down);
        QTEST(box->text(), "stepped");
        QCOMPARE(spy.count(), 2 * changes);

        spin->setEnabled(false);
        box->setText(text);
        QTest::keyClick(box, button == u"up"_qs ? Qt::Key_Up : Qt::Key_Down);
        QCOMPARE(box->text(), text);
    }
};

}  // namespace rillbook

QTEST_MAIN(rillbook::tst_controls)
#include "tst_controls.moc"
