#pragma once

#include <QMap>
#include <QString>
#include <deque>
#include <memory>
#include <optional>
#include <vector>

#include "platform/desktop/Clipboard.h"
#include "platform/desktop/CommonDialog.h"
#include "platform/desktop/MsgBox.h"
#include "platform/desktop/Printer.h"
#include "platform/desktop/Screen.h"
#include "platform/desktop/SettingsStore.h"
#include "tests/support/RecordingSurface.h"

namespace rillbook {

// Stands in for the desktop during one test: installs itself, and puts back what was there at the
// end of its life. A message, a file dialog or a print that the test didn't announce fails the test
// and gets the cancelling answer; an announced one that didn't come fails it too.
class ScriptedDoors : public MsgBoxDoor,
                      public FileDialogDoor,
                      public SettingsStore,
                      public Clipboard,
                      public Screen,
                      public PrinterDoor {
public:
    struct ShownMessage {
        QString text;
        QString title;
        MsgBoxIcon icon;
        MsgBoxButtons buttons;
        std::optional<MsgBoxAnswer> byEnter;
    };

    ScriptedDoors();
    ~ScriptedDoors() override;

    // The next message has exactly this text and gets this answer.
    void ExpectMessage(const QString& text, MsgBoxAnswer answer = MsgBoxAnswer::Ok);
    // The next file dialog is answered with this path, or cancelled.
    void AnswerFileDialog(const QString& path);
    void CancelFileDialog();
    // What the next document draws, which the test may keep and read at any time. `width` and
    // `height` are those of the upright sheet, in twips; a landscape page lies across it.
    std::shared_ptr<PrintRecording> ExpectPrint(double width = 12240, double height = 15840);
    // The user cancels the next printer dialog, or the file dialog in its place where a document
    // begins without one.
    void CancelPrinter();

    std::vector<ShownMessage> shownMessages;
    std::vector<FileRequest> fileRequests;
    QMap<QString, QString> settings;  // by key
    QString clipboardText;
    std::vector<int> pointers;  // every pointer set, in order

    MsgBoxAnswer Show(const QString& text, MsgBoxButtons buttons, MsgBoxIcon icon,
                      const QString& title, std::optional<MsgBoxAnswer> byEnter) override;
    std::optional<QString> Ask(const FileRequest& request) override;
    QMap<QString, QString> Get(const QString&, const QString&) override { return settings; }
    void Save(const QString&, const QString&, const QMap<QString, QString>& texts) override {
        settings.insert(texts);
    }
    void Clear() override { clipboardText.clear(); }
    void SetText(const QString& text) override { clipboardText = text; }
    QString GetText() override { return clipboardText; }
    void SetMousePointer(int pointer) override { pointers.push_back(pointer); }
    int MousePointer() const override { return pointers.empty() ? vbDefault : pointers.back(); }
    std::optional<int> Choose(const QString& title, int orientation) override;
    std::unique_ptr<Printer> BeginDoc(const QString& name, int orientation) override;

private:
    struct ExpectedMessage {
        QString text;
        MsgBoxAnswer answer;
    };
    struct ExpectedPrint {
        std::shared_ptr<PrintRecording> recording;  // nothing: the user cancels
        double width = 0;
        double height = 0;
    };
    std::deque<ExpectedMessage> expectedMessages_;
    std::deque<std::optional<QString>> fileAnswers_;
    std::deque<ExpectedPrint> expectedPrints_;
};

}  // namespace rillbook
