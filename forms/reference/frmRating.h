#pragma once

#include <QDialog>
#include <memory>

#include "platform/text/DateTime.h"

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
    template <typename Editor>
    void ShowEditor(DateTime rating);
    void Confirm();

    std::unique_ptr<Ui::frmRating> ui_;
};

}  // namespace rillbook
