#pragma once

#include <QStringList>

#include "platform/desktop/Desktop.h"
#include "platform/desktop/MsgBox.h"

namespace rillbook {

// Notes the messages of one test, whatever they say, and presses OK, or
// another button where one is given: for texts that hold the
// system's own words or counts that the test works out later. An exclamation icon shows as "! ".
class MessageLog : public MsgBoxDoor {
public:
    explicit MessageLog(MsgBoxAnswer answer = MsgBoxAnswer::Ok)
        : previous_(TheDesktop()), answer_(answer) {
        TheDesktop().messages = this;
    }
    ~MessageLog() override { TheDesktop() = previous_; }

    QStringList texts;

    MsgBoxAnswer Show(const QString& text, MsgBoxButtons, MsgBoxIcon icon, const QString&,
                      std::optional<MsgBoxAnswer>) override {
        texts += (icon == MsgBoxIcon::Exclamation ? QStringLiteral("! ") : QString()) + text;
        return answer_;
    }

private:
    const Desktop previous_;
    const MsgBoxAnswer answer_;
};

}  // namespace rillbook
