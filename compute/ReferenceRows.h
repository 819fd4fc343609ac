#pragma once

#include <cstddef>
#include <optional>
#include <vector>

#include "platform/ado/Recordset.h"
#include "platform/text/DateTime.h"

namespace rillbook {

// What the journal and the ratings share: rows that apply through time, kept in time order between
// two sentinels, and a cursor that follows the readings.

constexpr DateTime kFirstSentinel = 2.0;      // 1900-01-01
constexpr DateTime kLastSentinel = 401769.0;  // 3000-01-01

// Calls `add(time)` for each row of a recordset that has a date-time in this column. Returns how
// many lack one: a file of another program may hold them, and they apply at no time.
template <typename Add>
int ReadTimedRows(Recordset& rows, const Field& time, Add add) {
    int untimed = 0;
    for (; !rows.Eof(); rows.MoveNext()) {
        if (const std::optional<double> from = time.NumberIfAny()) {
            add(*from);
        } else {
            ++untimed;
        }
    }
    return untimed;
}

// Puts copies of the first and last row, dated as sentinels, around rows in ascending time, and an
// unused entry before them, so that the rows count from 1. Rows that are empty stay so.
template <typename Row>
void AddSentinels(std::vector<Row>& rows, DateTime Row::*time) {
    if (rows.empty()) {
        return;
    }
    Row first = rows.front();
    first.*time = kFirstSentinel;
    Row last = rows.back();
    last.*time = kLastSentinel;
    rows.insert(rows.begin(), {Row{}, first});
    rows.push_back(last);
}

// Moves the cursor forward to the row in force at `t`: a row applies from just after its time
// through the time of the next. It stays before the last sentinel whatever the year, so that there
// always is a next row.
template <typename Row>
void AdvanceCursor(std::size_t& cursor, const std::vector<Row>& rows, DateTime Row::*time,
                   DateTime t) {
    while (cursor + 2 < rows.size() && t > rows[cursor + 1].*time) {
        ++cursor;
    }
}

}  // namespace rillbook
