#pragma once

namespace rillbook {

// For its lifetime, one of the statements that this process gives to its databases doesn't end: it
// fails, or takes the process with it. Statements count from 1 in the order in which they begin,
// those of the database's own work on a compaction included.
class StatementFault {
public:
    enum class Kind { Fails, Kills };
    StatementFault(int statement, Kind kind);
    ~StatementFault();

    // Whether it has come to that statement.
    bool HasStruck() const;
};

}  // namespace rillbook
