#include "store/AccessStation.h"

#include <QLocale>
#include <QRegularExpression>
#include <algorithm>
#include <cmath>
#include <limits>
#include <optional>
#include <vector>

#include "platform/ado/AdoError.h"
#include "platform/ado/Cell.h"
#include "platform/ado/DatabaseFile.h"
#include "platform/ado/SqlTokens.h"
#include "platform/text/DateTime.h"
#include "platform/text/Numbers.h"
#include "store/StationDatabase.h"

namespace rillbook {

namespace {

using ado::Cell;
using ado::QuotedName;
using ado::Statement;
using Kind = ado::ColumnType::Kind;
using SourceType = access::Column::Type;

const QString kRecords = QStringLiteral("Records");
const QString kDateTime = QStringLiteral("DateTime");

bool IsSameName(const QString& name, const QString& other) {
    return name.compare(other, Qt::CaseInsensitive) == 0;
}

bool IsChannelName(const QString& name) {
    static const QRegularExpression channel(QStringLiteral("\\Achan[0-9]+\\z"),
                                            QRegularExpression::CaseInsensitiveOption);
    return channel.match(name).hasMatch();
}

// What a second is split into on its way through a file doesn't make two moments of one.
double TakenMoment(double moment) {
    const double second = ToWholeSecond(moment);
    return std::abs(moment - second) <= 0.0005 / 86400.0 ? second : moment;
}

// All the digits that it takes to read the same number again.
QString NumberInText(double value) {
    const QString text = PlainNumberText(value);
    return text.toDouble() == value ? text
                                    : QString::number(value, 'g', QLocale::FloatingPointShortest);
}

QString MomentInText(double moment) {
    const double taken = TakenMoment(moment);
    return ToWholeSecond(taken) == taken ? GeneralDateText(taken) : NumberInText(moment);
}

// The value as a column of a station holds it. What the column's type doesn't allow is kept as it
// is: a long text, a large number, a text that is no number.
Cell Taken(const access::Value& value, SourceType source, Kind target) {
    Cell cell;
    switch (value.kind) {
        case access::Value::Kind::Null:
            break;
        case access::Value::Kind::Number:
            if (target == Kind::Text) {
                cell.kind = Cell::Kind::Text;
                cell.text = source == SourceType::DateTime ? MomentInText(value.number)
                                                           : NumberInText(value.number);
            } else {
                cell.kind = Cell::Kind::Number;
                cell.number = target == Kind::DateTime ? TakenMoment(value.number) : value.number;
            }
            break;
        case access::Value::Kind::Text: {
            const std::optional<double> number =
                target == Kind::Text ? std::nullopt : ado::WholeNumber(value.text);
            cell.kind = number ? Cell::Kind::Number : Cell::Kind::Text;
            cell.number = number.value_or(0);
            cell.text = value.text;
            break;
        }
    }
    return cell;
}

struct TargetColumn {
    QString name;
    Kind kind = Kind::Other;
    std::optional<std::size_t> source;  // its column in the database; without one it stays NULL
    SourceType type = SourceType::Other;
};

std::vector<TargetColumn> ColumnsOf(sqlite3* handle, const QString& table) {
    const Statement rows(handle, "SELECT * FROM " + QuotedName(table).toUtf8());
    std::vector<TargetColumn> columns(static_cast<std::size_t>(rows.ColumnCount()));
    int ordinal = 0;
    for (TargetColumn& column : columns) {
        column.name = rows.ColumnName(ordinal);
        column.kind = ado::ParseColumnType(rows.DeclaredType(ordinal)).kind;
        ++ordinal;
    }
    return columns;
}

// Reached by its place alone, so that another name there means the same.
bool CountsByPlace(const QString& table, const TargetColumn& column) {
    return table == u"Calibration" && column.name == u"discharge";
}

// Tells for each column of the station where its values come from. Returns the columns that no
// column of the station takes.
QStringList Match(const QString& table, const std::vector<access::Column>& sources,
                  std::vector<TargetColumn>& targets) {
    std::vector<bool> isTaken(sources.size(), false);
    const auto take = [&](TargetColumn& target, std::size_t i) {
        isTaken[i] = true;
        target.source = i;
        target.type = sources[i].type;
    };
    for (TargetColumn& target : targets) {
        for (std::size_t i = 0; i < sources.size(); ++i) {
            if (sources[i].type != SourceType::Other && IsSameName(sources[i].name, target.name)) {
                take(target, i);
            }
        }
    }
    for (std::size_t i = 0; i < std::min(sources.size(), targets.size()); ++i) {
        if (!targets[i].source && !isTaken[i] && sources[i].type == SourceType::Number &&
            CountsByPlace(table, targets[i])) {
            take(targets[i], i);
        }
    }
    QStringList left;
    for (std::size_t i = 0; i < sources.size(); ++i) {
        if (!isTaken[i]) {
            left += table + u'.' + sources[i].name;
        }
    }
    return left;
}

// Walks through the tables of a database as a station takes them.
class StationSink : public access::TableSink {
public:
    void TakeTableNames(const QStringList& names) override {
        QStringList missing = StationTables();
        for (const QString& name : names) {
            if (missing.removeIf([&](const QString& wanted) { return IsSameName(wanted, name); }) ==
                0) {
                leftovers_.tables += name;
            }
        }
        if (!missing.isEmpty()) {
            throw ConversionError(QStringLiteral("The file is no station: it has no table %1.")
                                      .arg(missing.join(QStringLiteral(", "))));
        }
    }

