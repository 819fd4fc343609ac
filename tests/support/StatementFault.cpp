#include "tests/support/StatementFault.h"

#include <sqlite3.h>

#include <QByteArray>
#include <csignal>

#include "platform/ado/Database.h"
#include "store/StationDatabase.h"

namespace rillbook {

namespace {

int countdown = 0;
StatementFault::Kind kindOfFault = StatementFault::Kind::Fails;

int RefuseCommit(void*) {
    return 1;
}

int OnStatement(unsigned, void*, void* statement, void* text) {
    if (--countdown != 0) {
        return 0;
    }
    if (kindOfFault == StatementFault::Kind::Kills) {
        std::raise(SIGKILL);
    }
    sqlite3* handle = sqlite3_db_handle(static_cast<sqlite3_stmt*>(statement));
    // An end of a transaction can't be interrupted.
    const bool ends = qstrnicmp(static_cast<const char*>(text), "COMMIT", 6) == 0;
    sqlite3_commit_hook(handle, ends ? RefuseCommit : nullptr, nullptr);
    sqlite3_interrupt(handle);
    return 0;
}

int Watch(sqlite3* handle, char**, const sqlite3_api_routines*) {
    return sqlite3_trace_v2(handle, SQLITE_TRACE_STMT, OnStatement, nullptr);
}

using Extension = void (*)();

}  // namespace

StatementFault::StatementFault(int statement, Kind kind) {
    countdown = statement;
    kindOfFault = kind;
    sqlite3_auto_extension(reinterpret_cast<Extension>(Watch));
    if (StationConnection->State() != 0) {
        Watch(StationConnection->database()->handle(), nullptr, nullptr);
    }
}

StatementFault::~StatementFault() {
    sqlite3_cancel_auto_extension(reinterpret_cast<Extension>(Watch));
    if (StationConnection->State() != 0) {
        sqlite3* handle = StationConnection->database()->handle();
        sqlite3_trace_v2(handle, 0, nullptr, nullptr);
        sqlite3_commit_hook(handle, nullptr, nullptr);
    }
}

bool StatementFault::HasStruck() const {
    return countdown <= 0;
}

}  // namespace rillbook
