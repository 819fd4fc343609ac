#pragma once

#include <QString>

#include "platform/ado/Connection.h"
#include "platform/ado/Recordset.h"

namespace rillbook {

// The data control of a bound grid: a connection of its own and the recordset on it, whose rows can
// be changed. It holds no read lock between operations, so that other connections to the file write
// freely.
class Adodc {
public:
    QString ConnectionString;
    QString RecordSource;
    // Its OwnTables are set as those of any connection, before Refresh.
    rillbook::Connection Connection;
    rillbook::Recordset Recordset;

    // Opens both anew. Raises AdoError, and leaves both closed then.
    void Refresh();
};

}  // namespace rillbook
