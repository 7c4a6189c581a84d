// Lines that stay or wait for data, tried at each due step and known to do nothing at most of them:
// scripts and those who watch them cannot tell.
#include <gmock/gmock.h>

#include <set>

#include "support/source_world.h"

namespace kalvex::sources {
namespace {

constexpr const char* kPlant =
    "'connectAtTick': 60, 'dataAtTick': 90, 'variables': {"
    "'V': {'current': [{'value': 1}, {'atTick': 700, 'value': 9}]},"
    "'U': {'current': [{'status': 1, 'value': 3}, {'atTick': 500, 'value': 4}]},"
    "'W': {'current': [{'status': 1, 'value': 0}]}}";

constexpr const char* kScripts[] = {
    "LOCAL N = 0\n:p\nSLEEP 2\nSET N = N + 1\nGOTO p\n",
    "LOCAL N = 0\n:p\nWAITFOR 7, 21, 34\nSET N = N + 1\nGOTO p\n",
    "REMOTE a srv@V\nLOCAL x = a\n:p\nIF a < 5 GOTO p\nSET x = a\n",
    "REMOTE u srv@U\nLOCAL s = \"3\"\n:p\nSLEEP s\nIF u > 3 GOTO p\nSET s = 1\n",
    "REMOTE w srv@W\nLOCAL x = 0\nIF w > 3 THEN\nSET x = w\nENDIF\nSET x = x + w\n",
    "REMOTE w srv@W\nSLEEP 10\nSET w = 4\nSLEEP 5\nSET w = 5\n",
    "REMOTE u srv@U\nLOCAL x\nSET x = 1 / (TIME - 1710050410) + u\nSET x = TIME.DAYOFWEEK\n",
    "REMOTE u srv@U\nLOCAL t\nSET t = STRING_LEFT u 1\n",
    "REMOTE u srv@U\nLOCAL x\nCALL p(u)\nGOTO k\nPROCEDURE p(v)\nBEGIN\nSET x = v\nEND\n:k\n"
    "SLEEP 1\n",
    "LIST l\nLOCAL x\nPOINTER q\nSETPTR q = \"x\"\nSET x = l\n",
    "REMOTE u srv@U\nPOINTER q\nSETPTR q = \"u\"\nLOCAL x\nSET x = q\nSETPTR q = \"nic\"\n"
    "WAITFOR 23:00.00\n",
    "REMOTE a srv@V\nLOCK\nLOCAL x = a\nBZDURA\n",
    "REMOTE a brak@V\nLOCAL x = a\n",
    "REMOTE u srv@U\nPRIORITY 3\nLOCAL x = u\nSLEEP 4\nPRIORITY 1\nSLEEP 60\n",
    "SLEEP 45\nSETTIME 2024 3 10 9 0 0\n",
    "SLEEP 1:00.00\nLOCAL z = 1\n",
};

class View final : public engine::ScriptView {
  public:
    // Selecting what is selected shows nothing new.
    void SelectLine(int line) override {
        if (std::exchange(m_selected, line) != line) Note("select", line);
    }
    void SetLineMarker(int line, bool set) override { Note(set ? "mark" : "unmark", line); }
    void SetReadOnly(bool) override { Note("read-only", 0); }
    void RefreshTitle() override { Note("title", 0); }
    void ClearAllMarkers() override { Note("clear", 0); }
    void RefreshVariables() override { Note("variables", 0); }
    bool HasBreakpoint(int line) const override { return breakpoints.contains(line); }

    std::set<int> breakpoints;
    std::string calls;

  private:
    void Note(const char* what, int line) { calls += what + (' ' + std::to_string(line)) + ' '; }

    int m_selected = -1;
};

class Console final : public engine::ConsoleLink {
  public:
    void SendCommand(std::string_view, engine::ConsoleCommand) override {}
    void SendLine(std::string_view key, int line) override {
        calls += std::string(key) + " line " + std::to_string(line) + ' ';
    }
    void SendState(std::string_view key, engine::ConsoleStateMessage, int state,
                   int line) override {
        calls += std::string(key) + " state " + std::to_string(state) + " line " +
                 std::to_string(line) + ' ';
    }

    std::string calls;
};

class TwoWaysWorld;

struct Action {
    int tick;
    std::size_t script;
    void (*perform)(TwoWaysWorld& world, engine::CKalvexDoc& document);
};

class TwoWaysWorld : public support::SourceWorld {
  public:
    explicit TwoWaysWorld(bool keepForms) {
        services.keepForms = keepForms;
        services.counts = &counts;
        services.console = &console;
        Plant(kPlant);
        for (std::size_t i = 0; i < std::size(kScripts); ++i)
            Start(kScripts[i], std::to_string(i) + ".kx");
    }

