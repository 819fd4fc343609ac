#include "tests/support/ScriptedDoors.h"

#include <QtTest/QTest>

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
    TheDesktop() = Desktop{.programTitle = QStringLiteral("Rillbook"),
                           .messages = this,
                           .fileDialogs = this,
                           .settings = this,
                           .clipboard = this,
                           .screen = this};
}

ScriptedDoors::~ScriptedDoors() {
    Verify();
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

void ScriptedDoors::Verify() {
    for (const ExpectedMessage& message : expectedMessages_) {
        Fail(QStringLiteral("Message that never came: %1").arg(message.text));
    }
    if (!fileAnswers_.empty()) {
        Fail(QStringLiteral("%1 file dialog(s) that never came").arg(fileAnswers_.size()));
    }
    expectedMessages_.clear();
    fileAnswers_.clear();
}

MsgBoxAnswer ScriptedDoors::Show(const QString& text, MsgBoxButtons buttons, MsgBoxIcon icon,
                                 const QString& title) {
    shownMessages.push_back({text, title, icon, buttons});
    if (expectedMessages_.empty()) {
        Fail(QStringLiteral("Unexpected message: %1").arg(text));
        return CancellingAnswer(buttons);
    }
    const ExpectedMessage expected = expectedMessages_.front();
    expectedMessages_.pop_front();
    if (expected.text != text) {
        Fail(QStringLiteral("Message \"%1\" instead of \"%2\"").arg(text, expected.text));
        return CancellingAnswer(buttons);
    }
    return expected.answer;
}

std::optional<QString> ScriptedDoors::Ask(const FileRequest& request) {
    fileRequests.push_back(request);
    if (fileAnswers_.empty()) {
        Fail(QStringLiteral("Unexpected file dialog: %1").arg(request.title));
        return std::nullopt;
    }
    const std::optional<QString> answer = fileAnswers_.front();
    fileAnswers_.pop_front();
    return answer;
}

QString ScriptedDoors::Get(const QString&, const QString&, const QString& key) {
    return settings.value(key);
}

void ScriptedDoors::Save(const QString&, const QString&, const QString& key, const QString& text) {
    settings.insert(key, text);
}

}  // namespace rillbook
