#include "tests/support/UiDriver.h"

#include <QAbstractButton>
#include <QAction>
#include <QApplication>
#include <QLineEdit>
#include <QMap>
#include <QMenu>
#include <QPlainTextEdit>
#include <QPointer>
#include <QPushButton>
#include <QRegularExpression>
#include <QtTest/QTest>
#include <deque>

#include "platform/qt/MSFlexGrid.h"

namespace rillbook {

namespace {

// Whose turn it is.
std::deque<NextWindow*>& Waiting() {
    static std::deque<NextWindow*> waiting;
    return waiting;
}

// Windows whose steps are under way.
QList<QPointer<QWidget>>& Served() {
    static QList<QPointer<QWidget>> served;
    return served;
}

}  // namespace

void FailOnAnyWarning() {
    static const QRegularExpression others(QStringLiteral("^(?!This plugin does not support )"));
    QTest::failOnWarning(others);
}

void FailTest(const QString& what) {
    QTest::qFail(qPrintable(what), __FILE__, __LINE__);
}

MSFlexGrid& GridOf(QWidget& form) {
    return Child<MSFlexGrid>(form, QStringLiteral("MSFlexGrid1"));
}

QString SelectionOf(const MSFlexGrid& grid) {
    const QRect cells = grid.SelectedCells();
    return QStringLiteral("%1,%2 in %3,%4 to %5,%6")
        .arg(grid.Row())
        .arg(grid.Col())
        .arg(cells.top())
        .arg(cells.left())
        .arg(cells.bottom())
        .arg(cells.right());
}

QString FilledRows(QWidget& form) {
    const MSFlexGrid& grid = GridOf(form);
    QStringList rows;
    for (int row = 1; row < grid.Rows(); ++row) {
        QStringList cells;
        for (int col = 1; col < grid.Cols(); ++col) {
            cells << grid.TextMatrix(row, col);
        }
        if (!cells.join(QString()).isEmpty()) {
            rows << QString::number(row) + QStringLiteral(": ") + cells.join(u'|');
        }
    }
    return rows.join(u'\n');
}

void PressKeys(QWidget& form, const QString& keys) {
    static const QMap<QChar, Qt::Key> signs = {
        {u'→', Qt::Key_Right},  {u'←', Qt::Key_Left},   {u'↑', Qt::Key_Up},
        {u'↓', Qt::Key_Down},   {u'⇞', Qt::Key_PageUp}, {u'⇟', Qt::Key_PageDown},
        {u'⇱', Qt::Key_Home},   {u'⏎', Qt::Key_Enter},  {u'⎋', Qt::Key_Escape},
        {u'⌫', Qt::Key_Delete}, {u'✎', Qt::Key_F2},     {u'⇥', Qt::Key_Tab}};
    QApplication::setActiveWindow(&form);  // at once; the window system would take its time
    Qt::KeyboardModifiers held;
    for (const uint character : keys.toUcs4()) {
        const QString text = QString::fromUcs4(reinterpret_cast<const char32_t*>(&character), 1);
        const QChar key = text[0];
        if (key == u'⌃' || key == u'⇧') {
            held |= key == u'⌃' ? Qt::ControlModifier : Qt::ShiftModifier;
            continue;
        }
        if (key == u'⇥' && held.testFlag(Qt::ShiftModifier)) {
            QTest::keyClick(form.focusWidget(), Qt::Key_Backtab, held);
        } else if (signs.contains(key)) {
            QTest::keyClick(form.focusWidget(), signs[key], held);
        } else if (key.unicode() < 128) {
            QTest::keyClick(form.focusWidget(), key.toLatin1(), held);
        } else {
            QTest::sendKeyEvent(QTest::Click, form.focusWidget(), Qt::Key_unknown, text, held);
        }
        held = {};
    }
}

void TypeCell(QWidget& form, int row, int col, const QString& text) {
    GridOf(form).SetSelection(row, col, row, col);
    GridOf(form).setFocus();
    PressKeys(form, text.isEmpty() ? QStringLiteral("⌫") : text + u'⏎');
}

bool IsUsable(const QWidget& control) {
    return control.isVisible() && control.isEnabled();
}

void Trigger(QWidget& form, const QString& actionName) {
    QAction& action = Child<QAction>(form, actionName);
    bool usable = action.isEnabled() && action.isVisible();
    for (const QObject* owner : action.associatedObjects()) {
        const auto* menu = qobject_cast<const QMenu*>(owner);
        usable = usable && (menu == nullptr || menu->menuAction()->isEnabled());
    }
    if (!usable) {
        FailTest(QStringLiteral("Menu item %1 can't be used").arg(actionName));
        return;
    }
    action.trigger();
}

void Click(QWidget& form, const QString& buttonName) {
    auto* button = FindChild<QAbstractButton>(form, buttonName);
    if (button != nullptr && IsUsable(*button)) {
        // On the button's face: boxes with a mark have it at their left.
        const bool hasMark = button->isCheckable() && qobject_cast<QPushButton*>(button) == nullptr;
        const QPoint at(hasMark ? 8 : button->width() / 2, button->height() / 2);
        QTest::mouseClick(button, Qt::LeftButton, {}, at);
    } else {
        FailTest(QStringLiteral("Button %1 can't be used").arg(buttonName));
    }
}

void TypeText(QWidget& form, const QString& name, const QString& text) {
    auto& control = Child<QWidget>(form, name);
    auto* line = qobject_cast<QLineEdit*>(&control);
    auto* page = qobject_cast<QPlainTextEdit*>(&control);
    const bool writable =
        (line != nullptr && !line->isReadOnly()) || (page != nullptr && !page->isReadOnly());
    if (!writable || !IsUsable(control)) {
        FailTest(QStringLiteral("%1 can't be typed into").arg(name));
        return;
    }
    control.setFocus();
    if (line != nullptr) {
        line->selectAll();
    } else {
        page->selectAll();
    }
    QTest::keyClick(&control, Qt::Key_Delete);
    QTest::keyClicks(&control, text);
}

NextWindow::NextWindow(std::function<void(QWidget& form)> steps) : steps_(std::move(steps)) {
    Waiting().push_back(this);
    QObject::connect(&timer_, &QTimer::timeout, &timer_, [this] { Look(); });
    timer_.start(2);
}

NextWindow::~NextWindow() {
    std::erase(Waiting(), this);
    if (!hasRun_) {
        FailTest(QStringLiteral("A window that never came"));
    }
}

void NextWindow::Look() {
    // A completer's list or a calendar isn't a window of its own.
    QWidget* popup = qobject_cast<QMenu*>(QApplication::activePopupWidget());
    const QPointer<QWidget> window = popup != nullptr ? popup : QApplication::activeModalWidget();
    if (hasRun_ || Waiting().front() != this || !window || !window->isVisible() ||
        Served().contains(window)) {
        return;
    }
    hasRun_ = true;
    timer_.stop();
    Waiting().pop_front();
    Served().push_back(window);
    steps_(*window);
    Served().pop_back();
    if (window && window->isVisible()) {
        FailTest(QStringLiteral("Window %1 was left open").arg(window->objectName()));
        window->close();
    }
}

}  // namespace rillbook
