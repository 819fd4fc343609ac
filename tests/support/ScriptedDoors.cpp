#include "tests/support/ScriptedDoors.h"

#include <QtTest/QTest>
#include <utility>

#include "platform/desktop/Desktop.h"

namespace rillbook {

namespace {

MsgBoxAnswer CancellingAnswer(MsgBoxButtons buttons) {
    switch (buttons) {
        case MsgBoxButtons::Ok:
            return MsgBoxAnswer::Ok;
        case MsgBoxButtons::YesNo:
            return MsgBoxAnswer::No;
        default:
            return MsgBoxAnswer::Cancel;
    }
}

void Fail(const QString& what) {
    QTest::qFail(qPrintable(what), __FILE__, __LINE__);
}

Desktop& Previous() {
    static Desktop previous;
    return previous;
}

}  // namespace

ScriptedDoors::ScriptedDoors() {
    Previous() = TheDesktop();
    TheDesktop() = Desktop{.programTitle = u"Rillbook"_qs,
                           .messages = this,
                           .fileDialogs = this,
                           .settings = this,
                           .clipboard = this,
                           .screen = this,
                           .printers = this};
}

ScriptedDoors::~ScriptedDoors() {
    for (const ExpectedMessage& message : expectedMessages_) {
        Fail(u"Message that never came: %1"_qs.arg(message.text));
    }
    if (!fileAnswers_.empty()) {
        Fail(u"%1 file dialog(s) that never came"_qs.arg(fileAnswers_.size()));
    }
    if (!expectedPrints_.empty()) {
        Fail(u"%1 print(s) that never came"_qs.arg(expectedPrints_.size()));
    }
    TheDesktop() = Previous();
}

void ScriptedDoors::ExpectMessage(const QString& text, MsgBoxAnswer answer) {
    expectedMessages_.push_back({text, answer});
}

void ScriptedDoors::AnswerFileDialog(const QString& path) {
    fileAnswers_.push_back(path);
}

void ScriptedDoors::CancelFileDialog() {
    fileAnswers_.push_back(std::nullopt);
}

std::shared_ptr<PrintRecording> ScriptedDoors::ExpectPrint(double width, double height) {
    expectedPrints_.push_back({std::make_shared<PrintRecording>(), width, height});
    return expectedPrints_.back().recording;
}

void ScriptedDoors::CancelPrinter() {
    expectedPrints_.emplace_back();
}

MsgBoxAnswer ScriptedDoors::Show(const QString& text, MsgBoxButtons buttons, MsgBoxIcon icon,
                                 const QString& title, std::optional<MsgBoxAnswer> byEnter) {
    shownMessages.push_back({text, title, icon, buttons, byEnter});
    if (expectedMessages_.empty()) {
        Fail(u"Unexpected message: %1"_qs.arg(text));
        return CancellingAnswer(buttons);
    }
    const ExpectedMessage expected = expectedMessages_.front();
    expectedMessages_.pop_front();
    if (expected.text != text) {
        Fail(u"Message \"%1\" instead of \"%2\""_qs.arg(text, expected.text));
        return CancellingAnswer(buttons);
    }
    return expected.answer;
}

std::optional<QString> ScriptedDoors::Ask(const FileRequest& request) {
    fileRequests.push_back(request);
    if (fileAnswers_.empty()) {
        Fail(u"Unexpected file dialog: %1"_qs.arg(request.title));
        return std::nullopt;
    }
    const std::optional<QString> answer = fileAnswers_.front();
    fileAnswers_.pop_front();
    return answer;
}

std::optional<int> ScriptedDoors::Choose(const QString& title, int orientation) {
    if (expectedPrints_.empty()) {
        Fail(u"Unexpected printer dialog: %1"_qs.arg(title));
        return std::nullopt;
    }
    if (!expectedPrints_.front().recording) {
        expectedPrints_.pop_front();
        return std::nullopt;
    }
    PrintRecording& recording = *expectedPrints_.front().recording;
    recording.dialogTitle = title;
    recording.dialogOrientation = orientation;
    return recording.turnedTo.value_or(orientation);
}

std::unique_ptr<Printer> ScriptedDoors::BeginDoc(const QString& name, int orientation) {
    ExpectedPrint expected;
    if (expectedPrints_.empty()) {
        Fail(u"Unexpected print: %1"_qs.arg(name));
    } else {
        expected = std::exchange(expectedPrints_.front(), {});
        expectedPrints_.pop_front();
    }
    if (!expected.recording) {
        throw DialogCancelledError();
    }
    if (!expected.recording->refusal.isEmpty()) {
        throw PrinterError(expected.recording->refusal);
    }
    expected.recording->name = name;
    expected.recording->orientation = orientation;
    if (orientation == cdlLandscape) {
        std::swap(expected.width, expected.height);
    }
    return std::make_unique<RecordingPrinter>(expected.width, expected.height, expected.recording);
}

}  // namespace rillbook
