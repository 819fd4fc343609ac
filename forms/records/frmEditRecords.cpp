#include "forms/records/frmEditRecords.h"

#include <QScreen>
#include <algorithm>

#include "forms/records/frmDelete.h"
#include "platform/desktop/MsgBox.h"
#include "platform/desktop/Screen.h"
#include "platform/qt/DataGrid.h"
#include "store/FormStuff.h"
#include "store/StationDatabase.h"
#include "store/StationInPlace.h"
#include "ui_frmEditRecords.h"

namespace rillbook {

namespace {

constexpr int kWidestForm = 900;

}  // namespace

frmEditRecords::frmEditRecords(QWidget* parent)
    : QDialog(parent), ui_(std::make_unique<Ui::frmEditRecords>()) {
    setWindowFlags(windowFlags() | Qt::WindowMinMaxButtonsHint);
    ui_->setupUi(this);
    connect(ui_->cmdDelete, &QAbstractButton::clicked, this, &frmEditRecords::ShowDelete);
    connect(ui_->cmdOK, &QAbstractButton::clicked, this, &QDialog::accept);
    connect(ui_->DataGrid1, &DataGrid::Refused, this, [this] {
        if (!StationConnection->IsInPlace()) {
            TryToLoad([this] { RequireStation(); });
        }
    });
    TryToLoad([this] { LoadGrid(); });
}

void frmEditRecords::TryToLoad(const std::function<void()>& load) {
    QString failure;
    try {
        const Hourglass hourglass;
        load();
    } catch (const AdoError& error) {
        failure = error.Description();
    }
    if (!failure.isEmpty()) {
        TellFault(QStringLiteral("The records could not be read"), failure);
        ui_->DataGrid1->setEnabled(false);
        ui_->cmdDelete->setEnabled(false);
    }
}

frmEditRecords::~frmEditRecords() = default;

DataGrid& frmEditRecords::Grid() const {
    return *ui_->DataGrid1;
}

QPoint frmEditRecords::DeleteButtonPosition() const {
    return ui_->cmdDelete->mapTo(this, QPoint());
}

void frmEditRecords::RequireStation() {
    RequireStationInPlace();
    if (Adodc1.ConnectionString != StationConnection->ConnectionString() ||
        !Adodc1.Connection.IsInPlace()) {
        LoadGrid();
    }
}

void frmEditRecords::LoadGrid() {
    RequireStationInPlace();  // the connection below opens what the path leads to
    DataGrid& grid = Grid();
    grid.SetAllowRowSizing(false);
    setWindowTitle(QStringLiteral("Edit Records - ") + StationTitle);
    Adodc1.ConnectionString = StationConnection->ConnectionString();
    Adodc1.Connection.OwnTables = StationConnection->OwnTables;
    QString columns = QStringLiteral("DateTime");
    for (int chan = 1; chan <= StationInfo.Channels; ++chan) {
        columns += QStringLiteral(", chan") + QString::number(chan);
    }
    Adodc1.RecordSource = QStringLiteral("SELECT ") + columns +
                          QStringLiteral(
                              " FROM "
                              "Records"
                              " ORDER BY DateTime");
    grid.SetDataSource(Adodc1);
    for (int chan = 1; chan <= StationInfo.Channels; ++chan) {
        grid.SetCaption(chan, ChannelName(chan));
    }
    layout()->activate();
    grid.FitColumns();
    const int wanted = grid.WidthOfColumns() + width() - grid.width();
    const int widest = std::min(kWidestForm, screen()->availableSize().width());
    resize(std::max(width(), std::min(wanted, widest)), height());
}

void frmEditRecords::ShowDelete() {
    if (Grid().EndEdit()) {
        frmDelete(*this).exec();
        Grid().FollowRecordset();
        Grid().setFocus();
    }
}

void frmEditRecords::done(int result) {
    if (!Grid().EndEdit()) {
        return;
    }
    {
        const Hourglass hourglass;
        RefreshRecordStats();
    }
    QDialog::done(result);
}

}  // namespace rillbook
