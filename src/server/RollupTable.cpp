#include "server/RollupTable.h"

#include <algorithm>
#include <cmath>

#include "value/LocalTime.h"
#include "value/Status.h"
#include "value/Value.h"

namespace kalvex::server {

namespace {

using value::kSecondsPerHour;
using value::kSecondsPerMinute;

constexpr std::uint16_t kBad = value::Status::Unknown | value::Status::TransmissionError;
constexpr VariableId kMostRemembered = VariableId{4} << 20;
constexpr std::int64_t kHourCost = 20;  // what an hour takes besides its values, in values

std::int64_t HourOf(std::int64_t time) {
    return time - time % kSecondsPerHour;
}

// The content is looked at where it is a number alone, since a text may be long.
StoredPoint ReadPoint(const platform::SqliteStatement& row) {
    StoredPoint point{row.Integer(0)};
    const auto type = static_cast<int>(row.Integer(1));
    if ((row.Integer(2) & kBad) != 0) return point;
    if (type == value::ValueType::Text) {
        point.form = PointForm::Text;
    } else if (value::ValueType::IsInteger(type)) {
        point.form = PointForm::Number;
        point.number = static_cast<double>(row.Integer(3));
    } else if (type == value::ValueType::Double && !row.IsNull(3)) {
        point.number = row.Real(3);
        if (std::isfinite(point.number)) point.form = PointForm::Number;
    }
    return point;
}

std::int64_t TimeAt(const platform::SqliteStatement& row, int column) {
    return row.IsNull(column) ? kNoInstant : row.Integer(column);
}

// What is read of a row; the rest is for who looks at the file.
Rollup ReadRollup(const platform::SqliteStatement& row) {
    Rollup rollup;
    rollup.time = row.Integer(0);
    rollup.count = row.Integer(1);
    rollup.extremes = {row.Real(2),    row.Real(4),    TimeAt(row, 3),
                       TimeAt(row, 5), TimeAt(row, 6), TimeAt(row, 7)};
    return rollup;
}

}  // namespace

const char* RollupTable::Schema() {
    return "CREATE TABLE IF NOT EXISTS rollups (variable INTEGER NOT NULL, "
           "span INTEGER NOT NULL, time INTEGER NOT NULL, count INTEGER NOT NULL, "
           "numbers INTEGER NOT NULL, sum REAL, min REAL, min_time INTEGER, max REAL, "
           "max_time INTEGER, last REAL, last_time INTEGER, text_time INTEGER, gap_time INTEGER, "
           "PRIMARY KEY (variable, span, time)) WITHOUT ROWID;"
           "CREATE TABLE IF NOT EXISTS rollup_marks (hour INTEGER NOT NULL, "
           "variable INTEGER NOT NULL, PRIMARY KEY (hour, variable)) WITHOUT ROWID;"
           "CREATE TABLE IF NOT EXISTS rollup_place (id INTEGER PRIMARY KEY, "
           "variable INTEGER NOT NULL, time INTEGER NOT NULL);"
           "INSERT OR IGNORE INTO rollup_place SELECT 1, 0, 0 "
           "WHERE EXISTS (SELECT 1 FROM history);";
}

bool RollupTable::Prepare(platform::SqliteDatabase& database) {
    struct Row {
        platform::SqliteStatement& statement;
        const char* sql;
    };
    const Row rows[] = {
        {m_putMark, "INSERT OR IGNORE INTO rollup_marks VALUES (?, ?)"},
        {m_dropMark, "DELETE FROM rollup_marks WHERE hour = ? AND variable = ?"},
        {m_firstMark,
         "SELECT hour, variable FROM rollup_marks WHERE hour <= ? ORDER BY hour, variable LIMIT 1"},
        {m_put, "INSERT OR REPLACE INTO rollups VALUES (?, ?, ?, ?, ?, ?, ?, ?, ?, ?, ?, ?, ?, ?)"},
        {m_drop,
         "DELETE FROM rollups WHERE variable = ? AND span IN (60, 3600) AND time BETWEEN ? AND ?"},
        {m_getPlace, "SELECT variable, time FROM rollup_place WHERE id = 1"},
        {m_putPlace, "INSERT OR REPLACE INTO rollup_place VALUES (1, ?, ?)"},
        {m_dropPlace, "DELETE FROM rollup_place"},
        {m_findOlder,
         "SELECT variable, kind, time FROM history WHERE (variable, kind, time) >= (?, ?, ?) "
         "ORDER BY variable, kind, time LIMIT 1"},
        {m_getOldest, "SELECT min(time) FROM history WHERE variable = ? AND kind = 6"},
        {m_getHours,
         "SELECT time, count, min, min_time, max, max_time, text_time, gap_time FROM rollups "
         "WHERE variable = ? AND span = 3600 AND time BETWEEN ? AND ? AND NOT EXISTS "
         "(SELECT 1 FROM rollup_marks WHERE hour = rollups.time AND variable = rollups.variable) "
         "ORDER BY time LIMIT ?"},
        {m_getMinutes,
         "SELECT time, count, min, min_time, max, max_time, text_time, gap_time FROM rollups "
         "WHERE variable = ? AND span = 60 AND time BETWEEN ? AND ? ORDER BY time"},
        {m_getPoints,
         "SELECT time, type, status, value FROM history "
         "WHERE variable = ? AND kind = ? AND time BETWEEN ? AND ? ORDER BY time LIMIT ?"},
        {m_getLast,
         "SELECT max(time) FROM history WHERE variable = ? AND kind = ? AND time BETWEEN ? AND ?"},
    };
    return std::ranges::all_of(
        rows, [&](const Row& row) { return row.statement.Prepare(database, row.sql); });
}

// ---- marks

std::int64_t* RollupTable::LastMarked(VariableId variable) {
    if (variable < 0 || variable >= kMostRemembered) return nullptr;
    const auto index = static_cast<std::size_t>(variable);
    if (index >= m_lastMarked.size()) m_lastMarked.resize(2 * index + 1, kNoInstant);
    return &m_lastMarked[index];
}

bool RollupTable::Mark(VariableId variable, std::int64_t time, std::int64_t& marked) {
    const std::int64_t hour = HourOf(time);
    std::int64_t* last = LastMarked(variable);
    if (last != nullptr && *last == hour) return true;
    m_putMark.BindInteger(1, hour);
    m_putMark.BindInteger(2, variable);
    if (!m_putMark.Run()) return false;
    if (last != nullptr) *last = hour;
    marked = std::min(marked, hour);
    return true;
}

bool RollupTable::DropMark(VariableId variable, std::int64_t hour) {
    std::int64_t* last = LastMarked(variable);
    if (last != nullptr && *last == hour) *last = kNoInstant;
    m_dropMark.BindInteger(1, hour);
    m_dropMark.BindInteger(2, variable);
    return m_dropMark.Run();
}

bool RollupTable::ReadOldest(VariableId variable, std::optional<std::int64_t>& time) {
    m_getOldest.BindInteger(1, variable);
    return ReadTime(m_getOldest, time);
}

bool RollupTable::OnRemoved(VariableId variable, std::int64_t oldest, std::int64_t& marked) {
    return DropRollups(variable, 0, HourOf(oldest) - 1) && Mark(variable, oldest, marked);
}

// ---- rolling up

bool RollupTable::Run(const RollUp& operation, bool& left) {
    std::int64_t values = 0;
    return RunMarks(operation, values, left) && (left || RunOlder(operation, values, left));
}

bool RollupTable::RunMarks(const RollUp& operation, std::int64_t& values, bool& left) {
    m_firstMark.BindInteger(1, operation.now - kSecondsPerHour);
    for (;;) {
        left = m_firstMark.Next();
        const std::int64_t hour = left ? m_firstMark.Integer(0) : 0;
        const VariableId variable = left ? m_firstMark.Integer(1) : 0;
        m_firstMark.Reset();
        if (m_firstMark.Failed()) return false;
        if (!left || values >= operation.values) return true;
        if (!RollUpHour(variable, hour, values) || !DropMark(variable, hour)) return false;
    }
}

// From the place that was kept on, hour by hour. One that has not ended is marked.
bool RollupTable::RunOlder(const RollUp& operation, std::int64_t& values, bool& left) {
    HistoryKey place{0, value::KindArchive, 0};
    left = m_getPlace.Next();
    if (left) {
        place.variable = m_getPlace.Integer(0);
        place.time = m_getPlace.Integer(1);
    }
    m_getPlace.Reset();
    if (!left) return !m_getPlace.Failed();
    while (values < operation.values) {
        if (!FindOlder(place, left)) return false;
        if (!left) return m_dropPlace.Run();
        const std::int64_t hour = HourOf(place.time);
        std::int64_t marked = kNoHour;
        const bool isOver = hour + kSecondsPerHour <= operation.now;
        if (!(isOver ? RollUpHour(place.variable, hour, values)
                     : Mark(place.variable, hour, marked))) {
            return false;
        }
        place.time = hour + kSecondsPerHour;
        values += kHourCost;
    }
    m_putPlace.BindInteger(1, place.variable);
    m_putPlace.BindInteger(2, place.time);
    return m_putPlace.Run();
}

// The first archive value from the place on. What has no time that a value can have is passed over.
bool RollupTable::FindOlder(HistoryKey& place, bool& found) {
    for (;;) {
        m_findOlder.BindInteger(1, place.variable);
        m_findOlder.BindInteger(2, place.kind);
        m_findOlder.BindInteger(3, place.time);
        found = m_findOlder.Next();
        HistoryKey next{m_findOlder.Integer(0), value::KindArchive, m_findOlder.Integer(2)};
        const auto kind = m_findOlder.Integer(1);
        m_findOlder.Reset();
        if (m_findOlder.Failed()) return false;
        if (!found) return true;
        const bool isArchive = kind == value::KindArchive;
        if (isArchive && next.time >= 0 && next.time <= value::kLargestTime) {
            place = next;
            return true;
        }
        if (kind < value::KindArchive || (isArchive && next.time < 0)) {
            next.time = 0;
        } else {
            found = next.variable != std::numeric_limits<VariableId>::max();
            if (!found) return true;
            next = {next.variable + 1, value::KindArchive, 0};
        }
        place = next;
    }
}

bool RollupTable::RollUpHour(VariableId variable, std::int64_t hour, std::int64_t& values) {
    const std::int64_t last = hour + kSecondsPerHour - 1;
    if (!DropRollups(variable, hour, last) ||
        !ReadPoints({variable, value::KindArchive, hour}, last, kSecondsPerHour, m_points)) {
        return false;
    }
    values += static_cast<std::int64_t>(m_points.size()) + kHourCost;
    if (m_points.empty()) return true;
    Rollup whole{.time = hour};
    for (const StoredPoint& point : m_points) whole.Add(point);
    if (!Put(variable, kSecondsPerHour, whole)) return false;
    if (whole.count <= kMostWithoutMinutes) return true;
    for (auto next = m_points.begin(); next != m_points.end();) {
        Rollup minute{.time = next->time - next->time % kSecondsPerMinute};
        for (; next != m_points.end() && next->time < minute.time + kSecondsPerMinute; ++next) {
            minute.Add(*next);
        }
        if (!Put(variable, kSecondsPerMinute, minute)) return false;
    }
    return true;
}

bool RollupTable::DropRollups(VariableId variable, std::int64_t from, std::int64_t to) {
    m_drop.BindInteger(1, variable);
    m_drop.BindInteger(2, from);
    m_drop.BindInteger(3, to);
    return m_drop.Run();
}

bool RollupTable::Put(VariableId variable, std::int64_t span, const Rollup& rollup) {
    const auto bindTime = [&](int parameter, std::int64_t time) {
        if (time == kNoInstant) {
            m_put.BindNull(parameter);
        } else {
            m_put.BindInteger(parameter, time);
        }
    };
    const auto bindNumber = [&](int parameter, double number) {
        if (rollup.numbers == 0) {
            m_put.BindNull(parameter);
        } else {
            m_put.BindReal(parameter, number);
        }
    };
    m_put.BindInteger(1, variable);
    m_put.BindInteger(2, span);
    m_put.BindInteger(3, rollup.time);
    m_put.BindInteger(4, rollup.count);
    m_put.BindInteger(5, rollup.numbers);
    bindNumber(6, rollup.sum);
    bindNumber(7, rollup.extremes.min);
    bindTime(8, rollup.extremes.minTime);
    bindNumber(9, rollup.extremes.max);
    bindTime(10, rollup.extremes.maxTime);
    bindNumber(11, rollup.last);
    bindTime(12, rollup.lastTime);
    bindTime(13, rollup.extremes.textTime);
    bindTime(14, rollup.extremes.gapTime);
    return m_put.Run();
}

// ---- reads

bool RollupTable::ReadRows(platform::SqliteStatement& statement, std::vector<Rollup>& rollups) {
    rollups.clear();
    while (statement.Next()) rollups.push_back(ReadRollup(statement));
    statement.Reset();
    return !statement.Failed();
}

bool RollupTable::ReadTime(platform::SqliteStatement& statement,
                           std::optional<std::int64_t>& time) {
    time.reset();
    if (statement.Next() && !statement.IsNull(0)) time = statement.Integer(0);
    statement.Reset();
    return !statement.Failed();
}

bool RollupTable::ReadHours(VariableId variable, std::int64_t from, std::int64_t to,
                            std::int64_t limit, std::vector<Rollup>& hours) {
    m_getHours.BindInteger(1, variable);
    m_getHours.BindInteger(2, HourOf(from));
    m_getHours.BindInteger(3, to);
    m_getHours.BindInteger(4, limit);
    return ReadRows(m_getHours, hours);
}

bool RollupTable::ReadMinutes(VariableId variable, std::int64_t hour,
                              std::vector<Rollup>& minutes) {
    m_getMinutes.BindInteger(1, variable);
    m_getMinutes.BindInteger(2, hour);
    m_getMinutes.BindInteger(3, hour + kSecondsPerHour - 1);
    return ReadRows(m_getMinutes, minutes);
}

bool RollupTable::ReadPoints(const HistoryKey& from, std::int64_t to, std::int64_t limit,
                             std::vector<StoredPoint>& points) {
    points.clear();
    m_getPoints.BindInteger(1, from.variable);
    m_getPoints.BindInteger(2, from.kind);
    m_getPoints.BindInteger(3, from.time);
    m_getPoints.BindInteger(4, to);
    m_getPoints.BindInteger(5, limit);
    while (m_getPoints.Next()) points.push_back(ReadPoint(m_getPoints));
    m_getPoints.Reset();
    return !m_getPoints.Failed();
}

bool RollupTable::ReadLastTime(const HistoryKey& from, std::int64_t to,
                               std::optional<std::int64_t>& time) {
    m_getLast.BindInteger(1, from.variable);
    m_getLast.BindInteger(2, from.kind);
    m_getLast.BindInteger(3, from.time);
    m_getLast.BindInteger(4, to);
    return ReadTime(m_getLast, time);
}

}  // namespace kalvex::server
