#pragma once

#include "platform/desktop/Clipboard.h"
#include "platform/desktop/CommonDialog.h"
#include "platform/desktop/MsgBox.h"
#include "platform/desktop/Screen.h"
#include "platform/desktop/SettingsStore.h"
#include "platform/qt/QtPrinter.h"

class QWidget;

namespace rillbook {

// The doors' real versions. One object of this class lives as long as the program's windows.
class QtDoors : public MsgBoxDoor,
                public FileDialogDoor,
                public SettingsStore,
                public Clipboard,
                public Screen {
public:
    // Installs itself in TheDesktop under this title, and takes itself out at the end of its life.
    explicit QtDoors(const QString& programTitle);
    ~QtDoors() override;

    MsgBoxAnswer Show(const QString& text, MsgBoxButtons buttons, MsgBoxIcon icon,
                      const QString& title, std::optional<MsgBoxAnswer> byEnter) override;
    std::optional<QString> Ask(const FileRequest& request) override;
    QMap<QString, QString> Get(const QString& application, const QString& section) override;
    void Save(const QString& application, const QString& section,
              const QMap<QString, QString>& texts) override;
    void Clear() override;
    void SetText(const QString& text) override;
    QString GetText() override;
    void SetMousePointer(int pointer) override;
    int MousePointer() const override;

private:
    int pointer_ = vbDefault;
    QtPrinterDoor printers_;
};

// The window that a new dialog belongs to: the modal one on top, else the main window, whether or
// not the program is the active one. nullptr if neither is there.
QWidget* WindowOnTop();

}  // namespace rillbook
