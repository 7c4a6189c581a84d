// Ticks that are skipped because they have no line to run, against the same ticks run.
#include <gmock/gmock.h>

#include "support/script_world.h"

namespace kalvex::engine {
namespace {

constexpr const char* kScripts[] = {
    "LOCAL A = 1\nSET A = A + 1\n",
    "LOCAL N = 0\n:p\nSLEEP 1\nSET N = N + 1\nGOTO p\n",
    "PRIORITY 7\nLOCAL N = 0\n:p\nSET N = N + 1\nIF N < 50 GOTO p\nPRIORITY 31\nSET X = 1\n",
    "LOCAL N = 0\n:p\nWAITFOR 2, 3, 5\nSET N = N + 1\nGOTO p\n",
    "PRIORITY 1\nLOCAL N = 0\n:p\nSET N = N + 1\nIF N < 300 GOTO p\nPRIORITY 90\nBZDURA\n",
    "PRIORITY 200\nLOCAL A = 1\nLOCAL B = 2\nGOTO brak\n",
};
constexpr int kTicks = 9000;

struct Action {
    int tick;
    std::size_t script;
    void (*perform)(CKalvexDoc& document);
};

void Start(CKalvexDoc& document) {
    document.Start();
}
void Stop(CKalvexDoc& document) {
    document.Stop();
}
void Step(CKalvexDoc& document) {
    document.Step();
}
void Reset(CKalvexDoc& document) {
    document.Reset();
}

constexpr Action kActions[] = {
    {333, 0, Stop},   {401, 0, Step},   {1207, 0, Start}, {1300, 2, Reset}, {1777, 2, Start},
    {2222, 4, Reset}, {3001, 1, Stop},  {4567, 1, Step},  {4999, 4, Start}, {5003, 1, Start},
    {6000, 3, Stop},  {7001, 3, Reset}, {7402, 3, Start},
};

class World final : public support::ScriptWorld {
  public:
    // What the scripts came to, whatever the engine does with idle ticks.
    std::vector<std::string> Run(bool skipping) {
        for (std::size_t i = 0; i < std::size(kScripts); ++i) {
            Open(kScripts[i], std::to_string(i) + ".kx").Start();
        }
        const Action* action = kActions;
        for (int tick = 0; tick < kTicks;) {
            for (; action != std::end(kActions) && action->tick == tick; ++action) {
                AddState(tick);
                action->perform(*documents[action->script]);
            }
            const int next = action == std::end(kActions) ? kTicks : action->tick;
            const int idle = skipping ? std::min(ticks.GetIdleTicks(), next - tick) : 0;
            if (idle > 0) {
                ticks.SkipTicks(idle);
                skipped += idle;
            } else {
                ticks.RunTick();
            }
            Note(tick);
            tick += std::max(idle, 1);
            clock.Advance(std::max(idle, 1));
        }
        AddState(kTicks);
        return m_trace;
    }

    int skipped = 0;

  private:
    void TestBody() override {}

    // A line of the log with its tick, and a change of the error indication.
    void Note(int tick) {
        for (; m_logged < log.lines.size(); ++m_logged) {
            std::string line = log.lines[m_logged].second;
            if (line.starts_with(folder.Path())) line.erase(0, folder.Path().size());
            m_trace.push_back(std::to_string(tick) + ": " + line);
        }
        if (ticks.IsErrorStanding() == m_error) return;
        m_error = !m_error;
        m_trace.push_back(std::to_string(tick) + (m_error ? ": error" : ": no error"));
    }

    void AddState(int tick) {
        std::string state = std::to_string(tick) + ":";
        for (const auto& document : documents) {
            for (const int number :
                 {document->GetStateWord(), document->State().m_nCurrentLine,
                  document->State().m_nPriority, document->State().m_nPaceCounter,
                  document->LastError().m_nErrorCode}) {
                state += ' ' + std::to_string(number);
            }
            state += ';';
        }
        m_trace.push_back(state);
    }

    std::vector<std::string> m_trace;
    std::size_t m_logged = 0;
    bool m_error = false;
};

TEST(IdleTicksComparisonTest, ScriptsCannotTellThatTheyAreSkipped) {
    World run;
    World skipped;
    EXPECT_EQ(skipped.Run(true), run.Run(false));
    EXPECT_EQ(run.skipped, 0);
    EXPECT_GT(skipped.skipped, kTicks / 2);
}

class IdleTicksTest : public support::ScriptWorld {};

TEST_F(IdleTicksTest, ScriptIsIdleUntilItsNextLineIsDue) {
    Open("LOCAL A = 1\n\n").Start();
    EXPECT_EQ(ticks.GetIdleTicks(), 0);
    ticks.RunTick();
    EXPECT_EQ(ticks.GetIdleTicks(), 49);
    ticks.SkipTicks(40);
    EXPECT_EQ(ticks.GetIdleTicks(), 9);
    ticks.SkipTicks(9);
    EXPECT_EQ(ticks.GetIdleTicks(), 0);
}

TEST_F(IdleTicksTest, ScriptThatWasNotStartedIsNeverDue) {
    CKalvexDoc& document = Open("LOCAL A = 1\n");
    EXPECT_EQ(ticks.GetIdleTicks(), 100);
    ticks.SkipTicks(1);
    EXPECT_EQ(document.State().m_nPaceCounter, 49);
    ticks.SkipTicks(100);
    EXPECT_EQ(document.State().m_nPaceCounter, 49);
    ticks.SkipTicks(50);
    ticks.SkipTicks(49);
    EXPECT_EQ(document.State().m_nPaceCounter, 0);
}

TEST_F(IdleTicksTest, TopPriorityIsAlwaysDue) {
    Open("PRIORITY 1\n").Start();
    ticks.RunTick();
    EXPECT_EQ(ticks.GetIdleTicks(), 0);
}

TEST_F(IdleTicksTest, NoTickIsIdleWhileTicksAreBlocked) {
    Open("LOCAL A = 1\n");
    ticks.Block(true);
    EXPECT_EQ(ticks.GetIdleTicks(), 0);
}

TEST_F(IdleTicksTest, ErrorThatHasGoneIsTakenBackByATick) {
    CKalvexDoc& document = Open("BZDURA\n");
    document.Start();
    ticks.RunTick();
    ASSERT_TRUE(ticks.IsErrorStanding());
    EXPECT_EQ(ticks.GetIdleTicks(), 49);
    document.Reset();
    EXPECT_EQ(ticks.GetIdleTicks(), 0);
    ticks.RunTick();
    EXPECT_FALSE(ticks.IsErrorStanding());
    EXPECT_EQ(ticks.GetIdleTicks(), 100);
}

}  // namespace
}  // namespace kalvex::engine
