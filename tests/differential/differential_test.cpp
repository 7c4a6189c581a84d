// Scripts run the same with kept forms as read anew: generated ones, and one for each place where
// text and state mix.
#include <gtest/gtest.h>

#include <algorithm>
#include <set>
#include <string>
#include <vector>

#include "differential/Coverage.h"
#include "differential/Generator.h"
#include "differential/Lockstep.h"
#include "language/Functions.h"
#include "language/Statements.h"
#include "support/zone_scope.h"
#include "text/CodePage.h"

namespace kalvex::differential {
namespace {

constexpr int kTicks = 100;

class DifferentialTest : public testing::Test {
  protected:
    // The seeds of the scripts that differ, each with what does.
    std::string RunSeeds(std::uint64_t first, std::uint64_t count) {
        std::string differences;
        for (std::uint64_t seed = first; seed < first + count; ++seed) {
            const Scenario scenario = MakeScenario(seed, kTicks);
            const Verdict verdict = RunBothWays(folder, scenario, CountedLanguage());
            if (verdict.difference.empty()) continue;
            differences += "seed " + std::to_string(seed) + ", tick " +
                           std::to_string(verdict.tick) + ": " + verdict.difference + '\n' +
                           Describe(scenario);
        }
        return differences;
    }

    // Rows without a single success.
    template <class Table>
    static std::string Unreached(const Table& table,
                                 const std::map<std::string_view, OutcomeCounts>& counts,
                                 const std::set<std::string_view>& outside) {
        std::string names;
        for (const auto& row : table.Rows()) {
            if (outside.contains(row.keyword)) continue;
            const auto found = counts.find(row.keyword);
            if (found != counts.end() && found->second.finished > 0) continue;
            names += std::string(row.keyword) + '\n';
        }
        return names;
    }

    support::ZoneScope zone{"Europe/Warsaw"};
    support::ScratchFolder folder;
};

TEST_F(DifferentialTest, GeneratedScriptsAreTheSameBothWays) {
    EXPECT_EQ(RunSeeds(1, 1500), "");
}

// What works on files has no files here.
TEST_F(DifferentialTest, GeneratedScriptsReachTheWholeLanguage) {
    const std::set<std::string_view> outside = {"READ_FILE", "WRITE_FILE", "SET_FILE"};
    EXPECT_EQ(RunSeeds(100001, 2500), "");
    EXPECT_EQ(Unreached(language::Statements(), Covered().statements, outside), "");
    EXPECT_EQ(Unreached(language::Functions(), Covered().functions, outside), "");
}

TEST_F(DifferentialTest, GeneratedScriptsAreTheSameEveryTime) {
    EXPECT_EQ(Describe(MakeScenario(7, kTicks)), Describe(MakeScenario(7, kTicks)));
    EXPECT_NE(Describe(MakeScenario(7, kTicks)), Describe(MakeScenario(8, kTicks)));
}

// ---- a difference is seen

engine::LineOutcome CopyNothing(engine::StatementCall&) {
    return engine::LineOutcome::Finished;
}

engine::LineOutcome SleepNever(engine::StatementCall&) {
    return engine::LineOutcome::Finished;
}

engine::LineOutcome FailOtherwise(engine::StatementCall& call) {
    return call.document.Fail(operands::ErrorArguments, "x");
}

class DifferentialFindingTest : public DifferentialTest {
  protected:
    // The verdict on the scenario when that statement is another one in one of the worlds.
    Verdict RunWith(std::string_view keyword, engine::StatementHandler handler) {
        return RunBothWays(folder, scenario, Broken(keyword, handler));
    }

    const Tables& Broken(std::string_view keyword, engine::StatementHandler handler) {
        const auto language = language::Statements().Rows();
        m_rows.assign(language.begin(), language.end());
        std::ranges::find(m_rows, keyword, &engine::StatementRow::keyword)->handler = handler;
        m_table = std::make_unique<engine::StatementTable>(m_rows);
        m_tables = std::make_unique<Tables>(Tables{*m_table, language::Functions()});
        return *m_tables;
    }

