#include "platform/ado/Recordset.h"

#include <QRegularExpression>
#include <optional>

#include "platform/ado/Connection.h"
#include "platform/ado/JetSql.h"
#include "platform/ado/ReadCursor.h"
#include "platform/ado/SqlTokens.h"
#include "platform/ado/UpdateCursor.h"
#include "platform/text/DateTime.h"

namespace rillbook {

class Recordset::Impl {
public:
    std::unique_ptr<ado::Cursor> cursor;

    ado::Cursor& RequireOpen() const {
        if (!cursor || !cursor->IsOpen()) {
            throw AdoError(adErrObjectClosed, QStringLiteral("The recordset is closed."));
        }
        return *cursor;
    }
};

namespace {

[[noreturn]] void RaiseMismatch() {
    throw AdoError(adErrTypeMismatch, QStringLiteral("The value is not of the type asked for."));
}

// A bare table's name stands for all its rows, in the order of its key.
QByteArray SelectOf(const QString& source) {
    const std::vector<ado::SqlToken> tokens = ado::TokensOf(source);
    if (!tokens.empty() && tokens.front().IsWord(u"SELECT")) {
        return TranslateJetSql(source).sql;
    }
    return "SELECT * FROM " + ado::QuotedName(source).toUtf8();
}

bool Compare(double value, QStringView comparison, double bound) {
    if (comparison == u"=") {
        return value == bound;
    }
    if (comparison == u"<>") {
        return value != bound;
    }
    if (comparison == u"<") {
        return value < bound;
    }
    if (comparison == u"<=") {
        return value <= bound;
    }
    return comparison == u">" ? value > bound : value >= bound;
}

struct Criterion {
    QString column;
    QString comparison;
    double bound = 0;
};

Criterion ReadCriterion(const QString& text) {
    static const QRegularExpression form(
        QStringLiteral("^\\s*(\\w+|\\[[^\\]]+\\])\\s*(<>|<=|>=|=|<|>)\\s*(?:#([^#]*)#|(.+))$"));
    const QRegularExpressionMatch match = form.match(text);
    const QString moment = match.captured(3);
    const std::optional<double> bound =
        match.hasCaptured(3) ? ReadLoggerDateTime(moment) : ado::WholeNumber(match.captured(4));
    if (!match.hasMatch() || !bound) {
        throw AdoError(adErrSyntax, QStringLiteral("No criterion: %1").arg(text));
    }
    QString column = match.captured(1);
    if (column.startsWith(u'[')) {
        column = column.mid(1, column.size() - 2);
    }
    return {column, match.captured(2), *bound};
}

}  // namespace

Recordset::Recordset() : impl_(std::make_unique<Impl>()) {}

Recordset::~Recordset() = default;

void Recordset::Open(const QString& source, Connection& connection, CursorTypeEnum cursorType,
                     LockTypeEnum lockType, int) {
    if (State() != 0) {
        throw AdoError(adErrObjectOpen, QStringLiteral("The recordset is open already."));
    }
    if (!connection.database()) {
        throw AdoError(adErrObjectClosed, QStringLiteral("The connection is closed."));
    }
    if (cursorType != adOpenUnspecified) {
        CursorType = cursorType;
    }
    if (lockType != adLockUnspecified) {
        LockType = lockType;
    }
    ado::Database& database = *connection.database();
    const QByteArray select = SelectOf(source);
    if (LockType == adLockOptimistic || LockType == adLockPessimistic) {
        impl_->cursor = std::make_unique<ado::UpdateCursor>(database, select);
    } else {
        impl_->cursor = std::make_unique<ado::ReadCursor>(database, select);
    }
}

void Recordset::Close() {
    impl_->RequireOpen();
    impl_->cursor.reset();
}

int Recordset::State() const {
    return impl_->cursor && impl_->cursor->IsOpen() ? 1 : 0;
}

bool Recordset::Eof() {
    return impl_->RequireOpen().Eof();
}
void Recordset::MoveFirst() {
    impl_->RequireOpen().MoveFirst();
}
void Recordset::MoveLast() {
    impl_->RequireOpen().MoveLast();
}
void Recordset::MoveNext() {
    impl_->RequireOpen().MoveNext();
}
std::int64_t Recordset::RecordCount() {
    return impl_->RequireOpen().RecordCount();
}

std::int64_t Recordset::AbsolutePosition() {
    return impl_->RequireOpen().AbsolutePosition();
}
void Recordset::SetAbsolutePosition(std::int64_t position) {
    impl_->RequireOpen().SetAbsolutePosition(position);
}

bool Recordset::PeekTexts(std::int64_t position, QStringList& texts) {
    ado::Cursor& cursor = impl_->RequireOpen();
    const std::vector<ado::Cell>* cells = cursor.Peek(position);
    texts.clear();
    for (std::size_t i = 0; cells != nullptr && i < cells->size(); ++i) {
        const ado::Cell& cell = (*cells)[i];
        switch (cell.kind) {
            case ado::Cell::Kind::Null:
                texts += QString();
                break;
            case ado::Cell::Kind::Number:
                texts += ado::NumberText(cursor.Columns()[i].type, cell.number);
                break;
            case ado::Cell::Kind::Text:
                texts += cell.text;
                break;
        }
    }
    return cells != nullptr;
}

Field Recordset::Fields(int ordinal) {
    if (ordinal < 0 || ordinal >= FieldCount()) {
        throw AdoError(adErrItemNotFound, QStringLiteral("There is no field %1.").arg(ordinal));
    }
    return {this, ordinal};
}

Field Recordset::Fields(QStringView name) {
    const std::vector<ado::Column>& columns = impl_->RequireOpen().Columns();
    for (std::size_t i = 0; i < columns.size(); ++i) {
        if (name.compare(columns[i].name, Qt::CaseInsensitive) == 0) {
            return {this, static_cast<int>(i)};
        }
    }
    throw AdoError(adErrItemNotFound, QStringLiteral("There is no field %1.").arg(name));
}

int Recordset::FieldCount() {
    return static_cast<int>(impl_->RequireOpen().Columns().size());
}

void Recordset::AddNew() {
    impl_->RequireOpen().AddNew();
}
void Recordset::Update() {
    impl_->RequireOpen().Update();
}
void Recordset::CancelUpdate() {
    impl_->RequireOpen().CancelUpdate();
}
void Recordset::Delete() {
    impl_->RequireOpen().Delete();
}

void Recordset::Find(const QString& criterion) {
    const Criterion wanted = ReadCriterion(criterion);
    const int column = Fields(wanted.column).ordinal_;
    impl_->RequireOpen().SkipUntil(column, [&wanted](double value) {
        return Compare(value, wanted.comparison, wanted.bound);
    });
}

QString Field::Name() const {
    return recordset_->impl_->RequireOpen().Columns()[static_cast<std::size_t>(ordinal_)].name;
}

DataTypeEnum Field::Type() const {
    using Kind = ado::ColumnType::Kind;
    const auto& columns = recordset_->impl_->RequireOpen().Columns();
    switch (columns[static_cast<std::size_t>(ordinal_)].type.kind) {
        case Kind::Single:
            return adSingle;
        case Kind::SmallInt:
            return adSmallInt;
        case Kind::Double:
            return adDouble;
        case Kind::DateTime:
            return adDate;
        case Kind::Text:
            return adVarWChar;
        case Kind::Other:
            break;
    }
    return adVariant;
}

Variant Field::Value() const {
    ado::Cursor& cursor = recordset_->impl_->RequireOpen();
    switch (cursor.Kind(ordinal_)) {
        case ado::Cell::Kind::Null:
            return Null{};
        case ado::Cell::Kind::Number:
            return cursor.Number(ordinal_);
        default:
            return cursor.Text(ordinal_);
    }
}

bool Field::IsNull() const {
    return recordset_->impl_->RequireOpen().Kind(ordinal_) == ado::Cell::Kind::Null;
}

bool Field::ReadNumber(double& number) const {
    ado::Cursor& cursor = recordset_->impl_->RequireOpen();
    const ado::Cell::Kind kind = cursor.ReadNumber(ordinal_, number);
    if (kind != ado::Cell::Kind::Text) {
        return kind == ado::Cell::Kind::Number;
    }
    const std::optional<double> read = ado::WholeNumber(cursor.Text(ordinal_));
    number = read.value_or(number);
    return read.has_value();
}

double Field::Number() const {
    const std::optional<double> number = NumberIfAny();
    if (!number) {
        RaiseMismatch();
    }
    return *number;
}

QString Field::Text() const {
    ado::Cursor& cursor = recordset_->impl_->RequireOpen();
    switch (cursor.Kind(ordinal_)) {
        case ado::Cell::Kind::Null:
            RaiseMismatch();
        case ado::Cell::Kind::Number:
            return ado::NumberText(cursor.Columns()[static_cast<std::size_t>(ordinal_)].type,
                                   cursor.Number(ordinal_));
        default:
            return cursor.Text(ordinal_);
    }
}

void Field::SetValue(Null) {
    recordset_->impl_->RequireOpen().Set(ordinal_, Null{});
}

void Field::SetValue(double value) {
    recordset_->impl_->RequireOpen().Set(ordinal_, value);
}

void Field::SetValue(const QString& value) {
    recordset_->impl_->RequireOpen().Set(ordinal_, value);
}

void Field::SetValue(const Variant& value) {
    std::visit([this](const auto& content) { SetValue(content); }, value);
}

}  // namespace rillbook