    ~TwoWaysWorld() override { documents.clear(); }

    // One line of the trace for each tick.
    std::vector<std::string> Run(std::span<const Action> actions, int count) {
        std::vector<std::string> trace;
        for (int n = 0; n < count; ++n) {
            for (const Action& action : actions) {
                if (action.tick == n) action.perform(*this, *documents[action.script]);
            }
            Tick(1);
            trace.push_back(State(n));
            clock.Advance(50);
        }
        return trace;
    }

    void ShowFirst(engine::CKalvexDoc& document) { document.SetView(&view); }
    void MoveClock(int seconds) { clock.SetSystemTime(clock.Now() + seconds); }
    static void Put(engine::CKalvexDoc& document, const char* name, value::CVal value) {
        document.Variables().Find(name)->SetValue(value, value::KindCurrent);
        document.OnValueSet();
    }

    View view;
    int kept = 0;  // ticks that ended with a line known to do nothing, of all scripts

  private:
    void TestBody() override {}

    std::string State(int n) {
        std::string text = std::to_string(n) + ": lines " + std::to_string(counts.lines) +
                           " waits " + std::to_string(counts.waits) + " errors " +
                           std::to_string(counts.errors) + (ticks.IsErrorStanding() ? " E" : "");
        for (const auto& document : documents) {
            const engine::RunState& state = document->State();
            kept += state.promise.standing;
            const auto outcome = state.standing.GetOutcome();
            text += "\n  " + std::to_string(document->GetStateWord()) + " line " +
                    std::to_string(state.m_nCurrentLine) + " pace " +
                    std::to_string(state.m_nPaceCounter) + (state.m_bErrorStanding ? " E" : "") +
                    " error " + Error(*document) + " reported " +
                    std::to_string(state.m_nReportedLine) + ' ' +
                    std::to_string(state.m_nReportedError) + " outcome " +
                    std::to_string(outcome ? static_cast<int>(*outcome) : -1) + " since " +
                    std::to_string(state.standing.GetSince() - kStart) + " until " +
                    std::to_string(state.m_tSleepUntil - kStart) + " next";
            for (const auto& [line, record] : state.m_mapWaitFor)
                text += ' ' + std::to_string(record.nNext) + '/' + std::to_string(record.nDay);
            for (const auto& variable : document->Variables())
                text += ' ' + variable->GetName() + '=' + Value(*document, variable->GetName());
        }
        for (const std::string& line : NewLog(platform::LogEvents)) text += "\n  log " + line;
        text += "\n  view " + std::exchange(view.calls, {});
        return text + "\n  console " + std::exchange(console.calls, {});
    }

