#include "platform/ado/AlterColumn.h"

#include <array>
#include <vector>

#include "platform/ado/AdoError.h"
#include "platform/ado/SqlTokens.h"
#include "platform/ado/Statement.h"

namespace rillbook::ado {

namespace {

bool BeginsConstraint(const SqlToken& token) {
    static constexpr std::array kWords{u"CONSTRAINT", u"PRIMARY",   u"NOT",     u"NULL",
                                       u"UNIQUE",     u"CHECK",     u"DEFAULT", u"COLLATE",
                                       u"REFERENCES", u"GENERATED", u"AS"};
    for (const char16_t* word : kWords) {
        if (token.IsWord(word)) {
            return true;
        }
    }
    return false;
}

// Where a column's type stands in the text of its table: [begin, end), blanks around it not
// counted.
struct TypePlace {
    qsizetype begin = 0;
    qsizetype end = 0;
};

// The columns stand between the first bracket and its counterpart, with commas between them.
TypePlace FindType(QStringView createTable, const std::vector<SqlToken>& tokens,
                   const QString& column) {
    int depth = 0;
    bool atColumn = false;
    for (std::size_t i = 0; i < tokens.size(); ++i) {
        const SqlToken& token = tokens[i];
        if (atColumn && token.Identifier().compare(column, Qt::CaseInsensitive) == 0) {
            TypePlace place;
            place.begin = place.end = token.text.data() + token.text.size() - createTable.data();
            int inner = 0;
            for (++i; i < tokens.size() && !BeginsConstraint(tokens[i]); ++i) {
                inner += tokens[i].IsSymbol(u'(') ? 1 : 0;
                if (inner == 0 && (tokens[i].IsSymbol(u',') || tokens[i].IsSymbol(u')'))) {
                    break;
                }
                inner -= tokens[i].IsSymbol(u')') ? 1 : 0;
                place.end = tokens[i].text.data() + tokens[i].text.size() - createTable.data();
            }
            return place;
        }
        depth += token.IsSymbol(u'(') ? 1 : 0;
        depth -= token.IsSymbol(u')') ? 1 : 0;
        atColumn = depth == 1 && (token.IsSymbol(u'(') || token.IsSymbol(u','));
    }
    throw AdoError(adErrSyntax, QStringLiteral("There is no column %1.").arg(column));
}

QString WithoutBlanks(QStringView text) {
    QString result;
    for (const SqlToken& token : TokensOf(text)) {
        result += token.text;
    }
    return result;
}

// The texts of what makes up the table: itself first, then its indexes and triggers.
std::vector<QString> SchemaOf(sqlite3* handle, const QString& table) {
    Statement schema(handle,
                     "SELECT sql FROM sqlite_schema WHERE tbl_name = ?1 COLLATE NOCASE "
                     "AND sql IS NOT NULL ORDER BY type <> 'table', rowid");
    schema.Bind(1, table);
    std::vector<QString> texts;
    while (schema.Step()) {
        texts.push_back(schema.Text(0));
    }
    if (texts.empty()) {
        throw AdoError(adErrSyntax, QStringLiteral("There is no table %1.").arg(table));
    }
    return texts;
}

// A walk over open rows keeps the table from being replaced, and undoing the attempt would end it.
void RequireNoOpenWalk(sqlite3* handle) {
    sqlite3_stmt* statement = nullptr;
    while ((statement = sqlite3_next_stmt(handle, statement)) != nullptr) {
        if (sqlite3_stmt_busy(statement) != 0) {
            throw AdoError(adErrGeneral, QStringLiteral("The table is being read."));
        }
    }
}

void Replace(sqlite3* handle, const QString& table, const std::vector<QString>& schema,
             const QString& columnsText) {
    const QString name = QuotedName(table);
    const QString copy = QuotedName(table + QStringLiteral("_altered"));
    const auto run = [handle](const QString& sql) { Run(handle, sql.toUtf8().constData()); };
    run(QStringLiteral("CREATE TABLE %1 %2").arg(copy, columnsText));
    run(QStringLiteral("INSERT INTO %1 SELECT * FROM %2").arg(copy, name));
    run(QStringLiteral("DROP TABLE %1").arg(name));
    run(QStringLiteral("ALTER TABLE %1 RENAME TO %2").arg(copy, name));
    for (std::size_t i = 1; i < schema.size(); ++i) {
        run(schema[i]);
    }
}

}  // namespace

void AlterColumn(sqlite3* handle, const JetStatement& statement) {
    const std::vector<QString> schema = SchemaOf(handle, statement.table);
    QString text = schema.front();
    const std::vector<SqlToken> tokens = TokensOf(text);
    const TypePlace place = FindType(text, tokens, statement.column);
    const QStringView present = QStringView(text).mid(place.begin, place.end - place.begin);
    if (WithoutBlanks(present).compare(WithoutBlanks(statement.type), Qt::CaseInsensitive) == 0) {
        return;
    }
    RequireNoOpenWalk(handle);
    qsizetype columns = 0;
    for (const SqlToken& token : tokens) {
        if (token.IsSymbol(u'(')) {
            columns = token.text.data() - QStringView(text).data();
            break;
        }
    }
    text.replace(place.begin, place.end - place.begin, u' ' + statement.type);
    Run(handle, "SAVEPOINT altering");
    try {
        Replace(handle, statement.table, schema, text.mid(columns));
        Run(handle, "RELEASE altering");
    } catch (const AdoError&) {
        sqlite3_exec(handle, "ROLLBACK TO altering; RELEASE altering", nullptr, nullptr, nullptr);
        throw;
    }
}

}  // namespace rillbook::ado
