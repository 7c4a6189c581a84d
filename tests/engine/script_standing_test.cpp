#include "engine/ScriptStanding.h"

#include <gmock/gmock.h>

#include "support/script_world.h"
#include "support/zone_scope.h"

namespace kalvex::engine {
namespace {

using testing::ElementsAre;
using testing::IsEmpty;

constexpr const char* kStateNames[] = {"idle",    "running", "waiting",    "sleeping", "scheduled",
                                       "failing", "command", "breakpoint", "error",    "finished"};
constexpr const char* kReleaseNames[] = {"none",   "time",     "next try", "retry",   "correction",
                                         "start",  "resume",   "restart",  "address", "connection",
                                         "login",  "variable", "access",   "value",   "answer",
                                         "report", "subscribe"};

class BreakpointView final : public ScriptView {
  public:
    void SelectLine(int) override {}
    void SetLineMarker(int, bool) override {}
    void SetReadOnly(bool) override {}
    void RefreshTitle() override {}
    void ClearAllMarkers() override {}
    void RefreshVariables() override {}
    bool HasBreakpoint(int line) const override { return line == breakpoint; }

    int breakpoint = -1;
};

class ScriptStandingTest : public support::ScriptWorld {
  protected:
    // State and line, and what is told of it, times in seconds since the start of the world.
    static std::string Stands(CKalvexDoc& document) {
        const ScriptStanding standing = GetStanding(document);
        std::string text = kStateNames[static_cast<int>(standing.state)];
        text += ' ' + std::to_string(standing.line);
        for (const auto& [name, time] : {std::pair{" since ", standing.since},
                                         {" stopped ", standing.stopped},
                                         {" until ", standing.until},
                                         {" ran ", standing.lastFinished}}) {
            if (time != 0) text += name + std::to_string(time - kStart);
        }
        if (standing.error.times != 0) {
            text += " error " + std::to_string(standing.error.code) + " x" +
                    std::to_string(standing.error.times);
        }
        return text + ", " + kReleaseNames[static_cast<int>(standing.release)];
    }

    static std::vector<std::string> Missing(CKalvexDoc& document) {
        std::vector<std::string> texts;
        for (const MissingValue& missing : GetStanding(document).missing) {
            texts.push_back(missing.name + " " + missing.condition.source + "@" +
                            missing.condition.variable + " " +
                            std::to_string(static_cast<int>(missing.condition.state)) +
                            missing.condition.reason);
        }
        return texts;
    }

    static std::string As(const char* text, DataState state) {
        return text + std::to_string(static_cast<int>(state));
    }

    static support::HandRemote& Remote(CKalvexDoc& document, const char* name) {
        return static_cast<support::HandRemote&>(*document.Variables().Find(name));
    }

    // Tries the line at once, whatever its pace.
    static void Try(CKalvexDoc& document, int times = 1) {
        for (int i = 0; i < times; ++i) {
            document.SetPriority(1);
            document.ExecuteStep();
        }
    }

    CKalvexDoc& Started(std::string_view text) {
        CKalvexDoc& document = Open(text);
        document.Start();
        return document;
    }

    void Wait(int seconds) { clock.Advance(seconds * std::int64_t{1000}); }

