// Where the blocks of IF end. There is no block stack at run time: a block is found by searching
// the text below its IF. The search depends on the text alone, so its results are kept while a
// script runs.
#pragma once

#include <vector>

namespace kalvex::engine {

class CKalvexDoc;
class LineCache;

struct CIfBlock {
    int nElseLine = 0;   // where a false THEN continues
    int nEndifLine = 0;  // the line of the matching ENDIF
    int nError = 0;      // the first error that the search met, 0 for none
};

// Where an ELSE goes that is reached from above.
struct ElseEnd {
    int line = 0;   // of its ENDIF; the count of lines when there is none
    int error = 0;  // of the first faulty IF on the way, 0 for none
};

class IfBlockIndex {
  public:
    // The block of the IF at the line, as for an IF that is executed. Records its error, not
    // forced.
    const CIfBlock& Find(CKalvexDoc& document, int line);
    // The line of the ENDIF that ends the ELSE at the line. Records the error of a faulty IF on the
    // way, and then that no ENDIF stands below, neither forced.
    int FindElseEnd(CKalvexDoc& document, int line);

    // The same without a document that is told of errors; both are kept until Clear.
    const CIfBlock& BlockAt(const LineCache& lines, int line);
    ElseEnd ElseEndAt(const LineCache& lines, int line);

    void Clear() { *this = {}; }

  private:
    struct Search;

    void SearchAll(const LineCache& lines);

    // One a line; that of a line without IF means nothing.
    std::vector<CIfBlock> m_blocks;
    std::vector<ElseEnd> m_elseEnds;
};

}  // namespace kalvex::engine
