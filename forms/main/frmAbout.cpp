#include "forms/main/frmAbout.h"

#include "app/Application.h"
#include "forms/main/Icons.h"
#include "ui_frmAbout.h"

namespace rillbook {

frmAbout::frmAbout(QWidget* parent) : QDialog(parent), ui_(std::make_unique<Ui::frmAbout>()) {
    ui_->setupUi(this);
    setWindowTitle(QStringLiteral("About ") + Application::Title());
    ui_->lblTitle->setText(Application::Title());
    ui_->lblVersion->setText(QStringLiteral("Version %1.%2.%3")
                                 .arg(Application::Major())
                                 .arg(Application::Minor())
                                 .arg(Application::Revision()));
    ui_->lblDescription->setText(Application::LegalLine());
    ui_->picIcon->setPixmap(
        PictureIcon(Picture::Program).pixmap(ui_->picIcon->size(), devicePixelRatio()));
    connect(ui_->cmdOK, &QPushButton::clicked, this, &QDialog::accept);
}

frmAbout::~frmAbout() = default;

}  // namespace rillbook
