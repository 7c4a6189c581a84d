#include "text/Encoding.h"

#include <gmock/gmock.h>
#include <gtest/gtest.h>

#include <string>
#include <string_view>
#include <vector>

#include "text/CodePage.h"

namespace kalvex::text {
namespace {

using testing::ElementsAre;
using testing::IsEmpty;

constexpr std::string_view kUndefined = "\x81\x83\x88\x90\x98";
constexpr std::string_view kMark = "\xEF\xBB\xBF";

constexpr Conversion kToWindows1250 = {};
constexpr Conversion kToUtf8 = {.from = {}, .to = Encoding::Utf8};

std::string Marked(std::string_view text) {
    return std::string(kMark) + std::string(text);
}

// "2:5 NoCounterpart 2192", the value in hexadecimal.
std::vector<std::string> FaultsOf(std::string_view text, const Conversion& conversion) {
    constexpr const char* kKinds[] = {"NoCounterpart", "NotUtf8", "NotWindows1250", "NotText"};
    std::vector<std::string> faults;
    for (const EncodingFault& fault : Convert(text, conversion).faults) {
        char words[64];
        std::snprintf(words, sizeof words, "%d:%d %s %X", fault.line, fault.column,
                      kKinds[static_cast<int>(fault.kind)], static_cast<unsigned>(fault.value));
        faults.emplace_back(words);
    }
    return faults;
}

std::string Done(std::string_view text, const Conversion& conversion) {
    EXPECT_THAT(FaultsOf(text, conversion), IsEmpty()) << text;
    return Convert(text, conversion).text;
}

TEST(EncodingTest, LineInUtf8IsFound) {
    const struct {
        std::string text;
        std::optional<int> line;
    } rows[] = {
        {"", {}},
        {"LOCAL A = 1\r\n; b\r\n", {}},
        {"; zażółć", 1},
        {"LOCAL A = 1\r\n\r\n; zażółć\r\n; gęś\r\n", 3},
        {"; ó\n", 1},
        {"a\n; →\n", 2},
        {"a\n; 😀\n", 2},
        {FromUtf8("; zażółć\n; gęślą jaźń\n"), {}},
        {Marked("LOCAL A = 1\n"), 1},
        {Marked(FromUtf8("; zażółć\n")), 1},
        // Well-formed by chance.
        {FromUtf8("; PÓŁ\n; więżą\n"), {}},
        {FromUtf8("; zażółć\n") + "; gęś\n" + FromUtf8("; jaźń\n"), 2},
        {"; gęś \xB9\n", {}},
        {"a\xC4", {}},
    };
    for (const auto& row : rows) EXPECT_EQ(FindUtf8Line(row.text), row.line) << row.text;
}

TEST(EncodingTest, LineThatIsNotUtf8IsFound) {
    EXPECT_EQ(FindOtherLine(""), std::nullopt);
    EXPECT_EQ(FindOtherLine("a\n; zażółć\n"), std::nullopt);
    EXPECT_EQ(FindOtherLine("; gęś\n\n" + FromUtf8("; zażółć\n; ą\n")), 3);
}

TEST(EncodingTest, TextIsConvertedBothWaysAndStaysWhatItIsAlready) {
    const std::string utf8 = "; Zażółć „gęślą jaźń” – 5 €\r\nLOCAL A = 1\r\n";
    const std::string bytes = FromUtf8(utf8);
    EXPECT_EQ(Done(utf8, kToWindows1250), bytes);
    EXPECT_EQ(Done(bytes, kToWindows1250), bytes);
    EXPECT_EQ(Done(bytes, kToUtf8), utf8);
    EXPECT_EQ(Done(utf8, kToUtf8), utf8);
    EXPECT_EQ(Done("", kToUtf8), "");
}

TEST(EncodingTest, EveryCharacterComesBack) {
    std::string bytes;
    for (int byte = 1; byte < 256; ++byte) {
        const char c = static_cast<char>(byte);
        if (kUndefined.find(c) == std::string_view::npos) bytes.push_back(c);
    }
    const std::string utf8 = Done(bytes, kToUtf8);
    EXPECT_EQ(utf8, ToUtf8(bytes));
    EXPECT_EQ(Done(utf8, kToWindows1250), bytes);
}

TEST(EncodingTest, CharactersWithoutACounterpartAreNamed) {
    EXPECT_THAT(FaultsOf("; zażółć\r\n; ą→😀\n\xC2\x85\xC2\x81", kToWindows1250),
                ElementsAre("2:4 NoCounterpart 2192", "2:5 NoCounterpart 1F600",
                            "3:1 NoCounterpart 85", "3:2 NoCounterpart 81"));
    EXPECT_EQ(Convert("ą→", kToWindows1250).faults.front().bytes, "→");
}

TEST(EncodingTest, UndefinedBytesAreNamed) {
    EXPECT_THAT(
        FaultsOf(kUndefined, kToUtf8),
        ElementsAre("1:1 NotWindows1250 81", "1:2 NotWindows1250 83", "1:3 NotWindows1250 88",
                    "1:4 NotWindows1250 90", "1:5 NotWindows1250 98"));
    EXPECT_EQ(Done(kUndefined, kToWindows1250), kUndefined);
}

TEST(EncodingTest, QuestionMarkIsACharacter) {
    EXPECT_EQ(Done("ą?", kToWindows1250), "\xB9?");
}

TEST(EncodingTest, LinesThatDifferAreTakenEachAsWhatItIs) {
    const std::string mixed = FromUtf8("; zażółć\n; PÓŁ\n") + "; gęś\n";
    EXPECT_EQ(Done(mixed, kToWindows1250), FromUtf8("; zażółć\n; PÓŁ\n; gęś\n"));
    EXPECT_EQ(Done(mixed, kToUtf8), "; zażółć\n; PÓŁ\n; gęś\n");
    // In a text that is UTF-8 throughout no line is Windows-1250 by chance.
    EXPECT_THAT(FaultsOf("; gęś\n" + FromUtf8("; PÓŁ\n"), kToWindows1250),
                ElementsAre("2:4 NoCounterpart 4E3"));
}

TEST(EncodingTest, EncodingThatIsGivenHolds) {
    Conversion fromUtf8 = kToWindows1250;
    fromUtf8.from = Encoding::Utf8;
    EXPECT_THAT(FaultsOf("; gęś\n; \xB9x\xE6\n", fromUtf8),
                ElementsAre("2:3 NotUtf8 B9", "2:5 NotUtf8 E6"));
    EXPECT_THAT(FaultsOf(FromUtf8("PÓŁ"), fromUtf8), ElementsAre("1:2 NoCounterpart 4E3"));
    Conversion fromWindows1250 = kToUtf8;
    fromWindows1250.from = Encoding::Windows1250;
    EXPECT_EQ(Done("ó", fromWindows1250), "Ăł");
}

TEST(EncodingTest, MarkGoesUnlessItIsWanted) {
    EXPECT_EQ(Done(Marked("[a]\nb=ą\n"), kToWindows1250), "[a]\nb=\xB9\n");
    EXPECT_EQ(Done(Marked(FromUtf8("b=ąć\n")), kToWindows1250), FromUtf8("b=ąć\n"));
    EXPECT_EQ(Done(Marked("b=ą\n"), kToUtf8), "b=ą\n");
    Conversion marked = kToUtf8;
    marked.mark = true;
    EXPECT_EQ(Done("b=ą\n", marked), Marked("b=ą\n"));
    EXPECT_EQ(Done(Marked("b=ą\n"), marked), Marked("b=ą\n"));
    // With a mark no line is Windows-1250 by chance either.
    EXPECT_THAT(FaultsOf(Marked(FromUtf8("PÓŁ")), kToWindows1250),
                ElementsAre("1:2 NoCounterpart 4E3"));
}

TEST(EncodingTest, LineEndsAreSet) {
    const std::string mixed = "a\nb\r\n\nc\rd\r\r\ne";
    Conversion conversion;
    EXPECT_EQ(Done(mixed, conversion), mixed);
    conversion.lineEnds = LineEnds::CrLf;
    EXPECT_EQ(Done(mixed, conversion), "a\r\nb\r\n\r\nc\rd\r\r\ne");
    conversion.lineEnds = LineEnds::Lf;
    EXPECT_EQ(Done(mixed, conversion), "a\nb\n\nc\rd\r\ne");
    EXPECT_EQ(Done("ą\r\n", conversion), "\xB9\n");
}

TEST(EncodingTest, WhatIsNoTextIsNotConverted) {
    EXPECT_THAT(FaultsOf(std::string_view("a\nbc\0d\0", 7), kToUtf8), ElementsAre("2:3 NotText 0"));
    EXPECT_THAT(FaultsOf(std::string_view("\0", 1), kToUtf8), ElementsAre("1:1 NotText 0"));
}

TEST(EncodingTest, FaultsEndAtTheirLimit) {
    std::string arrows;
    for (std::size_t i = 0; i < kMostEncodingFaults; ++i) arrows += "→";
    EXPECT_EQ(Convert(arrows, kToWindows1250).faults.size(), kMostEncodingFaults);
    EXPECT_EQ(Convert(arrows + "→→", kToWindows1250).faults.size(), kMostEncodingFaults);
    const std::vector<EncodingFault> faults = Convert(arrows + "\n→→", kToWindows1250).faults;
    EXPECT_EQ(faults.size(), kMostEncodingFaults);
    EXPECT_EQ(faults.back().column, static_cast<int>(kMostEncodingFaults));
}

}  // namespace
}  // namespace kalvex::text
