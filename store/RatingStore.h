#pragma once

#include <QString>
#include <optional>
#include <vector>

#include "platform/text/DateTime.h"

namespace rillbook {

// When a rating takes effect. A file of another program may hold a rating without a date-time, or
// one with part of a second: times are compared exactly, not by their texts.
using RatingTime = std::optional<DateTime>;

// The rating that an editor opens; kNewRating for a new one.
extern RatingTime RatingEditDate;

// 1801-01-01, the date of no rating.
constexpr DateTime kNewRating = -36157;

// What the list of a channel's ratings shows of one.
struct ListedRating {
    RatingTime time;
    bool isTable = false;
    QString formula;  // "Q = 2.5*(ght - 0.3)^1.6"; empty for a table
    QString notes;
};

// In the order of time, those without a time first. Raises AdoError.
std::vector<ListedRating> ListRatings(int chan);

// Deletes all that the channel has at this time: equations, tables and their points, which would
// count without a heading too. If it raises AdoError, nothing is deleted.
void DeleteRating(int chan, RatingTime time);

// Q = c(ght - A)^r from this time on. Constants that a file doesn't hold are missing.
struct EquationRating {
    RatingTime time;
    std::optional<double> A;  // gauge height of zero flow
    std::optional<double> r;
    std::optional<double> c;
    QString notes;
};

// Nothing if the channel has no equation of this time. Raises AdoError.
std::optional<EquationRating> ReadEquation(int chan, RatingTime time);

// Stores the rating in place of the equation of the time `former` and of any that it finds at its
// own time. If it raises AdoError, nothing is changed. REQUIRES: the rating has a time.
void WriteEquation(int chan, RatingTime former, const EquationRating& rating);

// A number that a file doesn't hold is missing.
struct TablePoint {
    std::optional<double> depth;
    std::optional<double> flow;
    friend bool operator==(const TablePoint&, const TablePoint&) = default;
};

// The points of a table by depth; empty where there are none. Raises AdoError.
std::vector<TablePoint> ReadTablePoints(int chan, RatingTime time);

struct TableHead {
    RatingTime time;
    QString notes;
};

// Nothing if the channel has no table of this time. Raises AdoError.
std::optional<TableHead> ReadTableHead(int chan, RatingTime time);

// As WriteEquation, for a table and its points. REQUIRES: both numbers of each point.
void WriteTable(int chan, RatingTime former, const TableHead& head,
                const std::vector<TablePoint>& points);

// Brings the ratings of a channel in a file of an older release up to date: the column that tells
// tables from equations, and a row in the list for each table of points. Harmless on others. What
// fails is passed over.
void UpgradeRatings(int chan);

void ResetRatingStore();

}  // namespace rillbook
