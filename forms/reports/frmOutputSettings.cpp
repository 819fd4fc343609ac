#include "forms/reports/frmOutputSettings.h"

#include <QCheckBox>
#include <algorithm>
#include <array>
#include <cstddef>

#include "app/SharedState.h"
#include "platform/desktop/MsgBox.h"
#include "platform/text/Numbers.h"
#include "store/FormStuff.h"
#include "store/ProjectFile.h"
#include "ui_frmOutputSettings.h"

namespace rillbook {

namespace {

// What a report's dialog shows, and how long its period can be.
struct ModeTraits {
    bool isGraph;
    bool hasTotals;  // factor and unit of the monthly totals
    bool hasSeries;  // which of the daily statistics are drawn
    int maxYears;
    int maxMonths;
};

// By ReportMode.
constexpr std::array<ModeTraits, 5> kModes{{{false, true, false, 1, 12},
                                            {true, false, false, 1, 12},
                                            {true, false, true, 3, 24},
                                            {false, false, false, 1, 12},
                                            {false, false, false, 10, 24}}};

const ModeTraits& TraitsOfMode() {
    return kModes[static_cast<std::size_t>(SettingsMode)];
}

// Unit digits of the period code.
enum PeriodUnit : int { kDays = 1, kWeeks = 2, kMonths = 3, kYears = 4 };

int LargestCount(int unit) {
    switch (unit) {
        case kDays:
            return 90;
        case kWeeks:
            return 52;
        case kMonths:
            return TraitsOfMode().maxMonths;
        default:
            return TraitsOfMode().maxYears;
    }
}

constexpr double kHoursADay = 24;

}  // namespace

frmOutputSettings::frmOutputSettings(QWidget* parent)
    : QDialog(parent), ui_(std::make_unique<Ui::frmOutputSettings>()) {
    ui_->setupUi(this);
    ui_->unitGroup->setId(ui_->optDays, kDays);
    ui_->unitGroup->setId(ui_->optWeeks, kWeeks);
    ui_->unitGroup->setId(ui_->optMonths, kMonths);
    ui_->unitGroup->setId(ui_->optYears, kYears);
    ui_->updN->SetMin(1);
    ui_->updN->SetMax(12);
    ui_->updN->SetBuddy(ui_->tbN);
    ui_->updDigits->SetMin(0);
    ui_->updDigits->SetMax(10);
    ui_->updDigits->SetBuddy(ui_->tbDigits);
    Form_Load();
    // Only now, so that the filling of the controls above doesn't count as the user's choice.
    ConnectCommands();
}

frmOutputSettings::~frmOutputSettings() = default;

void frmOutputSettings::Form_Load() {
    shownIncrement_ = FixedNumberText(StationInfo.TimeIncrement * kHoursADay, 2);
    ui_->tbIncre->setText(shownIncrement_);
    ui_->DTPicker1->SetCustomFormat(QStringLiteral("MMM dd, yyyy"));
    ShowControlsOfMode();
    if (SettingsMode == ReportMode::AnnualTable) {
        HoldToOneYear();
    }
    ui_->chbPoints->setChecked(ShowMeasured);
    ShowPeriod();
    DateChange();
    ShowChan();
}

void frmOutputSettings::ShowControlsOfMode() {
    const ModeTraits& mode = TraitsOfMode();
    ui_->fraTable->setVisible(!mode.isGraph);
    ui_->fraGraph->setVisible(mode.isGraph);
    for (QWidget* widget : std::initializer_list<QWidget*>{ui_->Label5, ui_->Label6, ui_->Label7,
                                                           ui_->tbLabel, ui_->tbFactor}) {
        widget->setVisible(mode.hasTotals);
    }
    for (QWidget* box : {ui_->chkMean, ui_->chkMin, ui_->chkMax, ui_->chkTotal}) {
        box->setVisible(mode.hasSeries);
    }
}

// The annual table covers one year from the first of a month; the report period takes that shape at
// once, and keeps it on Cancel.
void frmOutputSettings::HoldToOneYear() {
    ui_->DTPicker1->SetCustomFormat(QStringLiteral("MMM, yyyy"));
    ReportPeriodCode = QStringLiteral("941");
    for (QWidget* widget : std::initializer_list<QWidget*>{ui_->optDays, ui_->optWeeks,
                                                           ui_->optMonths, ui_->updN, ui_->tbN}) {
        widget->setEnabled(false);
    }
    const CalendarDate begin = DateParts(ReportBeginDate);
    ReportBeginDate = DateSerial(begin.year, begin.month, 1);
    ReportEndDate = PeriodEnd(ReportBeginDate, kYears, 1);
}

void frmOutputSettings::ShowPeriod() {
    ui_->DTPicker1->SetValue(ReportBeginDate);
    const auto unitOf = [](const QString& code) {
        return code.startsWith(u'9') && code.size() >= 2 ? code[1].digitValue() : 0;
    };
    if (ui_->unitGroup->button(unitOf(ReportPeriodCode)) == nullptr) {
        ReportPeriodCode = QStringLiteral("9312");
    }
    ui_->tbN->setText(ReportPeriodCode.mid(2));
    ui_->unitGroup->button(unitOf(ReportPeriodCode))->setChecked(true);
}

void frmOutputSettings::ConnectCommands() {
    connect(ui_->DTPicker1, &DTPicker::Change, this, &frmOutputSettings::DateChange);
    connect(ui_->unitGroup, &QButtonGroup::idToggled, this, [this](int, bool on) {
        if (on) {
            DateChange();
        }
    });
    connect(ui_->updN, &UpDown::Change, this, &frmOutputSettings::DateChange);
    connect(ui_->cmdOK, &QPushButton::clicked, this, &frmOutputSettings::Confirm);
    connect(ui_->cmdCancel, &QPushButton::clicked, this, &frmOutputSettings::reject);
}

void frmOutputSettings::ShowChan() {
    const ChannelInfoData& channel = ChannelInfo[StationInfo.OutputChannel];
    ui_->cbxCal->setChecked(channel.Calibration != 0);
    ui_->cbxRating->setChecked(channel.Conversion != 0);
    const ModeTraits& mode = TraitsOfMode();
    if (!mode.isGraph) {
        ui_->tbDigits->setText(QString::number(channel.DigitsOut));
    }
    if (mode.hasTotals) {
        ui_->tbFactor->setText(RegionalNumberText(channel.OutputFactor));
        ui_->tbLabel->setText(channel.OutputFactorString);
    }
    if (mode.isGraph) {
        ui_->tbMax->setText(RegionalNumberText(channel.GraphMax));
        ui_->tbMin->setText(RegionalNumberText(channel.GraphMin));
    }
    if (mode.hasSeries) {
        // A sign place, then 1, then a digit for each box; missing digits leave their box clear.
        const QString series = QString::number(channel.OutputSeries);
        const QString text = channel.OutputSeries < 0 ? series : u' ' + series;
        qsizetype place = 2;
        for (QCheckBox* box : {ui_->chkMean, ui_->chkMin, ui_->chkMax, ui_->chkTotal}) {
            box->setChecked(text.mid(place++, 1) == u'1');
        }
    }
}

void frmOutputSettings::DateChange() {
    const int unit = ui_->unitGroup->checkedId();
    const int largest = LargestCount(unit);
    double count = ReadLeadingNumber(ui_->tbN->text());
    if (count > largest) {
        count = largest;
        ui_->tbN->setText(QString::number(largest));
    }
    ui_->updN->SetMax(largest);
    // While the text is not a date, the end date of the former value stays.
    const DateTime begin = ui_->DTPicker1->Meant().value_or(ui_->DTPicker1->Value());
    ui_->tbEndDate->setText(MonthDayYearText(PeriodEnd(begin, unit, count)));
}

bool frmOutputSettings::SaveSettings() {
    ChannelInfoData& channel = ChannelInfo[StationInfo.OutputChannel];
    const ModeTraits& mode = TraitsOfMode();
    if (!mode.isGraph) {
        channel.DigitsOut = ToInt16(ReadTypedNumber(ui_->tbDigits->text()));
    }
    if (mode.hasTotals) {
        channel.OutputFactor = ReadTypedNumber(ui_->tbFactor->text());
        channel.OutputFactorString = ui_->tbLabel->text();
    }
    if (mode.isGraph && !SaveGraphLimits()) {
        return false;
    }
    if (mode.hasSeries) {
        int series = 1;
        for (const QCheckBox* box : {ui_->chkMean, ui_->chkMin, ui_->chkMax, ui_->chkTotal}) {
            series = 10 * series + (box->isChecked() ? 1 : 0);
        }
        channel.OutputSeries = static_cast<std::int16_t>(series);
    }
    channel.Calibration = ui_->cbxCal->isChecked() ? 1 : 0;
    channel.Conversion = ui_->cbxRating->isChecked() ? 1 : 0;
    SaveIncrement();
    ShowMeasured = ui_->chbPoints->isChecked();
    return true;
}

bool frmOutputSettings::SaveGraphLimits() {
    const double min = ReadTypedNumber(ui_->tbMin->text());
    const double max = ReadTypedNumber(ui_->tbMax->text());
    if (min >= max) {
        MsgBox(QStringLiteral("Max value must be greater than Min Value"), MsgBoxButtons::Ok,
               MsgBoxIcon::Exclamation);
        ui_->tbMax->setFocus();
        return false;
    }
    ChannelInfoData& channel = ChannelInfo[StationInfo.OutputChannel];
    channel.GraphMin = min;
    channel.GraphMax = max;
    return true;
}

// Two decimals of an hour can't tell five minutes (0.08): a text that the user left alone stands
// for the number that it was made from.
void frmOutputSettings::SaveIncrement() {
    if (ui_->tbIncre->text() == shownIncrement_ && StationInfo.TimeIncrement > 0) {
        return;
    }
    const double hours = ReadTypedNumber(ui_->tbIncre->text());
    StationInfo.TimeIncrement = (hours > 0 ? hours : 1) / kHoursADay;
}

void frmOutputSettings::Confirm() {
    if (!ui_->DTPicker1->Settle()) {
        return;
    }
    ReportBeginDate = ui_->DTPicker1->Value();
    ReportEndDate = ReadDateTime(ui_->tbEndDate->text()).value_or(ReportEndDate);
    ReportPeriodCode = u'9' + QString::number(ui_->unitGroup->checkedId()) + ui_->tbN->text();
    if (!SaveSettings()) {
        return;
    }
    DialogCancelled = false;
    WriteStationInfo();
    accept();
}

void frmOutputSettings::reject() {
    DialogCancelled = true;
    QDialog::reject();
}

}  // namespace rillbook