    void BeginTable(const QString& name, const std::vector<access::Column>& columns) override {
        table_.clear();
        for (const QString& known : StationTables()) {
            table_ = IsSameName(known, name) ? known : table_;
        }
        rows_ = 0;
        Prepare(columns);
        columns_ = ColumnsOf(handle_.get(), table_);
        leftovers_.columns += Match(table_, columns, columns_);
        if (table_ == kRecords && !columns_.front().source) {
            throw ConversionError(QStringLiteral("The table Records has no column DateTime."));
        }
        cells_.assign(columns_.size(), Cell());
        Begin();
    }

    void TakeRow(const std::vector<access::Value>& row) override {
        ++rows_;
        for (std::size_t i = 0; i < columns_.size(); ++i) {
            const TargetColumn& column = columns_[i];
            if (column.source) {
                cells_[i] = Taken(row[*column.source], column.type, column.kind);
                RequireStorable(column, cells_[i]);
            }
        }
        Put(cells_);
    }

    const Leftovers& Left() const { return leftovers_; }

protected:
    explicit StationSink(ado::Handle handle) : handle_(std::move(handle)) {}

    // `sources`: the columns that the table has in the database. The station's own, columns(), are
    // looked at behind it, before Begin.
    virtual void Prepare(const std::vector<access::Column>& sources) = 0;
    virtual void Begin() = 0;
    virtual void Put(const std::vector<Cell>& row) = 0;

    sqlite3* handle() const { return handle_.get(); }
    const QString& table() const { return table_; }
    bool isOfRecords() const { return table_ == kRecords; }
    const std::vector<TargetColumn>& columns() const { return columns_; }
    std::int64_t rows() const { return rows_; }  // begun so far

private:
    void RequireStorable(const TargetColumn& column, const Cell& cell) const {
        const bool isTime = isOfRecords() && IsSameName(column.name, kDateTime);
        if (isTime && (cell.kind != Cell::Kind::Number || !std::isfinite(cell.number))) {
            throw ConversionError(
                QStringLiteral("Row %1 of the table Records has no date and time.").arg(rows_));
        }
        if (cell.kind == Cell::Kind::Number && std::isnan(cell.number)) {
            throw ConversionError(
                QStringLiteral("Row %1 of the table %2 has in %3 what is no number "
                               "and can't be kept.")
                    .arg(rows_)
                    .arg(table_, column.name));
        }
    }

    ado::Handle handle_;
    Leftovers leftovers_;
    QString table_;
    std::vector<TargetColumn> columns_;
    std::vector<Cell> cells_;
    std::int64_t rows_ = 0;
};

class Filler : public StationSink {
public:
    explicit Filler(const QString& path) : StationSink(ado::OpenForFilling(path)) {
        ado::Run(handle(), "BEGIN; DELETE FROM Information");
    }

    void EndTable() override {
        insert_ = Statement();
        // In a database that has no such column yet, only equations have rows.
        if (table() == u"ConversionEq" && !columns().back().source) {
            ado::Run(handle(), "UPDATE ConversionEq SET RatingTable = 0");
        }
    }

