// The marks beside the lines of a script.
#include "workbench/model/DocumentModel.h"

#include <gmock/gmock.h>
#include <gtest/gtest.h>

namespace kalvex::workbench {
namespace {

using testing::ElementsAre;
using testing::IsEmpty;

TEST(DocumentModelTest, BreakpointHasItsColour) {
    DocumentModel model;
    model.Markers().SetBreakpoint(3, true);
    model.Markers().SetBreakpoint(3, true);
    EXPECT_TRUE(model.HasBreakpoint(3));
    EXPECT_TRUE(model.Markers().Has(3, MarkerBreakpointColour));
    EXPECT_FALSE(model.HasBreakpoint(2));
    model.Markers().SetBreakpoint(3, false);
    model.Markers().SetBreakpoint(3, false);
    EXPECT_FALSE(model.HasBreakpoint(3));
    EXPECT_FALSE(model.Markers().Has(3, MarkerBreakpointColour));
}

TEST(DocumentModelTest, BreakpointsComeInTheOrderOfTheirSetting) {
    ScriptMarkers markers;
    for (const int line : {7, 2, 5}) markers.SetBreakpoint(line, true);
    markers.SetBreakpoint(2, false);
    markers.SetBreakpoint(2, true);
    EXPECT_THAT(markers.LinesOf(MarkerBreakpoint), ElementsAre(7, 5, 2));
}

TEST(DocumentModelTest, MarksOfSomeKindsAreDeleted) {
    ScriptMarkers markers;
    markers.SetBreakpoint(1, true);
    EXPECT_TRUE(markers.Toggle(1, MarkerBookmark));
    EXPECT_TRUE(markers.Toggle(4, MarkerCurrentLine));
    markers.DeleteAllMarkers(MarkerBreakpoint | MarkerBreakpointColour);
    EXPECT_THAT(markers.LinesOf(MarkerBreakpoint), IsEmpty());
    EXPECT_FALSE(markers.Has(1, MarkerBreakpointColour));
    EXPECT_TRUE(markers.Has(1, MarkerBookmark));
    EXPECT_TRUE(markers.Has(4, MarkerCurrentLine));
}

TEST(DocumentModelTest, EngineMarksLinesAndClearsAllButBookmarks) {
    DocumentModel model;
    model.SetLineMarker(2, true);
    model.SetLineMarker(2, true);
    EXPECT_THAT(model.Markers().LinesOf(MarkerCurrentLine), ElementsAre(2));
    model.SetLineMarker(2, false);
    EXPECT_THAT(model.Markers().LinesOf(MarkerCurrentLine), IsEmpty());
    model.SetLineMarker(3, true);
    model.Markers().SetBreakpoint(3, true);
    model.Markers().Toggle(3, MarkerBookmark);
    model.ClearAllMarkers();
    EXPECT_THAT(model.Markers().LinesOf(MarkerCurrentLine), IsEmpty());
    EXPECT_FALSE(model.HasBreakpoint(3));
    EXPECT_TRUE(model.Markers().Has(3, MarkerBookmark));
    EXPECT_EQ(model.GetSelectedLine(), -1);
    model.SelectLine(3);
    EXPECT_EQ(model.GetSelectedLine(), 3);
}

TEST(DocumentModelTest, MarksMoveWithTheirLines) {
    ScriptMarkers markers;
    for (const int line : {4, 1, 2}) markers.SetBreakpoint(line, true);
    markers.Toggle(2, MarkerBookmark);
    markers.LinesInserted(2, 3);
    EXPECT_THAT(markers.LinesOf(MarkerBreakpoint), ElementsAre(7, 1, 5));
    EXPECT_TRUE(markers.Has(5, MarkerBookmark));
    EXPECT_TRUE(markers.Has(5, MarkerBreakpointColour));
    markers.LinesDeleted(4, 2);
    EXPECT_THAT(markers.LinesOf(MarkerBreakpoint), ElementsAre(5, 1));
    EXPECT_THAT(markers.LinesOf(MarkerBookmark), IsEmpty());
}

TEST(DocumentModelTest, RevisionGrowsWithWhatIsShown) {
    DocumentModel model;
    EditedText text;
    model.SetText(text);
    EXPECT_EQ(model.Text(), &text);
    unsigned seen = model.GetRevision();
    const auto changes = [&model, &seen] {
        const bool changed = model.GetRevision() != seen;
        seen = model.GetRevision();
        return changed;
    };
    model.SelectLine(1);
    EXPECT_TRUE(changes());
    model.SelectLine(1);
    EXPECT_FALSE(changes());
    model.Markers().SetBreakpoint(1, true);
    EXPECT_TRUE(changes());
    model.Markers().SetBreakpoint(1, true);
    EXPECT_FALSE(changes());
    model.Markers().DeleteAllMarkers(MarkerBookmark);
    EXPECT_FALSE(changes());
    text.ReplaceLines(0, 1, {"a"});
    EXPECT_FALSE(changes());
    text.ReplaceLines(0, 1, {"", "a"});
    EXPECT_TRUE(changes());
    model.SetReadOnly(true);
    EXPECT_TRUE(changes());
    EXPECT_TRUE(model.IsReadOnly());
    model.RefreshTitle();
    model.RefreshVariables();
    EXPECT_FALSE(changes());
}

TEST(DocumentModelTest, ListenerHearsOfAllButRunningLines) {
    DocumentModel model;
    std::vector<DocumentNews> heard;
    model.SetListener([&heard](DocumentNews news) { heard.push_back(news); });
    model.SelectLine(1);
    model.SetLineMarker(1, false);
    model.Markers().SetBreakpoint(1, true);
    EXPECT_THAT(heard, IsEmpty());
    model.SetLineMarker(1, true);
    model.SetReadOnly(true);
    model.RefreshTitle();
    model.RefreshVariables();
    model.ClearAllMarkers();
    EXPECT_THAT(heard, ElementsAre(DocumentNews::Marks, DocumentNews::ReadOnly, DocumentNews::Title,
                                   DocumentNews::Variables, DocumentNews::Marks));
}

TEST(DocumentModelTest, WantedIsTakenOnce) {
    DocumentModel model;
    EXPECT_FALSE(model.TakeTitleWanted());
    EXPECT_FALSE(model.TakeVariablesWanted());
    model.RefreshTitle();
    EXPECT_FALSE(model.TakeVariablesWanted());
    EXPECT_TRUE(model.TakeTitleWanted());
    EXPECT_FALSE(model.TakeTitleWanted());
    model.RefreshVariables();
    EXPECT_TRUE(model.TakeVariablesWanted());
    EXPECT_FALSE(model.TakeVariablesWanted());
}

}  // namespace
}  // namespace kalvex::workbench
