#include "forms/main/DesktopApplication.h"

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

bool DesktopApplication::notify(QObject* receiver, QEvent* event) {
    try {
        return QApplication::notify(receiver, event);
    } catch (const std::exception& failure) {
        TellFailure(failure);
        return false;
    }
}

}  // namespace rillbook
