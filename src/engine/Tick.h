// The only driver of scripts: one tick walks the open documents in order. Main thread.
#pragma once

#include <vector>

#include "engine/ScriptDocument.h"

namespace kalvex::engine {

class CTickRunner {
  public:
    // The documents are not owned; a document is removed before it is destroyed.
    void Add(CKalvexDoc& document) { m_arrDocuments.push_back(&document); }
    void Remove(CKalvexDoc& document);

    // Does nothing within a tick or while blocked.
    void RunTick();

    // How many of the next ticks will have no line to run, 100 at most. Skipping so many, or fewer,
    // leaves everything as running them does. Asked anew after whatever else acts on the documents.
    int GetIdleTicks() const;
    void SkipTicks(int count);

    // Ticks are blocked while scripts are opened at start-up.
    void Block(bool blocked) { m_bBlocked = blocked; }

    // One of the scripts stands on an error.
    bool IsErrorStanding() const { return m_bErrorStanding; }

  private:
    std::vector<CKalvexDoc*> m_arrDocuments;
    bool m_bInTick = false;
    bool m_bBlocked = false;
    bool m_bErrorStanding = false;
};

}  // namespace kalvex::engine
