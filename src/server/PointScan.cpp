#include "server/PointScan.h"

#include <algorithm>

#include "value/LocalTime.h"

namespace kalvex::server {

namespace {

using value::kSecondsPerHour;
using value::kSecondsPerMinute;

constexpr std::int64_t kRowsAStep = 20000;
constexpr std::int64_t kHoursTogether = 500;
constexpr std::size_t kToldTogether = 2000;
// A piece is rounded up to whole units where that makes it longer by a tenth at most.
constexpr std::int64_t kUnitsAPiece = 10;

std::int64_t UnitOf(std::int64_t width) {
    for (const std::int64_t unit : {kSecondsPerHour, kSecondsPerMinute}) {
        if (width >= kUnitsAPiece * unit) return unit;
    }
    return 1;
}

std::int64_t DividedUp(std::int64_t number, std::int64_t by) {
    return (number + by - 1) / by;
}

}  // namespace

PointScan::PointScan(const HistoryKey& from, std::int64_t to, std::uint32_t points)
    : m_from{from.variable, from.kind, std::max<std::int64_t>(from.time, 0)},
      m_to(std::min(to, value::kLargestTime)),
      m_most(points) {}

StorePiece PointScan::Step(HistoryTable& history, RollupTable& rollups) {
    if (m_stage == Stage::Begin && !Begin(rollups)) return {};
    if (m_stage == Stage::LookThrough) {
        if (!LookThrough(rollups)) return {};
        if (m_next <= m_last) return {.read = true, .values = {}, .more = true};
        Choose();
    }
    return Tell(history);
}

bool PointScan::Begin(RollupTable& rollups) {
    const auto limit = static_cast<std::int64_t>(m_most) + 1;
    if (!rollups.ReadPoints(m_from, m_to, limit, m_read)) return false;
    m_stage = Stage::Tell;
    if (m_read.size() <= m_most) {
        for (const StoredPoint& point : m_read) m_times.push_back(point.time);
        return true;
    }
    std::optional<std::int64_t> last;
    if (!rollups.ReadLastTime(m_from, m_to, last)) return false;
    m_stage = Stage::LookThrough;
    SetPieces(m_read.front().time, last.value_or(m_read.back().time));
    return true;
}

void PointScan::SetPieces(std::int64_t first, std::int64_t last) {
    m_first = m_next = first;
    m_last = last;
    // An even number, as two may become one.
    const std::int64_t pieces = (m_most - 2) / 4 * 2;
    const std::int64_t unit = UnitOf(DividedUp(last - first + 1, pieces));
    m_origin = first - first % unit;
    m_width = DividedUp(DividedUp(last - m_origin + 1, pieces), unit) * unit;
    m_pieces.assign(static_cast<std::size_t>(pieces), {});
}

Extremes& PointScan::PieceOf(std::int64_t time) {
    return m_pieces[static_cast<std::size_t>((time - m_origin) / m_width)];
}

// ---- looking through

bool PointScan::LookThrough(RollupTable& rollups) {
    const bool fromRollups = m_from.kind == value::KindArchive && m_width >= 2 * kSecondsPerMinute;
    for (std::int64_t rows = 0; rows < kRowsAStep && m_next <= m_last;) {
        if (!(fromRollups ? TakeHours(rollups, rows) : TakePoints(rollups, m_last, rows))) {
            return false;
        }
    }
    return true;
}

bool PointScan::TakeHours(RollupTable& rollups, std::int64_t& rows) {
    std::vector<Rollup> hours;
    if (!rollups.ReadHours(m_from.variable, m_next, m_last, kHoursTogether, hours)) return false;
    rows += static_cast<std::int64_t>(hours.size());
    const bool wereAll = static_cast<std::int64_t>(hours.size()) < kHoursTogether;
    for (const Rollup& hour : hours) {
        while (m_next < hour.time && rows < kRowsAStep) {
            if (!TakePoints(rollups, hour.time - 1, rows)) return false;
        }
        if (rows >= kRowsAStep) return true;
        if (!TakeHour(rollups, hour, rows)) return false;
    }
    while (wereAll && m_next <= m_last && rows < kRowsAStep) {
        if (!TakePoints(rollups, m_last, rows)) return false;
    }
    return true;
}

bool PointScan::TakesWhole(std::int64_t from, std::int64_t span) const {
    const std::int64_t last = from + span - 1;
    return from >= m_next && last <= m_last &&
           (from - m_origin) / m_width == (last - m_origin) / m_width;
}

bool PointScan::TakeHour(RollupTable& rollups, const Rollup& hour, std::int64_t& rows) {
    const std::int64_t end = hour.time + kSecondsPerHour;
    if (TakesWhole(hour.time, kSecondsPerHour)) {
        PieceOf(hour.time).Add(hour.extremes);
        m_next = end;
        return true;
    }
    std::vector<Rollup> minutes;
    if (hour.count > kMostWithoutMinutes &&
        !rollups.ReadMinutes(m_from.variable, hour.time, minutes)) {
        return false;
    }
    rows += static_cast<std::int64_t>(minutes.size());
    for (const Rollup& minute : minutes) {
        if (!TakesWhole(minute.time, kSecondsPerMinute)) continue;
        // What is between has no values, or lies at an edge.
        if (m_next < minute.time && !TakePoints(rollups, minute.time - 1, rows)) return false;
        PieceOf(minute.time).Add(minute.extremes);
        m_next = minute.time + kSecondsPerMinute;
    }
    const std::int64_t last = std::min(end - 1, m_last);
    return m_next > last || TakePoints(rollups, last, rows);
}

bool PointScan::TakePoints(RollupTable& rollups, std::int64_t to, std::int64_t& rows) {
    if (!rollups.ReadPoints({m_from.variable, m_from.kind, m_next}, to, kRowsAStep, m_read)) {
        return false;
    }
    for (const StoredPoint& point : m_read) PieceOf(point.time).Add(point);
    const auto count = static_cast<std::int64_t>(m_read.size());
    rows += count + 1;
    m_next = (count < kRowsAStep ? to : m_read.back().time) + 1;
    return true;
}

// ---- the answer

void PointScan::Choose() {
    ChooseTimes();
    if (m_times.size() > m_most) {
        JoinPieces();
        ChooseTimes();
    }
    m_pieces = {};
    m_read = {};
    m_stage = Stage::Tell;
}

void PointScan::JoinPieces() {
    std::vector<Extremes> joined(m_pieces.size() / 2);
    for (std::size_t piece = 0; piece < m_pieces.size(); ++piece) {
        joined[piece / 2].Add(m_pieces[piece]);
    }
    m_pieces = std::move(joined);
}

void PointScan::ChooseTimes() {
    m_times = {m_first, m_last};
    for (const Extremes& piece : m_pieces) {
        for (const std::int64_t time :
             {piece.minTime, piece.maxTime, piece.textTime, piece.gapTime}) {
            if (time != kNoInstant) m_times.push_back(time);
        }
    }
    std::ranges::sort(m_times);
    m_times.erase(std::unique(m_times.begin(), m_times.end()), m_times.end());
}

// What has been removed since is left out.
StorePiece PointScan::Tell(HistoryTable& history) {
    StorePiece piece;
    std::size_t texts = 0;
    std::optional<value::CVal> value;
    for (; m_told < m_times.size(); ++m_told) {
        if (piece.values.size() == kToldTogether || texts >= kTextsOfAPiece) break;
        if (!history.Get({m_from.variable, m_from.kind, m_times[m_told]}, value)) return {};
        if (!value) continue;
        if (value->IsText()) texts += value->Text().size();
        piece.values.push_back(std::move(*value));
    }
    piece.read = true;
    piece.more = m_told < m_times.size();
    return piece;
}

}  // namespace kalvex::server
