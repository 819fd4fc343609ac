#pragma once

#include <QDialog>
#include <memory>
#include <vector>

#include "store/RatingStore.h"

namespace rillbook {

namespace Ui {
class frmRating;
}

// Lists the ratings of the open station's output channel, and is the way to create, edit and delete
// them; also holds what the channel is called once it is rated. DialogCancelled is cleared as soon
// as something has changed. REQUIRES: an open station.
class frmRating : public QDialog {
    Q_OBJECT
public:
    explicit frmRating(QWidget* parent = nullptr);
    ~frmRating() override;

private:
    void Form_Load();
    void ConnectCommands();
    void FillGrid();
    void EditRow();
    void DeleteRow();
    // Comes back to the row of the rating that was saved, else to the row that it was called from.
    template <typename Editor>
    void ShowEditor(RatingTime rating);
    const ListedRating* CurrentRating() const;
    void GoToRow(int row);
    // 0 if the list has no such rating.
    int RowOf(RatingTime time, bool isTable) const;
    void Confirm();

    std::unique_ptr<Ui::frmRating> ui_;
    std::vector<ListedRating> ratings_;  // those of the rows of the grid, from row 1
};

}  // namespace rillbook
