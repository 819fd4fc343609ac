#include "platform/desktop/CommonDialog.h"

#include <QFileInfo>

#include "platform/desktop/Desktop.h"
#include "platform/desktop/Printer.h"

namespace rillbook {

void CommonDialog::ShowOpen() {
    Show(false);
}

void CommonDialog::ShowSave() {
    Show(true);
}

void CommonDialog::ShowPrinter() {
    const std::optional<int> chosen = Printers().Choose(DialogTitle, Orientation);
    if (!chosen) {
        throw DialogCancelledError();
    }
    Orientation = *chosen;
}

void CommonDialog::Show(bool save) {
    const FileRequest request{.save = save,
                              .title = DialogTitle,
                              .folder = InitDir,
                              .filter = Filter,
                              .fileName = FileName,
                              .confirmOverwrite = save && (Flags & cdlOFNOverwritePrompt) != 0};
    const std::optional<QString> path = FileDialogs().Ask(request);
    if (!path) {
        throw DialogCancelledError();
    }
    FileName = *path;
    FileTitle = QFileInfo(*path).fileName();
}

}  // namespace rillbook
