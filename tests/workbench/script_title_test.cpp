#include "workbench/model/ScriptTitle.h"

#include <gtest/gtest.h>

#include "engine/ScriptDocument.h"
#include "text/CodePage.h"

namespace kalvex::workbench {
namespace {

std::string Title(std::string_view title, int stateWord, TitleSide side) {
    const platform::Translator translator;
    return text::ToUtf8(ScriptTitle(title, stateWord, side, "Kalvex", translator));
}

TEST(ScriptTitleTest, ModuleTellsTheModeInThePlaceOfTheMark) {
    EXPECT_EQ(Title("a.kx [tylko do odczytu]", engine::StateRunning, TitleSide::Module),
              "a.kx [tryb uruchomieniowy]");
    EXPECT_EQ(Title("a.kx", engine::StatePaused, TitleSide::Module), "a.kx [tryb krokowy]");
    EXPECT_EQ(Title("a.kx", engine::StatePaused | engine::StateStep | engine::StateMinimised,
                    TitleSide::Module),
              "a.kx [tryb krokowy]");
}

TEST(ScriptTitleTest, HolderTellsOfTheModuleToo) {
    EXPECT_EQ(Title("a.kx [tylko do odczytu]", engine::StateRunning, TitleSide::Holder),
              "a.kx [RC - tylko do odczytu] [Kalvex - tryb uruchomieniowy]");
    EXPECT_EQ(Title("a.kx [tylko do odczytu]", engine::StatePaused, TitleSide::Holder),
              "a.kx [RC - tylko do odczytu] [Kalvex - tryb krokowy]");
    EXPECT_EQ(Title("a.kx", engine::StatePaused, TitleSide::Holder),
              "a.kx [Kalvex - tryb krokowy]");
}

TEST(ScriptTitleTest, ReaderChangesTheMarkAlone) {
    for (const int state : {engine::StateRunning, engine::StatePaused}) {
        EXPECT_EQ(Title("a.kx [tylko do odczytu]", state, TitleSide::Reader),
                  "a.kx [RC - tylko do odczytu]");
    }
}

TEST(ScriptTitleTest, IdleScriptHasNoMode) {
    for (const TitleSide side : {TitleSide::Module, TitleSide::Holder, TitleSide::Reader}) {
        for (const int state : {0, int{engine::StateMinimised}, int{engine::StateStep}}) {
            EXPECT_EQ(Title("a.kx [tylko do odczytu]", state, side), "a.kx [tylko do odczytu]");
        }
    }
}

}  // namespace
}  // namespace kalvex::workbench