    engine::RunCounts counts;
    Console console;
};

void ExpectAlike(std::span<const Action> actions, int count) {
    TwoWaysWorld plain(false);
    TwoWaysWorld quick(true);
    const std::vector<std::string> wanted = plain.Run(actions, count);
    const std::vector<std::string> got = quick.Run(actions, count);
    for (std::size_t i = 0; i < wanted.size(); ++i) ASSERT_EQ(got[i], wanted[i]);
    EXPECT_EQ(plain.kept, 0);
    EXPECT_GT(quick.kept, count * 4);
}

void Stop(TwoWaysWorld&, engine::CKalvexDoc& document) {
    document.Stop();
}
void Start(TwoWaysWorld&, engine::CKalvexDoc& document) {
    document.Start();
}
void Step(TwoWaysWorld&, engine::CKalvexDoc& document) {
    document.Step();
}
void Reset(TwoWaysWorld&, engine::CKalvexDoc& document) {
    document.Reset();
}
void Minimise(TwoWaysWorld&, engine::CKalvexDoc& document) {
    document.SetMinimised(true);
}
void Restore(TwoWaysWorld&, engine::CKalvexDoc& document) {
    document.SetMinimised(false);
}
void Show(TwoWaysWorld& world, engine::CKalvexDoc& document) {
    world.ShowFirst(document);
}
void Report(TwoWaysWorld&, engine::CKalvexDoc& document) {
    document.SendLineReports(true);
}
void Silence(TwoWaysWorld&, engine::CKalvexDoc& document) {
    document.SendLineReports(false);
}
void BreakHere(TwoWaysWorld& world, engine::CKalvexDoc& document) {
    world.view.breakpoints = {document.State().m_nCurrentLine};
}
void Unbreak(TwoWaysWorld& world, engine::CKalvexDoc&) {
    world.view.breakpoints.clear();
}
template <int kSeconds>
void MoveClock(TwoWaysWorld& world, engine::CKalvexDoc&) {
    world.MoveClock(kSeconds);
}
void MisspellSleep(TwoWaysWorld& world, engine::CKalvexDoc& document) {
    world.Put(document, "s", value::CVal("zle"));
}
void SpellSleep(TwoWaysWorld& world, engine::CKalvexDoc& document) {
    world.Put(document, "s", value::CVal("2"));
}
void FillList(TwoWaysWorld& world, engine::CKalvexDoc& document) {
    auto& list = static_cast<operands::CVariableList&>(*document.Variables().Find("l"));
    list.Add(value::CVal(5));
    list.MoveFirst();
    world.Put(document, "l", value::CVal(7));
}
// A window reads it, which leaves an error in the slot.
void ReadPointer(TwoWaysWorld&, engine::CKalvexDoc& document) {
    value::CVal value;
    document.Variables().Find("q")->GetValue(value, value::KindCurrent, operands::kAsStored);
}
void Operate(TwoWaysWorld& world, engine::CKalvexDoc& document) {
    world.Put(document, "u", value::CVal(8));
}

TEST(WaitingLinesTest, ScriptsLeftAloneCannotTell) {
    ExpectAlike({}, 1500);
}

TEST(WaitingLinesTest, CommandsComeToALineThatWaits) {
    constexpr Action kActions[] = {
        {30, 2, Step},      {40, 2, Stop},      {45, 2, Step},     {50, 2, Start},
        {55, 0, Stop},      {70, 0, Step},      {200, 0, Start},   {210, 1, Stop},
        {220, 1, Step},     {300, 1, Start},    {310, 3, Reset},   {320, 3, Start},
        {330, 4, Step},     {340, 4, Start},    {350, 5, Start},   {400, 8, Stop},
        {405, 8, Step},     {410, 8, Start},    {420, 2, Reset},   {430, 2, Start},
        {440, 0, Step},     {460, 9, Stop},     {470, 9, Start},   {480, 6, Step},
        {800, 7, Stop},     {820, 7, Step},     {830, 7, Start},   {900, 10, Reset},
        {910, 10, Start},   {200, 1, Minimise}, {600, 1, Restore}, {100, 2, Minimise},
        {30, 12, Minimise},
    };
    ExpectAlike(kActions, 1500);
}

TEST(WaitingLinesTest, ClockThatIsSetIsSeenAtTheNextTry) {
    constexpr Action kActions[] = {
        {15, 0, MoveClock<-7>},      {77, 0, MoveClock<-61>},    {150, 0, MoveClock<40>},
        {300, 0, MoveClock<3600>},   {420, 0, MoveClock<-3600>}, {500, 0, MoveClock<86400>},
        {600, 0, MoveClock<-90000>}, {700, 0, MoveClock<86000>}, {800, 0, MoveClock<86400 * 31>},
        {900, 0, MoveClock<-1>},
    };
    ExpectAlike(kActions, 1500);
}

TEST(WaitingLinesTest, BreakpointOnTheLineThatWaitsStopsIt) {
    constexpr Action kActions[] = {
        {0, 0, Show},     {20, 0, BreakHere},   {30, 0, Start},    {31, 0, Unbreak},
        {200, 1, Show},   {220, 1, BreakHere},  {260, 1, Unbreak}, {270, 1, Start},
        {290, 12, Show},  {300, 12, BreakHere}, {310, 12, Start},  {320, 12, Unbreak},
        {330, 12, Start},
    };
    ExpectAlike(kActions, 500);
}

TEST(WaitingLinesTest, LineReportsGoOnWhileItWaits) {
    constexpr Action kActions[] = {
        {0, 0, Report},    {30, 2, Report},  {200, 0, Silence},  {300, 1, Report},
        {400, 12, Report}, {700, 0, Report}, {710, 12, Silence},
    };
    ExpectAlike(kActions, 1000);
}

TEST(WaitingLinesTest, ValuesThatAnOperatorSetsAreSeen) {
    constexpr Action kActions[] = {
        {20, 3, MisspellSleep}, {60, 3, SpellSleep},   {100, 9, FillList},     {250, 10, Operate},
        {600, 10, ReadPointer}, {620, 9, ReadPointer}, {700, 10, ReadPointer},
    };
    ExpectAlike(kActions, 1000);
}

// ---- what is known of a line, and for how long

class WaitingLinesPromiseTest : public support::SourceWorld {
  protected:
    engine::CKalvexDoc& Stand(std::string_view text, int ticks = 3) {
        Plant(kPlant);
        services.counts = &counts;
        return Run(text, ticks);
    }

