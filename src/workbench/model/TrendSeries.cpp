#include "workbench/model/TrendSeries.h"

#include <algorithm>
#include <array>
#include <cmath>
#include <iterator>
#include <limits>
#include <utility>

#include "value/Status.h"
#include "value/ValueText.h"

namespace kalvex::workbench {

namespace {

constexpr std::size_t kMostPoints = 4'000'000;  // of a window that is open for weeks
constexpr std::uint16_t kBadStatus = value::Status::Unknown | value::Status::TransmissionError;

// The points of one column while they go by.
class Column {
  public:
    void Add(const TrendPoint& point) {
        if (!m_any) {
            m_first = m_least = m_greatest = m_last = &point;
            m_any = true;
            return;
        }
        if (point.value < m_least->value) m_least = &point;
        if (point.value > m_greatest->value) m_greatest = &point;
        m_last = &point;
    }

    bool IsEmpty() const { return !m_any; }

    void MoveTo(TrendStroke& stroke) {
        if (!m_any) return;
        std::array points{m_first, m_least, m_greatest, m_last};
        std::ranges::sort(points);
        const auto end = std::unique(points.begin(), points.end());
        for (auto point = points.begin(); point != end; ++point)
            stroke.push_back({static_cast<double>((*point)->x), (*point)->value});
        m_any = false;
    }

  private:
    bool m_any = false;
    const TrendPoint* m_first = nullptr;
    const TrendPoint* m_least = nullptr;
    const TrendPoint* m_greatest = nullptr;
    const TrendPoint* m_last = nullptr;
};

void EndStroke(std::vector<TrendStroke>& strokes) {
    if (!strokes.back().empty()) strokes.emplace_back();
}

}  // namespace

TrendPoint MakeTrendPoint(std::int64_t x, const value::CVal& value) {
    TrendPoint point{.x = x, .status = value.GetStatus()};
    double number = 0;
    const bool isNumber = value.IsText() ? value::ConvertString2Double(value.Text(), &number)
                                         : value.GetType() != value::ValueType::None;
    if (!value.IsText()) number = value::ValueToDouble(value);
    point.good = isNumber && std::isfinite(number) && (point.status & kBadStatus) == 0;
    point.value = std::isfinite(number) ? number : 0;
    return point;
}

void TrendSeries::SetArchive(std::vector<TrendPoint> points) {
    std::ranges::stable_sort(points, {}, &TrendPoint::x);
    const auto live = std::span(m_points).subspan(m_archived);
    const std::size_t archived = points.size();
    const std::int64_t last =
        archived == 0 ? std::numeric_limits<std::int64_t>::min() : points.back().x;
    std::ranges::copy_if(live, std::back_inserter(points),
                         [last](const TrendPoint& point) { return point.x > last; });
    m_points = std::move(points);
    m_archived = archived;
}

void TrendSeries::AddLive(const TrendPoint& point) {
    const std::size_t count = m_points.size();
    if (count != 0 && point.x <= m_points.back().x) return;
    const auto equals = [&point](const TrendPoint& other) {
        return other.value == point.value && other.status == point.status &&
               other.good == point.good;
    };
    if (count >= m_archived + 2 && equals(m_points[count - 1]) && equals(m_points[count - 2])) {
        m_points.back() = point;
        return;
    }
    if (count >= kMostPoints) {
        const std::size_t gone = kMostPoints / 10;
        m_points.erase(m_points.begin(), m_points.begin() + static_cast<std::ptrdiff_t>(gone));
        m_archived -= std::min(m_archived, gone);
    }
    m_points.push_back(point);
}

std::span<const TrendPoint> TrendSeries::Visible(double from, double to) const {
    const auto x = [](const TrendPoint& point) { return static_cast<double>(point.x); };
    auto first = std::ranges::lower_bound(m_points, from, {}, x);
    auto last = std::ranges::upper_bound(m_points, to, {}, x);
    if (last < first) last = first;
    if (first != m_points.begin()) --first;
    if (last != m_points.end()) ++last;
    return {first, last};
}

std::vector<TrendStroke> TrendSeries::Strokes(double from, double to, int columns) const {
    std::vector<TrendStroke> strokes(1);
    const double perUnit = columns / std::max(to - from, 1e-9);
    Column column;
    long current = 0;
    bool gap = false;
    const auto finish = [&] {
        column.MoveTo(strokes.back());
        if (gap) EndStroke(strokes);
        gap = false;
    };
    for (const TrendPoint& point : Visible(from, to)) {
        const long place = std::lround(std::floor((static_cast<double>(point.x) - from) * perUnit));
        if (place != current) finish();
        current = place;
        if (!point.good) {
            gap = true;
            if (column.IsEmpty()) EndStroke(strokes);
        } else {
            column.Add(point);
        }
    }
    finish();
    if (strokes.back().empty()) strokes.pop_back();
    return strokes;
}

std::optional<TrendRange> TrendSeries::ValuesBetween(double from, double to) const {
    std::optional<TrendRange> range;
    for (const TrendPoint& point : Visible(from, to)) {
        if (!point.good) continue;
        if (!range) range = TrendRange{point.value, point.value};
        range->low = std::min(range->low, point.value);
        range->high = std::max(range->high, point.value);
    }
    return range;
}

std::optional<TrendRange> TrendSeries::Extent() const {
    if (m_points.empty()) return std::nullopt;
    return TrendRange{static_cast<double>(m_points.front().x),
                      static_cast<double>(m_points.back().x)};
}

std::optional<std::size_t> TrendSeries::Nearest(double x) const {
    if (m_points.empty()) return std::nullopt;
    const auto xOf = [](const TrendPoint& point) { return static_cast<double>(point.x); };
    auto found = std::ranges::lower_bound(m_points, x, {}, xOf);
    if (found == m_points.end() ||
        (found != m_points.begin() && x - xOf(*(found - 1)) <= xOf(*found) - x)) {
        --found;
    }
    return static_cast<std::size_t>(found - m_points.begin());
}

}  // namespace kalvex::workbench
