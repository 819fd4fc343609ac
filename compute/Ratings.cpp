#include "compute/Ratings.h"

#include <algorithm>
#include <cmath>

#include "compute/ReferenceRows.h"
#include "platform/ado/Recordset.h"
#include "store/StationDatabase.h"

namespace rillbook {

std::vector<RatingRow> RatingRows;
std::vector<RatingTable> RatingTables;
std::size_t RatingCursor = 1;
std::size_t TableCursor = 1;

namespace {

constexpr int kTableColumn = 6;  // ConversionEq.RatingTable

double NumberOrZero(const Field& field) {
    return field.NumberIfAny().value_or(0);
}

// In the files of older releases, which lack the column until their rating list is opened, only
// equations have rows.
bool IsEquation(Recordset& ratings) {
    if (ratings.FieldCount() <= kTableColumn) {
        return true;
    }
    return ratings.Fields(kTableColumn).NumberIfAny() == 0.0;
}

double EquationFlow(const RatingRow& rating, double value) {
    const double head = value - rating.A;
    return head > 0 ? rating.c * std::pow(head, rating.r) : 0;
}

double TableFlow(const std::vector<RatingPoint>& points, double value) {
    if (points.size() == 1) {
        return points.front().flow;
    }
    const auto deeper = std::upper_bound(
        points.begin(), points.end(), value,
        [](double depth, const RatingPoint& point) { return depth < point.depth; });
    const auto second = std::clamp(deeper, points.begin() + 1, points.end() - 1);
    const RatingPoint& p1 = *(second - 1);
    const RatingPoint& p2 = *second;
    if (p1.depth == p2.depth) {
        return p1.flow;
    }
    return p1.flow + (value - p1.depth) / (p2.depth - p1.depth) * (p2.flow - p1.flow);
}

}  // namespace

int LoadRatingRows(int chan) {
    RatingRows.clear();
    Recordset ratings;
    ratings.Open(QStringLiteral("SELECT * FROM ConversionEq Where Chan = ") +
                     QString::number(chan) + QStringLiteral(" ORDER BY DateTime"),
                 *StationConnection, adOpenStatic, adLockReadOnly);
    const int untimed = ReadTimedRows(ratings, ratings.Fields(0), [&](DateTime from) {
        RatingRows.push_back({.from = from,
                              .isEquation = IsEquation(ratings),
                              .A = NumberOrZero(ratings.Fields(2)),
                              .r = NumberOrZero(ratings.Fields(3)),
                              .c = NumberOrZero(ratings.Fields(4))});
    });
    AddSentinels(RatingRows, &RatingRow::from);
    return untimed;
}

int LoadRatingTables(int chan) {
    RatingTables.clear();
    Recordset points;
    points.Open(QStringLiteral("SELECT * FROM ConversionT Where Chan = ") + QString::number(chan) +
                    QStringLiteral(" ORDER BY DateTime, Depth"),
                *StationConnection, adOpenStatic, adLockReadOnly);
    const Field depth = points.Fields(u"depth");
    const Field flow = points.Fields(u"flow");
    const int untimed = ReadTimedRows(points, points.Fields(u"DateTime"), [&](DateTime from) {
        if (!depth.IsNumeric() || !flow.IsNumeric()) {
            return;  // half a point draws no line
        }
        if (RatingTables.empty() || RatingTables.back().from != from) {
            RatingTables.push_back({from, {}});
        }
        RatingTables.back().points.push_back({depth.Number(), flow.Number()});
    });
    if (RatingTables.empty()) {
        RatingTables.push_back({kFirstSentinel, {{0, 0}, {1, 1}}});
    }
    AddSentinels(RatingTables, &RatingTable::from);
    return untimed;
}

double ApplyRating(DateTime t, double value) {
    AdvanceCursor(RatingCursor, RatingRows, &RatingRow::from, t);
    const RatingRow& rating = RatingRows[RatingCursor];
    if (rating.isEquation) {
        return EquationFlow(rating, value);
    }
    AdvanceCursor(TableCursor, RatingTables, &RatingTable::from, t);
    return TableFlow(RatingTables[TableCursor].points, value);
}

}  // namespace rillbook
