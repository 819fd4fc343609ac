#pragma once

#include <QDialog>
#include <memory>
#include <optional>

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

protected:
    bool eventFilter(QObject* watched, QEvent* event) override;

private:
    struct InputFault {
        QString text;
        int row;
        int col;
    };

    bool HasWidths() const;
    void VisibleControls();
    void LayoutChanged();
    // No-op if the layout has no widths.
    void GoToFirstWidth();
    // The column itself, or the next one while the layout hides the widths.
    int ShownCol(int col) const;
    void GoTo(int row, int col);
    void VisibleRows();
    void FillGrid();
    void FillChannel(int chan);
    void ChannelCountChanged();
    void ShowChannelCount();
    void Confirm();
    std::optional<InputFault> FaultOfInput() const;
    // Asks if readings would be lost. Raises AdoError.
    bool MayErase() const;
    StationShape TypedShape() const;

    std::unique_ptr<Ui::frmImport> ui_;
    GridCellEditing* editing_;
    bool stepsThroughLayouts_ = false;  // by keys, with the list of layouts closed
};

}  // namespace rillbook
