#pragma once

#include <QByteArray>
#include <QString>

namespace rillbook {

// The program's SQL dialect: date-time literals between # signs, month before day; DELETE * FROM;
// ALTER TABLE ... ADD COLUMN, DROP COLUMN and ALTER COLUMN with the types TEXT(n), SINGLE,
// SMALLINT, DOUBLE, DATETIME. Texts between single quotes are left alone.
struct JetStatement {
    enum class Kind { Plain, AlterColumn };
    Kind kind = Kind::Plain;
    QByteArray sql;  // SQLite's, for Plain

    // ALTER TABLE table ALTER COLUMN column type: SQLite has no such statement, so that the
    // connection rebuilds the table.
    QString table;
    QString column;
    QString type;
};

// Raises adErrSyntax for a literal that is no date-time and for an open quote.
JetStatement TranslateJetSql(const QString& statement);

}  // namespace rillbook
