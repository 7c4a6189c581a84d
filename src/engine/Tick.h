// The only driver of scripts: one tick walks the open documents in order. Main thread.
#pragma once

#include <cstddef>
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

    // How many of the next ticks will have no line to run, 100 at most. Skipping so many, or fewer,
    // leaves everything as running them does. Asked anew after whatever else acts on the documents.
    int GetIdleTicks() const;
    void SkipTicks(int count);

    // Ticks are blocked while scripts are opened at start-up.
    void Block(bool blocked) { m_blocked = blocked; }

    // One of the scripts stands on an error.
    bool IsErrorStanding() const { return m_bErrorStanding; }

  private:
    void FetchLines(std::size_t current) const;
    bool Execute(std::size_t index, TickMoment& moment);

    std::vector<TickedScript> m_scripts;
    bool m_inTick = false;
    bool m_blocked = false;
    bool m_bErrorStanding = false;
};

}  // namespace kalvex::engine
