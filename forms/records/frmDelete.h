#pragma once

#include <QDialog>
#include <memory>

#include "platform/text/DateTime.h"

namespace rillbook {

class frmEditRecords;

namespace Ui {
class frmDelete;
}

// "Delete": takes the records of a range of time from the open station, both ends included, or
// empties one channel in them. OK does so without a question; it does nothing where the range ends
// before it begins. What fails is told, and leaves every record as it was.
class frmDelete : public QDialog {
    Q_OBJECT
public:
    // Works on the editor's recordset, beside which it stands. REQUIRES: no row is being changed.
    explicit frmDelete(frmEditRecords& editor);
    ~frmDelete() override;

private:
    void SelectAll();
    void Delete();
    // Why nothing was deleted; empty where all was.
    QString DeleteRange(DateTime from, DateTime to);
    void DeleteRecords(DateTime from, DateTime to);
    void EmptyChannel(int chan, DateTime from, DateTime to);

    frmEditRecords& editor_;
    std::unique_ptr<Ui::frmDelete> ui_;
};

}  // namespace rillbook
