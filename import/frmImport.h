#pragma once

#include <QDialog>
#include <memory>

#include "import/StationShape.h"

namespace rillbook {

class GridCellEditing;

namespace Ui {
class frmImport;
}

// The layout of the open station's logger files and its channels. Nothing is stored before OK; a
// window accepted has given the station another shape, and the tree has to show it.
class frmImport : public QDialog {
    Q_OBJECT
public:
    explicit frmImport(QWidget* parent = nullptr);
    ~frmImport() override;

private:
    void VisibleControls();
    void VisibleRows();
    void FillGrid();
    void FillChannel(int chan);
    void ChannelCountChanged();
    void ShowChannelCount();
    void Confirm();
    // Empty if there is none; else its row is selected.
    QString FaultOfInput() const;
    // Asks where readings would be lost. Raises AdoError.
    bool MayErase() const;
    StationShape TypedShape() const;

    std::unique_ptr<Ui::frmImport> ui_;
    GridCellEditing* editing_;
};

}  // namespace rillbook
