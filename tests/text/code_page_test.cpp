#include "text/CodePage.h"

#include <gtest/gtest.h>

#include <string>
#include <string_view>

namespace kalvex::text {
namespace {

// The bytes from the first to the last, the undefined ones left out.
std::string Bytes(int first, int last) {
    constexpr std::string_view kUndefined = "\x81\x83\x88\x90\x98";
    std::string bytes;
    for (int byte = first; byte <= last; ++byte) {
        const char c = static_cast<char>(byte);
        if (kUndefined.find(c) == std::string_view::npos) bytes.push_back(c);
    }
    return bytes;
}

struct Row {
    int first;
    std::string_view utf8;
};

constexpr Row kRows[] = {
    {0x80, "€‚„…†‡‰Š‹ŚŤŽŹ"},    {0x90, "‘’“”•–—™š›śťžź"},   {0xA0, "\u00a0ˇ˘Ł¤Ą¦§¨©Ş«¬\u00ad®Ż"},
    {0xB0, "°±˛ł´µ¶·¸ąş»Ľ˝ľż"}, {0xC0, "ŔÁÂĂÄĹĆÇČÉĘËĚÍÎĎ"}, {0xD0, "ĐŃŇÓÔŐÖ×ŘŮÚŰÜÝŢß"},
    {0xE0, "ŕáâăäĺćçčéęëěíîď"}, {0xF0, "đńňóôőö÷řůúűüýţ˙"},
};

TEST(CodePageTest, EveryDefinedByteHasItsCharacterInUtf8) {
    for (const Row& row : kRows) {
        EXPECT_EQ(ToUtf8(Bytes(row.first, row.first + 15)), row.utf8);
    }
}

TEST(CodePageTest, EveryCharacterOfThePageHasItsByte) {
    for (const Row& row : kRows) {
        EXPECT_EQ(FromUtf8(row.utf8), Bytes(row.first, row.first + 15));
    }
}

TEST(CodePageTest, WellFormedUtf8IsKnown) {
    EXPECT_TRUE(IsUtf8(""));
    EXPECT_TRUE(IsUtf8("a"));
    for (const Row& row : kRows) {
        EXPECT_TRUE(IsUtf8(row.utf8));
        EXPECT_FALSE(IsUtf8(Bytes(row.first, row.first + 15)));
    }
    EXPECT_TRUE(IsUtf8("\xF0\x9F\x98\x80"));
    EXPECT_FALSE(IsUtf8("\xC4"));
    EXPECT_FALSE(IsUtf8("\xED\xA0\x80"));
    EXPECT_FALSE(IsUtf8("za\xBF\xF3\xB3\xE6"));
}

TEST(CodePageTest, LowerHalfIsAsciiBothWays) {
    std::string ascii;
    for (int i = 0; i < 128; ++i) ascii.push_back(static_cast<char>(i));
    EXPECT_EQ(ToUtf8(ascii), ascii);
    EXPECT_EQ(FromUtf8(ascii), ascii);
}

TEST(CodePageTest, PolishTextHasItsBytes) {
    EXPECT_EQ(FromUtf8("Zażółć gęślą jaźń"), "Za\xBF\xF3\xB3\xE6 g\xEA\x9Cl\xB9 ja\x9F\xF1");
    EXPECT_EQ(ToUtf8("ZA\xAF\xD3\xA3\xC6 G\xCA\x8CL\xA5 JA\x8F\xD1"), "ZAŻÓŁĆ GĘŚLĄ JAŹŃ");
}

TEST(CodePageTest, UndefinedBytesAreControlsBothWays) {
    const std::string bytes = "\x81\x83\x88\x90\x98";
    const std::string utf8 = "\xC2\x81\xC2\x83\xC2\x88\xC2\x90\xC2\x98";
    EXPECT_EQ(ToUtf8(bytes), utf8);
    EXPECT_EQ(FromUtf8(utf8), bytes);
}

TEST(CodePageTest, EveryByteComesBackThroughUtf8) {
    std::string all;
    for (int i = 0; i < 256; ++i) all.push_back(static_cast<char>(i));
    EXPECT_EQ(FromUtf8(ToUtf8(all)), all);
}

TEST(CodePageTest, CharacterWithoutCounterpartIsAQuestionMark) {
    EXPECT_EQ(FromUtf8("aλb"), "a?b");
    EXPECT_EQ(FromUtf8("a\u20ABb"), "a?b");  // beside the euro sign
    EXPECT_EQ(FromUtf8("a\u2123b"), "a?b");  // behind the last character of the page
    EXPECT_EQ(FromUtf8("a\uFEFFb"), "a?b");
    EXPECT_EQ(FromUtf8("a\U0001F600b"), "a?b");
    EXPECT_EQ(FromUtf8("\xC2\x80"), "?");  // a control whose number is that of the euro sign
    EXPECT_EQ(FromUtf8("\u00E3"), "?");    // a letter of another page of the family
}

TEST(CodePageTest, MalformedUtf8GivesOneQuestionMarkAByte) {
    EXPECT_EQ(FromUtf8("a\x80z"), "a?z");  // continuation without a lead
    EXPECT_EQ(FromUtf8("a\xC5"), "a?");    // cut at the end of the text
    EXPECT_EQ(FromUtf8("a\xC5z"), "a?z");  // cut by another character
    EXPECT_EQ(FromUtf8("\xE2\x82z"), "??z");
    EXPECT_EQ(FromUtf8("\xF0\x9F\x98"), "???");
    EXPECT_EQ(FromUtf8("\xC0\x80"), "??");  // too long a form of 0
    EXPECT_EQ(FromUtf8("\xC1\xBF"), "??");
    EXPECT_EQ(FromUtf8("\xE0\x80\xAF"), "???");
    EXPECT_EQ(FromUtf8("\xF0\x80\x80\xAF"), "????");
    EXPECT_EQ(FromUtf8("\xED\xA0\x80"), "???");       // a surrogate
    EXPECT_EQ(FromUtf8("\xF4\x90\x80\x80"), "????");  // behind the last code point
    EXPECT_EQ(FromUtf8("\xF5\x80\x80\x80"), "????");
    EXPECT_EQ(FromUtf8("\xFF\xFE"), "??");
}

TEST(CodePageTest, ZeroByteIsKept) {
    EXPECT_EQ(FromUtf8(std::string_view("a\0b", 3)), std::string("a\0b", 3));
    EXPECT_EQ(FromWide(std::wstring_view(L"a\0b", 3)), std::string("a\0b", 3));
    EXPECT_EQ(ToUtf8(std::string_view("a\0b", 3)), std::string("a\0b", 3));
}

TEST(CodePageTest, WideTextIsConverted) {
    EXPECT_EQ(FromWide(L"Łódź €"),
              "\xA3\xF3"
              "d\x9F \x80");
    EXPECT_EQ(FromWide(L"\u03BB\U0001F600"), "??");
    EXPECT_EQ(FromWide(std::wstring(1, static_cast<wchar_t>(-1))), "?");
}

TEST(CodePageTest, EmptyTextStaysEmpty) {
    EXPECT_EQ(ToUtf8(""), "");
    EXPECT_EQ(FromUtf8(""), "");
    EXPECT_EQ(FromWide(L""), "");
}

constexpr std::string_view kLower =
    "abcdefghijklmnopqrstuvwxyz"
    "ąćęłńóśźż"
    "šťžşľ"
    "ŕáâăäĺçčéëěíîďđňôőöřůúűüýţ";
constexpr std::string_view kUpper =
    "ABCDEFGHIJKLMNOPQRSTUVWXYZ"
    "ĄĆĘŁŃÓŚŹŻ"
    "ŠŤŽŞĽ"
    "ŔÁÂĂÄĹÇČÉËĚÍÎĎĐŇÔŐÖŘŮÚŰÜÝŢ";

TEST(CodePageTest, EveryLetterHasItsOtherCase) {
    EXPECT_EQ(ToUpper(FromUtf8(kLower)), FromUtf8(kUpper));
    EXPECT_EQ(ToLower(FromUtf8(kUpper)), FromUtf8(kLower));
    EXPECT_EQ(ToUpper(FromUtf8(kUpper)), FromUtf8(kUpper));
    EXPECT_EQ(ToLower(FromUtf8(kLower)), FromUtf8(kLower));
}

TEST(CodePageTest, WhatIsNoLetterHasNoCase) {
    const std::string letters = FromUtf8(kLower) + FromUtf8(kUpper);
    for (int i = 0; i < 256; ++i) {
        const auto byte = static_cast<unsigned char>(i);
        if (letters.find(static_cast<char>(byte)) != std::string::npos) continue;
        EXPECT_EQ(ToUpper(byte), byte) << i;
        EXPECT_EQ(ToLower(byte), byte) << i;
    }
}

TEST(CodePageTest, EqualNoCaseComparesWholeTexts) {
    EXPECT_TRUE(EqualNoCase("", ""));
    EXPECT_TRUE(EqualNoCase("hRep", "HREP"));
    EXPECT_TRUE(EqualNoCase(FromUtf8("żÓŁĆ"), FromUtf8("ŻółĆ")));
    EXPECT_FALSE(EqualNoCase("HREP", "HREPS"));
    EXPECT_FALSE(EqualNoCase("HREP", "HRE"));
    EXPECT_FALSE(EqualNoCase(FromUtf8("ł"), "l"));
    EXPECT_FALSE(EqualNoCase(FromUtf8("×"), FromUtf8("÷")));
}

}  // namespace
}  // namespace kalvex::text
