#include "programs/kalvex-run/Actions.h"

#include <gtest/gtest.h>

#include "support/scratch_file.h"
#include "text/CodePage.h"

namespace kalvex::programs {
namespace {

constexpr std::size_t kScripts = 2;

std::string Fault(std::string_view content) {
    const support::ScratchFile scratch(content);
    std::vector<run::Action> actions;
    std::string fault;
    EXPECT_FALSE(run::ReadActions(scratch.Path(), kScripts, actions, fault));
    return scratch.WithoutPath(fault);
}

TEST(ActionsTest, EachIsRead) {
    const support::ScratchFile scratch(R"([
        {"atTick": 1, "script": 0, "do": "start"},
        {"atTick": 1, "script": 1, "do": "stop"},
        {"atTick": 2, "script": 0, "do": "step"},
        {"atTick": 3, "script": 0, "do": "reset"},
        {"atTick": 4, "script": 0, "do": "minimise"},
        {"atTick": 5, "script": 0, "do": "restore"},
        {"atTick": 6, "script": 0, "do": "breakpoint", "line": 7},
        {"atTick": 9, "script": 1, "do": "setValue", "variable": "ŁĄKA", "text": "#1,5 ż"}])");
    std::vector<run::Action> actions;
    std::string fault;
    ASSERT_TRUE(run::ReadActions(scratch.Path(), kScripts, actions, fault)) << fault;
    std::vector<std::string> read;
    for (const run::Action& action : actions) {
        read.push_back(std::to_string(action.atTick) + " " + std::to_string(action.script) + " " +
                       std::string(action.row->name));
    }
    EXPECT_EQ(read, (std::vector<std::string>{"1 0 start", "1 1 stop", "2 0 step", "3 0 reset",
                                              "4 0 minimise", "5 0 restore", "6 0 breakpoint",
                                              "9 1 setValue"}));
    EXPECT_EQ(actions[6].line, 7);
    EXPECT_EQ(actions[7].variable, text::FromUtf8("ŁĄKA"));
    EXPECT_EQ(actions[7].text, text::FromUtf8("#1,5 ż"));
}

TEST(ActionsTest, AnEmptyListIsNoFault) {
    const support::ScratchFile scratch("[]");
    std::vector<run::Action> actions;
    std::string fault;
    EXPECT_TRUE(run::ReadActions(scratch.Path(), kScripts, actions, fault));
    EXPECT_TRUE(actions.empty());
}

struct FaultCase {
    const char* name;
    const char* content;
    const char* fault;
};

class ActionsFaultTest : public testing::TestWithParam<FaultCase> {};

TEST_P(ActionsFaultTest, IsToldWithItsLine) {
    EXPECT_EQ(Fault(GetParam().content), GetParam().fault);
}

constexpr FaultCase kFaults[] = {
    {"NoList", "{}", "FILE:1: the actions must be an array"},
    {"NoObject", "[\n3]", "FILE:2: an action must be an object"},
    {"NoTick", "[\n{\"script\": 0, \"do\": \"stop\"}]", "FILE:2: \"atTick\" is missing"},
    {"TickZero", "[{\"script\": 0, \"do\": \"stop\",\n\"atTick\": 0}]",
     "FILE:2: \"atTick\" must be a whole number of at least 1"},
    {"TickText", "[{\"atTick\": \"1\", \"script\": 0, \"do\": \"stop\"}]",
     "FILE:1: \"atTick\" must be a whole number of at least 1"},
    {"NoScript", "[{\"atTick\": 1, \"do\": \"stop\"}]", "FILE:1: \"script\" is missing"},
    {"ScriptOutOfRange", "[{\"atTick\": 1,\n\n\"script\": 2, \"do\": \"stop\"}]",
     "FILE:3: there is no script 2: the command line names 2"},
    {"ScriptNegative", "[{\"atTick\": 1, \"script\": -1, \"do\": \"stop\"}]",
     "FILE:1: \"script\" must be a whole number of at least 0"},
    {"NothingToDo", "[{\"atTick\": 1, \"script\": 0}]", "FILE:1: \"do\" is missing"},
    {"UnknownAction", "[\n\n{\"atTick\": 1, \"script\": 0, \"do\": \"skok\"}]",
     "FILE:3: there is no action \"skok\""},
    {"OtherCase", "[{\"atTick\": 1, \"script\": 0, \"do\": \"Stop\"}]",
     "FILE:1: there is no action \"Stop\""},
    {"BreakpointWithoutLine", "[{\"atTick\": 1, \"script\": 0, \"do\": \"breakpoint\"}]",
     "FILE:1: \"line\" is missing"},
    {"BreakpointBelowText",
     "[{\"atTick\": 1, \"script\": 0, \"do\": \"breakpoint\", \"line\": -1}]",
     "FILE:1: \"line\" must be a whole number from 0 to 2147483647"},
    {"SetValueWithoutVariable",
     "[{\"atTick\": 1, \"script\": 0, \"do\": \"setValue\", \"text\": \"1\"}]",
     "FILE:1: \"variable\" is missing"},
    {"SetValueWithoutText",
     "[{\"atTick\": 1, \"script\": 0, \"do\": \"setValue\", \"variable\": \"A\"}]",
     "FILE:1: \"text\" is missing"},
    {"SetValueToNumber",
     "[{\"atTick\": 1, \"script\": 0, \"do\": \"setValue\", \"variable\": \"A\",\n\"text\": 1}]",
     "FILE:2: \"text\" must be a text"},
    {"NotInOrder",
     "[{\"atTick\": 5, \"script\": 0, \"do\": \"stop\"},\n"
     "{\"atTick\": 4, \"script\": 0, \"do\": \"start\"}]",
     "FILE:2: tick 4 comes after tick 5: the actions are not in order of tick"},
    {"NoJson", "[{\"atTick\": 5,\n}]",
     "FILE:2: syntax error while parsing object key - unexpected '}'; expected string literal"},
};

INSTANTIATE_TEST_SUITE_P(Actions, ActionsFaultTest, testing::ValuesIn(kFaults),
                         [](const auto& info) { return std::string(info.param.name); });

}  // namespace
}  // namespace kalvex::programs
