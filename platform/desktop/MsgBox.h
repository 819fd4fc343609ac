#pragma once

#include <QString>
#include <optional>

namespace rillbook {

enum class MsgBoxIcon { None, Information, Exclamation };
enum class MsgBoxButtons { Ok, YesNo, YesNoCancel, RetryCancel };
enum class MsgBoxAnswer { Ok, Yes, No, Cancel, Retry };

class MsgBoxDoor {
public:
    virtual ~MsgBoxDoor() = default;
    virtual MsgBoxAnswer Show(const QString& text, MsgBoxButtons buttons, MsgBoxIcon icon,
                              const QString& title, std::optional<MsgBoxAnswer> byEnter) = 0;
};

// Shows a modal box over the window in use, under the program's title or another one, and waits.
// Closing the box otherwise than by a button gives its cancelling answer (No for Yes and No).
// `byEnter` is the answer of the default button; without one it is the first button.
MsgBoxAnswer MsgBox(const QString& text, MsgBoxButtons buttons = MsgBoxButtons::Ok,
                    MsgBoxIcon icon = MsgBoxIcon::None, const QString& title = {},
                    std::optional<MsgBoxAnswer> byEnter = std::nullopt);

// Says what failed and, behind a colon, why.
void TellFault(const QString& what, const QString& why);

// What a form says of input that it doesn't take.
void WarnOfInput(const QString& text);

}  // namespace rillbook
