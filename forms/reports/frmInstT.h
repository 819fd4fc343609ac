#pragma once

#include <QString>
#include <memory>

#include "forms/reports/ReportForm.h"

namespace rillbook {

namespace Ui {
class frmInstT;
}

// Every reading of the open station's output channel over the report period, one a row, corrected
// and rated. It shows what RefreshTable found, whatever becomes of the readings afterwards.
class frmInstT : public ReportForm {
    Q_OBJECT
public:
    frmInstT(const QString& projectName, CommonDialog& printerDialog, QWidget* parent = nullptr);
    ~frmInstT() override;

    void RefreshTable();

protected:
    void Rebuild() override { RefreshTable(); }

private:
    std::unique_ptr<Ui::frmInstT> ui_;
};

}  // namespace rillbook
