#pragma once

#include <QString>

namespace rillbook {

class Clipboard;
class FileDialogDoor;
class MsgBoxDoor;
class PrinterDoor;
class Screen;
class SettingsStore;

// The doors through which the program reaches its desktop, installed at start and owned by whoever
// installs them. The program asks for each when it needs it, so that tests can put their own in
// place. Asking for a door that isn't installed is a programming error and ends the process.
struct Desktop {
    QString programTitle;  // heads message boxes that bring no title of their own
    MsgBoxDoor* messages = nullptr;
    FileDialogDoor* fileDialogs = nullptr;
    SettingsStore* settings = nullptr;
    Clipboard* clipboard = nullptr;
    Screen* screen = nullptr;
    PrinterDoor* printers = nullptr;
};

Desktop& TheDesktop();

MsgBoxDoor& MessagesDoor();
FileDialogDoor& FileDialogs();
SettingsStore& Settings();
Clipboard& TheClipboard();
Screen& TheScreen();
PrinterDoor& Printers();

}  // namespace rillbook
