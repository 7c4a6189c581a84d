#include "text/PatternMatch.h"

#include <gtest/gtest.h>

#include <string>

#include "text/CodePage.h"

namespace kalvex::text {
namespace {

using namespace PatternOption;

struct PatternRow {
    const char* text;
    const char* pattern;
    int options;
    bool matches;
};

void ExpectRows(std::initializer_list<PatternRow> rows) {
    for (const PatternRow& row : rows) {
        EXPECT_EQ(CompareWithPattern(FromUtf8(row.text), FromUtf8(row.pattern), row.options),
                  row.matches)
            << row.text << " | " << row.pattern << " | " << row.options;
    }
}

TEST(PatternMatchTest, WholeTextWithWildcards) {
    ExpectRows({
        {"Z1.PRZEPLYW", "Z1.PRZEPLYW", Wildcards | Whole, true},
        {"Z1.PRZEPLYW", "Z1.*", Wildcards | Whole, true},
        {"Z1.PRZEPLYW", "*PLYW", Wildcards | Whole, true},
        {"Z1.PRZEPLYW", "Z?.PRZEPLYW", Wildcards | Whole, true},
        {"Z12.PRZEPLYW", "Z?.PRZEPLYW", Wildcards | Whole, false},
        {"Z1.PRZEPLYW", "Z1.", Wildcards | Whole, false},
        {"Z1.PRZEPLYW", "PRZEPLYW", Wildcards | Whole, false},
        {"abc", "?b?", Wildcards | Whole, true},
        {"abc", "???", Wildcards | Whole, true},
        {"abc", "????", Wildcards | Whole, false},
        {"abc", "??", Wildcards | Whole, false},
        {"abc", "a*b*c", Wildcards | Whole, true},
        {"abc", "a**c", Wildcards | Whole, true},
        {"abc", "*", Wildcards | Whole, true},
        {"abc", "*abc*", Wildcards | Whole, true},
        {"abc", "*?", Wildcards | Whole, true},
        {"abc", "?*", Wildcards | Whole, true},
        {"", "*", Wildcards | Whole, true},
        {"", "", Wildcards | Whole, true},
        {"", "?", Wildcards | Whole, false},
        {"a", "", Wildcards | Whole, false},
    });
}

TEST(PatternMatchTest, LatestStarIsGoneBackTo) {
    ExpectRows({
        {"aXbXc", "a*Xc", Wildcards | Whole, true},
        {"aaab", "*ab", Wildcards | Whole, true},
        {"aabab", "*ab", Wildcards | Whole, true},
        {"ababac", "*ab?c", Wildcards | Whole, true},
        {"ababab", "*ab?c", Wildcards | Whole, false},
        {"abcabd", "*ab*d", Wildcards | Whole, true},
        {"abcabd", "*ab*c", Wildcards | Whole, false},
        {"abcd", "abc*c", Wildcards, false},
    });
}

TEST(PatternMatchTest, WithoutWildcardsThePatternIsLiteral) {
    ExpectRows({
        {"a*c", "a*c", Whole, true},
        {"abc", "a*c", Whole, false},
        {"a?c", "a?c", Whole, true},
        {"abc", "a?c", Whole, false},
    });
}

TEST(PatternMatchTest, MatchAtTheStartIsEnoughUnlessTheWholeTextIsAsked) {
    ExpectRows({
        {"abcdef", "abc", Wildcards, true},
        {"abcdef", "a?c", Wildcards, true},
        {"abcdef", "a*e", Wildcards, true},
        {"abcdef", "bcd", Wildcards, false},
        {"abcdef", "", Wildcards, true},
        {"abcdef", "abc", 0, true},
        {"abcdef", "bcd", 0, false},
        {"ab", "abc", 0, false},
    });
}

TEST(PatternMatchTest, MatchAnywhere) {
    ExpectRows({
        {"abcdef", "cde", Anywhere, true},
        {"abcdef", "def", Anywhere, true},
        {"abcdef", "ced", Anywhere, false},
        {"abcdef", "c?e", Anywhere, false},
        {"abcdef", "c?e", Anywhere | Wildcards, true},
        {"abcdef", "b*e", Anywhere | Wildcards, true},
        {"aab", "ab", Anywhere, true},
        {"abc", "xbc", Anywhere, false},
        {"abcdef", "cde", Anywhere | Whole, false},
        {"abcdef", "", Anywhere, true},
        {"", "a", Anywhere, false},
    });
}

TEST(PatternMatchTest, CaseCountsUnlessItIsLeftOut) {
    ExpectRows({
        {"Licznik", "LICZNIK", Wildcards | Whole, false},
        {"Licznik", "LICZNIK", VariableNames, true},
        {"CIŚNIENIE_źródło", "ciśnienie_ŹRÓD*", VariableNames, true},
        {"CIŚNIENIE_źródło", "ciśnienie_ŹRÓD*", Wildcards | Whole, false},
        {"ŻÓŁW", "?ółw", VariableNames, true},
        {"ŻÓŁW", "zólw", VariableNames, false},
    });
}

TEST(PatternMatchTest, ManyStarsDoNotMultiplyTheWork) {
    const std::string text(20000, 'a');
    std::string pattern;
    for (int i = 0; i < 200; ++i) pattern += "*a";
    EXPECT_TRUE(CompareWithPattern(text, pattern, Wildcards | Whole));
    EXPECT_FALSE(CompareWithPattern(text, pattern + "*b", Wildcards | Whole));
}

}  // namespace
}  // namespace kalvex::text