    support::ZoneScope zone{"UTC"};
};

TEST_F(ScriptStandingTest, ScriptThatIsNotStarted) {
    EXPECT_EQ(Stands(Open("LOCAL A")), "idle 0, start");
}

TEST_F(ScriptStandingTest, StartedScriptRunsFreely) {
    CKalvexDoc& document = Started("LOCAL A\nLOCAL B\nLOCAL C");
    EXPECT_EQ(Stands(document), "running 0, none");
    Try(document);
    Wait(7);
    EXPECT_EQ(Stands(document), "running 1 ran 7, none");
}

TEST_F(ScriptStandingTest, LineIsTheOneThatWasWritten) {
    CKalvexDoc& document = Started("LOCAL A\n\t  SET \tA =  FOO  ");
    Try(document, 2);
    EXPECT_EQ(GetStanding(document).text, "\t  SET \tA =  FOO  ");
}

TEST_F(ScriptStandingTest, LineOfAnIncludeIsToldWhereItHasCome) {
    WriteFile("inny.kx", "LOCAL B\nFOO");
    CKalvexDoc& document = Started("INCLUDE \"inny.kx\"");
    Try(document, 4);
    EXPECT_EQ(Stands(document), "failing 2 since 0 ran 0 error 1 x2, correction");
    EXPECT_EQ(GetStanding(document).text, "FOO");
}

TEST_F(ScriptStandingTest, FailingLineCountsItsErrorSinceItStands) {
    CKalvexDoc& document = Started("LOCAL A\nFOO\nLOCAL B");
    Wait(5);
    Try(document, 2);
    EXPECT_EQ(Stands(document), "failing 1 since 5 ran 5 error 1 x1, correction");
    EXPECT_EQ(text::ToUtf8(GetStanding(document).message), "Nieznane słowo kluczowe : FOO");
    Wait(60);
    Try(document, 41);
    EXPECT_EQ(Stands(document), "failing 1 since 5 ran 5 error 1 x42, correction");
}

TEST_F(ScriptStandingTest, FirstLineThatFailsHasNeverLetItRun) {
    CKalvexDoc& document = Started("FOO");
    Wait(3);
    Try(document);
    EXPECT_EQ(Stands(document), "failing 0 since 0 error 1 x1, correction");
}

TEST_F(ScriptStandingTest, AnotherErrorOnTheLineIsCountedAnew) {
    CKalvexDoc& document = Started("REMOTE A srv@X\nLOCAL B\nSET B = 5 % A");
    Try(document, 2);
    Remote(document, "A").answer = operands::ReadUnavailable;
    Try(document, 3);
    Wait(5);
    Remote(document, "A").answer = operands::ReadValue;
    Remote(document, "A").value = value::CVal(0);
    Try(document, 2);
    EXPECT_EQ(Stands(document), "failing 2 since 0 ran 0 error 14 x2, retry");
}

TEST_F(ScriptStandingTest, LineThatSucceedsAfterErrorsLeavesNothingBehind) {
    CKalvexDoc& document = Started("REMOTE A srv@X\nLOCAL B\nSET B = A\nFOO");
    Try(document, 2);
    Remote(document, "A").answer = operands::ReadUnavailable;
    sources.conditions["A"] = {"srv", "X", DataState::Unknown};
    Try(document, 3);
    EXPECT_EQ(Stands(document), "failing 2 since 0 ran 0 error 15 x3, value");
    Wait(9);
    Remote(document, "A").answer = operands::ReadValue;
    Try(document);
    EXPECT_EQ(Stands(document), "running 3 ran 9, none");
    EXPECT_THAT(Missing(document), IsEmpty());
    Wait(1);
    Try(document, 2);
    EXPECT_EQ(Stands(document), "failing 3 since 10 ran 10 error 1 x2, correction");
}

TEST_F(ScriptStandingTest, SameErrorOnTheNextLineIsCountedAnew) {
    CKalvexDoc& document = Started("REMOTE A srv@X\nREMOTE C srv@Y\nLOCAL B = A\nSET B = C");
    Try(document, 2);
    Remote(document, "A").answer = operands::ReadUnavailable;
    Remote(document, "C").answer = operands::ReadUnavailable;
    Try(document, 3);
    Remote(document, "A").answer = operands::ReadValue;
    Try(document, 3);
    EXPECT_EQ(Stands(document), "failing 3 since 0 ran 0 error 15 x2, next try");
}

TEST_F(ScriptStandingTest, ErrorThatOnlyTriesCanEnd) {
    CKalvexDoc& document = Started("LOCAL A = \"/nie/ma/dane.txt\"\nREAD_FILE A");
    Try(document, 2);
    const ScriptStanding standing = GetStanding(document);
    EXPECT_EQ(standing.state, StandingState::Failing);
    EXPECT_EQ(standing.error.code, operands::ErrorFileOpen);
    EXPECT_EQ(standing.release, Release::Retry);
}

// ---- values that are not there

TEST_F(ScriptStandingTest, WaitIsNoErrorAndTellsItsVariable) {
    CKalvexDoc& document = Started("REMOTE A srv@X\nLOCAL B\nSET B = A");
    sources.conditions["A"] = {"srv", "X", DataState::Down, "serwer nie odpowiada"};
    Try(document, 2);
    Wait(4);
    Try(document, 5);
    EXPECT_EQ(Stands(document), "waiting 2 since 4 ran 4, connection");
    EXPECT_THAT(Missing(document),
                ElementsAre(As("A srv@X.CURDATA ", DataState::Down) + "serwer nie odpowiada"));
}

TEST_F(ScriptStandingTest, ErrorBeforeAWaitIsKept) {
    CKalvexDoc& document = Started("REMOTE A srv@X\nLOCAL B\nSET B = A");
    Try(document, 2);
    Remote(document, "A").answer = operands::ReadUnavailable;
    Try(document, 3);
    Remote(document, "A").answer = operands::ReadNothing;
    sources.conditions["A"] = {"srv", "X", DataState::Opening};
    Try(document, 2);
    EXPECT_EQ(Stands(document), "waiting 2 since 0 ran 0 error 15 x3, connection");
    EXPECT_EQ(text::ToUtf8(GetStanding(document).message),
              "Błąd pobrania wartości zdalnej zmiennej : A");
    Remote(document, "A").answer = operands::ReadUnavailable;
    Try(document);
    EXPECT_EQ(Stands(document), "failing 2 since 0 ran 0 error 15 x4, connection");
}

TEST_F(ScriptStandingTest, EachStateOfTheDataHasItsRelease) {
    CKalvexDoc& document = Started("REMOTE A srv@X\nLOCAL B\nSET B = A");
    Try(document, 3);
    std::vector<std::string> releases;
    for (int state = 0; state <= static_cast<int>(DataState::NoReport); ++state) {
        sources.conditions["A"] = {"srv", "X", static_cast<DataState>(state)};
        releases.push_back(kReleaseNames[static_cast<int>(GetStanding(document).release)]);
    }
    EXPECT_THAT(releases, ElementsAre("next try", "correction", "correction", "correction",
                                      "address", "connection", "connection", "connection", "login",
                                      "subscribe", "variable", "access", "value", "value", "value",
                                      "restart", "report", "answer", "report", "report"));
}

TEST_F(ScriptStandingTest, FurtherVariablesOfTheLineAreToldWhenTheyHaveNoValue) {
    CKalvexDoc& document = Started(
        "REMOTE A srv@X\nREMOTE C srv@Y\nREMOTE D srv@Z\nLOCAL B\n"
        "SET B = A + C + D + C + B ; A");
    sources.conditions["A"] = {"srv", "X", DataState::NoData};
    sources.conditions["C"] = {"srv", "Y", DataState::Unknown};
    sources.conditions["D"] = {"srv", "Z", DataState::Usable};
    Try(document, 5);
    EXPECT_THAT(Missing(document), ElementsAre(As("A srv@X.CURDATA ", DataState::NoData),
                                               As("C srv@Y.CURDATA ", DataState::Unknown)));
}

TEST_F(ScriptStandingTest, ReportIsToldByItsKind) {
    CKalvexDoc& document = Started("REMOTE A srv@X\nLOCAL B\nSET B = A.HREP");
    sources.conditions["A"] = {"srv", "X", DataState::Asked};
    Try(document, 2);
    Remote(document, "A").answer = operands::ReadUnavailable;
    Try(document);
    EXPECT_EQ(Stands(document), "failing 2 since 0 ran 0 error 15 x1, answer");
    EXPECT_THAT(Missing(document), ElementsAre(As("A.HREP srv@X.HREP ", DataState::Asked)));
    EXPECT_EQ(GetStanding(document).missing.at(0).kind, value::KindHour);
}

TEST_F(ScriptStandingTest, PointerTellsTheVariableThatItStandsFor) {
    CKalvexDoc& document = Started(
        "REMOTE A srv@X\nPOINTER P\nPOINTER Q\nLOCAL B\nSETPTR P = \"A\"\nSETPTR Q = \"P\"\n"
        "SET B = Q");
    sources.conditions["A"] = {"srv", "X", DataState::NoValue};
    Try(document, 7);
    EXPECT_EQ(Stands(document), "waiting 6 since 0 ran 0, value");
    EXPECT_THAT(Missing(document), ElementsAre(As("Q srv@X.CURDATA ", DataState::NoValue)));
}

TEST_F(ScriptStandingTest, VariablesWithoutAServerThatHaveNoValueEither) {
    struct Row {
        const char* script;
        int lines;
        std::string missing;
    };
    for (const Row& row :
         {Row{"LIST L\nLOCAL B\nSET B = L", 2, As("L @ ", DataState::NoElement)},
          Row{"LOCAL L\nLOCAL B\nSET B = L.ARCH", 2, As("L.ARCH @ ", DataState::NotReadable)},
          Row{"POINTER P\nPOINTER L\nLOCAL B\nSETPTR P = \"L\"\n"
              "SETPTR L = \"P\"\nSET B = L",
              5, As("L @ ", DataState::NoTarget)}}) {
        CKalvexDoc& document = Started(row.script);
        Try(document, row.lines + 1);
        EXPECT_EQ(Stands(document),
                  "waiting " + std::to_string(row.lines) + " since 0 ran 0, correction");
        EXPECT_THAT(Missing(document), ElementsAre(row.missing));
    }
}

TEST_F(ScriptStandingTest, ArgumentsOfACallStandForThemselves) {
    CKalvexDoc& document = Started(
        "REMOTE A srv@X\nREMOTE C srv@Y\nLOCAL B\nCALL suma(A, C)\nPROCEDURE suma(x, y)\nBEGIN\n"
        "SET B = x + y\nEND");
    sources.conditions["A"] = {"srv", "X", DataState::NoData};
    sources.conditions["C"] = {"srv", "Y", DataState::NoData};
    Try(document, 7);
    EXPECT_EQ(GetStanding(document).text, "SET B = x + y");
    EXPECT_THAT(Missing(document), ElementsAre(As("A srv@X.CURDATA ", DataState::NoData),
                                               As("C srv@Y.CURDATA ", DataState::NoData)));
}

TEST_F(ScriptStandingTest, AskingChangesNothing) {
    CKalvexDoc& document =
        Started("REMOTE A srv@X\nPOINTER P\nLOCAL B\nSETPTR P = \"BRAK\"\nSET B = A + P");
    Try(document, 5);
    const std::string error = Error(document);
    const int line = document.State().m_nCurrentLine;
    GetStanding(document);
    EXPECT_EQ(Error(document), error);
    EXPECT_EQ(document.State().m_nCurrentLine, line);
    EXPECT_EQ(Error(document), "27 A");
}

// ---- times

TEST_F(ScriptStandingTest, SleepTellsItsEnd) {
    CKalvexDoc& document = Started("LOCAL A\nSLEEP 1:00.00\nLOCAL B");
    Wait(10);
    Try(document, 2);
    Wait(20);
    Try(document, 3);
    EXPECT_EQ(Stands(document), "sleeping 1 since 10 until 3610 ran 10, time");
    Wait(3600);
    Try(document);
    EXPECT_EQ(Stands(document), "running 2 ran 3630, none");
}

TEST_F(ScriptStandingTest, WaitForTellsItsNextTime) {
    CKalvexDoc& document = Started("WAITFOR 6:10.00, 6:05.00\nLOCAL B");
    Try(document);
    EXPECT_EQ(Stands(document), "scheduled 0 since 0 until 300, time");
    Wait(301);
    Try(document);
    EXPECT_EQ(Stands(document), "running 1 ran 301, none");
    Wait(2);
    Try(document, 2);
    EXPECT_EQ(Stands(document), "scheduled 0 since 303 until 600 ran 303, time");
}

TEST_F(ScriptStandingTest, WaitForBehindTheLastTimeOfTheDayTellsTheNextDay) {
    CKalvexDoc& document = Started("WAITFOR 5:00.00");
    Try(document);
    EXPECT_EQ(Stands(document), "scheduled 0 since 0 until 82800, time");
    Try(document);
    EXPECT_EQ(Stands(document), "scheduled 0 since 0 until 82800, time");
}

TEST_F(ScriptStandingTest, WaitForWithoutATimeNeverGoesOn) {
    CKalvexDoc& document = Started("WAITFOR ,");
    Try(document, 2);
    EXPECT_EQ(Stands(document), "scheduled 0 since 0, correction");
}

TEST_F(ScriptStandingTest, SleepWhoseTimeHasGoneBadFails) {
    CKalvexDoc& document = Started("LOCAL A = \"0.30\"\nSLEEP A");
    Try(document, 2);
    document.Variables().Find("A")->SetValue(value::CVal("krotko"), value::KindCurrent);
    Try(document);
    const ScriptStanding standing = GetStanding(document);
    EXPECT_EQ(standing.state, StandingState::Failing);
    EXPECT_EQ(standing.until, 0);
}

// ---- stops

TEST_F(ScriptStandingTest, StopByACommand) {
    CKalvexDoc& document = Started("LOCAL A\nLOCAL B");
    Try(document);
    Wait(5);
    document.Stop();
    Wait(5);
    EXPECT_EQ(Stands(document), "command 1 since 5 stopped 5 ran 5, resume");
}

TEST_F(ScriptStandingTest, StopOnAFailingLineTellsItsErrorStill) {
    CKalvexDoc& document = Started("LOCAL A\nFOO");
    Try(document, 4);
    Wait(5);
    document.Stop();
    EXPECT_EQ(Stands(document), "command 1 since 0 stopped 5 ran 0 error 1 x3, resume");
    Wait(5);
    document.Stop();
    EXPECT_EQ(Stands(document), "command 1 since 0 stopped 5 ran 0 error 1 x3, resume");
    document.Start();
    EXPECT_EQ(Stands(document), "running 1 ran 0, none");
    Try(document);
    EXPECT_EQ(Stands(document), "failing 1 since 0 ran 0 error 1 x4, correction");
}

TEST_F(ScriptStandingTest, StopOnAWaitingLineTellsWhatItWaitsForStill) {
    CKalvexDoc& document = Started("REMOTE A srv@X\nLOCAL B = A");
    sources.conditions["A"] = {"srv", "X", DataState::Login};
    Try(document, 2);
    document.Stop();
    EXPECT_EQ(Stands(document), "command 1 since 0 stopped 0 ran 0, resume");
    EXPECT_THAT(Missing(document), ElementsAre(As("A srv@X.CURDATA ", DataState::Login)));
}

TEST_F(ScriptStandingTest, BreakpointStopsBeforeItsLine) {
    BreakpointView view;
    view.breakpoint = 2;
    CKalvexDoc& document = Started("LOCAL A\nLOCAL B\nFOO");
    document.SetView(&view);
    Try(document);
    Wait(5);
    Try(document);
    Wait(5);
    EXPECT_EQ(Stands(document), "breakpoint 2 since 5 stopped 5 ran 5, resume");
    document.Step();
    Try(document);
    EXPECT_EQ(Stands(document), "command 2 since 5 stopped 5 ran 5 error 1 x1, resume");
    document.SetView(nullptr);
}

TEST_F(ScriptStandingTest, StepMovesOnWithItsTime) {
    CKalvexDoc& document = Started("LOCAL A\nLOCAL B\nLOCAL C");
    document.Stop();
    Wait(5);
    document.Step();
    Try(document);
    Wait(5);
    EXPECT_EQ(Stands(document), "command 1 since 5 stopped 0 ran 5, resume");
    Wait(5);
    document.Start();
    Try(document);
    EXPECT_EQ(Stands(document), "running 2 ran 15, none");
}

TEST_F(ScriptStandingTest, ErrorThatStopsTheScript) {
    CKalvexDoc& document = Started("LOCAL A\nGOTO brak");
    Wait(5);
    Try(document, 2);
    Wait(5);
    Try(document, 2);
    EXPECT_EQ(Stands(document), "error 1 since 5 stopped 5 ran 5 error 6 x1, correction");
    EXPECT_EQ(text::ToUtf8(GetStanding(document).message), "Nie znaleziono etykiety : :brak");
}

TEST_F(ScriptStandingTest, ErrorThatStopsOnABreakpointIsTheCause) {
    BreakpointView view;
    CKalvexDoc& document = Started("LOCAL A\nGOTO brak");
    document.SetView(&view);
    Try(document);
    view.breakpoint = 1;
    Try(document);
    EXPECT_EQ(Stands(document), "error 1 since 0 stopped 0 ran 0 error 6 x1, correction");
    document.SetView(nullptr);
}

TEST_F(ScriptStandingTest, StepOntoAnErrorThatStops) {
    CKalvexDoc& document = Started("GOTO brak");
    document.Stop();
    Wait(5);
    document.Step();
    Try(document);
    EXPECT_EQ(Stands(document), "error 0 since 0 stopped 5 error 6 x1, correction");
}

TEST_F(ScriptStandingTest, StepOfAScriptThatIsNotStarted) {
    CKalvexDoc& document = Open("LOCAL A\nFOO");
    Wait(5);
    document.Step();
    Try(document);
    document.Step();
    Try(document);
    EXPECT_EQ(Stands(document), "idle 1 since 5 ran 5 error 1 x1, start");
}

// ---- ends

TEST_F(ScriptStandingTest, FinishedScriptTellsWhen) {
    CKalvexDoc& document = Started("LOCAL A\nLOCAL B");
    Wait(5);
    Try(document, 2);
    EXPECT_EQ(Stands(document), "finished 2 since 5 ran 5, restart");
    Try(document);
    Wait(60);
    Try(document, 2);
    EXPECT_EQ(Stands(document), "finished 2 since 5 ran 5, restart");
    EXPECT_EQ(GetStanding(document).text, "");
}

TEST_F(ScriptStandingTest, ResetLeavesNothing) {
    CKalvexDoc& document = Started("LOCAL A\nFOO");
    Wait(5);
    Try(document, 5);
    document.Reset();
    EXPECT_EQ(Stands(document), "idle 0, start");
    Wait(5);
    document.Start();
    Try(document, 2);
    EXPECT_EQ(Stands(document), "failing 1 since 10 ran 10 error 1 x1, correction");
}

}  // namespace
}  // namespace kalvex::engine
