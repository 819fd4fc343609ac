#include "forms/main/DesktopApplication.h"

#include <QDialog>
#include <QEvent>
#include <QMainWindow>
#include <QPointer>
#include <QScopedValueRollback>

#include "platform/desktop/MsgBox.h"
#include "platform/qt/FormFont.h"

namespace rillbook {

void TellFailure(const std::exception& failure) {
    static bool telling = false;
    if (telling) {
        return;
    }
    const QScopedValueRollback<bool> during(telling, true);
    MsgBox(QString::fromUtf8(failure.what()), MsgBoxButtons::Ok, MsgBoxIcon::Exclamation);
}

DesktopApplication::DesktopApplication(int& argc, char** argv) : QApplication(argc, argv) {
    setFont(FormFont());
}

namespace {

// Window systems lose the focus where two windows close at once, as a question does with the window
// that asked it, and the keyboard would be dead.
void ActivateOwnerOf(const QObject* closed) {
    const auto* dialog = qobject_cast<const QDialog*>(closed);
    if (dialog != nullptr && dialog->parentWidget() != nullptr &&
        dialog->parentWidget()->isVisible()) {
        dialog->parentWidget()->activateWindow();
    }
}

// A modal form would hold every window. Over the main window it is enough that it holds those that
// it belongs to, and the help stays in use beside it. On any other, all are held.
void HoldOnlyOwnersOf(QObject* shown) {
    auto* dialog = qobject_cast<QDialog*>(shown);
    if (dialog == nullptr || !dialog->isModal()) {
        return;
    }
    const QWidget* outermost = dialog;
    while (outermost->parentWidget() != nullptr) {
        outermost = outermost->parentWidget();
    }
    if (qobject_cast<const QMainWindow*>(outermost) != nullptr) {
        dialog->setWindowModality(Qt::NonModal);  // from one sort to the other nothing would change
        dialog->setWindowModality(Qt::WindowModal);
    }
}

}  // namespace

bool DesktopApplication::notify(QObject* receiver, QEvent* event) {
    try {
        if (event->type() == QEvent::Show && !event->spontaneous()) {
            HoldOnlyOwnersOf(receiver);
        }
        const bool isClosed = event->type() == QEvent::Hide && !event->spontaneous();
        const QPointer<QObject> closed(isClosed ? receiver : nullptr);
        const bool isDone = QApplication::notify(receiver, event);
        ActivateOwnerOf(closed);
        return isDone;
    } catch (const std::exception& failure) {
        TellFailure(failure);
        return false;
    }
}

}  // namespace rillbook