    void Finish() {
        ado::Run(handle(), "COMMIT");
        if (!inOrder_) {
            // Readings that came out of order lie scattered over half-empty pages.
            ado::Run(handle(), "VACUUM");
        }
    }

private:
    void Prepare(const std::vector<access::Column>& sources) override {
        if (isOfRecords()) {
            AddChannels(sources);
        }
    }

    // The places of the readings count: they stay in the order that they have.
    void AddChannels(const std::vector<access::Column>& sources) {
        bool isFirst = true;
        for (const access::Column& column : sources) {
            if (!IsChannelName(column.name)) {
                continue;
            }
            const QString change = isFirst ? QStringLiteral("RENAME COLUMN chan1 TO %1")
                                           : QStringLiteral("ADD COLUMN %1 SINGLE");
            isFirst = false;
            ado::Run(handle(), (QStringLiteral("ALTER TABLE Records ") +
                                change.arg(QuotedName(column.name.toLower())))
                                   .toUtf8()
                                   .constData());
        }
    }

    void Begin() override {
        QString places;
        for (std::size_t i = 1; i <= columns().size(); ++i) {
            places += QStringLiteral("%1?%2").arg(i == 1 ? QString() : QStringLiteral(", ")).arg(i);
        }
        insert_ = Statement(
            handle(),
            QStringLiteral("INSERT INTO %1 VALUES (%2)").arg(QuotedName(table()), places).toUtf8());
    }

    void Put(const std::vector<Cell>& row) override {
        for (std::size_t i = 0; i < row.size(); ++i) {
            insert_.Bind(static_cast<int>(i) + 1, row[i]);
        }
        try {
            insert_.Step();
            insert_.Reset();
        } catch (const AdoError& error) {
            if (error.Number() != adErrDuplicate) {
                throw;
            }
            throw ConversionError(QStringLiteral("Two records have the time %1, and a station can "
                                                 "have only one of a time.")
                                      .arg(GeneralDateText(row.front().number)));
        }
        if (isOfRecords()) {
            inOrder_ = inOrder_ && row.front().number > last_;
            last_ = row.front().number;
        }
    }

    Statement insert_;
    bool inOrder_ = true;
    double last_ = std::numeric_limits<double>::lowest();
};

class Comparer : public StationSink {
public:
    explicit Comparer(const QString& path) : StationSink(ado::OpenUntouched(path)) {
        ado::RequireSound(handle(), path);
        // The lock is taken once, not for each record.
        ado::Run(handle(), "BEGIN");
    }

    void EndTable() override {
        stored_ = Statement();
        Statement count(handle(), "SELECT count(*) FROM " + QuotedName(table()).toUtf8());
        if (!count.Step() || count.Integer(0) != rows()) {
            RaiseDifference();
        }
        ++tables_;
    }

    void Finish() const {
        if (tables_ != StationTables().size()) {
            RaiseDifference();
        }
    }

private:
    [[noreturn]] static void RaiseDifference() {
        throw ConversionError(QStringLiteral("What was written isn't what the Access file holds."));
    }

    void Prepare(const std::vector<access::Column>&) override {}

    void Begin() override {
        // Records by their key, as they may have come in any order; the others in their own.
        stored_ =
            Statement(handle(), "SELECT * FROM " + QuotedName(table()).toUtf8() +
                                    (isOfRecords() ? " WHERE DateTime = ?1" : " ORDER BY rowid"));
    }

    void Put(const std::vector<Cell>& row) override {
        if (isOfRecords()) {
            stored_.Reset();
            stored_.Bind(1, row.front());
        }
        if (!stored_.Step()) {
            RaiseDifference();
        }
        for (std::size_t i = 0; i < row.size(); ++i) {
            stored_.Read(static_cast<int>(i), found_);
            if (columns()[i].source && !IsSame(found_, row[i])) {
                RaiseDifference();
            }
        }
    }

    static bool IsSame(const Cell& cell, const Cell& other) {
        return cell.kind == other.kind &&
               (cell.kind != Cell::Kind::Number || cell.number == other.number) &&
               (cell.kind != Cell::Kind::Text || cell.text == other.text);
    }

    Statement stored_;
    Cell found_;
    qsizetype tables_ = 0;
};

}  // namespace

Leftovers FillStation(const QString& path, const TableReader& read) {
    Filler filler(path);
    read(filler);
    filler.Finish();
    return filler.Left();
}

void RequireSameStation(const QString& path, const TableReader& read) {
    Comparer comparer(path);
    read(comparer);
    comparer.Finish();
}

}  // namespace rillbook
