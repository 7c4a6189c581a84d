#include "workbench/qt/TextFind.h"

#include <gmock/gmock.h>
#include <gtest/gtest.h>

namespace kalvex::window {
namespace {

using testing::ElementsAre;
using testing::IsEmpty;

std::vector<int> Starts(const QString& what, const FindOptions& options, const QString& text) {
    std::vector<int> starts;
    for (const FoundText& found : TextFind(what, options).All(text)) starts.push_back(found.start);
    return starts;
}

TEST(TextFindTest, TextIsFoundAsItStands) {
    EXPECT_THAT(Starts("a.b", {}, "axb a.b A.B"), ElementsAre(4, 8));
    EXPECT_THAT(Starts("a.b", {.matchCase = true}, "axb a.b A.B"), ElementsAre(4));
    EXPECT_THAT(Starts("łódź", {}, "ŁÓDŹ łodz"), ElementsAre(0));
    EXPECT_THAT(Starts("a\\E(", {}, "a\\E("), ElementsAre(0));
}

TEST(TextFindTest, WholeWordsEndWhereLettersDo) {
    EXPECT_THAT(Starts("IF", {.wholeWords = true}, "IF ENDIF IF_A (IF) IFŻ"), ElementsAre(0, 15));
    EXPECT_THAT(Starts("a|b", {.wholeWords = true, .expression = true}, "ab a b"),
                ElementsAre(3, 5));
}

TEST(TextFindTest, ExpressionsKnowLines) {
    EXPECT_THAT(Starts("^x.$", {.expression = true}, "xa\nxb\naxb"), ElementsAre(0, 3));
    EXPECT_THAT(Starts("x*", {.expression = true}, "axxb"), ElementsAre(1));
    const TextFind bad("(", {.expression = true});
    EXPECT_FALSE(bad.Fault().isEmpty());
    EXPECT_FALSE(bad.Next("(", 0).has_value());
    EXPECT_FALSE(bad.Previous("(", 1).has_value());
    EXPECT_THAT(bad.All("("), IsEmpty());
    EXPECT_TRUE(TextFind("(", {}).Fault().isEmpty());
}

TEST(TextFindTest, SearchGoesRoundAboutBothWays) {
    const TextFind find("a", {});
    const QString text = "a.a.a";
    EXPECT_EQ(find.Next(text, 1)->start, 2);
    EXPECT_EQ(find.Next(text, 5)->start, 0);
    EXPECT_EQ(find.Previous(text, 4)->start, 2);
    EXPECT_EQ(find.Previous(text, 0)->start, 4);
    EXPECT_FALSE(find.Next("b", 0).has_value());
    EXPECT_FALSE(find.Previous("b", 1).has_value());
}

TEST(TextFindTest, ReplacementOfAnExpressionTakesItsGroups) {
    const QString text = "xx key=value";
    const TextFind find("(\\w+)=(\\w+)", {.expression = true});
    const FoundText found = *find.Next(text, 0);
    EXPECT_EQ(find.Replacement(text, found, "\\2=\\1 \\0\\n\\t\\\\"), "value=key key=value\n\t\\");
    EXPECT_EQ(TextFind("key", {}).Replacement(text, {3, 6}, "\\1"), "\\1");
}

}  // namespace
}  // namespace kalvex::window
