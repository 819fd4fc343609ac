#pragma once

#include <QString>
#include <memory>

#include "forms/reports/ReportForm.h"

namespace rillbook {

class MSFlexGrid;

namespace Ui {
class frmDailyT;
}

// The daily statistics of the open station's output channel: one row for each calendar day of the
// report period, empty but for its date where the day has no readings.
class frmDailyT : public ReportForm {
    Q_OBJECT
public:
    frmDailyT(const QString& projectName, CommonDialog& printerDialog, QWidget* parent = nullptr);
    ~frmDailyT() override;

    void RefreshTable();

protected:
    void Rebuild() override { RefreshTable(); }

private:
    std::unique_ptr<Ui::frmDailyT> ui_;
};

}  // namespace rillbook
