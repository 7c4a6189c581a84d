// The one text of a script, and what its marks do with it.
#include "workbench/model/EditedText.h"

#include <gmock/gmock.h>
#include <gtest/gtest.h>

#include <string>
#include <vector>

namespace kalvex::workbench {
namespace {

using testing::ElementsAre;
using testing::IsEmpty;

class EditedTextTest : public testing::Test, private TextListener {
  protected:
    EditedTextTest() {
        m_text.SetMarkers(&m_markers);
        m_text.SetText("a\r\nb\r\nc\r\nd\r\ne");
        m_text.SetListener(this);
        for (int line = 0; line < 5; ++line) m_markers.Toggle(line, MarkerBookmark);
    }

    void OnLinesReplaced(const LinesReplaced& change) override {
        m_heard.push_back(std::to_string(change.first) + " -" + std::to_string(change.removed) +
                          " +" + std::to_string(change.added) + (change.linesMove ? " moves" : ""));
    }
    std::vector<std::string> Lines() const { return engine::SplitLines(m_text.GetText()); }
    std::vector<int> Marks() const { return m_markers.LinesOf(MarkerBookmark); }

    EditedText m_text;
    ScriptMarkers m_markers;
    std::vector<std::string> m_heard;
};

TEST_F(EditedTextTest, EditsOfAPersonAreNotToldBack) {
    m_text.ReplaceLines(1, 2, {"x", "y", "z"});
    EXPECT_THAT(Lines(), ElementsAre("a", "x", "y", "z", "d", "e"));
    m_text.ReplaceLines(0, 6, {""});
    EXPECT_EQ(m_text.GetText(), "");
    EXPECT_EQ(m_text.GetLineCount(), 1);
    EXPECT_THAT(m_heard, IsEmpty());
}

TEST_F(EditedTextTest, MarkStaysWithTheTextOfItsLine) {
    m_text.ReplaceLines(1, 1, {"", "b"});  // a new line before
    EXPECT_THAT(Marks(), ElementsAre(0, 2, 3, 4, 5));
    m_text.ReplaceLines(2, 1, {"b", ""});  // behind
    EXPECT_THAT(Marks(), ElementsAre(0, 2, 4, 5, 6));
    m_text.ReplaceLines(4, 1, {"c1", "c2"});  // within
    EXPECT_THAT(Marks(), ElementsAre(0, 2, 4, 6, 7));
    EXPECT_THAT(Lines(), ElementsAre("a", "", "b", "", "c1", "c2", "d", "e"));
}

TEST_F(EditedTextTest, MarkGoesWithItsLine) {
    m_text.ReplaceLines(1, 2, {"c"});
    EXPECT_THAT(Marks(), ElementsAre(0, 1, 2, 3));
    EXPECT_THAT(Lines(), ElementsAre("a", "c", "d", "e"));
    m_text.ReplaceLines(0, 2, {"ac"});  // joined
    EXPECT_THAT(Marks(), ElementsAre(0, 1, 2));
    m_text.ReplaceLines(1, 1, {"D"});
    EXPECT_THAT(Marks(), ElementsAre(0, 1, 2));
}

TEST_F(EditedTextTest, ShiftsOfAPersonAreReportedBeforeTheMarksMove) {
    std::vector<std::string> reports;
    const auto report = [&](const std::string& what) {
        return [this, what, &reports](int line, int count) {
            reports.push_back(what + std::to_string(line) + "*" + std::to_string(count) + " of " +
                              std::to_string(Marks().back()));
        };
    };
    m_text.ReportShifts(report("+"), report("-"));
    m_text.ReplaceLines(1, 1, {"", "b"});
    m_text.ReplaceLines(0, 3, {"a"});
    m_text.ReplaceLines(0, 1, {"A"});
    m_text.InsertScriptText(0, "i\r\n", false);
    m_text.SetText("z");
    EXPECT_THAT(reports, ElementsAre("+1*1 of 4", "-1*2 of 5"));
}

TEST_F(EditedTextTest, ExpansionMovesMarksAndTheNextTextMovesThemBack) {
    m_text.InsertScriptText(1, "; begin\r\n", true);
    m_text.InsertScriptText(1, "i1\r\ni2\r\n", false);
    m_text.InsertScriptText(3, "; end\r\n", false);
    m_text.InsertScriptText(6, "x\r\ny\r\n", true);
    EXPECT_THAT(Lines(), ElementsAre("a", "; begin", "i1", "i2", "; end", "c", "x", "y", "e"));
    EXPECT_THAT(m_heard,
                ElementsAre("1 -1 +1 moves", "2 -0 +2 moves", "4 -0 +1 moves", "6 -1 +2 moves"));
    EXPECT_THAT(Marks(), ElementsAre(0, 1, 5, 6, 8));
    m_markers.Toggle(3, MarkerBreakpoint);
    m_heard.clear();
    m_text.SetText("a\nb\nc\nd\ne");
    EXPECT_THAT(m_heard, ElementsAre("7 -1 +0 moves", "4 -1 +0 moves", "2 -2 +0 moves", "1 -1 +1",
                                     "3 -1 +1"));
    EXPECT_THAT(Lines(), ElementsAre("a", "b", "c", "d", "e"));
    EXPECT_THAT(Marks(), ElementsAre(0, 1, 2, 3, 4));
    EXPECT_THAT(m_markers.LinesOf(MarkerBreakpoint), IsEmpty());
}

TEST_F(EditedTextTest, SameTextChangesNothing) {
    m_text.SetText("a\nb\nc\nd\ne");
    EXPECT_THAT(m_heard, IsEmpty());
    EXPECT_THAT(Marks(), ElementsAre(0, 1, 2, 3, 4));
}

TEST_F(EditedTextTest, OtherTextKeepsMarksByNumber) {
    m_text.SetText("a\nB\nc\nD\nE");
    EXPECT_THAT(m_heard, ElementsAre("1 -1 +1", "3 -2 +2"));
    m_heard.clear();
    m_text.SetText("a\nx\ny\nB\nc\nD\nE");
    EXPECT_THAT(m_heard, ElementsAre("1 -0 +2"));
    m_heard.clear();
    m_text.SetText("a\nE");
    EXPECT_THAT(m_heard, ElementsAre("1 -5 +0"));
    EXPECT_THAT(Lines(), ElementsAre("a", "E"));
    EXPECT_THAT(Marks(), ElementsAre(0, 1, 2, 3, 4));
}

TEST_F(EditedTextTest, IncludeInTheLastLineComesBack) {
    m_text.InsertScriptText(4, "; begin\r\n", true);
    m_text.InsertScriptText(4, "; end\r\n", false);
    EXPECT_THAT(Lines(), ElementsAre("a", "b", "c", "d", "; begin", "; end", ""));
    m_text.SetText("a\nb\nc\nd\ne");
    EXPECT_THAT(Lines(), ElementsAre("a", "b", "c", "d", "e"));
    EXPECT_THAT(Marks(), ElementsAre(0, 1, 2, 3, 4));
}

TEST_F(EditedTextTest, ExpandedTextThatIsEditedIsThePersons) {
    m_text.InsertScriptText(1, "i\r\n", false);
    m_text.ReplaceLines(0, 1, {"A"});
    m_text.SetText("a\nb\nc\nd\ne");
    EXPECT_THAT(Marks(), ElementsAre(0, 1, 3, 4, 5));
}

}  // namespace
}  // namespace kalvex::workbench
