// Where the blocks of IF end. There is no block stack at run time: a block is found by searching
// the text below its IF. The search depends on the text alone, so its results are kept while a
// script runs.
#pragma once

#include <unordered_map>

namespace kalvex::engine {

class CKalvexDoc;

struct CIfBlock {
    int nElseLine = 0;   // where a false THEN continues
    int nEndifLine = 0;  // the line of the matching ENDIF
    int nError = 0;      // the first error that the search met, 0 for none
};

class IfBlockIndex {
  public:
    // The block of the IF at the line, as for an IF that is executed. Records its error, not
    // forced.
    const CIfBlock& Find(CKalvexDoc& document, int line);
    void Clear() {
        m_blocks.clear();
        m_searched = false;
    }

  private:
    // An IF within another block has no ELSE line of its own.
    struct Outcome {
        CIfBlock outer;
        CIfBlock nested;
    };
    struct Search;

    void SearchAll(CKalvexDoc& document);
    Outcome SearchBlock(CKalvexDoc& document, int line) const;

    std::unordered_map<int, Outcome> m_blocks;
    bool m_searched = false;
};

}  // namespace kalvex::engine
