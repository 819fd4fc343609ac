#pragma once

#include <QDialog>
#include <memory>
#include <optional>

#include "platform/text/DateTime.h"

namespace rillbook {

class frmEditRecords;

namespace Ui {
class frmDelete;
}

// "Delete": deletes the records of a range of time from the open station, both ends included, or
// empties one channel in them. OK does so without a question, so lblRange shows at all times how
// many records lie in the range. OK deletes nothing if the range ends before it begins, or if a
// date was refused. A failure is reported, and leaves every record as it was.
class frmDelete : public QDialog {
    Q_OBJECT
public:
    // Works on the recordset of the editor, and is shown beside its Delete button. REQUIRES: no row
    // is being changed.
    explicit frmDelete(frmEditRecords& editor);
    ~frmDelete() override;

private:
    void SelectAll();
    void ShowRange();
    // What OK will do with the range, in one line.
    QString PlanText(std::optional<DateTime> from, std::optional<DateTime> to) const;
    void Delete();
    // Why nothing was deleted; empty if all was.
    QString DeleteRange(DateTime from, DateTime to);
    void DeleteRecords(DateTime from, DateTime to);
    void EmptyChannel(int chan, DateTime from, DateTime to);

    frmEditRecords& editor_;
    std::unique_ptr<Ui::frmDelete> ui_;
};

}  // namespace rillbook
