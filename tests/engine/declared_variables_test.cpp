#include "engine/DeclaredVariables.h"

#include <gmock/gmock.h>
#include <gtest/gtest.h>

#include "engine/ScriptText.h"

namespace kalvex::engine {
namespace {

using testing::ElementsAre;

std::vector<std::string> Declared(std::string_view text) {
    LineList lines;
    lines.SetText(text);
    std::vector<std::string> declared;
    for (const DeclaredVar& variable : BuildDeclaredVars(lines)) {
        declared.push_back(variable.strName + ' ' + std::to_string(variable.nKind));
    }
    return declared;
}

TEST(DeclaredVariablesTest, FourKindsInTheOrderOfTheText) {
    EXPECT_THAT(Declared("LIST l\r\nLOCAL a = 5\r\nREMOTE r srv@v\r\nPOINTER p\r\n"),
                ElementsAre("l 3", "a 1", "r 4", "p 2"));
}

TEST(DeclaredVariablesTest, KeywordIsTakenInAnyCaseAndBehindBlanks) {
    EXPECT_THAT(Declared("\t local\ta\r\n  Remote r srv@v"), ElementsAre("a 1", "r 4"));
}

TEST(DeclaredVariablesTest, OnlyTheFirstWordDeclares) {
    EXPECT_THAT(Declared("; LOCAL a\r\n;LOCAL b\r\n\r\nIF x THEN LOCAL c\r\n:LOCAL d\r\nLOCALE "
                         "e\r\nSET LIST = 1"),
                ElementsAre());
}

TEST(DeclaredVariablesTest, SecondDeclarationIsARecordToo) {
    EXPECT_THAT(Declared("LOCAL a\r\nLIST a"), ElementsAre("a 1", "a 3"));
}

TEST(DeclaredVariablesTest, DeclarationWithoutANameIsListed) {
    EXPECT_THAT(Declared("LOCAL"), ElementsAre(" 1"));
}

TEST(DeclaredVariablesTest, ColumnsBeginEmpty) {
    LineList lines;
    lines.SetText("LOCAL a = 5");
    const std::vector<DeclaredVar> declared = BuildDeclaredVars(lines);
    ASSERT_EQ(declared.size(), 1u);
    EXPECT_EQ(declared[0].strValue + declared[0].strStatus + declared[0].strTime +
                  declared[0].strDetailA + declared[0].strDetailB,
              "");
}

}  // namespace
}  // namespace kalvex::engine
