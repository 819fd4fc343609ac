#pragma once

#include "graphs/GraphForm.h"

namespace rillbook {

// The readings of the output channel as one line. A step longer than the time increment breaks it.
class frmInstG : public GraphForm {
    Q_OBJECT
public:
    frmInstG(const QString& projectName, CommonDialog& printerDialog, QWidget* parent = nullptr);

private:
    void LoadValues(DateTime from, DateTime to, int chan) override;
    ChartPoints Points(int chan) const override;
    QString TitleWords(int chan) const override;
};

}  // namespace rillbook
