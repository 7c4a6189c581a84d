#include <gmock/gmock.h>

#include "engine/script_lines.h"

namespace kalvex::engine {
namespace {

using testing::ElementsAre;

class PacingTest : public ScriptLines {};

TEST_F(PacingTest, PriorityTakesAValueAboveZero) {
    EXPECT_TRUE(RunLines({"PRIORITY 5"}));
    EXPECT_EQ(document.State().m_nPriority, 5);
}

TEST_F(PacingTest, PriorityHasNoUpperBound) {
    EXPECT_TRUE(RunLines({"PRIORITY 500"}));
    EXPECT_EQ(document.State().m_nPriority, 500);
}

TEST_F(PacingTest, PriorityOfZeroOrLessChangesNothing) {
    EXPECT_TRUE(RunLines({"PRIORITY 7", "PRIORITY 0", "PRIORITY -3"}));
    EXPECT_TRUE(Finished());
    EXPECT_EQ(document.State().m_nPriority, 7);
}

TEST_F(PacingTest, PriorityReadsAVariable) {
    EXPECT_TRUE(RunLines({"LOCAL p = 12.9", "PRIORITY p"}));
    EXPECT_EQ(document.State().m_nPriority, 12);
}

TEST_F(PacingTest, PriorityReadsOneOperandOnly) {
    EXPECT_TRUE(RunLines({"PRIORITY 5 + 5"}));
    EXPECT_EQ(document.State().m_nPriority, 5);
}

TEST_F(PacingTest, PriorityWithABadOperandFails) {
    EXPECT_FALSE(RunLines({"PRIORITY szybko"}));
    EXPECT_EQ(Failure(), "1: 3 szybko");
    EXPECT_EQ(document.State().m_nPriority, 50);
}

TEST_F(PacingTest, TopPriorityRunsLinesFromItsOwnTick) {
    Load({"PRIORITY 1", "LOCAL a", "LOCAL b"});
    document.ExecuteStep();
    EXPECT_EQ(document.State().m_nCurrentLine, 1);
    document.ExecuteStep();
    EXPECT_EQ(document.State().m_nCurrentLine, 2);
}

TEST_F(PacingTest, AnotherPriorityWaitsForTheCounter) {
    Load({"PRIORITY 2", "LOCAL a", "LOCAL b"});
    document.ExecuteStep();
    for (int step = 1; step < 50; ++step) document.ExecuteStep();
    EXPECT_EQ(document.State().m_nCurrentLine, 1);
    document.ExecuteStep();
    EXPECT_EQ(document.State().m_nCurrentLine, 2);
    document.ExecuteStep();
    EXPECT_EQ(document.State().m_nCurrentLine, 2);
    document.ExecuteStep();
    EXPECT_EQ(document.State().m_nCurrentLine, 3);
}

TEST_F(PacingTest, SleepLastsItsSpan) {
    struct Row {
        const char* line;
        int seconds;
    };
    for (const Row& row :
         {Row{"SLEEP 1:02.03", 3723}, Row{"SLEEP 1:00.00", 3600}, Row{"SLEEP 0.30", 30},
          Row{"SLEEP 2.05", 125}, Row{"SLEEP 90", 90}, Row{"SLEEP 1:30", 1}}) {
        const std::int64_t start = clock.Now();
        Load({row.line});
        EXPECT_TRUE(document.ExecuteLine());
        EXPECT_EQ(document.State().m_tSleepUntil, start + row.seconds) << row.line;
        clock.SetSystemTime(start + row.seconds - 1);
        EXPECT_TRUE(document.ExecuteLine());
        EXPECT_FALSE(Finished()) << row.line;
        clock.SetSystemTime(start + row.seconds);
        EXPECT_TRUE(document.ExecuteLine());
        EXPECT_TRUE(Finished()) << row.line;
        EXPECT_EQ(document.State().m_tSleepUntil, 0);
    }
}

TEST_F(PacingTest, SleepOfNothingPassesAtOnce) {
    EXPECT_TRUE(RunLines({"SLEEP 0", "SLEEP -5", "LOCAL a"}));
    EXPECT_TRUE(Finished());
    EXPECT_EQ(document.State().m_tSleepUntil, 0);
}

TEST_F(PacingTest, SleepTakesItsSpanOnTheFirstRunOnly) {
    EXPECT_TRUE(RunLines({"LOCAL czas = \"0.10\"", "SLEEP czas"}));
    Variable("czas").SetValue(value::CVal("0.50"), value::KindCurrent);
    clock.Advance(10 * 1000);
    EXPECT_TRUE(document.ExecuteLine());
    EXPECT_TRUE(Finished());
}

TEST_F(PacingTest, SleepFollowsAClockThatIsSetBack) {
    EXPECT_TRUE(RunLines({"SLEEP 10"}));
    const std::int64_t start = clock.Now();
    clock.SetSystemTime(start - 3600);
    EXPECT_TRUE(GoOn());
    EXPECT_FALSE(Finished());
    clock.SetSystemTime(start + 10);
    EXPECT_TRUE(GoOn());
    EXPECT_TRUE(Finished());
}

TEST_F(PacingTest, SleepEndsWithAClockThatIsSetOn) {
    EXPECT_TRUE(RunLines({"SLEEP 1:00.00"}));
    clock.Advance(86400 * 1000);
    EXPECT_TRUE(GoOn());
    EXPECT_TRUE(Finished());
}

TEST_F(PacingTest, SleepWithABadTimeFails) {
    EXPECT_FALSE(RunLines({"SLEEP krotko"}));
    EXPECT_EQ(Failure(), "1: 3 krotko");
    EXPECT_EQ(document.State().m_tSleepUntil, 0);
}

TEST_F(PacingTest, SleepBeginsAnewAfterAClearedRun) {
    EXPECT_TRUE(RunLines({"SLEEP 10"}));
    document.ClearRunState();
    EXPECT_EQ(document.State().m_tSleepUntil, 0);
}

TEST_F(PacingTest, LockReachesEveryVariableThatIsThere) {
    EXPECT_TRUE(
        RunLines({"REMOTE a srv@A", "LOCAL x", "REMOTE b srv@B", "LOCK", "REMOTE c srv@C"}));
    EXPECT_TRUE(Remote("a").locked);
    EXPECT_TRUE(Remote("b").locked);
    EXPECT_FALSE(Remote("c").locked);
}

TEST_F(PacingTest, OneUnlockEndsAnyNumberOfLocks) {
    EXPECT_TRUE(RunLines({"REMOTE a srv@A", "LIST l", "LOCK", "LOCK", "UNLOCK"}));
    EXPECT_FALSE(Remote("a").locked);
}

TEST_F(PacingTest, IgnoringUnknownIsInheritedByLaterVariables) {
    EXPECT_TRUE(RunLines({"REMOTE a srv@A", "IGNORE_UNKNOWN_ON", "REMOTE b srv@B"}));
    EXPECT_TRUE(document.State().m_bIgnoreUnknown);
    EXPECT_TRUE(Remote("a").ignoreUnknown);
    EXPECT_TRUE(Remote("b").ignoreUnknown);
    EXPECT_TRUE(RunLines({"IGNORE_UNKNOWN_OFF", "REMOTE c srv@C"}));
    EXPECT_FALSE(document.State().m_bIgnoreUnknown);
    EXPECT_FALSE(Remote("a").ignoreUnknown);
    EXPECT_FALSE(Remote("b").ignoreUnknown);
    EXPECT_FALSE(Remote("c").ignoreUnknown);
}

TEST_F(PacingTest, IgnoringUnknownOutlastsTheRun) {
    EXPECT_TRUE(RunLines({"IGNORE_UNKNOWN_ON"}));
    Forget();
    EXPECT_TRUE(document.State().m_bIgnoreUnknown);
}

TEST_F(PacingTest, SubscribeBlocksAndUnblocks) {
    EXPECT_TRUE(RunLines({"SUBSCRIBE STOP", "subscribe START"}));
    EXPECT_THAT(sources.calls, ElementsAre("block", "unblock"));
}

TEST_F(PacingTest, SubscribeKnowsItsWordsByCase) {
    for (const auto& [line, failure] :
         {std::pair{"SUBSCRIBE stop", "1: 1 stop"}, std::pair{"SUBSCRIBE", "1: 1"},
          std::pair{"SUBSCRIBE PAUSE", "1: 1 PAUSE"}}) {
        EXPECT_FALSE(RunLines({line}));
        EXPECT_EQ(Failure(), failure);
    }
    EXPECT_THAT(sources.calls, ElementsAre());
}

TEST_F(PacingTest, SubscribeWithoutSourcesDoesNothing) {
    services.sources = nullptr;
    EXPECT_TRUE(RunLines({"SUBSCRIBE STOP", "SUBSCRIBE START"}));
    EXPECT_FALSE(RunLines({"SUBSCRIBE stop"}));
    EXPECT_EQ(Failure(), "1: 1 stop");
}

TEST_F(PacingTest, SetTimeSetsALocalReading) {
    EXPECT_TRUE(RunLines({"LOCAL g = 7", "SETTIME 2024 7 10 g 8 9"}));
    EXPECT_EQ(clock.Now(), At("2024-07-10 07:08:09", 2));
}

TEST_F(PacingTest, SetTimeLeavesDaylightSavingToTheSystem) {
    EXPECT_TRUE(RunLines({"SETTIME 2024 3 31 2 30 0"}));
    EXPECT_EQ(clock.Now(), At("2024-03-31 03:30:00", 2));
    EXPECT_TRUE(RunLines({"SETTIME 2024 10 27 2 30 0"}));
    EXPECT_EQ(clock.Now(), At("2024-10-27 02:30:00", 2));
}

TEST_F(PacingTest, SetTimeSucceedsWhenTheSystemRefuses) {
    class RefusingClock final : public platform::Clock {
      public:
        std::int64_t Now() const override { return kStart; }
        std::int64_t Elapsed() const override { return 0; }
        bool SetSystemTime(std::int64_t) override { return false; }
    } refusing;
    const DocumentServices other{{refusing, log, translator, users, paths, language::Functions()},
                                 language::Statements(),
                                 questions};
    CKalvexDoc script(other);
    script.Text().SetText("SETTIME 2024 7 10 7 8 9");
    EXPECT_TRUE(script.ExecuteLine());
    EXPECT_EQ(script.State().m_nCurrentLine, 1);
}

TEST_F(PacingTest, SetTimeSetsNothingThatIsNoTime) {
    EXPECT_TRUE(RunLines({"SETTIME 1969 12 31 12 0 0", "SETTIME 2147483647 1 1 0 0 0"}));
    EXPECT_TRUE(Finished());
    EXPECT_EQ(clock.Now(), kStart);
}

TEST_F(PacingTest, SetTimeEndsAtTheFirstBadOperand) {
    EXPECT_FALSE(RunLines({"SETTIME 2024 marzec 10 siedem 8 9"}));
    EXPECT_EQ(Failure(), "1: 3 marzec");
    EXPECT_EQ(clock.Now(), kStart);
}

TEST_F(PacingTest, SetTimeWithoutAllOperandsFails) {
    EXPECT_FALSE(RunLines({"SETTIME 2024 3 10 7 8"}));
    EXPECT_EQ(Failure(), "1: 3");
    EXPECT_EQ(clock.Now(), kStart);
}

}  // namespace
}  // namespace kalvex::engine
