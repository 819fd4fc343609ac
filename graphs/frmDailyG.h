#pragma once

#include "graphs/GraphForm.h"

namespace rillbook {

// The daily means, minimums, maximums and totals of the output channel, those that its settings
// select, as lines on one axis. A day without readings breaks them.
class frmDailyG : public GraphForm {
    Q_OBJECT
public:
    frmDailyG(const QString& projectName, CommonDialog& printerDialog, QWidget* parent = nullptr);

private:
    void LoadValues(DateTime from, DateTime to, int chan) override;
    ChartPoints Points(int chan) const override;
    QString TitleWords(int chan) const override;
};

}  // namespace rillbook
