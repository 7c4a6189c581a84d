#include "host/DataFile.h"

#include <gmock/gmock.h>
#include <gtest/gtest.h>

#include <vector>

#include "text/CodePage.h"

namespace kalvex::host {
namespace {

using testing::ElementsAre;
using testing::IsEmpty;

using Entries = std::vector<DataEntry>;

std::vector<std::string> LinesOf(const std::string& text, const std::string& section) {
    std::vector<std::string> lines;
    ReadDataLines(text, section, [&](std::string_view name, std::string_view value) {
        lines.push_back(std::string(name) + '=' + std::string(value));
    });
    return lines;
}

std::string Rewritten(const std::string& text, const std::string& section, const Entries& entries) {
    return RewriteData(text, section, entries).text;
}

bool HasMore(const std::string& text, const std::string& section, const Entries& entries) {
    return RewriteData(text, section, entries).hasMore;
}

TEST(DataFileHeaderTest, TakesDigitsLettersAndFourSigns) {
    EXPECT_EQ(HeaderName("[5]"), "5");
    EXPECT_EQ(HeaderName("[R1-a_b.c@d]"), "R1-a_b.c@d");
    const std::string polish = text::FromUtf8("ĄąĆćĘęŁłŃńÓóŚśŹźŻż");
    EXPECT_EQ(HeaderName('[' + polish + ']'), polish);
}

TEST(DataFileHeaderTest, RefusesOtherCharactersAndAnEmptyName) {
    EXPECT_EQ(HeaderName("[]"), std::nullopt);
    EXPECT_EQ(HeaderName("[a b]"), std::nullopt);
    EXPECT_EQ(HeaderName("[a/b]"), std::nullopt);
    EXPECT_EQ(HeaderName(text::FromUtf8("[ö]")), std::nullopt);
    EXPECT_EQ(HeaderName("a]"), std::nullopt);
    EXPECT_EQ(HeaderName(" [a]"), std::nullopt);
    EXPECT_EQ(HeaderName(""), std::nullopt);
}

TEST(DataFileHeaderTest, WantsTheClosingBracketAndIgnoresWhatFollowsIt) {
    EXPECT_EQ(HeaderName("[R1"), std::nullopt);
    EXPECT_EQ(HeaderName("[R1] latem"), "R1");
}

TEST(DataFileHeaderTest, LooksAtEightyCharacters) {
    const std::string eighty(80, 'x');
    EXPECT_EQ(HeaderName('[' + eighty + ']'), eighty);
    EXPECT_EQ(HeaderName('[' + eighty + "y]"), eighty);
    EXPECT_EQ(HeaderName('[' + eighty.substr(1)), std::nullopt);
}

TEST(DataFileBackupPathTest, ReplacesWhatStandsFromTheLastDotOn) {
    EXPECT_EQ(BackupPath("/d/dane.txt"), "/d/dane.bak");
    EXPECT_EQ(BackupPath("/d/dane.v1.txt"), "/d/dane.v1.bak");
    EXPECT_EQ(BackupPath("/d/dane."), "/d/dane.bak");
    EXPECT_EQ(BackupPath("/d/dane"), "/d/dane.bak");
    EXPECT_EQ(BackupPath("/d.1/dane"), "/d.bak");
    EXPECT_EQ(BackupPath("/d/dane.BAK"), "/d/dane.bak");
    EXPECT_EQ(BackupPath("/d/dane.bak.txt"), "/d/dane.bak.bak");
}

TEST(DataFileBackupPathTest, BackupHasNone) {
    EXPECT_EQ(BackupPath("/d/dane.bak"), "");
    EXPECT_EQ(BackupPath(".bak"), "");
}

TEST(DataFileReadTest, WithoutSectionTakesTheWholeText) {
    EXPECT_THAT(LinesOf("A:1\r\n[1]\r\nA:2\r\n[2]\r\nB:3\r\n", ""),
                ElementsAre("A=1", "A=2", "B=3"));
}

TEST(DataFileReadTest, SectionEndsAtTheNextHeader) {
    const std::string text = "A:0\n[1]\nA:1\n[2]\nA:2\nB:2\n[3]\nA:3\n[2]\nA:4\n";
    EXPECT_THAT(LinesOf(text, "1"), ElementsAre("A=1"));
    EXPECT_THAT(LinesOf(text, "2"), ElementsAre("A=2", "B=2"));
    EXPECT_THAT(LinesOf(text, "4"), IsEmpty());
}

TEST(DataFileReadTest, SectionNamesDifferByCase) {
    EXPECT_THAT(LinesOf("[r1]\nA:1\n[R1]\nA:2\n", "R1"), ElementsAre("A=2"));
}

TEST(DataFileReadTest, OnlyTheFirstColonCutsAndTheValueIsUntouched) {
    EXPECT_THAT(LinesOf("T:12:30:00\n  B  : 7 \nC:\n:x\n", ""),
                ElementsAre("T=12:30:00", "B= 7 ", "C=", "=x"));
}

TEST(DataFileReadTest, LineWithAColonIsNoHeader) {
    EXPECT_THAT(LinesOf("[1]\nA:1\n[2]:\nB:2\n", "1"), ElementsAre("A=1", "[2]=", "B=2"));
}

TEST(DataFileReadTest, LastLineNeedsNoLineEnd) {
    EXPECT_THAT(LinesOf("A:1\r\nB:2", ""), ElementsAre("A=1", "B=2"));
    EXPECT_THAT(LinesOf("", ""), IsEmpty());
}

TEST(DataFileRewriteTest, EmptyTextGetsItsFirstSection) {
    const Entries entries{{"A", "A:1"}, {"B", "B:2"}};
    EXPECT_EQ(Rewritten("", "R1", entries), "[R1]\r\nA:1\r\nB:2\r\n");
    EXPECT_TRUE(HasMore("", "R1", entries));
}

TEST(DataFileRewriteTest, KeepsCommentsOrderAndForeignLines) {
    const std::string text = "; dane\nA:1\n[R1]\n; uwaga\nC:3\nA:10\n\n[R2]\nA:20\n; koniec";
    EXPECT_EQ(Rewritten(text, "R1", {{"A", "A:11.50"}, {"B", "B:12.25"}}),
              "; dane\r\nA:1\r\n[R1]\r\n; uwaga\r\nC:3\r\nA:11.50\r\n\r\nB:12.25\r\n[R2]\r\n"
              "A:20\r\n; koniec\r\n");
}

TEST(DataFileRewriteTest, LastSectionGetsItsMissingLinesAtTheEnd) {
    EXPECT_EQ(Rewritten("[R1]\r\nA:1\r\n", "R1", {{"B", "B:2"}, {"A", "A:3"}, {"C", "C:4"}}),
              "[R1]\r\nA:3\r\nB:2\r\nC:4\r\n");
}

TEST(DataFileRewriteTest, SectionThatIsNotThereIsAddedAtTheEnd) {
    EXPECT_EQ(Rewritten("[R1]\r\nA:1\r\n", "r1", {{"A", "A:3"}}), "[R1]\r\nA:1\r\n[r1]\r\nA:3\r\n");
}

TEST(DataFileRewriteTest, EveryLineOfANameIsReplaced) {
    EXPECT_EQ(Rewritten("[R1]\nA:1\nA:2\n", "R1", {{"A", "A:3"}}), "[R1]\r\nA:3\r\nA:3\r\n");
}

TEST(DataFileRewriteTest, OnlyTheFirstSectionOfANameIsRewritten) {
    EXPECT_EQ(Rewritten("[R1]\nA:1\n[R1]\nA:2\n", "R1", {{"A", "A:3"}, {"B", "B:4"}}),
              "[R1]\r\nA:3\r\nB:4\r\n[R1]\r\nA:2\r\n");
}

TEST(DataFileRewriteTest, HasNoMoreWhenEveryLineOfTheSectionWasReplaced) {
    const std::string text = "; uwaga\n[0]\nC:1\n[12]\nA:9\nB:8\n[13]\nC:1\n";
    EXPECT_FALSE(HasMore(text, "12", {{"A", "A:1"}, {"B", "B:2"}}));
    EXPECT_FALSE(HasMore(text, "12", {{"A", "A:1"}, {"B", "B:2"}, {"C", "C:3"}}));
    EXPECT_TRUE(HasMore(text, "12", {{"A", "A:1"}}));
}

TEST(DataFileRewriteTest, CommentOfTheSectionCountsAsCarriedOver) {
    EXPECT_TRUE(HasMore("[1]\n; uwaga\nA:1\n", "1", {{"A", "A:2"}}));
}

TEST(DataFileRewriteTest, VariableWithoutTextKeepsItsOldLine) {
    const Entries entries{{"A", std::nullopt}, {"B", "B:3"}, {"C", std::nullopt}};
    EXPECT_EQ(Rewritten("[R1]\nA:1\nB:2\n", "R1", entries), "[R1]\r\nA:1\r\nB:3\r\n");
    EXPECT_TRUE(HasMore("[R1]\nA:1\nB:2\n", "R1", entries));
}

TEST(DataFileRewriteTest, LineWithNothingBehindTheColonIsNotReplaced) {
    EXPECT_EQ(Rewritten("[R1]\nA:\nA: \t\nA:1\n", "R1", {{"A", "A:2"}}),
              "[R1]\r\nA:\r\nA: \t\r\nA:2\r\n");
}

TEST(DataFileRewriteTest, BlanksAroundANameDoNotHideIt) {
    EXPECT_EQ(Rewritten("[R1]\n  A : 1\n", "R1", {{"A", "A:2"}}), "[R1]\r\nA:2\r\n");
}

TEST(DataFileRewriteTest, PolishNameIsReplacedAndAnotherLetterHidesIt) {
    const std::string name = text::FromUtf8("ciśnienie");
    EXPECT_EQ(Rewritten("[R1]\n" + name + ":1\n", "R1", {{name, name + ":2"}}),
              "[R1]\r\n" + name + ":2\r\n");
    const std::string foreign = text::FromUtf8("größe");
    EXPECT_EQ(Rewritten("[R1]\n" + foreign + ":1\n", "R1", {{foreign, foreign + ":2"}}),
              "[R1]\r\n" + foreign + ":1\r\n" + foreign + ":2\r\n");
}

TEST(DataFileRewriteTest, HeaderWithAValueBehindItIsADataLine) {
    EXPECT_EQ(Rewritten("[R1]\nA:1\n[R2]:x\nA:2\n", "R1", {{"A", "A:3"}}),
              "[R1]\r\nA:3\r\n[R2]:x\r\nA:3\r\n");
}

TEST(DataFileRewriteTest, NumberedModeAppendsARecordBehindTheHighestNumber) {
    EXPECT_EQ(Rewritten("", "", {{"A", "A:1"}}), "[1]\r\nA:1\r\n");
    EXPECT_EQ(Rewritten("[NAGLOWEK]\nA:0\n[7]\nA:7\n[3]\nA:3\n", "", {{"A", "A:8"}}),
              "[NAGLOWEK]\r\nA:0\r\n[7]\r\nA:7\r\n[3]\r\nA:3\r\n[8]\r\nA:8\r\n");
}

TEST(DataFileRewriteTest, NumberedModePassesOverNamesThatAreNoNumber) {
    EXPECT_EQ(Rewritten("[9a]\n[2024-03-10]\n[-5]\n[1.5]\n", "", {}),
              "[9a]\r\n[2024-03-10]\r\n[-5]\r\n[1.5]\r\n[1]\r\n");
    EXPECT_EQ(Rewritten("[99999999999999999999]\n[0007]\n", "", {}),
              "[99999999999999999999]\r\n[0007]\r\n[8]\r\n");
}

TEST(DataFileRewriteTest, NumberedModeAlwaysHasMore) {
    EXPECT_TRUE(HasMore("[1]\nA:1\n", "", {{"A", "A:1"}}));
}

TEST(DataFileRewriteTest, LineEndsBecomePairsAndALoneReturnStays) {
    EXPECT_EQ(Rewritten("[1]\r\nA:1\nx\ry\r\n", "1", {{"A", "A:2"}}), "[1]\r\nA:2\r\nx\ry\r\n");
}

}  // namespace
}  // namespace kalvex::host
