#include "workbench/model/AutostartList.h"

#include <gmock/gmock.h>
#include <gtest/gtest.h>

#include "text/PatternMatch.h"

namespace kalvex::workbench {
namespace {

using testing::ElementsAre;
using testing::IsEmpty;

class AutostartListTest : public testing::Test {
  protected:
    // A letter a path.
    std::string Shown() const {
        std::string shown;
        for (const std::string& path : m_list.Paths()) shown += path;
        return shown;
    }

    AutostartList m_list{{"a", "b", "c", "d", "e"}};
};

TEST_F(AutostartListTest, RowsAreNumberedFromOne) {
    EXPECT_EQ(AutostartList::IdOf(0), "1");
    EXPECT_EQ(AutostartList::IdOf(11), "12");
}

TEST_F(AutostartListTest, TheButtonInsertsWhereARowIsSelected) {
    EXPECT_STREQ(CaptionOfAdding({}), "&Dodaj");
    EXPECT_STREQ(CaptionOfAdding({0}), "&Wstaw");
    EXPECT_STREQ(CaptionOfAdding({1, 2}), "&Wstaw");
}

TEST_F(AutostartListTest, WithoutASelectionFilesGoToTheEnd) {
    EXPECT_THAT(m_list.Add({"x", "y"}, {}), IsEmpty());
    EXPECT_EQ(Shown(), "abcdexy");
}

TEST_F(AutostartListTest, FilesPushTheSelectedRowDown) {
    EXPECT_THAT(m_list.Add({"x", "y"}, {1}), ElementsAre(3));
    EXPECT_EQ(Shown(), "axybcde");
}

TEST_F(AutostartListTest, FilesGoBeforeTheFirstOfSeveralSelectedRows) {
    EXPECT_THAT(m_list.Add({"x"}, {0, 3}), ElementsAre(1, 4));
    EXPECT_EQ(Shown(), "xabcde");
}

TEST_F(AutostartListTest, NoFilesChangeNothing) {
    EXPECT_THAT(m_list.Add({}, {2}), ElementsAre(2));
    EXPECT_EQ(Shown(), "abcde");
}

TEST_F(AutostartListTest, AnEmptyListTakesFiles) {
    m_list = AutostartList();
    m_list.Add({"x"}, {});
    EXPECT_EQ(Shown(), "x");
}

TEST_F(AutostartListTest, SelectedRowsAreRemoved) {
    EXPECT_THAT(m_list.Remove({0, 2, 4}), IsEmpty());
    EXPECT_EQ(Shown(), "bd");
    EXPECT_THAT(m_list.Remove({}), IsEmpty());
    EXPECT_EQ(Shown(), "bd");
    m_list.Remove({0, 1});
    EXPECT_EQ(Shown(), "");
}

TEST_F(AutostartListTest, ARowMovesUpByOne) {
    EXPECT_THAT(m_list.MoveUp({3}), ElementsAre(2));
    EXPECT_EQ(Shown(), "abdce");
}

TEST_F(AutostartListTest, ABlockMovesUpTogether) {
    EXPECT_THAT(m_list.MoveUp({1, 2, 4}), ElementsAre(0, 1, 3));
    EXPECT_EQ(Shown(), "bcaed");
}

TEST_F(AutostartListTest, RowsAtTheTopStay) {
    EXPECT_THAT(m_list.MoveUp({0, 1}), ElementsAre(0, 1));
    EXPECT_EQ(Shown(), "abcde");
    EXPECT_THAT(m_list.MoveUp({0, 2}), ElementsAre(0, 1));
    EXPECT_EQ(Shown(), "acbde");
    EXPECT_THAT(m_list.MoveUp({0, 1}), ElementsAre(0, 1));
    EXPECT_EQ(Shown(), "acbde");
    EXPECT_THAT(m_list.MoveUp({}), IsEmpty());
    EXPECT_EQ(Shown(), "acbde");
}

TEST_F(AutostartListTest, ARowMovesDownByOne) {
    EXPECT_THAT(m_list.MoveDown({0}), ElementsAre(1));
    EXPECT_EQ(Shown(), "bacde");
}

TEST_F(AutostartListTest, ABlockMovesDownTogether) {
    EXPECT_THAT(m_list.MoveDown({0, 2, 3}), ElementsAre(1, 3, 4));
    EXPECT_EQ(Shown(), "baecd");
}

TEST_F(AutostartListTest, RowsAtTheBottomStay) {
    EXPECT_THAT(m_list.MoveDown({3, 4}), ElementsAre(3, 4));
    EXPECT_EQ(Shown(), "abcde");
    EXPECT_THAT(m_list.MoveDown({2, 4}), ElementsAre(3, 4));
    EXPECT_EQ(Shown(), "abdce");
    EXPECT_THAT(m_list.MoveDown({}), IsEmpty());
    EXPECT_EQ(Shown(), "abdce");
}

TEST_F(AutostartListTest, RowNumbersGoFromOneToTheCount) {
    EXPECT_FALSE(m_list.IsRowNumber(-1));
    EXPECT_FALSE(m_list.IsRowNumber(0));
    EXPECT_TRUE(m_list.IsRowNumber(1));
    EXPECT_TRUE(m_list.IsRowNumber(5));
    EXPECT_FALSE(m_list.IsRowNumber(6));
}

TEST_F(AutostartListTest, ARowMovesToANumber) {
    EXPECT_THAT(m_list.MoveTo(4, {0}), ElementsAre(3));
    EXPECT_EQ(Shown(), "bcdae");
    EXPECT_THAT(m_list.MoveTo(1, {3}), ElementsAre(0));
    EXPECT_EQ(Shown(), "abcde");
    EXPECT_THAT(m_list.MoveTo(5, {0}), ElementsAre(4));
    EXPECT_EQ(Shown(), "bcdea");
}

TEST_F(AutostartListTest, ARowThatMovesToItsOwnPlaceStays) {
    for (std::size_t row = 0; row < 5; ++row) {
        EXPECT_THAT(m_list.MoveTo(static_cast<int>(row) + 1, {row}), ElementsAre(row));
        EXPECT_EQ(Shown(), "abcde");
    }
}

TEST_F(AutostartListTest, AllSelectedRowsMoveInTheirOrder) {
    EXPECT_THAT(m_list.MoveTo(1, {2, 4}), ElementsAre(0, 1));
    EXPECT_EQ(Shown(), "ceabd");
    EXPECT_THAT(m_list.MoveTo(3, {0, 1}), ElementsAre(2, 3));
    EXPECT_EQ(Shown(), "abced");
}

TEST_F(AutostartListTest, RowsThatWouldNotFitBehindTheNumberGoToTheEnd) {
    EXPECT_THAT(m_list.MoveTo(5, {0, 2}), ElementsAre(3, 4));
    EXPECT_EQ(Shown(), "bdeac");
    EXPECT_THAT(m_list.MoveTo(3, {0, 1, 2, 3, 4}), ElementsAre(0, 1, 2, 3, 4));
    EXPECT_EQ(Shown(), "bdeac");
}

TEST_F(AutostartListTest, NoOtherNumberMovesAnything) {
    EXPECT_THAT(m_list.MoveTo(0, {1}), ElementsAre(1));
    EXPECT_THAT(m_list.MoveTo(6, {1}), ElementsAre(1));
    EXPECT_THAT(m_list.MoveTo(3, {}), IsEmpty());
    EXPECT_EQ(Shown(), "abcde");
}

class AutostartListFindTest : public testing::Test {
  protected:
    // The row, -1 for none, and the number of beeps.
    std::pair<int, int> Find(const char* pattern, const SelectedRows& selected,
                             int options = text::PatternOption::Anywhere) const {
        const AutostartList::Found found = m_list.Find({pattern, options}, selected);
        return {found.row ? static_cast<int>(*found.row) : -1, found.beeps};
    }

