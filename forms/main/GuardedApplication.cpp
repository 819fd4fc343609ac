#include "forms/main/GuardedApplication.h"

#include <QScopedValueRollback>

#include "platform/desktop/MsgBox.h"

namespace rillbook {

void TellFailure(const std::exception& failure) {
    static bool telling = false;
    if (telling) {
        return;
    }
    const QScopedValueRollback<bool> during(telling, true);
    MsgBox(QString::fromUtf8(failure.what()), MsgBoxButtons::Ok, MsgBoxIcon::Exclamation);
}

bool GuardedApplication::notify(QObject* receiver, QEvent* event) {
    try {
        return QApplication::notify(receiver, event);
    } catch (const std::exception& failure) {
        TellFailure(failure);
        return false;
    }
}

}  // namespace rillbook
