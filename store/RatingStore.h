#pragma once

#include <QString>
#include <optional>
#include <vector>

#include "platform/text/DateTime.h"

namespace rillbook {

// The rating that an editor is to open; kNewRating for one that is yet to be.
extern DateTime RatingEditDate;

// 1801-01-01, the date of no rating.
constexpr DateTime kNewRating = -36157;

// What the list of a channel's ratings shows of one.
struct ListedRating {
    std::optional<DateTime> time;
    bool isTable = false;
    QString formula;  // "Q = 2.5*(ght - 0.3)^1.6"; empty for a table
    QString notes;
};

// By time. Raises AdoError.
std::vector<ListedRating> ListRatings(int chan);

// Deletes what the channel has at this time: of a table its points as well. All or, where it raises
// AdoError, nothing.
void DeleteRating(int chan, DateTime time, bool isTable);

// Q = c(ght - A)^r from this time on. Constants that a file doesn't hold are missing.
struct EquationRating {
    DateTime time = 0;
    std::optional<double> A;  // gauge height of zero flow
    std::optional<double> r;
    std::optional<double> c;
    QString notes;
};

// Nothing where the channel has no equation of this time. Raises AdoError.
std::optional<EquationRating> ReadEquation(int chan, DateTime time);

// Stores the rating in the place of the equation of the time `former` and of any that it finds at
// its own time: all or, where it raises AdoError, nothing.
void WriteEquation(int chan, DateTime former, const EquationRating& rating);

// A number that a file doesn't hold is missing.
struct TablePoint {
    std::optional<double> depth;
    std::optional<double> flow;
    friend bool operator==(const TablePoint&, const TablePoint&) = default;
};

// The points of a table by depth; empty where there are none. Raises AdoError.
std::vector<TablePoint> ReadTablePoints(int chan, DateTime time);

struct TableHead {
    DateTime time = 0;
    QString notes;
};

// Nothing where the channel has no table of this time. Raises AdoError.
std::optional<TableHead> ReadTableHead(int chan, DateTime time);

// As WriteEquation, for a table and its points. REQUIRES: both numbers of each point.
void WriteTable(int chan, DateTime former, const TableHead& head,
                const std::vector<TablePoint>& points);

// Brings the ratings of a channel in a file of an older release up to date: the column that tells
// tables from equations, and a row in the list for each table of points. Harmless on others. What
// fails is passed over.
void UpgradeRatings(int chan);

void ResetRatingStore();

}  // namespace rillbook
