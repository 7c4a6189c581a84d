// The only driver of scripts: one tick walks the open documents in order. Main thread.
#pragma once

#include <cstddef>
#include <cstdint>
#include <functional>
#include <vector>

#include "engine/ScriptDocument.h"

namespace kalvex::engine {

// With what it has done in ticks since it was added, where DocumentServices counts at all.
struct TickedScript {
    CKalvexDoc* document;
    RunCounts counts;
};

class TickRunner {
  public:
    // The documents are not owned; a document is removed before it is destroyed.
    void Add(CKalvexDoc& document) { m_scripts.push_back({&document, {}}); }
    void Remove(CKalvexDoc& document);
    // In the order in which they were added.
    const std::vector<TickedScript>& Scripts() const { return m_scripts; }

    // Does nothing within a tick or while blocked.
    void RunTick();

    // How long a tick may take, for ticks by a real clock, given in microseconds; without it a tick
    // takes what it takes. Of a tick that takes longer, scripts at the top priority that neither
    // wait nor sleep are left to the next ones, and have no second turn before the last of them had
    // its first; one has its turn in any case. All others have each tick.
    void SetBudget(std::function<std::int64_t()> clock, std::int64_t microseconds) {
        m_clock = std::move(clock);
        m_budget = microseconds;
    }

    // Of all its documents; the watch is told where ticks begin.
    void SetLineWatch(LineWatch* watch) { m_lineWatch = watch; }

    // How many of the next ticks will have no line to run, 100 at most. Skipping so many, or fewer,
    // leaves everything as running them does. Asked anew after whatever else acts on the documents.
    int GetIdleTicks() const;
    void SkipTicks(int count);

    // Ticks are blocked while scripts are opened at start-up.
    void Block(bool blocked) { m_blocked = blocked; }

    // One of the scripts stands on an error.
    bool IsErrorStanding() const { return m_bErrorStanding; }

  private:
    // The turns of the scripts that never rest, in a tick with a budget.
    struct Turns {
        std::int64_t until = 0;
        bool hadOne = false;
        std::size_t next = 0;  // whose turn is left to the next tick; 0 for nobody's
    };

    bool IsLeftOut(std::size_t index, Turns& turns) const;
    void FetchLines(std::size_t current) const;
    bool Execute(std::size_t index, TickMoment& moment);

    std::vector<TickedScript> m_scripts;
    std::function<std::int64_t()> m_clock;
    std::int64_t m_budget = 0;
    LineWatch* m_lineWatch = nullptr;
    std::size_t m_firstTurn = 0;  // those before it have had theirs
    bool m_inTick = false;
    bool m_blocked = false;
    bool m_bErrorStanding = false;
};

}  // namespace kalvex::engine
