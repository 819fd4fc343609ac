#include "platform/qt/RecordModel.h"

#include <utility>

#include "platform/text/DateTime.h"
#include "platform/text/Numbers.h"

namespace rillbook {

namespace {

const QString kGone = QStringLiteral("The record isn't in the table any more.");

[[noreturn]] void RaiseUnreadable(const QString& why) {
    throw AdoError(adErrTypeMismatch, why);
}

bool IsNumberType(DataTypeEnum type) {
    return type == adSingle || type == adDouble || type == adSmallInt;
}

}  // namespace

void RecordModel::Bind(Recordset& rows) {
    beginResetModel();
    rows_ = &rows;
    rowCount_ = static_cast<int>(rows.RecordCount());
    types_.clear();
    headings_.clear();
    changedRow_ = -1;
    near_.clear();
    deleted_.clear();
    readingFailed_ = false;
    for (int col = 0; col < rows.FieldCount(); ++col) {
        types_.push_back(rows.Fields(col).Type());
        headings_ += rows.Fields(col).Name();
    }
    endResetModel();
}

int RecordModel::rowCount(const QModelIndex& parent) const {
    return parent.isValid() ? 0 : rowCount_;
}

int RecordModel::columnCount(const QModelIndex& parent) const {
    return parent.isValid() ? 0 : static_cast<int>(types_.size());
}

QVariant RecordModel::data(const QModelIndex& cell, int role) const {
    if (!cell.isValid()) {
        return {};  // an empty grid has no current cell to copy
    }
    if (role == Qt::DisplayRole || role == Qt::EditRole) {
        return TextsOf(cell.row()).value(cell.column());
    }
    if (role == Qt::TextAlignmentRole) {
        return QVariant(Qt::AlignVCenter |
                        (IsNumberType(Type(cell.column())) ? Qt::AlignRight : Qt::AlignLeft));
    }
    return {};
}

QVariant RecordModel::headerData(int section, Qt::Orientation orientation, int role) const {
    if (role == Qt::DisplayRole) {
        return orientation == Qt::Horizontal ? headings_.value(section) : QString();
    }
    return {};
}

Qt::ItemFlags RecordModel::flags(const QModelIndex& cell) const {
    return QAbstractTableModel::flags(cell) | Qt::ItemIsEditable;
}

void RecordModel::SetHeading(int col, const QString& heading) {
    if (col < headings_.size()) {
        headings_[col] = heading;
        Q_EMIT headerDataChanged(Qt::Horizontal, col, col);
    }
}

QStringList RecordModel::TextsOf(int row) const {
    if (const QStringList* known = near_.object(row)) {
        return *known;
    }
    const QStringList texts = ReadTexts(row);
    near_.insert(row, new QStringList(texts));  // which owns it
    return texts;
}

QStringList RecordModel::ReadTexts(int row) const {
    if (const auto deleted = deleted_.constFind(row); deleted != deleted_.cend()) {
        return QString::fromUtf8(*deleted).split(QChar());
    }
    QStringList texts;
    try {
        rows_->PeekTexts(row + 1, texts);
        for (int col = 0; col < texts.size(); ++col) {
            texts[col] = ShownText(col, texts.at(col));
        }
    } catch (const AdoError& error) {
        if (!readingFailed_) {
            readingFailed_ = true;
            Q_EMIT Failed(QStringLiteral("The records could not be read: ") + error.Description());
        }
    }
    return texts;
}

QString RecordModel::ShownText(int col, const QString& stored) const {
    if (!IsNumberType(Type(col))) {
        return stored;
    }
    bool isNumber = false;
    const double number = stored.toDouble(&isNumber);
    return isNumber ? RegionalNumberText(number) : stored;
}

bool RecordModel::setData(const QModelIndex& cell, const QVariant& text, int role) {
    const int row = cell.row();
    const QString typed = text.toString().trimmed();
    if (role != Qt::EditRole || typed == TextsOf(row).value(cell.column())) {
        return role == Qt::EditRole;
    }
    if (changedRow_ != row && !StoreRow()) {
        return false;
    }
    try {
        if (!GoTo(row)) {
            throw AdoError(adErrNoCurrentRecord, kGone);
        }
        SetField(cell.column(), typed);
        changedRow_ = row;
    } catch (const AdoError& error) {
        Q_EMIT Failed(error.Description());
    }
    RowChanged(row);
    return changedRow_ == row;
}

void RecordModel::SetField(int col, const QString& text) {
    Field field = rows_->Fields(col);
    const QString quoted = u'"' + text + u'"';
    if (text.isEmpty()) {
        if (col == 0) {
            RaiseUnreadable(QStringLiteral("A record can't be without its %1.").arg(headings_[0]));
        }
        field.SetValue(Null{});
    } else if (Type(col) == adDate) {
        const std::optional<DateTime> moment = ReadDatedTime(text);
        if (!moment) {
            RaiseUnreadable(quoted + QStringLiteral(" is not a date and time."));
        }
        field.SetValue(*moment);
    } else if (IsNumberType(Type(col))) {
        const std::optional<double> number = ReadNumber(text);
        if (!number) {
            RaiseUnreadable(quoted + QStringLiteral(" is not a number."));
        }
        try {
            field.SetValue(*number);
        } catch (const AdoError&) {
            RaiseUnreadable(quoted + QStringLiteral(" is too large a number."));
        }
    } else {
        field.SetValue(text);
    }
}

bool RecordModel::GoTo(int row) {
    if (deleted_.contains(row)) {
        return false;
    }
    if (rows_->AbsolutePosition() == row + 1) {
        return true;
    }
    QStringList texts;
    if (!rows_->PeekTexts(row + 1, texts)) {
        return false;
    }
    rows_->SetAbsolutePosition(row + 1);
    return true;
}

void RecordModel::DeleteRows(const std::vector<int>& rows, const std::function<void()>& deletion) {
    QHash<int, QByteArray> texts;
    for (const int row : rows) {
        texts.insert(row, ReadTexts(row).join(QChar()).toUtf8());
    }
    deletion();
    deleted_.insert(texts);
}

QString RecordModel::WhyRefused(const AdoError& error) {
    const QString key = rows_->Fields(0).Text();
    if (error.Number() == adErrDuplicate) {
        return QStringLiteral("There is a record of %1 already.").arg(key);
    }
    return QStringLiteral("The record of %1 could not be stored: %2").arg(key, error.Description());
}

bool RecordModel::StoreRow() {
    if (changedRow_ < 0) {
        return true;
    }
    const int row = std::exchange(changedRow_, -1);
    try {
        rows_->Update();
    } catch (const AdoError& error) {
        Q_EMIT Failed(WhyRefused(error));
        rows_->CancelUpdate();
        RowChanged(row);
        return false;
    }
    return true;
}

void RecordModel::RowChanged(int row) {
    near_.remove(row);
    Q_EMIT dataChanged(index(row, 0), index(row, columnCount() - 1));
}

void RecordModel::ReadAnew() {
    near_.clear();
    if (rowCount_ > 0) {
        Q_EMIT dataChanged(index(0, 0), index(rowCount_ - 1, columnCount() - 1));
    }
}

}  // namespace rillbook
