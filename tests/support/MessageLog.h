#pragma once

#include <QStringList>

#include "platform/desktop/Desktop.h"
#include "platform/desktop/MsgBox.h"

namespace rillbook {

// Notes the messages of one test, whatever they say, and presses OK: for texts that hold the
// system's own words or counts that the test works out later. An exclamation icon shows as "! ".
class MessageLog : public MsgBoxDoor {
public:
    MessageLog() : previous_(TheDesktop()) { TheDesktop().messages = this; }
    ~MessageLog() override { TheDesktop() = previous_; }

    QStringList texts;

    MsgBoxAnswer Show(const QString& text, MsgBoxButtons, MsgBoxIcon icon,
                      const QString&) override {
        texts += (icon == MsgBoxIcon::Exclamation ? QStringLiteral("! ") : QString()) + text;
        return MsgBoxAnswer::Ok;
    }

private:
    const Desktop previous_;
};

}  // namespace rillbook