    static bool Stands(const engine::CKalvexDoc& document) {
        return document.State().promise.standing;
    }

    engine::RunCounts counts;
};

TEST_F(WaitingLinesPromiseTest, SleepHoldsUntilItsTimeWhateverData) {
    const engine::CKalvexDoc& document = Stand("SLEEP 1:00.00");
    EXPECT_TRUE(Stands(document));
    EXPECT_EQ(document.State().promise.until, kStart + 3600);
    EXPECT_EQ(document.State().promise.data, engine::LinePromise::kAnyData);
    EXPECT_EQ(counts.lines, 30u);
    Tick(1);
    EXPECT_EQ(counts.lines, 40u);
    clock.Advance(3600'000);
    Tick(1);
    EXPECT_EQ(counts.lines, 41u);
}

TEST_F(WaitingLinesPromiseTest, SleepOfAVariableHoldsWhileNothingIsSet) {
    const engine::CKalvexDoc& document = Stand("LOCAL s = 5\nSLEEP s");
    EXPECT_TRUE(Stands(document));
    EXPECT_EQ(document.State().promise.data, client->GetChangeCount());
}

TEST_F(WaitingLinesPromiseTest, WaitForHoldsFromTheSecondTryUntilItsTime) {
    engine::CKalvexDoc& document = Stand("WAITFOR 12:00.00", 0);
    document.ExecuteStep();
    EXPECT_FALSE(Stands(document));
    document.ExecuteStep();
    EXPECT_TRUE(Stands(document));
    EXPECT_EQ(document.State().promise.from, kStart);
    EXPECT_EQ(document.State().promise.until, Local("2024-03-10 12:00:01"));
}

TEST_F(WaitingLinesPromiseTest, WaitForHoldsNoLongerThanTheDay) {
    clock.SetSystemTime(Local("2024-03-10 13:00:00"));
    const engine::CKalvexDoc& document = Stand("WAITFOR 12:00.00");
    EXPECT_TRUE(Stands(document));
    EXPECT_EQ(document.State().promise.until, Local("2024-03-11 00:00:00"));
}

TEST_F(WaitingLinesPromiseTest, WaitForIsTriedEachSecondOfADayWithAnotherOffsetAtItsEnd) {
    clock.SetSystemTime(Local("2024-03-31 01:00:00"));
    const engine::CKalvexDoc& document = Stand("WAITFOR 12:00.00");
    EXPECT_TRUE(Stands(document));
    EXPECT_EQ(document.State().promise.until, clock.Now() + 1);
}

TEST_F(WaitingLinesPromiseTest, WaitForDataHoldsUntilAnyDataCome) {
    engine::CKalvexDoc& document = Stand("REMOTE a srv@V\nLOCAL x = a", 50);
    ASSERT_EQ(Error(document), "27 a");
    EXPECT_TRUE(Stands(document));
    EXPECT_EQ(document.State().promise.until, engine::LinePromise::kAlways);
    EXPECT_EQ(document.State().promise.data, client->GetChangeCount());
    EXPECT_EQ(counts.waits, 499u);
    Tick(40);
    EXPECT_EQ(Value(document, "x"), "150:1");
}

TEST_F(WaitingLinesPromiseTest, LineThatReadsTheClockIsTriedEachSecond) {
    const engine::CKalvexDoc& document = Stand("REMOTE u srv@U\nLOCAL x = TIME + u");
    EXPECT_TRUE(Stands(document));
    EXPECT_EQ(document.State().promise.from, kStart);
    EXPECT_EQ(document.State().promise.until, kStart + 1);
}

TEST_F(WaitingLinesPromiseTest, LineThatMayDoMoreThanReadIsAlwaysTried) {
    for (const char* line : {"SET x = STRING_LEFT u 1", "PRIORITY u", "SETPTR q = u"}) {
        EXPECT_FALSE(Stands(Run(std::string("REMOTE u srv@U\nLOCAL x\nPOINTER q\n") + line, 3)))
            << line;
    }
}

TEST_F(WaitingLinesPromiseTest, ScriptThatHasPassedItsLastLineTriesNone) {
    const engine::CKalvexDoc& document = Stand("LOCAL x");
    EXPECT_TRUE(Stands(document));
    EXPECT_EQ(counts.lines, 1u);
}

TEST_F(WaitingLinesPromiseTest, ReadLinesAnewAreTriedEachTime) {
    services.keepForms = false;
    EXPECT_FALSE(Stands(Stand("SLEEP 5")));
}

}  // namespace
}  // namespace kalvex::sources
