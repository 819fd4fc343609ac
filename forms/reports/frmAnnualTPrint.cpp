#include "forms/reports/frmAnnualTPrint.h"

#include "app/SharedState.h"
#include "ui_frmAnnualTPrint.h"

namespace rillbook {

frmAnnualTPrint::frmAnnualTPrint(QWidget* parent)
    : QDialog(parent), ui_(std::make_unique<Ui::frmAnnualTPrint>()) {
    ui_->setupUi(this);
    connect(ui_->cmdOK, &QPushButton::clicked, this, &frmAnnualTPrint::Confirm);
    connect(ui_->cmdCancel, &QPushButton::clicked, this, &frmAnnualTPrint::reject);
}

frmAnnualTPrint::~frmAnnualTPrint() = default;

void frmAnnualTPrint::Confirm() {
    DialogCancelled = false;
    PrintTotals = ui_->chkTotal->isChecked();
    PrintPeak = ui_->chkPMax->isChecked();
    accept();
}

void frmAnnualTPrint::reject() {
    DialogCancelled = true;
    QDialog::reject();
}

}  // namespace rillbook
