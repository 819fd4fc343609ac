#pragma once

#include <QDialog>
#include <memory>

namespace rillbook {

namespace Ui {
class frmAbout;
}

class frmAbout : public QDialog {
    Q_OBJECT
public:
    explicit frmAbout(QWidget* parent = nullptr);
    ~frmAbout() override;

private:
    std::unique_ptr<Ui::frmAbout> ui_;
};

}  // namespace rillbook
