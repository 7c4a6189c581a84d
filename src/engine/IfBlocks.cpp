#include "engine/IfBlocks.h"

#include "engine/ScriptDocument.h"
#include "operands/Keywords.h"
#include "text/CodePage.h"
#include "text/LineScanner.h"

namespace kalvex::engine {

namespace {

std::string_view FirstToken(std::string_view line) {
    return text::NextToken(line);
}

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

void NoteError(CIfBlock& block, int code) {
    if (block.nError == 0) block.nError = code;
}

}  // namespace

// The search for the ENDIF that belongs to an IF, from its line downwards.
struct IfBlockIndex::Search {
    const IfBlockIndex& known;
    CKalvexDoc& document;
    int lineCount;

    // Fills in the block's lines; false when no ENDIF stands below. `withElse` notes ELSE lines.
    bool Run(int line, CIfBlock& block, bool withElse) const {
        bool atEndif = false;
        while (!atEndif) {
            if (line >= lineCount - 1) return false;
            ++line;
            const std::string_view text = document.GetLine(line);
            const std::string_view first = FirstToken(text);
            atEndif = text::EqualNoCase(first, operands::Keyword::Endif);
            const bool atElse = withElse && text::EqualNoCase(first, operands::Keyword::Else);
            if (HoldsIf(text)) {
                const CIfBlock& nested = known.m_blocks.at(line).nested;
                if (nested.nError != 0) NoteError(block, nested.nError);
                line = nested.nElseLine;
            }
            if (atElse) block.nElseLine = line;
        }
        block.nEndifLine = line;
        if (block.nEndifLine < block.nElseLine) block.nElseLine = block.nEndifLine;
        return true;
    }

    CIfBlock Build(int line, bool withElse) const {
        CIfBlock block{lineCount, lineCount, 0};
        bool noThen = true;
        bool missingEndif = false;
        std::string_view text = document.GetLine(line);
        for (std::string_view token = text::NextToken(text); !IsEnd(token);
             token = text::NextToken(text)) {
            if (text::EqualNoCase(token, operands::Keyword::Goto)) {
                block.nElseLine = block.nEndifLine = line;
                noThen = false;
            } else if (text::EqualNoCase(token, operands::Keyword::Then)) {
                if (!Run(line, block, withElse)) missingEndif = true;
                noThen = false;
            }
        }
        if (missingEndif || noThen) {
            block.nElseLine = block.nEndifLine = line;
            NoteError(block, missingEndif ? operands::ErrorNoEndif : operands::ErrorBadFunction);
        }
        return block;
    }
};

IfBlockIndex::Outcome IfBlockIndex::SearchBlock(CKalvexDoc& document, int line) const {
    const Search search{*this, document, document.GetLineCount()};
    return Outcome{search.Build(line, true), search.Build(line, false)};
}

void IfBlockIndex::SearchAll(CKalvexDoc& document) {
    // From the last line up: a search meets only blocks that begin below its own line.
    for (int line = document.GetLineCount() - 1; line >= 0; --line) {
        if (HoldsIf(document.GetLine(line))) {
            m_blocks.emplace(line, SearchBlock(document, line));
        }
    }
    m_searched = true;
}

const CIfBlock& IfBlockIndex::Find(CKalvexDoc& document, int line) {
    if (!m_searched) SearchAll(document);
    const CIfBlock& block = m_blocks.at(line).outer;
    if (block.nError != 0) document.SetError(block.nError, {}, false);
    return block;
}

}  // namespace kalvex::engine
