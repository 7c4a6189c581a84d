#include "engine/LineCache.h"

#include <gmock/gmock.h>

namespace kalvex::engine {
namespace {

using testing::ElementsAre;

std::vector<std::string> Lines(const LineCache& cache) {
    std::vector<std::string> lines;
    for (int n = 0; n < cache.Count(); ++n) lines.emplace_back(cache.Get(n));
    return lines;
}

LineCache CacheOf(std::string_view text) {
    LineList list;
    list.SetText(text);
    LineCache cache;
    cache.Fill(list);
    return cache;
}

TEST(LineCacheTest, TabsAreBlanksAndLeadingOnesAreGone) {
    EXPECT_THAT(Lines(CacheOf(" \t A\tB \t\n\t\n\nC")), ElementsAre("A B  ", "", "", "C"));
}

TEST(LineCacheTest, LinesThatAreNotThereAreEmpty) {
    const LineCache cache = CacheOf("A\nB");
    EXPECT_EQ(cache.Get(2), "");
    EXPECT_EQ(cache.Get(-1), "");
}

TEST(LineCacheTest, IsFilledUntilItIsCleared) {
    LineCache cache = CacheOf("");
    EXPECT_TRUE(cache.IsFilled());
    EXPECT_EQ(cache.Count(), 1);
    cache.Clear();
    EXPECT_FALSE(cache.IsFilled());
    EXPECT_EQ(cache.Get(0), "");
}

TEST(LineCacheTest, FillingAgainForgetsTheLinesBefore) {
    LineCache cache = CacheOf("A\n:b\nPROCEDURE c()");
    LineList list;
    list.SetText(":d\nE");
    cache.Fill(list);
    EXPECT_THAT(Lines(cache), ElementsAre(":d", "E"));
    EXPECT_EQ(cache.FindLabel(":b"), -1);
    EXPECT_EQ(cache.FindLabel(":d"), 0);
    EXPECT_EQ(cache.FindProcedure("c"), -1);
}

TEST(LineCacheTest, ALabelIsTheFirstTokenAndItsFirstLineWins) {
    const LineCache cache = CacheOf("A :x\n :x dalej\n:x\n: y\n::z\n:X");
    EXPECT_EQ(cache.FindLabel(":x"), 1);
    EXPECT_EQ(cache.FindLabel(":X"), 5);
    EXPECT_EQ(cache.FindLabel(":y"), -1);
    EXPECT_EQ(cache.FindLabel(":"), 3);
    EXPECT_EQ(cache.FindLabel("::z"), 4);
    EXPECT_EQ(cache.FindLabel("x"), -1);
}

TEST(LineCacheTest, AProcedureHasItsHeadInUpperCaseAndItsFirstLineWins) {
    const LineCache cache = CacheOf(
        "procedure a()\nPROCEDURE b\nPROCEDURES a()\nPROCEDURE.X a()\n\tPROCEDURE  a (p)\n"
        "PROCEDURE a()\nPROCEDURE(c)\nPROCEDURE\"d\" ()");
    EXPECT_EQ(cache.FindProcedure("a"), 4);
    EXPECT_EQ(cache.FindProcedure("A"), -1);
    EXPECT_EQ(cache.FindProcedure("b"), -1);
    EXPECT_EQ(cache.FindProcedure("c"), -1);
    EXPECT_EQ(cache.FindProcedure("\"d\""), 7);
}

TEST(LineCacheTest, ViewsStayWhenTheCacheMoves) {
    LineCache cache = CacheOf("A\n:b");
    const std::string_view line = cache.Get(0);
    const LineCache moved = std::move(cache);
    EXPECT_EQ(line.data(), moved.Get(0).data());
    EXPECT_EQ(moved.FindLabel(":b"), 1);
}

}  // namespace
}  // namespace kalvex::engine
