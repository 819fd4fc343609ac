#include "forms/reference/frmConversionEq.h"

#include "platform/desktop/MsgBox.h"
#include "platform/text/Numbers.h"
#include "store/FormStuff.h"
#include "store/RatingStore.h"
#include "ui_frmConversionEq.h"

namespace rillbook {

frmConversionEq::frmConversionEq(QWidget* parent)
    : RatingEditor(parent), ui_(std::make_unique<Ui::frmConversionEq>()) {
    ui_->setupUi(this);
    setWindowTitle(QStringLiteral("Rating Equation - ") + ChannelName(StationInfo.OutputChannel));
    LoadValues();
    ui_->cmdOK->setEnabled(TellWhetherRead());
    connect(ui_->cmdOK, &QPushButton::clicked, this, &frmConversionEq::Confirm);
    connect(ui_->cmdCancel, &QPushButton::clicked, this, &frmConversionEq::reject);
}

frmConversionEq::~frmConversionEq() = default;

RatingTime frmConversionEq::Time() const {
    return TypedTime(*ui_->tbDate);
}

void frmConversionEq::LoadValues() {
    std::optional<EquationRating> rating;
    Read([&] { rating = ReadEquation(StationInfo.OutputChannel, RatingEditDate); });
    if (rating) {
        ShowTime(*ui_->tbDate, rating->time);
        ui_->tbA->setText(RegionalNumberText(rating->A));
        ui_->tbC->setText(RegionalNumberText(rating->c));
        ui_->tbR->setText(RegionalNumberText(rating->r));
        ui_->tbNotes->setText(rating->notes);
        ui_->tbNotes->setCursorPosition(0);
    }
}

bool frmConversionEq::CheckValues() const {
    if (!Time()) {
        WarnOfInput(QStringLiteral("Not a valid Date."));
        ui_->tbDate->setFocus();
        return false;
    }
    if (!IsNumber(ui_->tbC->text())) {
        WarnOfInput(QStringLiteral("C must be numeric."));
        ui_->tbC->setFocus();
        return false;
    }
    return true;
}

void frmConversionEq::SaveValues() const {
    WriteEquation(StationInfo.OutputChannel, RatingEditDate,
                  {.time = Time(),
                   .A = ReadTypedNumber(ui_->tbA->text()),
                   .r = ReadTypedNumber(ui_->tbR->text()),
                   .c = ReadTypedNumber(ui_->tbC->text()),
                   .notes = ui_->tbNotes->text()});
}

}  // namespace rillbook
