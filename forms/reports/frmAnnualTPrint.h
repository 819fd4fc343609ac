#pragma once

#include <QDialog>
#include <memory>

namespace rillbook {

namespace Ui {
class frmAnnualTPrint;
}

// Asks what of the yearly sheet to print. DialogCancelled tells how it was closed; the title bar
// cancels.
class frmAnnualTPrint : public QDialog {
    Q_OBJECT
public:
    explicit frmAnnualTPrint(QWidget* parent = nullptr);
    ~frmAnnualTPrint() override;

    // What the user chose, once the dialog has been closed with its button "Print".
    bool PrintTotals = false;  // the row of totals
    bool PrintPeak = false;    // the peak line

    void reject() override;

private:
    void Confirm();

    std::unique_ptr<Ui::frmAnnualTPrint> ui_;
};

}  // namespace rillbook
