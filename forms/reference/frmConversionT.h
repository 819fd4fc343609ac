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

protected:
    bool Check() override { return CheckTable(); }
    void Save() override { SaveTable(); }
    void keyPressEvent(QKeyEvent* event) override;

private:
    void LoadTable();
    bool CheckTable() const;
    void SaveTable() const;

    // Those that the user can fill.
    int TableRows() const;
    QString DepthText(int row) const;
    QString FlowText(int row) const;
    // What is wrong with the points; empty if nothing is.
    QString FaultOfPoints() const;

    std::unique_ptr<Ui::frmConversionT> ui_;
    GridCellEditing& editing_;
};

}  // namespace rillbook
