// What folds, and which lines belong together.
#include "workbench/model/ScriptOutline.h"

#include <gmock/gmock.h>
#include <gtest/gtest.h>

#include <string>

#include "engine/ScriptText.h"

namespace kalvex::workbench {
namespace {

using testing::ElementsAre;
using testing::IsEmpty;

constexpr std::string_view kIf = "IF ... THEN ... ENDIF";
constexpr std::string_view kProcedure = "PROCEDURE ... END";

ScriptOutline::LineSource LinesOf(const engine::ScriptText& text) {
    return [&text](int line) { return text.GetLine(line); };
}

ScriptOutline OutlineOf(std::string_view text) {
    engine::LineList lines;
    lines.SetText(text);
    ScriptOutline outline;
    outline.Build(lines.GetLineCount(), LinesOf(lines));
    return outline;
}

std::vector<int> MatchesOf(const ScriptOutline& outline, int lineCount) {
    std::vector<int> matches;
    for (int line = 0; line < lineCount; ++line) matches.push_back(outline.MatchAt(line));
    return matches;
}

std::vector<int> DepthsOf(const ScriptOutline& outline, int lineCount) {
    std::vector<int> depths;
    for (int line = 0; line < lineCount; ++line) depths.push_back(outline.DepthAt(line));
    return depths;
}

TEST(ScriptOutlineTest, BlocksNest) {
    const ScriptOutline outline = OutlineOf(
        "PROCEDURE P()\n"
        "BEGIN\n"
        "IF A > 1 THEN\n"
        "  IF B > 1 THEN\n"
        "  SLEEP 1\n"
        "  ENDIF\n"
        "ENDIF\n"
        "END\n"
        "SLEEP 1");
    EXPECT_THAT(outline.Blocks(), ElementsAre(FoldBlock{0, 7, -1, kProcedure},
                                              FoldBlock{2, 6, -1, kIf}, FoldBlock{3, 5, -1, kIf}));
    EXPECT_THAT(DepthsOf(outline, 9), ElementsAre(0, 1, 1, 2, 3, 3, 2, 1, 0));
    EXPECT_THAT(MatchesOf(outline, 9), ElementsAre(7, -1, 6, 5, -1, 3, 2, 0, -1));
}

TEST(ScriptOutlineTest, ElseBelongsToTheInnermostIf) {
    const ScriptOutline outline = OutlineOf(
        "IF A THEN\n"
        "IF B THEN\n"
        "ELSE\n"
        "ENDIF\n"
        "ELSE\n"
        "ELSE\n"
        "ENDIF");
    EXPECT_THAT(outline.Blocks(), ElementsAre(FoldBlock{0, 6, 4, kIf}, FoldBlock{1, 3, 2, kIf}));
    EXPECT_THAT(MatchesOf(outline, 7), ElementsAre(6, 3, 1, 1, 0, -1, 0));
    EXPECT_EQ(*outline.BlockAt(4), (FoldBlock{0, 6, 4, kIf}));
    EXPECT_EQ(outline.BlockAt(5), nullptr);
}

TEST(ScriptOutlineTest, StrayElseBelongsToNothing) {
    EXPECT_THAT(MatchesOf(OutlineOf("ELSE\nPROCEDURE P()\nELSE\nEND"), 4),
                ElementsAre(-1, 3, -1, 1));
}

TEST(ScriptOutlineTest, JumpingIfHasNoEnd) {
    for (const std::string jump :
         {"IF A > 1 GOTO KONIEC", "IF A > 1 goto KONIEC", "IF A GOTO THEN", "IF NOT A GOTO X"}) {
        EXPECT_THAT(OutlineOf("IF B THEN\n" + jump + "\nENDIF\nENDIF").Blocks(),
                    ElementsAre(FoldBlock{0, 2, -1, kIf}))
            << jump;
    }
}

TEST(ScriptOutlineTest, OtherIfsOpenABlock) {
    for (const std::string open :
         {"IF A > 1 THEN", "IF A > 1 then", "IF A THEN GOTO X", "IF A > 1", "IF A THEN SLEEP 1",
          "IF A THEN ; GOTO", "IF A == \"GOTO\" THEN", "\tIF A THEN"}) {
        EXPECT_THAT(OutlineOf(open + "\nENDIF").Blocks(), ElementsAre(FoldBlock{0, 1, -1, kIf}))
            << open;
    }
}

TEST(ScriptOutlineTest, OnlyWholeWordsInUpperCaseCount) {
    for (const std::string other :
         {"if A THEN", "If A THEN", "IFA THEN", "_IF A THEN", "\"IF\" A THEN", "; IF A THEN", ":IF",
          " \t:IF", "\"\\\"IF\""}) {
        EXPECT_THAT(OutlineOf(other + "\nENDIF").Blocks(), IsEmpty()) << other;
    }
    EXPECT_THAT(OutlineOf("PROCEDURE P()\nEND_X\nend\n:END\nXEND\n; END\n\"END\"").Blocks(),
                IsEmpty());
}

TEST(ScriptOutlineTest, WordBehindGotoIsALabel) {
    EXPECT_THAT(OutlineOf("PROCEDURE P()\nGOTO END\nIF A goto END\nEND").Blocks(),
                ElementsAre(FoldBlock{0, 3, -1, kProcedure}));
    EXPECT_THAT(OutlineOf("IF A THEN\nGOTO X ENDIF").Blocks(),
                ElementsAre(FoldBlock{0, 1, -1, kIf}));
}

TEST(ScriptOutlineTest, ColonWithinALineHidesNothing) {
    EXPECT_THAT(OutlineOf("IF TIME > 10:30 THEN\nENDIF").Blocks(),
                ElementsAre(FoldBlock{0, 1, -1, kIf}));
}

TEST(ScriptOutlineTest, BlockOfOneLineIsNone) {
    EXPECT_THAT(OutlineOf("IF A THEN ENDIF\nPROCEDURE P() BEGIN END").Blocks(), IsEmpty());
    EXPECT_THAT(OutlineOf("IF A THEN\nPROCEDURE P() IF B THEN END\nENDIF").Blocks(),
                ElementsAre(FoldBlock{0, 2, -1, kIf}));
    EXPECT_THAT(OutlineOf("IF A THEN ELSE ENDIF ENDIF\n").Blocks(), IsEmpty());
}

TEST(ScriptOutlineTest, BlockWithoutItsEndIsNone) {
    EXPECT_THAT(OutlineOf("IF A THEN\nIF B THEN\nENDIF\nPROCEDURE P()").Blocks(),
                ElementsAre(FoldBlock{1, 2, -1, kIf}));
    EXPECT_THAT(OutlineOf("ENDIF\nEND\nIF A THEN\nEND\nENDIF").Blocks(),
                ElementsAre(FoldBlock{2, 4, -1, kIf}));
}

TEST(ScriptOutlineTest, ProcedureClosesWhatIsOpenWithin) {
    EXPECT_THAT(OutlineOf("PROCEDURE P()\nIF A THEN\nEND\nENDIF").Blocks(),
                ElementsAre(FoldBlock{0, 2, -1, kProcedure}));
    EXPECT_THAT(OutlineOf("IF A THEN\nPROCEDURE P()\nENDIF\nEND\nENDIF").Blocks(),
                ElementsAre(FoldBlock{0, 4, -1, kIf}, FoldBlock{1, 3, -1, kProcedure}));
}

TEST(ScriptOutlineTest, BlocksMayShareALine) {
    const ScriptOutline outline = OutlineOf("IF A THEN IF B THEN\nENDIF\nENDIF PROCEDURE P()\nEND");
    EXPECT_THAT(outline.Blocks(), ElementsAre(FoldBlock{0, 2, -1, kIf}, FoldBlock{0, 1, -1, kIf},
                                              FoldBlock{2, 3, -1, kProcedure}));
    EXPECT_THAT(MatchesOf(outline, 4), ElementsAre(1, 0, 3, 2));
}

TEST(ScriptOutlineTest, NextTextStandsForItself) {
    ScriptOutline outline = OutlineOf("IF A THEN\nENDIF");
    outline.Build(1, [](int) { return "ENDIF"; });
    EXPECT_THAT(outline.Blocks(), IsEmpty());
    EXPECT_EQ(outline.MatchAt(0), -1);
}

TEST(ScriptOutlineTest, EmptyTextHasNoBlocks) {
    EXPECT_THAT(OutlineOf("").Blocks(), IsEmpty());
    EXPECT_EQ(OutlineOf("").MatchAt(0), -1);
}

// An outline that follows the changes of a text, and one of what has come out.
class ScriptOutlineChangeTest : public testing::Test {
  protected:
    void Become(int first, int removed, const std::vector<std::string>& added) {
        const auto at = m_lines.begin() + first;
        m_lines.insert(m_lines.erase(at, at + removed), added.begin(), added.end());
        const auto source = [this](int line) -> std::string_view {
            m_read.push_back(line);
            return m_lines[static_cast<std::size_t>(line)];
        };
        m_read.clear();
        m_outline.Change(first, removed, static_cast<int>(added.size()), source);
        const std::vector<int> read = m_read;
        ScriptOutline anew;
        const int count = static_cast<int>(m_lines.size());
        anew.Build(count, source);
        EXPECT_EQ(m_outline.Blocks(), anew.Blocks());
        EXPECT_EQ(MatchesOf(m_outline, count), MatchesOf(anew, count));
        EXPECT_EQ(DepthsOf(m_outline, count), DepthsOf(anew, count));
        m_read = read;
    }

