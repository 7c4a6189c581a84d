#include <gmock/gmock.h>
#include <gtest/gtest.h>

#include "programs/kalvexctl/ScriptState.h"
#include "programs/kalvexctl/Table.h"

namespace kalvex::programs {
namespace {

using kalvexctl::Cell;
using kalvexctl::Colour;
using kalvexctl::Row;
using kalvexctl::RunWord;
using kalvexctl::ScreenLines;
using testing::ElementsAre;
using testing::IsEmpty;

TEST(ControlTableTest, ProgramsGetTabs) {
    EXPECT_EQ(kalvexctl::PipeLine({Cell{"a.kx"}, Cell{"running", Colour::Green}, Cell{""}}),
              "a.kx\trunning\t");
}

TEST(ControlTableTest, NothingInAFieldSpoilsTheLine) {
    EXPECT_EQ(kalvexctl::PipeLine({Cell{"a\tb\nc\033[31m"}, Cell{"d"}}), "a b c [31m\td");
    EXPECT_EQ(kalvexctl::PipeLine({Cell{"a\xC2\x9B"
                                        "2J"}}),
              "a\\x9b2J");
}

TEST(ControlTableTest, ColumnsAreAlignedByCharacters) {
    EXPECT_THAT(ScreenLines({"GŁOWA", "B"},
                            {Row{{Cell{"ż"}, Cell{"x"}}}, Row{{Cell{"abc"}, Cell{"y"}}}}, {}),
                ElementsAre("GŁOWA  B", "ż      x", "abc    y"));
}

TEST(ControlTableTest, LinesAreCutToTheWidth) {
    EXPECT_THAT(ScreenLines({}, {Row{{Cell{"ab"}, Cell{"żółćżółć"}}}}, {.width = 8}),
                ElementsAre("ab  żółć"));
}

TEST(ControlTableTest, LongFieldLeavesHalfOfTheScreenToTheOthers) {
    EXPECT_THAT(
        ScreenLines({}, {Row{{Cell{"abcdefghij"}, Cell{"stan"}, Cell{"koniec"}}}}, {.width = 12}),
        ElementsAre("abcdef  stan"));
}

TEST(ControlTableTest, NoBlanksEndALine) {
    EXPECT_THAT(ScreenLines({}, {Row{{Cell{"a"}, Cell{""}}}, Row{{Cell{"abc"}, Cell{"x"}}}}, {}),
                ElementsAre("a", "abc  x"));
}

TEST(ControlTableTest, ColoursTakeNoPlace) {
    EXPECT_THAT(
        ScreenLines({}, {Row{{Cell{"a", Colour::Green}, Cell{"b"}}}, Row{{Cell{"abc"}, Cell{"d"}}}},
                    {.width = 80, .coloured = true}),
        ElementsAre("\033[32ma\033[0m    b", "abc  d"));
}

TEST(ControlTableTest, WhatIsBelowIsIndentedAndCut) {
    EXPECT_THAT(ScreenLines({}, {Row{{Cell{"a"}}, "czeka na dane"}}, {.width = 12}),
                ElementsAre("a", "    czeka na"));
}

TEST(ControlTableTest, NoRowsHaveNoHeadButTheirs) {
    EXPECT_THAT(ScreenLines({}, {}, {}), IsEmpty());
    EXPECT_THAT(ScreenLines({"A"}, {}, {}), ElementsAre("A"));
}

// ---- states

TEST(ControlTableTest, StatesFollowTheStateWord) {
    EXPECT_EQ(kalvexctl::WordOf(0), RunWord::Idle);
    EXPECT_EQ(kalvexctl::WordOf(1), RunWord::Running);
    EXPECT_EQ(kalvexctl::WordOf(2), RunWord::Stopped);
    EXPECT_EQ(kalvexctl::WordOf(6), RunWord::Stopped);
    EXPECT_EQ(kalvexctl::WordOf(8), RunWord::Idle);
    EXPECT_EQ(kalvexctl::WordOf(9), RunWord::Running);
    EXPECT_EQ(kalvexctl::WordOf(10), RunWord::Stopped);
}

TEST(ControlTableTest, LineIsThatOfAScriptThatHasOne) {
    EXPECT_EQ(kalvexctl::LineCell({RunWord::Running, 0}).text, "1");
    EXPECT_EQ(kalvexctl::LineCell({RunWord::Stopped, 8}).text, "9");
    EXPECT_EQ(kalvexctl::LineCell({RunWord::Stopped, -1}).text, "-");
    EXPECT_EQ(kalvexctl::LineCell({RunWord::Idle, 0}).text, "-");
    EXPECT_EQ(kalvexctl::LineCell({}).text, "-");
}

}  // namespace
}  // namespace kalvex::programs
