// How a script stands on its line: since when, with what outcome, when it last got on. Kept as
// lines run; one that finishes, or sleeps on, as the last one did costs a comparison. Main thread.
#pragma once

#include <cstdint>
#include <optional>
#include <string>

#include "engine/Statement.h"
#include "operands/ScriptContext.h"
#include "platform/Clock.h"

namespace kalvex::engine {

// An error that is no wait.
struct StandingError {
    int code = operands::ErrorNone;
    std::string text;         // of the error slot, the last one with this code
    std::uint64_t times = 0;  // tries in which it came since another code came on this line
};

// What has put a script into step mode.
enum class StopCause { Command, Breakpoint, Error };

// Times are those of the wall clock, 0 for none.
class LineStanding {
  public:
    // A line has been tried.
    void OnLine(LineOutcome outcome, const operands::ErrorSlot& error,
                const platform::Clock& clock) {
        if (outcome == LineOutcome::Finished) return OnFinish();
        if (outcome == m_outcome && outcome != LineOutcome::Failed) return;
        OnStay(outcome, error, clock);
        m_outcome = outcome;
    }
    void OnFinish() { m_outcome = LineOutcome::Finished; }

    // No line is tried from here on, or there is none: the script stands where it has got to.
    void Settle(const platform::Clock& clock) {
        if (m_outcome == LineOutcome::Finished) BeginLine(clock.Now());
    }

    void OnStart(const platform::Clock& clock);
    void OnStop(StopCause cause, const platform::Clock& clock);
    void OnStep() { m_stopCause = StopCause::Command; }

    // Of the last try: none before the line's first one since it was reached or the script started.
    std::optional<LineOutcome> GetOutcome() const { return m_outcome; }
    // When the line was tried first, or the script stopped or ended before that.
    std::int64_t GetSince() const { return m_since; }
    // When the last line before this one finished, to within a due step. Of a script that runs
    // freely, when it last stood.
    std::int64_t GetLastFinished() const { return m_lastFinished; }
    // On this line; without meaning while the script runs freely.
    const StandingError& GetError() const { return m_error; }
    // The last stop.
    StopCause GetStopCause() const { return m_stopCause; }
    std::int64_t GetStopped() const { return m_stopped; }

  private:
    void BeginLine(std::int64_t now);
    void OnStay(LineOutcome outcome, const operands::ErrorSlot& error,
                const platform::Clock& clock);

    std::optional<LineOutcome> m_outcome;
    std::int64_t m_since = 0;
    std::int64_t m_lastFinished = 0;
    std::int64_t m_stopped = 0;
    StopCause m_stopCause = StopCause::Command;
    StandingError m_error;
};

}  // namespace kalvex::engine