    const AutostartList m_list{{"/gaz/start.kx", "/gaz/stop.kx", "/woda/start.kx"}};
};

TEST_F(AutostartListFindTest, WithoutASelectionItBeginsAtTheTop) {
    EXPECT_EQ(Find("start", {}), std::pair(0, 0));
}

TEST_F(AutostartListFindTest, ItGoesOnBehindTheSelectedRows) {
    EXPECT_EQ(Find("start", {0}), std::pair(2, 0));
    EXPECT_EQ(Find("gaz", {0}), std::pair(1, 0));
    EXPECT_EQ(Find("start", {0, 1}), std::pair(2, 0));
}

TEST_F(AutostartListFindTest, BehindTheEndItBeepsAndBeginsAtTheTop) {
    EXPECT_EQ(Find("start", {2}), std::pair(0, 1));
    EXPECT_EQ(Find("stop", {1, 2}), std::pair(1, 1));
    EXPECT_EQ(Find("woda", {2}), std::pair(2, 1));
}

TEST_F(AutostartListFindTest, WhatIsNowhereBeepsTwice) {
    EXPECT_EQ(Find("para", {}), std::pair(-1, 2));
    EXPECT_EQ(Find("para", {1}), std::pair(-1, 2));
    EXPECT_EQ(AutostartList().Find({"", 0}, {}).beeps, 2);
}

TEST_F(AutostartListFindTest, TheOptionsOfThePatternCount) {
    EXPECT_EQ(Find("gaz", {}, 0), std::pair(-1, 2));
    EXPECT_EQ(Find("/GAZ/*", {0}, text::PatternOption::VariableNames), std::pair(1, 0));
}

}  // namespace
}  // namespace kalvex::workbench
