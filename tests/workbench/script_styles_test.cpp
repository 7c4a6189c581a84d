// Which bytes of a line have which style, and whether the styles can be told apart.
#include "workbench/model/ScriptStyles.h"

#include <gtest/gtest.h>

#include <algorithm>
#include <cmath>
#include <string>
#include <string_view>
#include <vector>

namespace kalvex::workbench {
namespace {

// A letter a byte, in the order of the enumeration.
std::string Styled(std::string_view line) {
    constexpr std::string_view kLetters = ".kfmtlcsh";
    static_assert(kLetters.size() == kTextStyleCount);
    std::vector<TextStyle> styles;
    StyleLine(line, styles);
    std::string letters;
    for (const TextStyle style : styles) letters += kLetters[static_cast<std::size_t>(style)];
    return letters;
}

void ExpectStyles(std::string_view line, std::string_view letters) {
    EXPECT_EQ(Styled(line), letters) << line;
}

TEST(ScriptStylesTest, EmptyLineHasNoStyles) {
    ExpectStyles("", "");
}

TEST(ScriptStylesTest, GroupsHaveTheirStyles) {
    ExpectStyles("SET X = SQRT A + L.COUNT - TIME.HOUR",  //
                 "kkk.....ffff.......mmmmm...kkkk.tttt");
    ExpectStyles("YEAR REMOVEALL HARDLOCK CURDATA", "tttt.kkkkkkkkk.................");
}

TEST(ScriptStylesTest, WordsAreWholeAndInUpperCase) {
    ExpectStyles("IF IFX XIF If if _IF IF_ IF1", "kk..........................");
    ExpectStyles("IF(IF)IF,IF=IF\tIF", "kk.kk.kk.kk.kk.kk");
    ExpectStyles("IF@ IF| IF# $IF", "...............");
    ExpectStyles("\xb3IF IF\xc5\x82 IF", ".........kk");
}

TEST(ScriptStylesTest, EveryDelimiterPartsWords) {
    for (const char c : std::string_view(" \t\n,./?<>'{[}]~`%^&*()-+=!")) {
        const std::string line = std::string("IF") + c + "IF";
        EXPECT_EQ(Styled(line), "kk.kk") << line;
    }
}

TEST(ScriptStylesTest, LabelAndCommentGoToTheEndOfTheLine) {
    ExpectStyles(":IF ; \"a\"", "lllllllll");
    ExpectStyles("GOTO A :B", "kkkk...ll");
    ExpectStyles("IF ; IF : \"a\"", "kk.cccccccccc");
}

TEST(ScriptStylesTest, TextGoesToItsQuote) {
    ExpectStyles("SET A = \"IF ; :\" + IF", "kkk.....ssssssss...kk");
    ExpectStyles("\"a\"IF\"b\"", "ssskksss");
}

TEST(ScriptStylesTest, EscapedQuoteDoesNotEndAText) {
    ExpectStyles(R"("a\"b" IF)", "ssssss.kk");
    ExpectStyles(R"("a\\" IF)", "sssss.kk");
    ExpectStyles(R"("a\b" IF)", "sssss.kk");
}

TEST(ScriptStylesTest, OpenTextEndsWithItsLine) {
    ExpectStyles("IF \"IF", "kk.sss");
    ExpectStyles("IF \"", "kk.s");
    ExpectStyles(R"(IF "\)", "kk.ss");
}

TEST(ScriptStylesTest, LinksAreMarkedEverywhere) {
    ExpectStyles("; http://a.b/c d", "cchhhhhhhhhhhhcc");
    ExpectStyles("\"ftp://a;b\" IF", "shhhhhhhhhs.kk");
    ExpectStyles("IF http://a IF", "kk.hhhhhhhh.kk");
    ExpectStyles(":L mailto:a", "lllhhhhhhhh");
}

TEST(ScriptStylesTest, LinkEndsAtWhiteSpaceQuotesAndAngles) {
    for (const std::string end : {" ", "\t", "\"", "<", ">"}) {
        EXPECT_EQ(LinkAt("; http://a" + end + "b", 3), "http://a") << end;
    }
    EXPECT_EQ(LinkAt("; http://a,b;c/d?e=f", 3), "http://a,b;c/d?e=f");
}

TEST(ScriptStylesTest, EveryPrefixMakesALink) {
    for (const std::string prefix :
         {"http://", "ftp://", "mailto:", "news://", "file://", "telnet://", "gopher://",
          "prospero://", "wais://", "nntp://"}) {
        EXPECT_EQ(Styled(prefix + "x"), std::string(prefix.size() + 1, 'h')) << prefix;
        EXPECT_EQ(LinkAt("; (" + prefix + "x y", 5), prefix + "x") << prefix;
    }
}

TEST(ScriptStylesTest, WhatOnlyResemblesALinkIsNone) {
    ExpectStyles("; http:// xhttp://a HTTP://a", "cccccccccccccccccccccccccccc");
    ExpectStyles("https://a", ".....llll");
}

TEST(ScriptStylesTest, LinkIsFoundFromAnyOfItsBytes) {
    const std::string line = "; http://a \"ftp://b\"";
    EXPECT_EQ(LinkAt(line, 1), "");
    EXPECT_EQ(LinkAt(line, 2), "http://a");
    EXPECT_EQ(LinkAt(line, 9), "http://a");
    EXPECT_EQ(LinkAt(line, 10), "");
    EXPECT_EQ(LinkAt(line, 12), "ftp://b");
    EXPECT_EQ(LinkAt(line, 18), "ftp://b");
    EXPECT_EQ(LinkAt(line, 19), "");
    EXPECT_EQ(LinkAt(line, 500), "");
}

double Channel(unsigned colour, unsigned shift) {
    const double part = ((colour >> shift) & 0xFF) / 255.0;
    return part <= 0.03928 ? part / 12.92 : std::pow((part + 0.055) / 1.055, 2.4);
}

double Luminance(unsigned colour) {
    return 0.2126 * Channel(colour, 16) + 0.7152 * Channel(colour, 8) + 0.0722 * Channel(colour, 0);
}

double Contrast(unsigned a, unsigned b) {
    const double first = Luminance(a) + 0.05;
    const double second = Luminance(b) + 0.05;
    return std::max(first, second) / std::min(first, second);
}

double Distance(unsigned a, unsigned b) {
    double sum = 0;
    for (const unsigned shift : {0U, 8U, 16U}) {
        const int apart =
            static_cast<int>((a >> shift) & 0xFF) - static_cast<int>((b >> shift) & 0xFF);
        sum += apart * apart;
    }
    return std::sqrt(sum);
}

TEST(ScriptStylesColourTest, LightColoursAreThoseOfTheTables) {
    constexpr unsigned kExpected[] = {0x000000, 0x0000FF, 0xFF00FF, 0x00008B, 0x8B008B,
                                      0x8B0000, 0x006400, 0xFF0000, 0x0066CC};
    for (int i = 0; i < kTextStyleCount; ++i) {
        EXPECT_EQ(ColoursOf(static_cast<TextStyle>(i)).light, kExpected[i]) << i;
    }
    EXPECT_EQ(EditorBackground(false).light, 0xFFFFFFU);
    EXPECT_EQ(EditorBackground(true).light, 0xDDDDDDU);
}

TEST(ScriptStylesColourTest, DarkColoursStandOutFromEitherBackground) {
    for (int i = 0; i < kTextStyleCount; ++i) {
        const unsigned colour = ColoursOf(static_cast<TextStyle>(i)).dark;
        EXPECT_GE(Contrast(colour, EditorBackground(false).dark), 4.5) << i;
        EXPECT_GE(Contrast(colour, EditorBackground(true).dark), 4.5) << i;
    }
    EXPECT_NE(EditorBackground(false).dark, EditorBackground(true).dark);
}

TEST(ScriptStylesColourTest, NoTwoStylesLookAlike) {
    for (int i = 0; i < kTextStyleCount; ++i) {
        for (int j = 0; j < i; ++j) {
            const StyleColours one = ColoursOf(static_cast<TextStyle>(i));
            const StyleColours other = ColoursOf(static_cast<TextStyle>(j));
            EXPECT_GE(Distance(one.light, other.light), 60) << i << " " << j;
            EXPECT_GE(Distance(one.dark, other.dark), 60) << i << " " << j;
        }
    }
}

}  // namespace
}  // namespace kalvex::workbench
