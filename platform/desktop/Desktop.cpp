#include "platform/desktop/Desktop.h"

#include <QtGlobal>

namespace rillbook {

namespace {

template <typename Door>
Door& Installed(Door* door, const char* name) {
    if (door == nullptr) {
        qFatal("The %s door isn't installed", name);
    }
    return *door;
}

}  // namespace

Desktop& TheDesktop() {
    static Desktop desktop;
    return desktop;
}

MsgBoxDoor& MessagesDoor() {
    return Installed(TheDesktop().messages, "message box");
}
FileDialogDoor& FileDialogs() {
    return Installed(TheDesktop().fileDialogs, "file dialog");
}
SettingsStore& Settings() {
    return Installed(TheDesktop().settings, "settings");
}
Clipboard& TheClipboard() {
    return Installed(TheDesktop().clipboard, "clipboard");
}
Screen& TheScreen() {
    return Installed(TheDesktop().screen, "screen");
}

PrinterDoor& Printers() {
    return Installed(TheDesktop().printers, "printer");
}

}  // namespace rillbook
