#pragma once

#include <QByteArray>
#include <QString>
#include <optional>

namespace rillbook::ado {

// SELECT columns FROM table WHERE condition ORDER BY columns: what its rows are, apart from what is
// shown of them.
struct SelectParts {
    QString table;     // its name
    QByteArray where;  // from WHERE on, without the order; may be empty
    QByteArray order;  // from ORDER BY on; may be empty
};

// Nothing for a statement of another form, where a row of the table isn't always one of the result
// (groups, several tables, totals).
std::optional<SelectParts> PartsOfSelect(const QByteArray& select);

}  // namespace rillbook::ado