    Scenario scenario;

  private:
    std::vector<engine::StatementRow> m_rows;
    std::unique_ptr<engine::StatementTable> m_table;
    std::unique_ptr<Tables> m_tables;
};

TEST_F(DifferentialFindingTest, AnotherValueIsSeen) {
    scenario.scripts = {"PRIORITY 1\nLOCAL A = 5\nLOCAL B = 7\nCOPY A B"};
    const Verdict verdict = RunWith("COPY", CopyNothing);
    EXPECT_EQ(verdict.difference,
              "skrypt0.kx B value: 171:5.00/0@0 with kept forms, 171:7.00/0@0 read anew");
    EXPECT_EQ(verdict.tick, 1);
}

TEST_F(DifferentialFindingTest, ASleepThatIsNoneIsSeen) {
    scenario.scripts = {"PRIORITY 1\nSLEEP 5\nLOCAL A"};
    EXPECT_EQ(RunWith("SLEEP", SleepNever).difference,
              "lines run: 10 with kept forms, 3 read anew");
}

TEST_F(DifferentialFindingTest, AnotherErrorIsSeen) {
    scenario.scripts = {"MOVE_NEXT BRAK"};
    EXPECT_EQ(RunWith("MOVE_NEXT", FailOtherwise).difference,
              "log line: 1 \"" + folder.Path() +
                  "/skrypt0.kx : Linia 1 - Zmienna nie została poprawnie zdefiniowana : BRAK\" "
                  "with kept forms, 1 \"" +
                  folder.Path() +
                  "/skrypt0.kx : Linia 1 - Nieprawidłowe lub brakujące argumenty wyrażenia : x\" "
                  "read anew");
}

TEST_F(DifferentialFindingTest, OnlyWhatTheDifferenceNeedsIsLeft) {
    scenario.scripts = {
        "PRIORITY 1\nLOCAL C = 1\nLOCAL A = 5\nLOCAL B = 7\n:w\nSET C = C + 1\nCOPY A B\nGOTO w",
        "LOCAL X = 1"};
    scenario.included = "LOCAL Y = 1";
    scenario.watched = true;
    scenario.tickLengths = {1, 1000};
    scenario.events = {{.tick = 1, .kind = EventKind::Minimise, .text = {}}};
    const Scenario smaller = Minimise(folder, scenario, Broken("COPY", CopyNothing));
    EXPECT_EQ(Describe(smaller),
              "--- skrypt0.kx\n1\tCOPY A B\n--- started, patience 3, ticks 1, ms 1\n");
}

// ---- the places where text and state mix

struct Trap {
    const char* name;
    const char* text;
    std::vector<Event> events = {};
    bool sources = false;
    std::int64_t tickLength = 1;
    bool started = true;
};

void PrintTo(const Trap& trap, std::ostream* out) {
    *out << trap.name;
}

class DifferentialTrapTest : public DifferentialTest, public testing::WithParamInterface<Trap> {};

TEST_P(DifferentialTrapTest, IsTheSameBothWays) {
    const Trap& trap = GetParam();
    Scenario scenario;
    scenario.scripts = {text::FromUtf8(trap.text)};
    scenario.included = "SET N = N + 1\nLOCAL Z = N\nSET POZNA = N";
    scenario.events = trap.events;
    scenario.sources = trap.sources;
    scenario.started = trap.started;
    scenario.tickLengths = {trap.tickLength};
    scenario.watched = true;
    scenario.stepwise = true;
    const Verdict verdict = RunBothWays(folder, scenario, CountedLanguage());
    EXPECT_EQ(verdict.difference, "");
    EXPECT_GE(verdict.lines, trap.started ? 100U : 20U);
}

const Trap kTraps[] = {
    {"ParametersRewriteLines",
     "PRIORITY 1\nLOCAL A = 1\nLOCAL B = 2\nLOCAL N = 0\n:w\nCALL p(A, B)\nCALL p(B, N)\n"
     "CALL p(A.DREP, 3)\nCALL p(A)\nCALL p(N, A, B)\nGOTO w\n"
     "PROCEDURE p(a, b)\nBEGIN\nSET a = a + b\nSET N = N + 1\nIF a > 100 THEN\nSET a = 1\nENDIF\n"
     "END"},
    {"ParametersNamedAsKeywords",
     "PRIORITY 1\nLOCAL A = 1\nLOCAL N = 0\n:w\nCALL p(A, GOTO, w)\nCALL p(N, THEN, x)\nGOTO w\n"
     "PROCEDURE p(N, THEN, w)\nBEGIN\nSET N = N + 1\nSET THEN = w\nIF N > 3 w\nSET A = 0\nEND"},
    {"CallsWithinCalls",
     "PRIORITY 1\nLOCAL A = 1\nLOCAL N = 0\n:w\nCALL p(A, N)\nGOTO w\n"
     "PROCEDURE p(x, y)\nBEGIN\nSET x = x + 1\nCALL q(y, x)\nEND\n"
     "PROCEDURE q(a, x)\nBEGIN\nSET a = x\nSET x = 0\nEND"},
    {"RecursionAndJumpOutOfABody",
     "PRIORITY 1\nLOCAL A = 1\nLOCAL N = 0\n:w\nSET N = 0\nCALL p(A)\nCALL q(N)\n:dalej\n"
     "SET x = A\nSET A = A + 1\nGOTO w\n"
     "PROCEDURE p(x)\nBEGIN\nSET N = N + 1\nIF N < 5 THEN\nCALL p(x)\nENDIF\nEND\n"
     "PROCEDURE q(x)\nBEGIN\nGOTO dalej\nEND"},
    {"MoreCallsThanAreKept",
     "PRIORITY 1\nLOCAL A = 1\nLOCAL N = 0\nCALL p(A)\n"
     "PROCEDURE p(a)\nBEGIN\nSET N = a\nCALL p(a+1)\nEND",
     {{.tick = 1, .kind = EventKind::Minimise, .text = {}}}},
    {"StartedAnewWithinACall",
     "PRIORITY 1\nLOCAL A = 1\nLOCAL N = 0\n:w\nCALL p(A, N)\nGOTO w\n"
     "PROCEDURE p(x, y)\nBEGIN\nSET x = x + 1\n:petla\nSET y = y + x\nIF y < 1000000 GOTO petla\n"
     "SET y = 0\nEND",
     {{.tick = 20, .kind = EventKind::Stop, .text = {}},
      {.tick = 21, .kind = EventKind::EditLine, .number = 10, .text = "SET x = y - 3"},
      {.tick = 22, .kind = EventKind::Start, .text = {}}}},
    {"DeclaredAfterItsFirstUse",
     "PRIORITY 1\nLOCAL N = 0\n:w\nSET N = N + 1\nIF N > 3 THEN\nLOCAL POZNA = N\nENDIF\n"
     "SET N = POZNA + N * 0\nSET N = N + 1\nGOTO w"},
    {"AnotherKindAfterAReset",
     "PRIORITY 1\nLOCAL N = 0\nIF TIME.SEC > 20 & TIME.SEC < 50 THEN\nLIST X\nADD X 5\nMOVE_FIRST "
     "X\n"
     "ELSE\nLOCAL X = 1\nENDIF\n:w\nSET N = X + 1\nSET X = N\nSET N = X.COUNT\nGOTO w",
     {{.tick = 40, .kind = EventKind::Reset, .text = {}},
      {.tick = 41, .kind = EventKind::Start, .text = {}}},
     false,
     1000},
    {"PointersThatChange",
     "PRIORITY 1\nLOCAL A = 1\nLOCAL B = 2\nPOINTER P\nPOINTER Q\nLOCAL S = \"A\"\n:w\n"
     "SETPTR P = S\nSET P = P + 1\nSETPTR P = \"B\"\nSET P = P + A\nSETPTR Q = \"P\"\nSET Q = 5\n"
     "SETPTR P = \"Q\"\nSET Q = 6\nSETPTR P = \"POZNA\"\nSET P = 1\nLOCAL POZNA = 0\n"
     "SET A = P.BASENAME\nSET A = 1\nGOTO w"},
    {"NamesThatLookLikeNumbers",
     "PRIORITY 1\nLOCAL 1E5 = 3\nLOCAL 2X = 4\nLOCAL -3 = 5\nLOCAL inf = 6\nLOCAL N = 0\n:w\n"
     "SET N = 1E5\nSET N = 2X + 1\nSET N = -3\nSET N = inf + 1\nSET 1E5 = 1E5 + 1\nSET N = (2X)\n"
     "SET -3 = N - 3\nGOTO w"},
    {"NamesThatLookLikeWords",
     "PRIORITY 1\nLOCAL @daily = 3\nLOCAL TIME = 4\nLOCAL SIN = 5\nLOCAL SET = 6\nLOCAL NAME = 7\n"
     "LOCAL N = 0\n:w\nSET N = @daily\nSET N = TIME + 0\nSET N = SIN\nSET N = (SIN) + 1\n"
     "SET SET = SET + 1\nSET N = NAME\nSET N = NAME.NAME\nSET N = .NAME\nGOTO w"},
    {"LiteralsTakeTheTargetsType",
     "PRIORITY 1\nLOCAL A = \"x\"\nLOCAL B = TIME\nLOCAL C = TO_INT \"5\"\nLOCAL D = 0.5\n:w\n"
     "SET A = 12\nSET B = 12\nSET C = 12.7\nSET D = 3000000000\nSET C = A\nSET C = 5\nSET A = D\n"
     "SET A = 7\nSET A = \"t\"\nSET C = TO_INT \"5\"\nGOTO w"},
    {"FormulasThatCannotBeCompiled",
     "PRIORITY 1\nLOCAL A = 1\n:w\nSET A = (A + 1\nSET A = A + + 1\nSET A = A ++ 1\nSET A = A)\n"
     "SET A = SIN + 1\nSET A = 1 + SIN\nSET A = A += 1\nSET A = A % 0\nSET A = 1 ; + 2\n"
     "SET A = A +\nGOTO w"},
    {"ConditionsOfEachForm",
     "PRIORITY 1\nLOCAL A = 1\nLOCAL S = \"abc\"\nLOCAL E\n:w\nIF A > 1 & S == \"abc\" THEN\n"
     "SET A = 0\nELSE\nSET A = A + 1\nENDIF\nIF NOT S == \"x\" | A == 2 GOTO x\n:x\n"
     "IF UNKNOWN E GOTO y\nSET A = 7\n:y\nif A = 1 goto x\nIF UNKNOWN S GOTO w\nIF A == 1 then\n"
     "endif\nIF S GOTO w\nIF A.NAME == \"A\" THEN\nSET S = \"abd\"\nENDIF\nGOTO w"},
    {"ConditionsOfTexts",
     "PRIORITY 1\nLOCAL S = \"X\"\nLOCAL Sgotow = \"X\"\nLOCAL N = 0\n:w\nSET N = N + 1\n"
     "IF \"x\" == S goto w THEN\nSET N = N + 100\nIF S == \"X\" THEN\nSET S = \"Y\"\nELSE\n"
     "SET S = \"X\"\nENDIF\nIF NOT S == \"X\" THEN\nSET N = N + 10\nENDIF\n"
     "IF S >= \"X\" THEN\nSET Sgotow = S\nENDIF\nIF S == \"X\" GOTO x\nIF S = \"Y\" THEN\nENDIF\n"
     ":x\nIF N > 1500 THEN\nLOCAL \"X\" = 5\nENDIF\nIF N > 2500 THEN\nSET S = 5\nENDIF\nGOTO w"},
    {"ConditionsWithoutVariables",
     "PRIORITY 1\n:w\nIF \"A\" == \"A\" THEN\nIF \"A\" == \"B\" "
     "THEN\nCOS\nENDIF\nELSE\nCOS\nENDIF\n"
     "GOTO w"},
    {"ErrorsOfAnEvaluationThatIsTriedTwice",
     "PRIORITY 1\nLOCAL A = 1\nLOCAL S = \"a\"\n:w\nIF S == \"a\" & BRAK == 1 GOTO w\n"
     "IF S == \"b\" | A == 1 GOTO x\n:x\nIF S == BRAK GOTO w\nIF A == GOTO w\nIF S == \"a\" FOO\n"
     "GOTO w"},
    {"ListsAndTheirIterators",
     "PRIORITY 1\nLIST L\nLOCAL N = 0\nLOCAL S = \"1;2;;3\"\n:w\nSPLIT S ; L\nMOVE_FIRST L\n"
     "SET N = L + 1\nMOVE_NEXT L\nSET L = 7\nINSERT L 0 N\nMOVE_TO L 2\nREMOVE L 0\n"
     "SET N = L.SUM\nSET S = JOIN L ;\nCALC_IN_LIST L.MAXIMUM N\nADD L 5\nMOVE_TO L 99\nSET N = L\n"
     "REMOVE_ALL L\nSET S = \"1;2;;3\"\nGOTO w"},
    {"TokensOfAText",
     "PRIORITY 1\nLOCAL T = \"a, b,,c\"\nLOCAL I = 0\nLIST L\nLOCAL S\n:w\nSET I = 0\n:n\n"
     "SET S = TOKENIZE T \", \" I\nIF I < 0 GOTO w\nADD L S\nGOTO n"},
    {"SleepingThroughMovesOfTheClock",
     "PRIORITY 1\nLOCAL N = 0\nLOCAL S = \"0:00.03\"\n:w\nSET N = N + 1\nSLEEP 2\nSLEEP S\n"
     "SLEEP 0.01\nSLEEP BRAK\nGOTO w",
     {{.tick = 40, .kind = EventKind::Stop, .text = {}},
      {.tick = 41, .kind = EventKind::Start, .text = {}},
      {.tick = 60, .kind = EventKind::SetValue, .number = 1, .text = "\"0:00.01\""}},
     false,
     700},
    {"WaitingForTimesOfTheDay",
     "PRIORITY 1\nLOCAL N = 0\nWAITFOR 7:00.05, 15.00, 30\nSET N = N + 1\nLOCAL M = TIME",
     {{.tick = 50, .kind = EventKind::Minimise, .text = {}}},
     false,
     1000},
    {"LinesEditedBetweenSteps",
     "PRIORITY 1\nLOCAL A = 1\nLOCAL N = 0\n:w\nSET N = N + A\nSET A = A + 1\nSET N = N * 2\nGOTO "
     "w",
     {{.tick = 3, .kind = EventKind::EditLine, .number = 4, .text = "SET N = 100"},
      {.tick = 8, .kind = EventKind::InsertLine, .number = 4, .text = "SET N = N - 1"},
      {.tick = 20, .kind = EventKind::EditLine, .number = 5, .text = "LIST A"}},
     false,
     1,
     false},
    {"TextChangedBehindAStop",
     "PRIORITY 1\nLOCAL N = 0\n:w\nSET N = N + 1\nGOTO w",
     {{.tick = 10, .kind = EventKind::EditLine, .number = 3, .text = "SET N = N - 5"},
      {.tick = 20, .kind = EventKind::Stop, .text = {}},
      {.tick = 22, .kind = EventKind::Start, .text = {}},
      {.tick = 30, .kind = EventKind::Stop, .text = {}},
      {.tick = 31, .kind = EventKind::InsertLine, .number = 1, .text = ":w"},
      {.tick = 32, .kind = EventKind::Start, .text = {}}}},
    {"FileChangedBehindAReset",
     "PRIORITY 1\nLOCAL N = 0\n:w\nSET N = N + 1\nINCLUDE dolaczony.kx\nIF N < 50 GOTO w",
     {{.tick = 5, .kind = EventKind::ChangeFile, .text = "GOTO w"},
      {.tick = 6, .kind = EventKind::Reset, .text = {}},
      {.tick = 7, .kind = EventKind::Start, .text = {}}}},
    {"StartRefusedWhileItRuns",
     "PRIORITY 1\nLOCAL N = 0\nIF N == 0 THEN\nENDIF\nSLEEP 1000",
     {{.tick = 20, .kind = EventKind::EditLine, .number = 3, .text = "SET N = 5"},
      {.tick = 21, .kind = EventKind::Start, .text = {}},
      {.tick = 22, .kind = EventKind::EditLine, .number = 4, .text = "BRAK"}}},
    {"BreakpointsAndSteps",
     "PRIORITY 1\nLOCAL N = 0\n:w\nSET N = N + 1\nIF N > 3 GOTO w\nSLEEP 1\nGOTO w",
     {{.tick = 3, .kind = EventKind::Breakpoint, .number = 3, .text = {}},
      {.tick = 5, .kind = EventKind::Step, .text = {}},
      {.tick = 6, .kind = EventKind::Step, .text = {}},
      {.tick = 7, .kind = EventKind::Start, .text = {}},
      {.tick = 8, .kind = EventKind::Breakpoint, .number = 3, .text = {}},
      {.tick = 9, .kind = EventKind::Start, .text = {}}}},
    {"BlocksAndLabelsFarAndNear",
     "PRIORITY 1\nLOCAL N = 0\n:w\nIF N > 2 THEN\nIF N > 4 THEN\nSET N = 0\nELSE\nSET N = N + 1\n"
     "GOTO wewn\nENDIF\nELSE\nSET N = N + 1\n:wewn\nSET N = N + 0.5\nENDIF\n:w\nGOTO w\n"
     "PROCEDURE p()\nBEGIN\nEND"},
    {"ProcedureReachedFromAbove",
     "PRIORITY 1\nLOCAL N = 0\n:w\nSET N = N + 1\nPROCEDURE p(a)\n; uwaga\n\nBEGIN\nSET a = 1\n"
     "END\nCALL p(N)\nCALL p (N)\nGOTO w"},
    {"RemoteValuesThatComeAndGo",
     "PRIORITY 1\nREMOTE R srv@Z1\nREMOTE Q srv@Z2\nREMOTE D dwa@Z1\nLOCAL N = 0\n:w\n"
     "SET N = R + 1\nIF UNKNOWN Q GOTO x\nSET N = Q\n:x\nIF UNKNOWN D GOTO y\nSET N = D * 2\n:y\n"
     "SET N = N + 1\nIF N > 50 THEN\nIGNORE_UNKNOWN_ON\nELSE\nIGNORE_UNKNOWN_OFF\nENDIF\nGOTO w",
     {},
     true},
    {"RemoteVariableBoundAnew",
     "PRIORITY 1\nLOCAL N = 0\n:w\nREMOTE R srv@Z1\nREMOTE R dwa@Z1\nSET R = N\nSET N = R + 1\n"
     "LOCK\nSET R = 7\nSET N = R\nUNLOCK\nGET R HREP 2024 3 10 7\nSET N = R.HREP + 1\nGOTO w",
     {{.tick = 50, .kind = EventKind::Reset, .text = {}},
      {.tick = 51, .kind = EventKind::Start, .text = {}}},
     true},
    {"TimeMovesWithinALoop",
     "PRIORITY 1\nLOCAL T = 0\nLOCAL N = 0\n:w\nSET T = TIME\nSET N = T.HOUR.MIN.SEC\n"
     "SET N = TIME.MIN.SEC + 1\nSET N = CHECK_EVENT_TIME \"*/2 * * * * *\"\n"
     "SET N = CHECK_EVENT_TIME @every_minute 5\nSET N.TIMESTAMP = TIME\nSET T = N.TIMESTAMP\n"
     "GOTO w",
     {},
     false,
     400},
};

INSTANTIATE_TEST_SUITE_P(, DifferentialTrapTest, testing::ValuesIn(kTraps),
                         [](const auto& info) { return std::string(info.param.name); });

}  // namespace
}  // namespace kalvex::differential
