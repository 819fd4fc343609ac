#include "forms/records/frmDelete.h"

#include "forms/records/frmEditRecords.h"
#include "platform/desktop/MsgBox.h"
#include "platform/desktop/Screen.h"
#include "platform/qt/DataGrid.h"
#include "platform/qt/RememberedWindow.h"
#include "platform/qt/Twips.h"
#include "platform/text/Numbers.h"
#include "store/FormStuff.h"
#include "store/StationDatabase.h"
#include "ui_frmDelete.h"

namespace rillbook {

namespace {

// Calls `visit` on each row in the range. The cursor ends on the row after the last of them, or at
// the end. A table without a row has none to visit.
template <typename Visit>
void ForEachRow(Recordset& rows, DateTime from, DateTime to, Visit visit) {
    try {
        rows.MoveFirst();
    } catch (const AdoError& error) {
        if (error.Number() != adErrNoCurrentRecord) {
            throw;
        }
        return;
    }
    const Field time = rows.Fields(0);
    std::int64_t rowAfter = 0;  // to return to; 0 if the cursor needs no return
    // To the end: rows whose time was changed keep the place in which they were read.
    while (!rows.Eof()) {
        const DateTime moment = time.Number();
        if (moment < from) {
            rows.Find(QStringLiteral("DateTime >= #") + SqlDateText(from) + u'#');
        } else if (moment > to) {
            rowAfter = rows.AbsolutePosition();
            rows.Find(QStringLiteral("DateTime <= #") + SqlDateText(to) + u'#');
        } else {
            visit();
            rows.MoveNext();
            rowAfter = 0;
        }
    }
    if (rowAfter > 0) {
        rows.SetAbsolutePosition(rowAfter);
    }
}

// Both ends included, in whole seconds.
QString RecordsInRange(DateTime from, DateTime to) {
    return QStringLiteral(
               "Records"
               " WHERE datetime >= #") +
           SqlDateText(from) + QStringLiteral("# and datetime <= #") + SqlDateText(to) + u'#';
}

std::int64_t CountRecords(DateTime from, DateTime to) {
    Recordset rows;
    rows.Open(QStringLiteral("SELECT count(*) FROM ") + RecordsInRange(from, to),
              *StationConnection, adOpenForwardOnly, adLockReadOnly);
    return static_cast<std::int64_t>(rows.Fields(0).Number());
}

// The year in four digits, and the seconds, which the pickers do not show.
QString FullText(std::optional<DateTime> moment) {
    static const PickerFormat format(u"MMM d, yyyy h:mm:ss tt");
    return moment ? format.Show(*moment).text : QStringLiteral("not a date and time");
}

}  // namespace

frmDelete::frmDelete(frmEditRecords& editor)
    : QDialog(&editor), editor_(editor), ui_(std::make_unique<Ui::frmDelete>()) {
    ui_->setupUi(this);
    layout()->setSizeConstraint(QLayout::SetFixedSize);
    ui_->cboChannels->addItem(QStringLiteral("All Channels"));
    for (int chan = 1; chan <= StationInfo.Channels; ++chan) {
        ui_->cboChannels->addItem(QStringLiteral("Chan %1 (").arg(chan) +
                                  ChannelInfo[chan].RecDesc + u')');
    }
    const int col = editor.Grid().Col();
    ui_->cboChannels->setCurrentIndex(col > StationInfo.Channels ? 0 : col);
    const bool isOnRow = editor.Grid().GoToCurrent();
    for (DTPicker* picker : {ui_->DTPicker1, ui_->DTPicker2}) {
        picker->SetCustomFormat(QStringLiteral("M/d/yy h:mm tt"));
        picker->SetValue(DayOf(Now()));
        if (isOnRow) {
            if (const auto time = editor.Adodc1.Recordset.Fields(0).NumberIfAny()) {
                picker->SetValue(*time);
            }
        }
    }
    for (const DTPicker* picker : {ui_->DTPicker1, ui_->DTPicker2}) {
        connect(picker, &DTPicker::Change, this, &frmDelete::ShowRange);
    }
    connect(ui_->cboChannels, &QComboBox::currentIndexChanged, this, &frmDelete::ShowRange);
    ShowRange();
    layout()->activate();
    const QPoint place =
        editor.pos() + editor.DeleteButtonPosition() - QPoint(ToPixels(2200), ToPixels(1200));
    move(PlaceInView(QRect(place, sizeHint())));
    connect(ui_->cmdSelectALl, &QAbstractButton::clicked, this, &frmDelete::SelectAll);
    connect(ui_->cmdOK, &QAbstractButton::clicked, this, &frmDelete::Delete);
    connect(ui_->cmdCancel, &QAbstractButton::clicked, this, &QDialog::reject);
}

frmDelete::~frmDelete() = default;

void frmDelete::SelectAll() {
    Recordset& rows = editor_.Adodc1.Recordset;
    Attempt([&] {
        rows.MoveFirst();
        if (const auto time = rows.Fields(0).NumberIfAny()) {
            ui_->DTPicker1->SetValue(*time);
        }
        rows.MoveLast();
        if (const auto time = rows.Fields(0).NumberIfAny()) {
            ui_->DTPicker2->SetValue(*time);
        }
    });
}

void frmDelete::ShowRange() {
    const std::optional<DateTime> from = ui_->DTPicker1->Meant();
    const std::optional<DateTime> to = ui_->DTPicker2->Meant();
    ui_->lblRange->setText(PlanText(from, to) + QStringLiteral("\nfrom ") + FullText(from) +
                           QStringLiteral("\nto ") + FullText(to));
}

QString frmDelete::PlanText(std::optional<DateTime> from, std::optional<DateTime> to) const {
    if (!from || !to) {
        return QStringLiteral("Nothing will be deleted:");
    }
    if (*from > *to) {
        return QStringLiteral("From is after To, so nothing will be deleted:");
    }
    try {
        const std::int64_t count = CountRecords(*from, *to);
        const QString records = count == 1 ? QStringLiteral("1 record")
                                           : FixedNumberText(static_cast<double>(count), 0) +
                                                 QStringLiteral(" records");
        const int chan = ui_->cboChannels->currentIndex();
        return chan == 0 ? records + QStringLiteral(" will be deleted:")
                         : QStringLiteral("Chan %1 will be emptied in ").arg(chan) + records + u':';
    } catch (const AdoError& error) {
        return QStringLiteral("The records could not be counted: ") + error.Description();
    }
}

void frmDelete::Delete() {
    if (!ui_->DTPicker1->Settle() || !ui_->DTPicker2->Settle()) {
        return;
    }
    const DateTime from = ui_->DTPicker1->Value();
    const DateTime to = ui_->DTPicker2->Value();
    const QString failure = from > to ? QString() : DeleteRange(from, to);
    if (failure.isEmpty()) {
        accept();
    } else {
        TellFault(QStringLiteral("Nothing was deleted"), failure);
    }
}

QString frmDelete::DeleteRange(DateTime from, DateTime to) {
    const Hourglass hourglass;
    const int chan = ui_->cboChannels->currentIndex();
    try {
        editor_.RequireStation();
        if (chan == 0) {
            DeleteRecords(from, to);
        } else {
            EmptyChannel(chan, from, to);
        }
        return {};
    } catch (const AdoError& error) {
        return error.Description();
    }
}

void frmDelete::DeleteRecords(DateTime from, DateTime to) {
    Recordset& rows = editor_.Adodc1.Recordset;
    const std::int64_t current = rows.AbsolutePosition();
    std::vector<int> deleted;
    ForEachRow(rows, from, to,
               [&] { deleted.push_back(static_cast<int>(rows.AbsolutePosition()) - 1); });
    if (current > 0) {
        rows.SetAbsolutePosition(current);
    }
    editor_.Grid().DeleteRows(deleted, [&] {
        StationConnection->Execute(QStringLiteral("DELETE * FROM ") + RecordsInRange(from, to));
    });
}

void frmDelete::EmptyChannel(int chan, DateTime from, DateTime to) {
    Recordset& rows = editor_.Adodc1.Recordset;
    Transaction allOrNothing(editor_.Adodc1.Connection);
    try {
        Field reading = rows.Fields(chan);
        ForEachRow(rows, from, to, [&] { reading.SetValue(Null{}); });
        allOrNothing.Commit();
    } catch (const AdoError&) {
        rows.CancelUpdate();
        throw;
    }
    editor_.Grid().ReadAnew();
}

}  // namespace rillbook
