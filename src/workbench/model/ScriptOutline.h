// Which lines of a script fold, and which belong together: IF, ELSE and ENDIF, PROCEDURE and END,
// in upper case, as whole words that are no part of a text, a comment or a label. A block that
// begins and ends in one line is none, nor is one without its end. Blocks nest; an END closes its
// PROCEDURE whatever is open within, and no ENDIF reaches out of a PROCEDURE.
//
// An IF whose first THEN or GOTO, in any case, is a GOTO has no ENDIF and opens nothing.
//
// Any thread, one at a time; lines count from 0.
#pragma once

#include <functional>
#include <string_view>
#include <vector>

#include "workbench/model/EditorSettings.h"

namespace kalvex::workbench {

struct FoldBlock {
    int firstLine;
    int lastLine;
    int elseLine;              // of an IF that has one, else -1
    std::string_view shownAs;  // UTF-8; what stands for the folded text

    bool operator==(const FoldBlock&) const = default;
};

class ScriptOutline {
  public:
    // A line's text without its line end, in any encoding that contains ASCII; need not outlive the
    // next call.
    using LineSource = std::function<std::string_view(int line)>;

    // The whole text: time and memory go with its length.
    void Build(int lineCount, const LineSource& source);
    // `removed` lines from `first` on have become `added` ones: reads those alone, and pairs anew
    // what is known of the others.
    void Change(int first, int removed, int added, const LineSource& source);

    // By first line, an outer block before those within.
    const std::vector<FoldBlock>& Blocks() const { return m_blocks; }
    // How many blocks hold the line behind their first one.
    int DepthAt(int line) const;
    // The block that begins, has its ELSE, or ends in the line; null when there is none.
    const FoldBlock* BlockAt(int line) const;
    // The line of the ENDIF or END that closes what begins in the line; for a line with an ELSE, an
    // ENDIF or an END the line where its block begins. -1 for all others.
    int MatchAt(int line) const;

  private:
    enum class Side : unsigned char { Begin, Middle, End };
    struct Mark {
        const OutlineBlock* block;
        Side side;

        bool operator==(const Mark&) const = default;
    };
    using Marks = std::vector<Mark>;
    struct Open {
        const OutlineBlock* block;
        int line;
        int elseLine;
    };

    static Marks MarksOf(std::string_view line);
    void Pair();
    void Close(std::vector<Open>& open, const OutlineBlock* block, int line);
    void Index();

    std::vector<Marks> m_marks;  // a line
    std::vector<FoldBlock> m_blocks;
    std::vector<int> m_blockAt;  // a line: the index of its block, or -1
    std::vector<int> m_depths;   // a line
};

}  // namespace kalvex::workbench
