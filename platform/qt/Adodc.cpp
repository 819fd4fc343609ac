#include "platform/qt/Adodc.h"

namespace rillbook {

void Adodc::Refresh() {
    if (Recordset.State() != 0) {
        Recordset.Close();
    }
    Connection.Close();
    Connection.Open(ConnectionString);
    try {
        Recordset.Open(RecordSource, Connection, adOpenStatic, adLockOptimistic);
        Recordset.RecordCount();
    } catch (const AdoError&) {
        Connection.Close();
        throw;
    }
}

}  // namespace rillbook
