#include "engine/IfBlocks.h"

#include "engine/ScriptDocument.h"
#include "operands/Keywords.h"
#include "text/CodePage.h"
#include "text/LineScanner.h"

namespace kalvex::engine {

namespace {

bool IsEnd(std::string_view token) {
    return token.empty() || token == ";";
}

bool HoldsIf(std::string_view line) {
    for (std::string_view token = text::NextToken(line); !IsEnd(token);
         token = text::NextToken(line)) {
        if (text::EqualNoCase(token, operands::Keyword::If)) return true;
    }
    return false;
}

void NoteError(int& noted, int code) {
    if (noted == 0) noted = code;
}

}  // namespace

// From the last line up: the search from a line goes on as that from a line below, so it is made
// once for all that come by.
struct IfBlockIndex::Search {
    // What a search for ENDIF meets that begins with a line.
    struct Path {
        int endifLine = -1;  // -1 when it comes to the end of the text
        int elseLine = -1;   // the last ELSE of its own, -1 for none
        int error = 0;       // the first of the blocks that it passes over
    };

    explicit Search(const LineCache& cache)
        : lines(cache), blocks(Size()), elseEnds(Size() + 1), paths(Size() + 1) {
        elseEnds.back().line = lines.Count();
        for (int line = lines.Count() - 1; line >= 0; --line) Read(line);
    }

    std::size_t Size() const { return static_cast<std::size_t>(lines.Count()); }

    void Read(int line) {
        const auto n = static_cast<std::size_t>(line);
        const std::string_view text = lines.Get(line);
        std::string_view rest = text;
        const std::string_view first = text::NextToken(rest);
        const bool endif = text::EqualNoCase(first, operands::Keyword::Endif);
        CIfBlock nested{line, line, 0};
        if (HoldsIf(text)) {
            blocks[n] = Build(line, true);
            nested = Build(line, false);
        }
        Path& path = paths[n];
        if (endif) {
            path.endifLine = nested.nElseLine;
        } else {
            path = paths[static_cast<std::size_t>(nested.nElseLine) + 1];
            const bool ownElse = text::EqualNoCase(first, operands::Keyword::Else);
            if (ownElse && path.elseLine < 0) path.elseLine = nested.nElseLine;
        }
        if (nested.nError != 0) path.error = nested.nError;
        elseEnds[n] = EndOfElse(line, first, endif);
    }

    ElseEnd EndOfElse(int line, std::string_view first, bool endif) const {
        if (endif) return {line, 0};
        if (!text::EqualNoCase(first, operands::Keyword::If))
            return elseEnds[static_cast<std::size_t>(line) + 1];
        const CIfBlock& block = blocks[static_cast<std::size_t>(line)];
        ElseEnd end{elseEnds[static_cast<std::size_t>(block.nEndifLine) + 1].line, block.nError};
        NoteError(end.error, elseEnds[static_cast<std::size_t>(block.nEndifLine) + 1].error);
        return end;
    }

    // An IF within another block has no ELSE line of its own.
    CIfBlock Build(int line, bool withElse) const {
        CIfBlock block{lines.Count(), lines.Count(), 0};
        bool noThen = true;
        bool missingEndif = false;
        std::string_view text = lines.Get(line);
        for (std::string_view token = text::NextToken(text); !IsEnd(token);
             token = text::NextToken(text)) {
            if (text::EqualNoCase(token, operands::Keyword::Goto)) {
                block.nElseLine = block.nEndifLine = line;
                noThen = false;
            } else if (text::EqualNoCase(token, operands::Keyword::Then)) {
                const Path& below = paths[static_cast<std::size_t>(line) + 1];
                if (!Follow(below, block, withElse)) missingEndif = true;
                noThen = false;
            }
        }
        if (missingEndif || noThen) {
            block.nElseLine = block.nEndifLine = line;
            NoteError(block.nError,
                      missingEndif ? operands::ErrorNoEndif : operands::ErrorBadFunction);
        }
        return block;
    }

    // False when no ENDIF stands below.
    static bool Follow(const Path& path, CIfBlock& block, bool withElse) {
        NoteError(block.nError, path.error);
        if (path.endifLine < 0) return false;
        if (withElse && path.elseLine >= 0) block.nElseLine = path.elseLine;
        block.nEndifLine = path.endifLine;
        if (block.nEndifLine < block.nElseLine) block.nElseLine = block.nEndifLine;
        return true;
    }

    const LineCache& lines;
    std::vector<CIfBlock> blocks;
    std::vector<ElseEnd> elseEnds;  // one more than lines, as `paths`: the end of the text
    std::vector<Path> paths;
};

void IfBlockIndex::SearchAll(const LineCache& lines) {
    Search search(lines);
    m_blocks = std::move(search.blocks);
    m_elseEnds = std::move(search.elseEnds);
}

const CIfBlock& IfBlockIndex::BlockAt(const LineCache& lines, int line) {
    if (m_blocks.empty()) SearchAll(lines);
    return m_blocks[static_cast<std::size_t>(line)];
}

ElseEnd IfBlockIndex::ElseEndAt(const LineCache& lines, int line) {
    if (m_blocks.empty()) SearchAll(lines);
    return m_elseEnds[static_cast<std::size_t>(line)];
}

const CIfBlock& IfBlockIndex::Find(CKalvexDoc& document, int line) {
    const CIfBlock& block = BlockAt(document.Lines(), line);
    if (block.nError != 0) document.SetError(block.nError, {}, false);
    return block;
}

int IfBlockIndex::FindElseEnd(CKalvexDoc& document, int line) {
    const ElseEnd end = ElseEndAt(document.Lines(), line);
    if (end.error != 0) document.SetError(end.error, {}, false);
    if (end.line == document.GetLineCount())
        document.SetError(operands::ErrorBadFunction, {}, false);
    return end.line;
}

}  // namespace kalvex::engine
