#pragma once

#include <QString>
#include <QTimer>
#include <QWidget>
#include <functional>

class QAction;

namespace rillbook {

class MSFlexGrid;

// Uses windows as their users do, by the object names of their controls. A control that isn't
// there, or that a user couldn't use (disabled, hidden, read-only), fails the test.

// Makes any warning of Qt fail the running test, but for what the off-screen platform says of
// itself. Holds for one test function: call it in init().
void FailOnAnyWarning();

// Fails the running test and goes on.
void FailTest(const QString& what);

// The control of this type under this name; nullptr if there is none.
template <typename Control>
Control* FindChild(const QWidget& form, const QString& name) {
    const QList<Control*> found = form.findChildren<Control*>(name);
    if (found.size() != 1) {
        FailTest(QStringLiteral("%1 has %2 controls %3 of the type")
                     .arg(form.objectName())
                     .arg(found.size())
                     .arg(name));
        return nullptr;
    }
    return found.first();
}

// The same with a stand-in for a missing one.
template <typename Control>
Control& Child(QWidget& form, const QString& name) {
    Control* found = FindChild<Control>(form, name);
    return found != nullptr ? *found : *new Control(&form);
}

// Runs a menu item, which must be enabled in an enabled menu.
void Trigger(QWidget& form, const QString& actionName);
void Click(QWidget& form, const QString& buttonName);
// Types a text in place of what a QLineEdit or QPlainTextEdit holds.
void TypeText(QWidget& form, const QString& name, const QString& text);
// The form's MSFlexGrid1.
MSFlexGrid& GridOf(QWidget& form);
// The current cell and the corners of the selection, "2,3 in 2,1 to 2,7".
QString SelectionOf(const MSFlexGrid& grid);
// Its rows that hold a text behind the fixed column, "2: 1/5/2002|1.5||clear" a line.
QString FilledRows(QWidget& form);
// Presses keys in whatever has the form's focus, or gets it when the window becomes active. These
// signs are keys: → ← ↑ ↓ ⇞ ⇟ ⇱ for the cursor's, ⏎ Enter, ⎋ Esc, ⌫ Delete, ✎ F2, ⇥ Tab; ⌃ and ⇧
// hold Ctrl and Shift for the next key.
void PressKeys(QWidget& form, const QString& keys);
// Types a text into a cell of the grid, in place of what it holds, and presses Enter; the empty
// text empties the cell.
void TypeCell(QWidget& form, int row, int col, const QString& text);
// True if the user can use the control.
bool IsUsable(const QWidget& control);

// What a test does in the next window that holds the user: a modal form or a pop-up menu. Stands
// before the call that shows the window, which returns when the steps have closed it:
//
//     const NextWindow steps([](QWidget& form) { Click(form, QStringLiteral("cmdOK")); });
//     Trigger(main, QStringLiteral("mnuHelpAbout"));
//
// Several of them take the windows in turn, in the order in which they were made. A window that the
// steps leave open is closed, and one that never came by the end of this object's life: either
// fails the test.
class NextWindow {
public:
    explicit NextWindow(std::function<void(QWidget& form)> steps);
    ~NextWindow();
    NextWindow(const NextWindow&) = delete;
    NextWindow& operator=(const NextWindow&) = delete;

private:
    void Look();

    std::function<void(QWidget& form)> steps_;
    QTimer timer_;
    bool hasRun_ = false;
};

}  // namespace rillbook
