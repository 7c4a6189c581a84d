#include "engine/IfBlocks.h"

#include <gmock/gmock.h>

#include <random>

#include "engine/LineCache.h"
#include "operands/ScriptErrors.h"
#include "text/CodePage.h"
#include "text/LineScanner.h"

namespace kalvex::engine {
namespace {

constexpr int kTexts = 4000;
constexpr unsigned kFirstSeed = 1500;

bool Is(std::string_view token, std::string_view word) {
    return text::EqualNoCase(token, word);
}

std::string_view FirstToken(std::string_view line) {
    return text::NextToken(line);
}

std::vector<std::string_view> CodeTokens(std::string_view line) {
    std::vector<std::string_view> tokens;
    for (std::string_view token = text::NextToken(line); !token.empty() && token != ";";
         token = text::NextToken(line)) {
        tokens.push_back(token);
    }
    return tokens;
}

bool HoldsIf(std::string_view line) {
    const std::vector<std::string_view> tokens = CodeTokens(line);
    return std::ranges::any_of(tokens, [](std::string_view token) { return Is(token, "IF"); });
}

// The blocks by their definition: each IF searches the lines below it, and searches the block of
// each IF that it meets anew.
class PlainSearch {
  public:
    explicit PlainSearch(const LineCache& lines) : m_lines(lines), m_count(lines.Count()) {}

    CIfBlock BlockAt(int line, bool outer = true) const {
        CIfBlock block{m_count, m_count, 0};
        bool complete = false;
        bool missing = false;
        for (const std::string_view token : CodeTokens(m_lines.Get(line))) {
            if (Is(token, "GOTO")) block.nElseLine = block.nEndifLine = line;
            const bool then = Is(token, "THEN");
            if (then && !Descend(line, block, outer)) missing = true;
            complete = complete || then || Is(token, "GOTO");
        }
        if (complete && !missing) return block;
        const int code = missing ? operands::ErrorNoEndif : operands::ErrorBadFunction;
        return {line, line, block.nError == 0 ? code : block.nError};
    }

    ElseEnd ElseEndAt(int line) const {
        ElseEnd end;
        while (line < m_count && !Is(FirstToken(m_lines.Get(line)), "ENDIF")) {
            if (Is(FirstToken(m_lines.Get(line)), "IF")) {
                const CIfBlock block = BlockAt(line);
                if (end.error == 0) end.error = block.nError;
                line = block.nEndifLine;
            }
            ++line;
        }
        end.line = line;
        return end;
    }

  private:
    bool Descend(int line, CIfBlock& block, bool outer) const {
        for (bool atEndif = false; !atEndif;) {
            if (++line >= m_count) return false;
            const std::string_view text = m_lines.Get(line);
            atEndif = Is(FirstToken(text), "ENDIF");
            if (HoldsIf(text)) {
                const CIfBlock nested = BlockAt(line, false);
                if (block.nError == 0) block.nError = nested.nError;
                line = nested.nElseLine;
            }
            if (outer && Is(FirstToken(text), "ELSE")) block.nElseLine = line;
        }
        block.nEndifLine = line;
        block.nElseLine = std::min(block.nElseLine, line);
        return true;
    }

    const LineCache& m_lines;
    int m_count;
};

constexpr const char* kPieces[] = {
    "IF A THEN", "if a then",       "IF A GOTO x",     "IF A",         "IF A THEN GOTO x",
    "ELSE",      "ELSE IF B THEN",  "ENDIF",           "endif",        "ENDIF IF C THEN",
    "SET A = 1", "; IF D THEN",     "SET A = IF THEN", "IF GOTO THEN", "ENDIF ; IF A THEN",
    "",          "CALL f(IF THEN)", "ELSE IF A GOTO",  "THEN",         "\tIF \"IF\" = 1 THEN THEN",
    "Else if",   "SET \"IF\" THEN", "ENDIF IF A GOTO", "ELSE ENDIF",
};

std::string RandomText(std::mt19937& random) {
    // Some texts have few kinds of lines, so that blocks are deep and close.
    const std::size_t kinds = 1 + random() % std::size(kPieces);
    const std::size_t from = random() % std::size(kPieces);
    std::string text;
    for (auto lines = random() % 10; lines > 0; --lines) {
        text += kPieces[(from + random() % kinds) % std::size(kPieces)];
        text += '\n';
    }
    return text;
}

std::string Words(const CIfBlock& block) {
    return std::to_string(block.nElseLine) + ' ' + std::to_string(block.nEndifLine) + ' ' +
           std::to_string(block.nError);
}

std::string Words(const ElseEnd& end) {
    return std::to_string(end.line) + ' ' + std::to_string(end.error);
}

LineCache CacheOf(const std::string& text) {
    LineList list;
    list.SetText(text);
    LineCache lines;
    lines.Fill(list);
    return lines;
}

TEST(IfBlocksTest, AreThoseOfASearchFromEachLine) {
    for (unsigned seed = kFirstSeed; seed < kFirstSeed + kTexts; ++seed) {
        std::mt19937 random(seed);
        const std::string text = RandomText(random);
        SCOPED_TRACE("seed " + std::to_string(seed) + "\n" + text);
        const LineCache lines = CacheOf(text);
        const PlainSearch plain(lines);
        IfBlockIndex blocks;
        for (int line = 0; line < lines.Count(); ++line) {
            if (HoldsIf(lines.Get(line))) {
                ASSERT_EQ(Words(blocks.BlockAt(lines, line)), Words(plain.BlockAt(line))) << line;
            }
            ASSERT_EQ(Words(blocks.ElseEndAt(lines, line)), Words(plain.ElseEndAt(line))) << line;
        }
    }
}

}  // namespace
}  // namespace kalvex::engine
