#include "workbench/model/LogReference.h"

#include <gtest/gtest.h>

#include "engine/ErrorReport.h"

namespace kalvex::workbench {
namespace {

constexpr const char* kStamp = "2024-03-10 07:00:00  ";

LogReference Find(const std::string& text, std::size_t selectedRows = 1) {
    return FindScript(kStamp + text, selectedRows, engine::kLineMark);
}

TEST(LogReferenceTest, ALineOfAScriptNamesScriptAndLine) {
    const LogReference found = Find("/scada/gaz.kx : Linia 12 - Brak danych : A");
    EXPECT_EQ(found.path, "/scada/gaz.kx");
    EXPECT_EQ(found.line, 11);
}

TEST(LogReferenceTest, TheMarkIsThatOfTheLogsLanguage) {
    const std::string line = std::string(kStamp) + "/a.kx : Line 12 - No data : A";
    EXPECT_EQ(FindScript(line, 1, " : Line ").line, 11);
    EXPECT_EQ(FindScript(line, 1, engine::kLineMark).line, std::nullopt);
    EXPECT_EQ(FindScript(line, 1, engine::kLineMark).path, "/a.kx");
}

TEST(LogReferenceTest, TheNumberEndsAtTheNextSeparator) {
    EXPECT_EQ(Find("/a.kx : Linia 7 : 8").line, 6);
    EXPECT_EQ(Find("/a.kx : Linia 7").line, 6);
}

TEST(LogReferenceTest, ThePathGoesUpToTheFirstSeparator) {
    const LogReference found = Find("/a.kx : Start : Linia 3");
    EXPECT_EQ(found.path, "/a.kx");
    EXPECT_EQ(found.line, 2);
}

TEST(LogReferenceTest, WithoutALineTheScriptAloneIsNamed) {
    const LogReference found = Find("/a.kx : Inicjowanie skryptu ");
    EXPECT_EQ(found.path, "/a.kx");
    EXPECT_EQ(found.line, std::nullopt);
}

TEST(LogReferenceTest, NoLineIsBelowTheFirst) {
    for (const char* number : {"0", "-4", "abc", ""}) {
        const LogReference found = Find(std::string("/a.kx : Linia ") + number);
        EXPECT_EQ(found.path, "/a.kx") << number;
        EXPECT_EQ(found.line, std::nullopt) << number;
    }
}

TEST(LogReferenceTest, ANumberThatIsTooLargeIsTheLargest) {
    EXPECT_EQ(Find("/a.kx : Linia 99999999999999999999").line, 2147483646);
    EXPECT_EQ(Find("/a.kx : Linia 4294967297").line, 2147483646);
}

TEST(LogReferenceTest, WithoutASeparatorNothingIsNamed) {
    EXPECT_EQ(Find("Uruchomienie modułu Kalvex").path, "");
    EXPECT_EQ(Find("").path, "");
    EXPECT_EQ(FindScript("", 1, engine::kLineMark).path, "");
}

TEST(LogReferenceTest, ASeparatorWithinTheStampIsNone) {
    EXPECT_EQ(FindScript("a : Linia 1", 1, engine::kLineMark).path, "");
    EXPECT_EQ(Find(" : Linia 1").path, "");
}

TEST(LogReferenceTest, ExactlyOneRowHasToBeSelected) {
    EXPECT_EQ(Find("/a.kx : Linia 1", 0).path, "");
    EXPECT_EQ(Find("/a.kx : Linia 1", 2).path, "");
}

}  // namespace
}  // namespace kalvex::workbench
