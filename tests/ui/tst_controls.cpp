#include <QAbstractItemModelTester>
#include <QSignalSpy>

#include "forms/main/Icons.h"
#include "platform/qt/Twips.h"
#include "tests/support/FormTest.h"

namespace rillbook {

namespace {

// Current cell and far corner: "2,1 to 4,3".
QString Selection(const MSFlexGrid& grid) {
    const auto cell = [](int row, int col) { return u"%1,%2"_qs.arg(row).arg(col); };
    return cell(grid.Row(), grid.Col()) + u" to "_qs + cell(grid.RowSel(), grid.ColSel());
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
    QString ClickOn(int row, int col, Qt::KeyboardModifiers modifiers = {}) {
        const auto [widget, point] = Spot(row, col);
        QTest::mouseClick(widget, Qt::LeftButton, modifiers, point);
        return Selection(*this);
    }
};

}  // namespace

class tst_controls : public QObject {
    Q_OBJECT

private Q_SLOTS:
    void init() { FailOnAnyWarning(); }

    // The icon engine is a plug-in of its own: without it every icon is blank.
    void drawsEveryIcon() {
        for (int picture = 0; picture <= static_cast<int>(Picture::Program); ++picture) {
            const QImage icon = PictureIcon(static_cast<Picture>(picture)).pixmap(16).toImage();
            int inked = 0;
            for (int at = 0; at < icon.width() * icon.height(); ++at) {
                inked += qAlpha(icon.pixel(at % icon.width(), at / icon.width())) > 0 ? 1 : 0;
            }
            QVERIFY2(inked > 40, qPrintable(QString::number(picture)));
        }
    }

    void textsStayWhereRowsAndColumnsStay() {
        NumberedGrid grid(3, 3);
        const QAbstractItemModelTester rules(
            grid.model(), QAbstractItemModelTester::FailureReportingMode::QtTest);
        grid.SetTextMatrix(0, 1, u"Depth"_qs);
        grid.SetCols(4);
        grid.SetRows(4);
        grid.selectAll();
        QCOMPARE(grid.Clip(), u"11\t12\t\r21\t22\t\r\t\t"_qs);
        grid.SetCols(2);
        grid.SetRows(0);
        QCOMPARE(Selection(grid) + grid.Clip(), u"0,0 to 0,0"_qs);
        grid.SetRows(2);
        QCOMPARE(Selection(grid), u"1,1 to 1,1"_qs);
        QCOMPARE(grid.TextMatrix(0, 1) + grid.TextMatrix(1, 1), u"Depth"_qs);
    }

    // In a grid of three rows and columns, "a\tb\tx\rc" is pasted over the selection.
    void clipIsTheSelectedRange() {
        const auto clipAndAfter = [](const QString& range) {
            NumberedGrid grid(4, 4);
            const QStringList ends = range.split(u' ');
            grid.SetSelection(ends[0].toInt(), ends[1].toInt(), ends[2].toInt(), ends[3].toInt());
            const QString clip = grid.Clip();
            grid.SetClip(u"a\tb\tx\rc"_qs);
            grid.selectAll();
            return clip + u" then "_qs + grid.Clip();
        };
        CompareEach(clipAndAfter,
                    "2 2 2 2 => 22 then 11\t12\t13\r21\ta\t23\r31\t32\t33; "
                    "1 2 2 3 => 12\t13\r22\t23 then 11\ta\tb\r21\tc\t23\r31\t32\t33; "
                    "1 3 2 2 => 12\t13\r22\t23 then 11\ta\tb\r21\tc\t23\r31\t32\t33; "
                    "3 3 9 9 => 33 then 11\t12\t13\r21\t22\t23\r31\t32\ta");
    }

    void keysMoveAndExtend() {
        NumberedGrid grid(40, 5);
        grid.SetColWidth(2, 1);  // no pixel
        const auto press = [&](int key, Qt::KeyboardModifiers modifiers = {}) {
            QTest::keyClick(&grid, static_cast<Qt::Key>(key), modifiers);
            return Selection(grid);
        };
        QCOMPARE(press(Qt::Key_Up), u"1,1 to 1,1"_qs);
        QCOMPARE(press(Qt::Key_Right), u"1,3 to 1,3"_qs);
        QCOMPARE(press(Qt::Key_Down, Qt::ShiftModifier), u"1,3 to 2,3"_qs);
        QCOMPARE(press(Qt::Key_Right, Qt::ShiftModifier), u"1,3 to 2,4"_qs);
        QCOMPARE(press(Qt::Key_End, Qt::ControlModifier), u"39,4 to 39,4"_qs);
        QVERIFY(grid.RowIsVisible(39) && !grid.RowIsVisible(1));
        QCOMPARE(press(Qt::Key_A, Qt::ControlModifier), u"1,1 to 39,4"_qs);
    }

    void mouseSelects() {
        NumberedGrid grid(9, 5);
        const QSignalSpy entered(&grid, &MSFlexGrid::EnterCell);
        QCOMPARE(grid.ClickOn(4, 3), u"4,3 to 4,3"_qs);
        QCOMPARE(grid.ClickOn(2, 1, Qt::ShiftModifier), u"4,3 to 2,1"_qs);
        QCOMPARE(entered.count(), 1);
        QCOMPARE(grid.ClickOn(0, 2), u"1,2 to 8,2"_qs);
        QCOMPARE(grid.ClickOn(3, 0), u"3,1 to 3,4"_qs);
    }

    void clicksTellTheCellUnderThePointer() {
        NumberedGrid grid(100, 3);
        grid.SetRowHeight(2, 600);
        grid.SetTopRow(50);
        QString told;
        const auto note = [&](const QString& what) {
            told += u"%1 %2,%3 "_qs.arg(what).arg(grid.MouseRow()).arg(grid.MouseCol());
        };
        connect(&grid, &MSFlexGrid::Click, this, [&] { note(u"click"_qs); });
        connect(&grid, &MSFlexGrid::DblClick, this, [&] { note(u"double"_qs); });
        const auto [widget, point] = grid.Spot(51, 1);
        QTest::mouseClick(widget, Qt::LeftButton, {}, point);
        QTest::mouseDClick(widget, Qt::LeftButton, {}, point);
        QTest::mouseRelease(widget, Qt::LeftButton, {}, point);
        grid.ClickOn(0, 1);
        QTest::mouseClick(grid.viewport(), Qt::LeftButton, {},
                          QPoint(grid.viewport()->width() - 2, 2));
        QCOMPARE(told, u"click 51,1 double 51,1 click 0,1 "_qs);
    }
};

}  // namespace rillbook

QTEST_MAIN(rillbook::tst_controls)
#include "tst_controls.moc"
