#pragma once

#include <QString>
#include <memory>

#include "forms/reports/AnnualSheet.h"
#include "forms/reports/ReportForm.h"

namespace rillbook {

namespace Ui {
class frmAnnualT;
}

// The yearly sheet of the open station's output channel over the report period, which the output
// settings have settled before. Its place on the screen is remembered from one showing to the next.
class frmAnnualT : public ReportForm {
    Q_OBJECT
public:
    frmAnnualT(const QString& projectName, CommonDialog& printerDialog, QWidget* parent = nullptr);
    ~frmAnnualT() override;

    // Reads the readings anew, whatever the sheet showed before.
    void FillGrid();

    void done(int result) override;

protected:
    void Rebuild() override { FillGrid(); }
    void resizeEvent(QResizeEvent* event) override;

private:
    void SetUpGrid();
    void ConnectCommands();
    DailyStatistic CheckedStatistic() const;
    void FillCaption();
    void MakeRoomForTitle();
    void PrintSheet();

    std::unique_ptr<Ui::frmAnnualT> ui_;
    AnnualSheet sheet_;  // as the grid shows it
};

}  // namespace rillbook
