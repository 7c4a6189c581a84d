// The points of a trend: those of an archive and the live ones after it, in order, and what is
// drawn of them. Any thread, one at a time.
#pragma once

#include <cstddef>
#include <cstdint>
#include <optional>
#include <span>
#include <vector>

#include "value/Value.h"

namespace kalvex::workbench {

struct TrendPoint {
    std::int64_t x = 0;  // seconds since 1970 GMT, or the index of an element
    double value = 0;
    std::uint16_t status = 0;
    bool good = true;  // otherwise the line has a gap here
};

// A value that is unknown, spoilt, or no number makes a point that is not good.
TrendPoint MakeTrendPoint(std::int64_t x, const value::CVal& value);

struct TrendPosition {
    double x;
    double value;
};

// A line without a gap; one of a single position is a dot.
using TrendStroke = std::vector<TrendPosition>;

struct TrendRange {
    double low = 0;
    double high = 0;
};

class TrendSeries {
  public:
    // The answer of an archive takes the place of the one before; of the live points those behind
    // it stay.
    void SetArchive(std::vector<TrendPoint> points);  // in any order
    // At the end; an earlier one is left out. Of equal values in a row the first and the last stay.
    void AddLive(const TrendPoint& point);
    void Clear() { m_points.clear(); }

    std::span<const TrendPoint> Points() const { return m_points; }

    // What is to be drawn from x = `from` to `to` in so many columns: of each column the first, the
    // least, the greatest and the last value, in their order, so that nothing that stands out is
    // lost. A line goes on to the next point outside, and ends behind a column with a gap in it.
    std::vector<TrendStroke> Strokes(double from, double to, int columns) const;

    // Of the good values from `from` to `to`, with the neighbours that their lines lead to; nothing
    // when there are none.
    std::optional<TrendRange> ValuesBetween(double from, double to) const;
    std::optional<TrendRange> Extent() const;  // of x

    // The index of the point that is nearest to x; nothing in an empty series.
    std::optional<std::size_t> Nearest(double x) const;

  private:
    std::span<const TrendPoint> Visible(double from, double to) const;

    std::vector<TrendPoint> m_points;
    std::size_t m_archived = 0;  // so many of them came from the archive
};

}  // namespace kalvex::workbench
