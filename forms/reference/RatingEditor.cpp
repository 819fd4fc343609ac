#include "forms/reference/RatingEditor.h"

#include <QLineEdit>

#include "app/SharedState.h"
#include "platform/ado/AdoError.h"
#include "platform/desktop/MsgBox.h"

namespace rillbook {

void RatingEditor::Read(const std::function<void()>& step) {
    try {
        step();
    } catch (const AdoError& error) {
        fault_ = error.Description();
    }
}

bool RatingEditor::TellWhetherRead() const {
    if (!fault_.isEmpty()) {
        TellFault(QStringLiteral("The rating could not be read"), fault_);
    }
    return fault_.isEmpty();
}

void RatingEditor::ShowTime(QLineEdit& box, RatingTime time) {
    shownTime_ = time;
    box.setText(time ? GeneralDateText(*time) : QString());
}

RatingTime RatingEditor::TypedTime(const QLineEdit& box) const {
    const bool isUntouched = shownTime_ && box.text() == GeneralDateText(*shownTime_);
    return isUntouched ? shownTime_ : ReadDatedTime(box.text());
}

void RatingEditor::Confirm() {
    if (!Check()) {
        return;
    }
    try {
        Save();
    } catch (const AdoError& error) {
        TellFault(QStringLiteral("The rating could not be saved"), error.Description());
        return;
    }
    DialogCancelled = false;
    accept();
}

void RatingEditor::reject() {
    DialogCancelled = true;
    QDialog::reject();
}

}  // namespace rillbook
