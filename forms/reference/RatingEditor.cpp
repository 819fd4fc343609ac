#include "forms/reference/RatingEditor.h"

#include "app/SharedState.h"
#include "platform/ado/AdoError.h"
#include "platform/desktop/MsgBox.h"
#include "platform/text/Numbers.h"
#include "store/FormStuff.h"

namespace rillbook {

QString RatingCaption(const QString& window) {
    const ChannelInfoData& channel = ChannelInfo[StationInfo.OutputChannel];
    return window + QStringLiteral(" - ") + channel.RecSta + u' ' + channel.RecDesc;
}

void TellRatingFailure(const QString& outcome, const QString& reason) {
    MsgBox(outcome + QStringLiteral(": ") + reason, MsgBoxButtons::Ok, MsgBoxIcon::Exclamation);
}

QString NumberTextOrEmpty(std::optional<double> number) {
    return number ? RegionalNumberText(*number) : QString();
}

void RatingEditor::Read(const std::function<void()>& step) {
    try {
        step();
    } catch (const AdoError& error) {
        fault_ = error.Description();
    }
}

bool RatingEditor::TellWhetherRead() const {
    if (!fault_.isEmpty()) {
        TellRatingFailure(QStringLiteral("The rating could not be read"), fault_);
    }
    return fault_.isEmpty();
}

void RatingEditor::Confirm() {
    if (!Check()) {
        return;
    }
    try {
        Save();
    } catch (const AdoError& error) {
        TellRatingFailure(QStringLiteral("The rating could not be saved"), error.Description());
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