    ScriptOutline m_outline;
    std::vector<std::string> m_lines;
    std::vector<int> m_read;
};

TEST_F(ScriptOutlineChangeTest, FollowsWhatIsTyped) {
    Become(0, 0, {"IF A THEN", "SLEEP 1", "ENDIF"});
    EXPECT_THAT(m_outline.Blocks(), ElementsAre(FoldBlock{0, 2, -1, kIf}));
    Become(1, 1, {"SLEEP 1", "ELSE"});
    EXPECT_THAT(m_read, ElementsAre(1, 2));
    EXPECT_THAT(m_outline.Blocks(), ElementsAre(FoldBlock{0, 3, 2, kIf}));
    Become(1, 1, {});
    EXPECT_THAT(m_outline.Blocks(), ElementsAre(FoldBlock{0, 2, 1, kIf}));
    Become(1, 1, {"SLEEP 2"});
    EXPECT_THAT(m_outline.Blocks(), ElementsAre(FoldBlock{0, 2, -1, kIf}));
    Become(2, 1, {""});
    EXPECT_THAT(m_outline.Blocks(), IsEmpty());
}

TEST_F(ScriptOutlineChangeTest, EmptyLinesMoveBlocks) {
    Become(0, 0, {"IF A THEN", "ENDIF"});
    Become(0, 0, {"", ""});
    EXPECT_THAT(m_outline.Blocks(), ElementsAre(FoldBlock{2, 3, -1, kIf}));
    Become(0, 1, {});
    EXPECT_THAT(m_outline.Blocks(), ElementsAre(FoldBlock{1, 2, -1, kIf}));
}

}  // namespace
}  // namespace kalvex::workbench
