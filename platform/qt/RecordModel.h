#pragma once

#include <QAbstractTableModel>
#include <QCache>
#include <QHash>
#include <QStringList>
#include <functional>
#include <vector>

#include "platform/ado/Recordset.h"

namespace rillbook {

// The rows of an updatable recordset as a table of texts in the user's regional form, which can be
// changed. Rows are read when they are painted, and only those near are kept. A changed row waits
// in the recordset until StoreRow. Rows that left the table otherwise than by DeleteRows are empty.
class RecordModel : public QAbstractTableModel {
    Q_OBJECT
public:
    using QAbstractTableModel::QAbstractTableModel;

    // Shows these rows, also in the place of others; a changed row of those is dropped. The
    // recordset outlives the model and is walked by nobody else while a row is changed. REQUIRES:
    // it is open and updatable, its key the first column. Raises AdoError.
    void Bind(Recordset& rows);

    int rowCount(const QModelIndex& parent = {}) const override;
    int columnCount(const QModelIndex& parent = {}) const override;
    QVariant data(const QModelIndex& cell, int role) const override;
    QVariant headerData(int section, Qt::Orientation orientation, int role) const override;
    Qt::ItemFlags flags(const QModelIndex& cell) const override;
    // Takes a number or date-time as the user types it; the empty text is NULL.
    bool setData(const QModelIndex& cell, const QVariant& text, int role) override;

    void SetHeading(int col, const QString& heading);
    DataTypeEnum Type(int col) const { return types_[static_cast<std::size_t>(col)]; }

    // Writes the changed row, if there is one. False where that is refused: the row is as it is
    // stored then.
    bool StoreRow();
    // Makes a row the recordset's current one. False, and no move, if it has left the table.
    bool GoTo(int row);
    // Runs `deletion`, by which these rows leave the table. They keep the texts that they show, and
    // can no longer be changed. Raises what `deletion` raises, and nothing has changed then.
    void DeleteRows(const std::vector<int>& rows, const std::function<void()>& deletion);
    // Reads all shown rows again.
    void ReadAnew();

Q_SIGNALS:
    // Why a cell or a row wasn't taken, or couldn't be read.
    void Failed(const QString& why) const;

private:
    QStringList TextsOf(int row) const;
    QStringList ReadTexts(int row) const;
    QString ShownText(int col, const QString& stored) const;
    void SetField(int col, const QString& text);
    QString WhyRefused(const AdoError& error);
    void RowChanged(int row);

    Recordset* rows_ = nullptr;
    int rowCount_ = 0;
    std::vector<DataTypeEnum> types_;
    QStringList headings_;
    int changedRow_ = -1;
    mutable QCache<int, QStringList> near_{2000};
    // By row, texts in UTF-8 with a zero byte between them: there may be hundreds of thousands.
    QHash<int, QByteArray> deleted_;
    mutable bool readingFailed_ = false;  // reported once
};

}  // namespace rillbook
