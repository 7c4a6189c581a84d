#include "server/Alarms.h"

#include <algorithm>
#include <cmath>
#include <cstdlib>

#include "server/ReportComputing.h"
#include "value/Status.h"

namespace kalvex::server {

namespace {

constexpr AlarmStage kLevels[] = {AlarmStage::LowLow, AlarmStage::Low, AlarmStage::High,
                                  AlarmStage::HighHigh};

std::optional<double> KnownNumber(const value::CVal& value) {
    double number = 0;
    const bool known =
        (value.GetStatus() & value::Status::TransmissionError) == 0 && IsKnownNumber(value, number);
    return known ? std::optional(number) : std::nullopt;
}

std::optional<double> LimitOf(const AlarmLimits& limits, AlarmStage level) {
    const std::optional<double> all[] = {limits.lowLow, limits.low, limits.high, limits.highHigh};
    return all[AlarmIndex(level)];
}

}  // namespace

std::optional<AlarmStage> AlarmStageOf(std::int64_t number) {
    if (number < 1 || number > static_cast<std::int64_t>(kAlarmStageCount)) return std::nullopt;
    return static_cast<AlarmStage>(number);
}

// By the times of the values, unless the clock has jumped between them.
std::int64_t Alarms::SecondsBetween(const Reading& before, const Reading& after) {
    const std::int64_t told = after.time - before.time;
    const std::int64_t elapsed = after.elapsed - before.elapsed;
    return std::abs(told - elapsed) <= 1 ? told : elapsed;
}

void Alarms::Begin(const value::CVal& value, std::int64_t elapsed) {
    m_number = KnownNumber(value);
    m_begun = elapsed;
    for (const AlarmStageRow& row : kAlarmStages) {
        const bool stands = std::ranges::any_of(kAlarmStages, [&](const AlarmStageRow& standing) {
            return Stands(standing.stage) && standing.kind == row.kind &&
                   standing.severity >= row.severity;
        });
        if (stands) m_beyond.set(AlarmIndex(row.stage));
    }
}

std::vector<AlarmChange> Alarms::Take(const AlarmLimits& limits, const value::CVal& value,
                                      std::int64_t elapsed) {
    m_number = KnownNumber(value);
    if (m_number) {
        m_known = elapsed;
        const Reading reading{*m_number, value.GetTime(), elapsed};
        if (m_last && SecondsBetween(*m_last, reading) > 0) m_base = m_last;
        m_last = reading;
    }
    return Look(limits, elapsed);
}

Alarms::Finding Alarms::Compare(std::optional<double> number, std::optional<double> limit,
                                double sign, double hysteresis) {
    if (!limit) return Finding::Back;
    if (!number) return Finding::Between;
    if (sign * *number > sign * *limit) return Finding::Beyond;
    return sign * *number <= sign * *limit - hysteresis ? Finding::Back : Finding::Between;
}

// The longer a value stays as it is, the smaller is the change for each second since the one
// before.
Alarms::Finding Alarms::FindRate(const AlarmLimits& limits, std::int64_t elapsed) const {
    if (!limits.rate || !m_base) return Finding::Back;
    const std::int64_t between = std::max<std::int64_t>(SecondsBetween(*m_base, *m_last), 1);
    const auto seconds = static_cast<double>(between + elapsed - m_last->elapsed);
    const double change = std::abs(m_last->number - m_base->number);
    return change > *limits.rate * seconds ? Finding::Beyond : Finding::Back;
}

Alarms::Finding Alarms::FindStale(const AlarmLimits& limits, std::int64_t elapsed) const {
    if (limits.stale == 0) return Finding::Back;
    if (elapsed - m_known.value_or(m_begun) >= limits.stale) return Finding::Beyond;
    return m_known ? Finding::Back : Finding::Between;
}

std::vector<AlarmChange> Alarms::Look(const AlarmLimits& limits, std::int64_t elapsed) {
    const auto put = [&](AlarmStage stage, Finding finding, std::int64_t delay) {
        const std::size_t index = AlarmIndex(stage);
        if (finding == Finding::Back) m_beyond.reset(index);
        if (finding != Finding::Beyond) {
            m_since[index].reset();
            return;
        }
        m_since[index] = m_since[index].value_or(elapsed);
        if (elapsed - *m_since[index] >= delay) m_beyond.set(index);
    };
    for (const AlarmStage level : kLevels) {
        const double sign = RowOf(level).kind == AlarmKind::TooHigh ? 1 : -1;
        put(level, Compare(m_number, LimitOf(limits, level), sign, limits.hysteresis),
            limits.delay);
    }
    put(AlarmStage::Rate, FindRate(limits, elapsed), limits.delay);
    put(AlarmStage::Stale, FindStale(limits, elapsed), 0);

    Stages standing = m_beyond;
    for (const AlarmStageRow& row : kAlarmStages) {
        for (const AlarmStageRow& other : kAlarmStages) {
            const bool isLess = other.kind == row.kind && other.severity < row.severity;
            if (isLess && m_beyond[AlarmIndex(row.stage)]) standing.reset(AlarmIndex(other.stage));
        }
    }
    return Settle(standing);
}

std::vector<AlarmChange> Alarms::Settle(Stages standing) {
    std::vector<AlarmChange> changes;
    if (standing == m_standing) return changes;
    for (const AlarmStageRow& row : kAlarmStages) {
        if (Stands(row.stage) && !standing[AlarmIndex(row.stage)]) {
            changes.push_back({row.stage, false});
        }
    }
    for (const AlarmStageRow& row : kAlarmStages) {
        if (Stands(row.stage) || !standing[AlarmIndex(row.stage)]) continue;
        AlarmChange& change = changes.emplace_back(AlarmChange{row.stage, true});
        for (const AlarmStageRow& other : kAlarmStages) {
            const bool isMore = other.kind == row.kind && other.severity > row.severity;
            if (isMore && Stands(other.stage)) change.after = other.stage;
        }
        m_waits = m_waits || !change.after;
    }
    m_standing = standing;
    return changes;
}

std::optional<std::int64_t> Alarms::NextLook(const AlarmLimits& limits,
                                             std::int64_t elapsed) const {
    std::optional<std::int64_t> next;
    const auto propose = [&](std::int64_t time) { next = std::min(next.value_or(time), time); };
    for (std::size_t index = 0; index < kAlarmStageCount; ++index) {
        if (m_since[index] && !m_beyond[index]) propose(*m_since[index] + limits.delay);
    }
    if (m_since[AlarmIndex(AlarmStage::Rate)]) propose(elapsed + 1);
    if (limits.stale != 0 && !Stands(AlarmStage::Stale)) {
        propose(m_known.value_or(m_begun) + limits.stale);
    }
    return next;
}

bool Alarms::Acknowledge() {
    const bool waited = m_waits;
    m_waits = false;
    return waited;
}

std::uint16_t Alarms::Status() const {
    unsigned status = m_waits ? value::Status::AlarmMem : 0;
    if (m_standing.any()) status |= value::Status::Alarm;
    if (m_standing.any() && !m_waits) status |= value::Status::ConfirmedAlarm;
    return static_cast<std::uint16_t>(status);
}

}  // namespace kalvex::server
