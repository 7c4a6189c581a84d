#include "text/NearestWord.h"

#include <gtest/gtest.h>

#include "text/CodePage.h"

namespace kalvex::text {
namespace {

constexpr std::string_view kWords[] = {"Autostart", "Log", "Okna", "Konsola", "Konsole"};

TEST(NearestWordTest, UpToTwoLettersMayDiffer) {
    EXPECT_EQ(FindNearestWord("Autsotart", kWords), "Autostart");
    EXPECT_EQ(FindNearestWord("Autostar", kWords), "Autostart");
    EXPECT_EQ(FindNearestWord("Autostaart", kWords), "Autostart");
    EXPECT_EQ(FindNearestWord("AUTOSTARD", kWords), "Autostart");
    EXPECT_EQ(FindNearestWord("Autxsoart", kWords), "Autostart");
    EXPECT_EQ(FindNearestWord("Autxsoarx", kWords), "");
}

TEST(NearestWordTest, LessThanHalfOfAShortWordMayDiffer) {
    EXPECT_EQ(FindNearestWord("Lag", kWords), "Log");
    EXPECT_EQ(FindNearestWord("Lx", kWords), "");
    EXPECT_EQ(FindNearestWord("Lgo", kWords), "");
    EXPECT_EQ(FindNearestWord("O", kWords), "");
    EXPECT_EQ(FindNearestWord("", kWords), "");
}

TEST(NearestWordTest, FirstOfTheNearestCounts) {
    EXPECT_EQ(FindNearestWord("Konsol", kWords), "Konsola");
    EXPECT_EQ(FindNearestWord("Konsolee", kWords), "Konsole");
}

TEST(NearestWordTest, CaseOfPolishLettersPlaysNoPart) {
    const std::string known = FromUtf8("URZĄD");
    const std::string_view words[] = {known};
    EXPECT_EQ(FindNearestWord(FromUtf8("uząd"), words), known);
}

}  // namespace
}  // namespace kalvex::text
