#pragma once

#include <QDialog>
#include <QString>
#include <memory>

namespace rillbook {

namespace Ui {
class frmOutputSettings;
}

// Settles the report period and how the output channel is shown, before a report and from its menu.
// SettingsMode names the report. DialogCancelled reports how it was closed; the title bar and Esc
// cancel. REQUIRES: an open station.
class frmOutputSettings : public QDialog {
    Q_OBJECT
public:
    explicit frmOutputSettings(QWidget* parent = nullptr);
    ~frmOutputSettings() override;

    void reject() override;

private:
    void Form_Load();
    void ShowControlsOfMode();
    void HoldToOneYear();
    void ShowPeriod();
    void ConnectCommands();
    void ShowChan();
    void DateChange();
    bool SaveSettings();
    bool SaveGraphLimits();
    void SaveIncrement();
    void Confirm();

    std::unique_ptr<Ui::frmOutputSettings> ui_;
    QString shownIncrement_;  // the text that tbIncre began with
};

}  // namespace rillbook
