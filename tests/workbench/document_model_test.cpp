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

}  // namespace
}  // namespace kalvex::workbench
