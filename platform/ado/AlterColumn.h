#pragma once

#include <sqlite3.h>

#include "platform/ado/JetSql.h"

namespace rillbook::ado {

// Gives a column another type: all at once, or not at all. The order of columns and rows, the keys
// and the indexes stay. Does nothing where the type is the same already.
void AlterColumn(sqlite3* handle, const JetStatement& statement);

}  // namespace rillbook::ado
