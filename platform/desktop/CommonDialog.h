#pragma once

#include <QString>
#include <exception>
#include <optional>

namespace rillbook {

// What a file dialog is asked for.
struct FileRequest {
    bool save = false;
    QString title;
    QString folder;    // where it opens; one that isn't there counts as the home folder
    QString filter;    // "Text|*.a;*.b|All Files (*.*)|*.*"
    QString fileName;  // proposed
    bool confirmOverwrite = false;
};

class FileDialogDoor {
public:
    virtual ~FileDialogDoor() = default;
    // The full path that the user chose; nothing if the user cancelled.
    virtual std::optional<QString> Ask(const FileRequest& request) = 0;
};

// Raised by CommonDialog when the user cancels.
class DialogCancelledError : public std::exception {
public:
    const char* what() const noexcept override { return "Cancel was selected."; }
};

enum CommonDialogFlags : int {
    cdlOFNOverwritePrompt = 2,
    cdlOFNHideReadOnly = 4,
};

// The dialog control of a form: its properties stay from one use to the next.
class CommonDialog {
public:
    QString DialogTitle;
    QString InitDir;
    QString Filter;
    QString FileName;   // full path of the chosen file after a dialog
    QString FileTitle;  // its name without the folder
    int Flags = 0;
    int Orientation = 1;  // of the printer dialog: 1 portrait, 2 landscape

    // Set FileName and FileTitle, or raise DialogCancelledError and leave them. A name typed
    // without an extension gets that of the filter's first pattern. For opening, it does so only if
    // there is no file of that name and the filter's first entry has no other pattern.
    void ShowOpen();
    void ShowSave();
    // The printer dialog, set to Orientation, which the user may change. Raises
    // DialogCancelledError.
    void ShowPrinter();

private:
    void Show(bool save);
};

}  // namespace rillbook
