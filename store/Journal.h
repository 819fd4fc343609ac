#pragma once

#include <QString>
#include <optional>
#include <vector>

#include "platform/text/DateTime.h"

namespace rillbook {

// A field visit to a channel. Readings that weren't taken are missing.
struct JournalRow {
    bool used = false;             // counts for the offsets
    std::optional<DateTime> time;  // a row without one is never stored
    std::optional<double> logger;  // what the logger read
    std::optional<double> actual;  // what the reference gauge read
    std::optional<double> discharge;
    QString notes;
    friend bool operator==(const JournalRow&, const JournalRow&) = default;
};

// The open station's visits to a channel by time. Raises AdoError.
std::vector<JournalRow> ReadJournal(int chan);

// Puts these rows, in this order, in the place of all that the channel has: all at once, or, where
// it raises AdoError, not at all.
void WriteJournal(int chan, const std::vector<JournalRow>& rows);

}  // namespace rillbook
