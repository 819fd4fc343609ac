#include "platform/desktop/MsgBox.h"

#include "platform/desktop/Desktop.h"

namespace rillbook {

MsgBoxAnswer MsgBox(const QString& text, MsgBoxButtons buttons, MsgBoxIcon icon,
                    const QString& title, std::optional<MsgBoxAnswer> byEnter) {
    return MessagesDoor().Show(text, buttons, icon,
                               title.isEmpty() ? TheDesktop().programTitle : title, byEnter);
}

void TellFault(const QString& what, const QString& why) {
    MsgBox(what + QStringLiteral(": ") + why, MsgBoxButtons::Ok, MsgBoxIcon::Exclamation);
}

void WarnOfInput(const QString& text) {
    MsgBox(text, MsgBoxButtons::Ok, MsgBoxIcon::Information, QStringLiteral("Warning"));
}

}  // namespace rillbook
