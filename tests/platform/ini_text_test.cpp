#include "platform/IniText.h"

#include <gmock/gmock.h>
#include <gtest/gtest.h>

#include "text/CodePage.h"

namespace kalvex::platform {
namespace {

using testing::ElementsAre;
using testing::Pair;

constexpr const char* kFile =
    "; uwagi na początku\r\n"
    "[Konfiguracja]\r\n"
    "Nazwa = Stacja 1\r\n"
    "Obcy=1\r\n"
    "\r\n"
    "; skrypty\r\n"
    "[Autostart]\r\n"
    "Procedura0=a.kx\r\n"
    "; drugi\r\n"
    "Procedura1=b.kx\r\n"
    "\r\n"
    "; poziom\r\n"
    "[Log]\r\n"
    "Rodzaj=2\r\n";

std::string Replaced(std::string text, const std::string& old, const std::string& by) {
    return text.replace(text.find(old), old.size(), by);
}

TEST(IniTextTest, ContentComesBackByteForByte) {
    for (const std::string content : {"", "x", "[a", "a=b\n\r\n[]\r\nc", "\xEA\x9C=\xB3\r\r\n"}) {
        EXPECT_EQ(IniText(content).GetContent(), content);
    }
}

TEST(IniTextTest, ReadsValuesByNamesInAnyCase) {
    const IniText text(kFile);
    EXPECT_EQ(text.Get("Konfiguracja", "Nazwa"), "Stacja 1");
    EXPECT_EQ(text.Get("KONFIGURACJA", "nazwa"), "Stacja 1");
    EXPECT_EQ(text.Get("Log", "Nazwa"), std::nullopt);
    EXPECT_EQ(text.Get("Okna", "Nazwa"), std::nullopt);
}

TEST(IniTextTest, TellsTheLineOfAnEntry) {
    const IniText text("\xEF\xBB\xBF; A\r\n[a]\r\n\r\nk=1\n[A]\n k =2\nl=3\n[b]\nm=4\n[k]\n");
    EXPECT_EQ(text.FindLine("a", "k"), 4);
    EXPECT_EQ(text.FindLine("A", "L"), 7);
    EXPECT_EQ(text.FindLine("b", "m"), 9);
    EXPECT_EQ(text.FindLine("b", "k"), 0);
    EXPECT_EQ(text.FindLine("a", "a"), 0);
    EXPECT_EQ(text.FindLine("c", "k"), 0);
}

TEST(IniTextTest, PolishLettersHaveACaseToo) {
    const IniText text(text::FromUtf8("[Okna]\nCZĘSTOTLIWOŚĆ=5\n"));
    EXPECT_EQ(text.Get("Okna", text::FromUtf8("częstotliwość")), "5");
}

TEST(IniTextTest, ValueMayHoldEqualsSignsAndSemicolons) {
    EXPECT_EQ(IniText("[a]\nk=x=y ; z\n").Get("a", "k"), "x=y ; z");
}

TEST(IniTextTest, QuotesKeepTheBlanksOfAValue) {
    EXPECT_EQ(IniText("[a]\nk = \" x \" \n").Get("a", "k"), " x ");
    EXPECT_EQ(IniText("[a]\nk='x'\n").Get("a", "k"), "x");
    EXPECT_EQ(IniText("[a]\nk=\"\n").Get("a", "k"), "\"");
}

TEST(IniTextTest, CommentsAndLinesOutsideSectionsAreNoEntries) {
    EXPECT_THAT(IniText("k=0\n[a]\n;k=1\n#k=2\n[a\nk=3\nk=4\n").GetSection("a"),
                ElementsAre(Pair("k", "3"), Pair("k", "4")));
}

TEST(IniTextTest, SectionMayHaveSeveralHeadings) {
    const IniText text("[a]\nx=1\n[b]\ny=2\n[A]\nz=3\n");
    EXPECT_THAT(text.GetSection("a"), ElementsAre(Pair("x", "1"), Pair("z", "3")));
}

TEST(IniTextTest, ChangeTouchesTheValueAlone) {
    IniText text(kFile);
    EXPECT_TRUE(text.Set("Konfiguracja", "NAZWA", "Stacja 2"));
    EXPECT_EQ(text.GetContent(), Replaced(kFile, "Nazwa = Stacja 1", "Nazwa = Stacja 2"));
}

TEST(IniTextTest, NewKeyStandsBehindTheLastOfItsSection) {
    IniText text(kFile);
    EXPECT_TRUE(text.Set("Konfiguracja", "Nowy", "5"));
    EXPECT_EQ(text.GetContent(), Replaced(kFile, "Obcy=1\r\n", "Obcy=1\r\nNowy=5\r\n"));
}

TEST(IniTextTest, NewSectionStandsAtTheEnd) {
    IniText text(kFile);
    EXPECT_TRUE(text.Set("Okna", "Ikona", "0"));
    EXPECT_EQ(text.GetContent(), std::string(kFile) + "\r\n[Okna]\r\nIkona=0\r\n");
}

TEST(IniTextTest, NewTextHasTheLineEndsOfTheFile) {
    IniText empty("");
    empty.Set("a", "k", "1");
    EXPECT_EQ(empty.GetContent(), "[a]\r\nk=1\r\n");
    IniText plain("[a]\nx=1");
    plain.Set("a", "k", "1");
    EXPECT_EQ(plain.GetContent(), "[a]\nx=1\nk=1\n");
}

TEST(IniTextTest, WhatIsWrittenReadsBack) {
    for (const std::string value : {"", " ", "\t x", "\"x\"", "'x'", "\"", "a=b", ";a", "[a]"}) {
        IniText text("[a]\nk=old\n");
        EXPECT_TRUE(text.Set("a", "k", value));
        EXPECT_EQ(IniText(text.GetContent()).Get("a", "k"), value);
    }
}

TEST(IniTextTest, TextsWithoutAFormAreRefused) {
    IniText text(kFile);
    EXPECT_FALSE(text.Set("a", "k", "x\ny"));
    EXPECT_FALSE(text.Set("a", "k\r", "x"));
    EXPECT_FALSE(text.Set("a", "k=", "x"));
    EXPECT_FALSE(text.Set("a", ";k", "x"));
    EXPECT_FALSE(text.Set("a", "[k", "x"));
    EXPECT_FALSE(text.Set("a", " k", "x"));
    EXPECT_FALSE(text.Set("a", "", "x"));
    EXPECT_FALSE(text.Set("a]", "k", "x"));
    EXPECT_FALSE(text.SetSection("Autostart", {{"Procedura0", "a"}, {"Procedura1", "b\n"}}));
    EXPECT_EQ(text.GetContent(), kFile);
}

TEST(IniTextTest, RemovedKeyLeavesTheRest) {
    IniText text(kFile);
    text.Remove("autostart", "procedura1");
    text.Remove("Autostart", "Procedura7");
    EXPECT_EQ(text.GetContent(), Replaced(kFile, "Procedura1=b.kx\r\n", ""));
}

TEST(IniTextTest, RemovedSectionLeavesTheCommentOfTheNext) {
    IniText text(kFile);
    text.RemoveSection("Autostart");
    EXPECT_EQ(text.GetContent(), Replaced(kFile,
                                          "[Autostart]\r\nProcedura0=a.kx\r\n; drugi\r\n"
                                          "Procedura1=b.kx\r\n\r\n",
                                          ""));
}

TEST(IniTextTest, ReplacedSectionKeepsItsPlaceAndItsComments) {
    IniText text(kFile);
    EXPECT_TRUE(text.SetSection("Autostart", {{"Procedura0", "c.kx"}}));
    EXPECT_EQ(text.GetContent(),
              Replaced(Replaced(kFile, "a.kx", "c.kx"), "Procedura1=b.kx\r\n", ""));
}

TEST(IniTextTest, ReplacedSectionTakesNewKeysInOrder) {
    IniText text(kFile);
    EXPECT_TRUE(text.SetSection(
        "Autostart", {{"Procedura0", "a.kx"}, {"Procedura1", "b.kx"}, {"Procedura2", "c.kx"}}));
    EXPECT_EQ(text.GetContent(), Replaced(kFile, "b.kx\r\n", "b.kx\r\nProcedura2=c.kx\r\n"));
}

TEST(IniTextTest, LinesAreGivenInOrderWithTheirSections) {
    std::vector<std::string> lines;
    for (const IniLine& line :
         IniText("x=1\n[a]\r\n; b=2\r\n k = 'v ' \r\n\r\nnic\r\n[ b ]\r\nl=").GetLines()) {
        lines.push_back(std::to_string(static_cast<int>(line.kind)) + "|" + line.section + "|" +
                        line.key + "|" + line.value);
    }
    EXPECT_EQ(lines, (std::vector<std::string>{"1||x|1", "0|a||", "2|a||", "1|a|k|v ", "3|a||",
                                               "4|a||", "0|b||", "1|b|l|"}));
}

TEST(IniTextTest, TextWithAByteOfZeroIsBinary) {
    EXPECT_FALSE(IniText::IsBinary("[a]\r\n\x01\xFF"));
    EXPECT_TRUE(IniText::IsBinary(std::string_view("[a]\0", 4)));
}

}  // namespace
}  // namespace kalvex::platform
