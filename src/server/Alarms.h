// The alarms of one variable: what its limits make of its values and of the time that goes by.
// Knows neither threads nor the store. Times are seconds; elapsed ones are of a clock that nobody
// sets.
#pragma once

#include <array>
#include <bitset>
#include <cstddef>
#include <cstdint>
#include <optional>
#include <span>
#include <string_view>
#include <vector>

#include "value/Status.h"
#include "value/Value.h"

namespace kalvex::server {

// As the journal has them, so none gets another number.
enum class AlarmStage : std::uint8_t {
    LowLow = 1,
    Low = 2,
    High = 3,
    HighHigh = 4,
    Rate = 5,
    Stale = 6,
};

// Stages of one kind take each other's place, others stand side by side.
enum class AlarmKind : std::uint8_t { TooLow, TooHigh, Rate, Stale };

struct AlarmStageRow {
    AlarmStage stage;
    std::string_view word;
    AlarmKind kind;
    int severity;  // within the kind
};

inline constexpr AlarmStageRow kAlarmStages[] = {
    {AlarmStage::LowLow, "LL", AlarmKind::TooLow, 2},
    {AlarmStage::Low, "L", AlarmKind::TooLow, 1},
    {AlarmStage::High, "H", AlarmKind::TooHigh, 1},
    {AlarmStage::HighHigh, "HH", AlarmKind::TooHigh, 2},
    {AlarmStage::Rate, "RATE", AlarmKind::Rate, 1},
    {AlarmStage::Stale, "STALE", AlarmKind::Stale, 1},
};
inline constexpr std::size_t kAlarmStageCount = std::size(kAlarmStages);

// The place of a stage among them.
constexpr std::size_t AlarmIndex(AlarmStage stage) {
    return static_cast<std::size_t>(stage) - 1;
}

constexpr const AlarmStageRow& RowOf(AlarmStage stage) {
    return kAlarmStages[AlarmIndex(stage)];
}

// Nothing for a number that no stage has.
std::optional<AlarmStage> AlarmStageOf(std::int64_t number);

struct AlarmLimits {
    std::optional<double> lowLow;
    std::optional<double> low;
    std::optional<double> high;
    std::optional<double> highHigh;
    double hysteresis = 0;
    std::int64_t delay = 0;
    std::optional<double> rate;  // change per second
    std::int64_t stale = 0;      // 0: none

    bool HasAny() const { return lowLow || low || high || highHigh || rate || stale != 0; }
};

// An alarm has begun or ended.
struct AlarmChange {
    AlarmStage stage = AlarmStage::LowLow;
    bool began = false;
    // It takes the place of a more severe one and is acknowledged as that one is.
    std::optional<AlarmStage> after = {};
};

// Of a status word, those that tell of alarms.
inline constexpr std::uint16_t kAlarmBits =
    value::Status::Alarm | value::Status::ConfirmedAlarm | value::Status::AlarmMem;

class Alarms {
  public:
    // ---- what was before the first value comes

    // The value that stands when the server, or its configuration, begins; how long it has stood
    // and how it came about does not count.
    void Begin(const value::CVal& value, std::int64_t elapsed);
    void Restore(AlarmStage stage) { m_standing.set(AlarmIndex(stage)); }
    void RestoreWaiting() { m_waits = true; }

    // ---- what happens; the changes are in their order

    // A value has come, with its time.
    std::vector<AlarmChange> Take(const AlarmLimits& limits, const value::CVal& value,
                                  std::int64_t elapsed);
    // Time has gone by, or the limits are others.
    std::vector<AlarmChange> Look(const AlarmLimits& limits, std::int64_t elapsed);
    // When to look at the latest, if no value comes before.
    std::optional<std::int64_t> NextLook(const AlarmLimits& limits, std::int64_t elapsed) const;

    // All that have been are known to somebody. False when they were.
    bool Acknowledge();

    // ---- what there is

    bool Stands(AlarmStage stage) const { return m_standing[AlarmIndex(stage)]; }
    bool WaitsForAcknowledgement() const { return m_waits; }
    // The bits of kAlarmBits.
    std::uint16_t Status() const;
    // The latest one, while it is known.
    std::optional<double> Number() const { return m_number; }

  private:
    struct Reading {
        double number = 0;
        std::int64_t time = 0;
        std::int64_t elapsed = 0;
    };
    using Stages = std::bitset<kAlarmStageCount>;

    // How a value stands to a limit: beyond it, not so far back that an alarm would end, or back.
    enum class Finding : std::uint8_t { Beyond, Between, Back };

    static std::int64_t SecondsBetween(const Reading& before, const Reading& after);
    static Finding Compare(std::optional<double> number, std::optional<double> limit, double sign,
                           double hysteresis);
    Finding FindRate(const AlarmLimits& limits, std::int64_t elapsed) const;
    Finding FindStale(const AlarmLimits& limits, std::int64_t elapsed) const;
    std::vector<AlarmChange> Settle(Stages standing);

    std::optional<double> m_number;
    std::optional<Reading> m_base;  // the last one of an earlier second than m_last
    std::optional<Reading> m_last;
    std::int64_t m_begun = 0;             // elapsed time
    std::optional<std::int64_t> m_known;  // when the last known value came since then
    std::array<std::optional<std::int64_t>, kAlarmStageCount> m_since;  // beyond the limit
    Stages m_beyond;    // for as long as the delay, and not back since
    Stages m_standing;  // of each kind the most severe of them
    bool m_waits = false;
};

}  // namespace kalvex::server
