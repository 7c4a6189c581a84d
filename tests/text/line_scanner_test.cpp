#include "text/LineScanner.h"

#include <gmock/gmock.h>

#include <string>
#include <vector>

#include "text/CodePage.h"

namespace kalvex::text {
namespace {

using testing::ElementsAre;

std::vector<std::string> Tokens(const std::string& line) {
    const std::string bytes = FromUtf8(line);
    std::string_view text = bytes;
    std::vector<std::string> tokens;
    while (!text.empty()) {
        const std::string_view token = NextToken(text);
        if (!token.empty()) tokens.push_back(ToUtf8(token));
    }
    return tokens;
}

TEST(LineScannerTest, ComparisonNeedsNoBlanks) {
    const auto expected = ElementsAre("IF", "a", ">=", "5", "GOTO", "x");
    EXPECT_THAT(Tokens("IF a>=5 GOTO x"), expected);
    EXPECT_THAT(Tokens("IF a >= 5 GOTO x"), expected);
}

TEST(LineScannerTest, MinusNeverSplitsAWord) {
    EXPECT_THAT(Tokens("a=-1"), ElementsAre("a", "=", "-1"));
    EXPECT_THAT(Tokens("a-1"), ElementsAre("a-1"));
    EXPECT_THAT(Tokens("a - 1"), ElementsAre("a", "-", "1"));
}

TEST(LineScannerTest, WordsHoldPathsLabelsAndTargets) {
    EXPECT_THAT(Tokens("a.b x-1 :label C:\\temp\\f.txt @daily server@var -12.5 Z_1*?"),
                ElementsAre("a.b", "x-1", ":label", "C:\\temp\\f.txt", "@daily", "server@var",
                            "-12.5", "Z_1*?"));
}

TEST(LineScannerTest, PolishLettersBelongToWords) {
    EXPECT_THAT(Tokens("zażółć=GĘŚLĄ_JAŹŃ"), ElementsAre("zażółć", "=", "GĘŚLĄ_JAŹŃ"));
    EXPECT_THAT(Tokens("ä"), ElementsAre("ä"));
    EXPECT_THAT(Tokens("aäb"), ElementsAre("a", "ä", "b"));
}

TEST(LineScannerTest, StringKeepsBothQuotes) {
    EXPECT_THAT(Tokens("\"ab cd\" x"), ElementsAre("\"ab cd\"", "x"));
    EXPECT_THAT(Tokens("\"\""), ElementsAre("\"\""));
}

TEST(LineScannerTest, OpenStringIsALoneQuote) {
    EXPECT_THAT(Tokens("\"abc"), ElementsAre("\"", "abc"));
    EXPECT_THAT(Tokens("\""), ElementsAre("\""));
}

TEST(LineScannerTest, TwoCharacterOperators) {
    EXPECT_THAT(Tokens("a<=b>=c==d!=e&&f||g"),
                ElementsAre("a", "<=", "b", ">=", "c", "==", "d", "!=", "e", "&&", "f", "||", "g"));
    EXPECT_THAT(Tokens("<& =| <> ="), ElementsAre("<&", "=|", "<", ">", "="));
}

TEST(LineScannerTest, OtherCharactersStandAlone) {
    EXPECT_THAT(Tokens("(a),;+/%#'"),
                ElementsAre("(", "a", ")", ",", ";", "+", "/", "%", "#", "'"));
}

TEST(LineScannerTest, TextIsShortenedToWhatFollows) {
    std::string_view text = "  GOTO   dalej  ";
    EXPECT_EQ(NextToken(text), "GOTO");
    EXPECT_EQ(text, "   dalej  ");
    EXPECT_EQ(NextToken(text), "dalej");
    EXPECT_EQ(NextToken(text), "");
    EXPECT_EQ(text, "");
}

TEST(LineScannerTest, BlanksOnlyGiveAnEmptyToken) {
    std::string_view text = "    ";
    EXPECT_EQ(NextToken(text), "");
    EXPECT_EQ(text, "");
}

TEST(LineScannerTest, AnyByteIsScannedToTheEnd) {
    for (int c = 1; c < 256; ++c) {
        const std::string line(3, static_cast<char>(c));
        std::string_view text = line;
        std::size_t length = 0;
        while (!text.empty()) length += NextToken(text).size();
        EXPECT_EQ(length, c == ' ' ? 0u : 3u) << c;
    }
}

TEST(LineScannerTest, TrimTakesBlanksOnly) {
    EXPECT_EQ(TrimBlanks("  a b  "), "a b");
    EXPECT_EQ(TrimBlanks("\ta "), "\ta");
    EXPECT_EQ(TrimBlanks("   "), "");
}

}  // namespace
}  // namespace kalvex::text
