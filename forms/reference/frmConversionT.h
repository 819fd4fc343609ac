#pragma once

#include <memory>

#include "forms/reference/RatingEditor.h"

namespace rillbook {

class GridCellEditing;

namespace Ui {
class frmConversionT;
}

// Edits one table rating: from when it applies, its points of depth and flow, and its notes.
// REQUIRES: an open station.
class frmConversionT : public RatingEditor {
    Q_OBJECT
public:
    explicit frmConversionT(QWidget* parent = nullptr);
    ~frmConversionT() override;

    // Every way of closing without OK comes here: asks whether to save changed points.
    void reject() override;
    RatingTime Time() const override;

protected:
    bool Check() override { return CheckTable(); }
    void Save() override { SaveTable(); }

private:
    void LoadTable();
    // Selects the row at fault, or goes to the date.
    bool CheckTable();
    void SaveTable() const;

    // Those that the user can fill.
    int TableRows() const;
    // Empty for a text of blanks.
    QString DepthText(int row) const;
    QString FlowText(int row) const;
    struct Fault {
        QString message;  // empty if nothing is wrong with the points
        int row = 0;
        int col = 0;
    };
    Fault FaultOfPoints() const;

    std::unique_ptr<Ui::frmConversionT> ui_;
    GridCellEditing& editing_;
};

}  // namespace rillbook
