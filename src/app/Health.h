// How a running module fares, in figures for those who run it. Main thread.
#pragma once

#include <array>
#include <cstddef>
#include <cstdint>
#include <deque>
#include <string>
#include <vector>

#include "app/Log.h"
#include "engine/ScriptDocument.h"
#include "engine/Tick.h"
#include "platform/DurationCounts.h"
#include "vantrel/SourceList.h"

namespace kalvex::app {

// What a script is at; the first that applies.
enum class ScriptCondition : std::size_t {
    Error,     // its last line failed, and it stands there or was stopped by it
    Stopped,   // in step mode, with its state
    Idle,      // not started, or reset
    Finished,  // past its last line
    Waiting,   // its line waits for data
    Running,
    Count,
};

ScriptCondition ConditionOf(engine::CKalvexDoc& script);

struct ScriptFigures {
    std::string name;  // as the module lists it, an engine text
    ScriptCondition condition = ScriptCondition::Idle;
    int line = 0;         // on which it stands, from 1; 0 for none
    int error = 0;        // the code of the error that stands; 0 for none
    double standing = 0;  // seconds since a line finished, of a script that has lines to run
    engine::RunCounts counts;
};

// Seconds unless said otherwise.
struct HealthFigures {
    double uptime = 0;
    std::uint64_t ticks = 0;
    double ticksPerSecond = 0;  // over the last ten seconds, as are the lines
    double latenessHalf = 0;    // half of the ticks come no later
    double lateness99 = 0;      // 99 of 100
    double latenessMax = 0;
    double latenessSum = 0;
    engine::RunCounts counts;
    double linesPerSecond = 0;
    std::array<std::size_t, static_cast<std::size_t>(ScriptCondition::Count)> scripts{};
    std::array<std::size_t, vantrel::StateConnected + 1> connections{};  // by ConnectionState
    std::uint64_t memory = 0;                                            // bytes
    std::uint64_t linesLost = 0;                                         // of the log's file
    std::vector<ScriptFigures> byScript;                                 // as they were opened
};

class Health {
  public:
    // `now` is here and below a reading in microseconds of one clock that nobody sets.
    explicit Health(std::int64_t now);

    // A tick has been run; how much later than it was due it began, in microseconds.
    void OnTick(std::int64_t now, std::int64_t lateness);

    // Where the documents count; DocumentServices::counts.
    engine::RunCounts& Counts() { return m_counts; }

    // Without a list of sources there are no connections.
    HealthFigures GetFigures(std::int64_t now, const engine::TickRunner& ticks,
                             const vantrel::CSourceList* sources, const CLog& log) const;

  private:
    struct Sample {
        std::int64_t time;
        std::uint64_t ticks;
        std::uint64_t lines;
    };

    const std::int64_t m_start;
    platform::DurationCounts m_lateness;
    engine::RunCounts m_counts;
    std::deque<Sample> m_samples;  // one a second, the newest at the end
};

}  // namespace kalvex::app
