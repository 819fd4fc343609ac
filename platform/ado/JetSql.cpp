#include "platform/ado/JetSql.h"

#include "platform/ado/AdoError.h"
#include "platform/ado/Cell.h"
#include "platform/ado/SqlTokens.h"
#include "platform/text/DateTime.h"

namespace rillbook {

namespace {

using ado::SqlToken;

// Seventeen digits name one double and no other, so that a bound keeps the reading that stands on
// it. The decimal point makes it a floating-point number: rows compare faster with that than with a
// whole one.
QString MomentLiteral(const SqlToken& token) {
    const std::optional<DateTime> moment =
        ReadLoggerDateTime(token.text.mid(1, token.text.size() - 2));
    if (!moment) {
        throw AdoError(adErrSyntax, QStringLiteral("No date and time: %1").arg(token.text));
    }
    const QString text = QString::number(*moment, 'g', 17);
    return text.contains(u'.') ? text : text + QStringLiteral(".0");
}

bool IsDeleteStar(const std::vector<SqlToken>& tokens) {
    return tokens.size() > 2 && tokens[0].IsWord(u"DELETE") && tokens[1].IsSymbol(u'*') &&
           tokens[2].IsWord(u"FROM");
}

// ALTER TABLE table ADD|ALTER|... COLUMN column: where the type begins, or 0 for anything else.
std::size_t TypeOfAlterTable(const std::vector<SqlToken>& tokens, QStringView verb) {
    const bool matches = tokens.size() > 5 && tokens[0].IsWord(u"ALTER") &&
                         tokens[1].IsWord(u"TABLE") && tokens[3].IsWord(verb) &&
                         tokens[4].IsWord(u"COLUMN");
    return matches ? 6 : 0;
}

// The statement's end from a token on, which must be one of the dialect's types.
QString RequireType(const std::vector<SqlToken>& tokens, std::size_t first) {
    QString type;
    for (std::size_t i = first; i < tokens.size(); ++i) {
        type += tokens[i].text;
    }
    if (ado::ParseColumnType(type.toUtf8()).kind == ado::ColumnType::Kind::Other) {
        throw AdoError(adErrSyntax, QStringLiteral("No type of a column: \"%1\"").arg(type));
    }
    return type;
}

}  // namespace

JetStatement TranslateJetSql(const QString& statement) {
    const std::vector<SqlToken> tokens = ado::TokensOf(statement);
    JetStatement result;
    if (const std::size_t type = TypeOfAlterTable(tokens, u"ALTER"); type > 0) {
        result.kind = JetStatement::Kind::AlterColumn;
        result.table = tokens[2].Identifier();
        result.column = tokens[5].Identifier();
        result.type = RequireType(tokens, type);
        return result;
    }
    if (const std::size_t type = TypeOfAlterTable(tokens, u"ADD"); type > 0) {
        RequireType(tokens, type);
    }
    const bool dropStar = IsDeleteStar(tokens);
    QString sql;
    qsizetype copied = 0;
    for (std::size_t i = 0; i < tokens.size(); ++i) {
        const bool isMoment = tokens[i].kind == SqlToken::Kind::Moment;
        if (!isMoment && !(dropStar && i == 1)) {
            continue;
        }
        const qsizetype begin = tokens[i].text.data() - QStringView(statement).data();
        sql += QStringView(statement).mid(copied, begin - copied);
        if (isMoment) {
            sql += MomentLiteral(tokens[i]);
        }
        copied = begin + tokens[i].text.size();
    }
    sql += QStringView(statement).mid(copied);
    result.sql = sql.toUtf8();
    return result;
}

}  // namespace rillbook
