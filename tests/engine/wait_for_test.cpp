#include "engine/WaitFor.h"

#include <gmock/gmock.h>

#include "engine/script_lines.h"
#include "support/zone_scope.h"

namespace kalvex::engine {
namespace {

using testing::ElementsAre;

class WaitForTimesTest : public testing::Test {
  protected:
    static operands::SleepTime Daily(int hours, int minutes, int seconds) {
        return {hours, minutes, seconds, operands::SleepForm::HoursMinutesSeconds};
    }
    static operands::SleepTime Hourly(int minutes, int seconds) {
        return {0, minutes, seconds, operands::SleepForm::MinutesSeconds};
    }
    static operands::SleepTime EveryMinute(int seconds) {
        return {0, 0, seconds, operands::SleepForm::Seconds};
    }

    void Add(operands::SleepTime written) { AddWaitTimes(record, written, today); }

    support::ZoneScope zone{"Europe/Warsaw"};
    CWaitFor record;
    value::TimeFields today{
        .year = 2024, .month = 3, .day = 10, .hour = 7, .minute = 8, .second = 9};
};

TEST_F(WaitForTimesTest, FullTimeIsOneADay) {
    Add(Daily(12, 30, 15));
    EXPECT_THAT(record.arrTimes, ElementsAre(At("2024-03-10 12:30:15", 1)));
}

TEST_F(WaitForTimesTest, MinutesAndSecondsAreOneAnHour) {
    Add(Hourly(5, 20));
    ASSERT_EQ(record.arrTimes.size(), 24u);
    EXPECT_EQ(record.arrTimes.front(), At("2024-03-10 00:05:20", 1));
    EXPECT_EQ(record.arrTimes[7], At("2024-03-10 07:05:20", 1));
    EXPECT_EQ(record.arrTimes.back(), At("2024-03-10 23:05:20", 1));
}

TEST_F(WaitForTimesTest, SecondsAreOneAMinute) {
    Add(EveryMinute(45));
    ASSERT_EQ(record.arrTimes.size(), 1440u);
    EXPECT_EQ(record.arrTimes.front(), At("2024-03-10 00:00:45", 1));
    EXPECT_EQ(record.arrTimes[61], At("2024-03-10 01:01:45", 1));
    EXPECT_EQ(record.arrTimes.back(), At("2024-03-10 23:59:45", 1));
}

TEST_F(WaitForTimesTest, FieldsOutOfBoundsAreBroughtBack) {
    Add(Daily(24, 60, 61));
    Add(Daily(-1, -2, -3));
    EXPECT_THAT(record.arrTimes,
                ElementsAre(At("2024-03-10 00:00:00", 1), At("2024-03-10 23:59:59", 1)));
}

TEST_F(WaitForTimesTest, HourlyFieldsOutOfBoundsAreBroughtBack) {
    Add(Hourly(99, -5));
    ASSERT_EQ(record.arrTimes.size(), 24u);
    EXPECT_EQ(record.arrTimes.front(), At("2024-03-10 00:59:00", 1));
}

TEST_F(WaitForTimesTest, SecondsOutOfBoundsAreBroughtBack) {
    Add(EveryMinute(75));
    EXPECT_EQ(record.arrTimes.front(), At("2024-03-10 00:00:59", 1));
}

TEST_F(WaitForTimesTest, TimesAreAscendingAndEqualOnesKept) {
    Add(Daily(18, 0, 0));
    Add(Daily(6, 0, 0));
    Add(Daily(18, 0, 0));
    EXPECT_THAT(record.arrTimes,
                ElementsAre(At("2024-03-10 06:00:00", 1), At("2024-03-10 18:00:00", 1),
                            At("2024-03-10 18:00:00", 1)));
}

TEST_F(WaitForTimesTest, TimeInTheHourThatSpringLeavesOutComesAnHourLater) {
    today = {.year = 2024, .month = 3, .day = 31};
    Add(Daily(2, 30, 0));
    Add(Daily(3, 10, 0));
    EXPECT_THAT(record.arrTimes,
                ElementsAre(At("2024-03-31 03:10:00", 2), At("2024-03-31 03:30:00", 2)));
}

TEST_F(WaitForTimesTest, TimeInTheHourThatAutumnRepeatsIsTheFirst) {
    today = {.year = 2024, .month = 10, .day = 27};
    Add(Daily(2, 30, 0));
    Add(Daily(3, 0, 0));
    EXPECT_THAT(record.arrTimes,
                ElementsAre(At("2024-10-27 02:30:00", 2), At("2024-10-27 03:00:00", 1)));
}

TEST_F(WaitForTimesTest, LocatesTheFirstAtOrAfter) {
    record.arrTimes = {100, 200, 200, 300};
    const auto located = [&](std::int64_t time) {
        LocateWaitTime(record, time);
        return record.nNext;
    };
    EXPECT_EQ(located(99), 0);
    EXPECT_EQ(located(100), 0);
    EXPECT_EQ(located(101), 1);
    EXPECT_EQ(located(200), 1);
    EXPECT_EQ(located(201), 3);
    EXPECT_EQ(located(300), 3);
    EXPECT_EQ(located(301), 4);
}

TEST_F(WaitForTimesTest, RollKeepsTheReadingsOnTheNextDay) {
    Add(Daily(6, 0, 0));
    Add(Daily(18, 30, 5));
    record.nNext = 2;
    RollWaitTimes(record);
    EXPECT_THAT(record.arrTimes,
                ElementsAre(At("2024-03-11 06:00:00", 1), At("2024-03-11 18:30:05", 1)));
    EXPECT_EQ(record.nNext, 0);
    EXPECT_EQ(record.nDay, 11);
    EXPECT_EQ(record.nMonth, 3);
    EXPECT_EQ(record.nYear, 2024);
}

TEST_F(WaitForTimesTest, RollGoesOverTheEndOfAMonthAndOfAYear) {
    today = {.year = 2024, .month = 2, .day = 29};
    Add(Daily(12, 0, 0));
    RollWaitTimes(record);
    EXPECT_THAT(record.arrTimes, ElementsAre(At("2024-03-01 12:00:00", 1)));

    record = {};
    today = {.year = 2024, .month = 12, .day = 31};
    Add(Daily(0, 0, 0));
    RollWaitTimes(record);
    EXPECT_THAT(record.arrTimes, ElementsAre(At("2025-01-01 00:00:00", 1)));
    EXPECT_EQ(record.nDay, 1);
    EXPECT_EQ(record.nMonth, 1);
    EXPECT_EQ(record.nYear, 2025);
}

TEST_F(WaitForTimesTest, RollIntoSpringKeepsTheOrder) {
    today = {.year = 2024, .month = 3, .day = 30};
    Add(Daily(2, 30, 0));
    Add(Daily(3, 0, 0));
    RollWaitTimes(record);
    EXPECT_THAT(record.arrTimes,
                ElementsAre(At("2024-03-31 03:00:00", 2), At("2024-03-31 03:30:00", 2)));
}

TEST_F(WaitForTimesTest, RollOverAutumnKeepsTheReadings) {
    today = {.year = 2024, .month = 10, .day = 26};
    Add(Daily(2, 30, 0));
    Add(Daily(12, 0, 0));
    RollWaitTimes(record);
    EXPECT_THAT(record.arrTimes,
                ElementsAre(At("2024-10-27 02:30:00", 2), At("2024-10-27 12:00:00", 1)));
    RollWaitTimes(record);
    EXPECT_THAT(record.arrTimes,
                ElementsAre(At("2024-10-28 02:30:00", 1), At("2024-10-28 12:00:00", 1)));
}

TEST_F(WaitForTimesTest, RollOfNothingChangesNothing) {
    record.nNext = 0;
    RollWaitTimes(record);
    EXPECT_EQ(record.nDay, -1);
    EXPECT_EQ(record.nNext, 0);
}

// A script of one WAITFOR, tried once a second as its ticks would.
class WaitForTest : public ScriptLines {
  protected:
    void Start(const std::string& line, const char* reading, int hours) {
        clock.SetSystemTime(At(reading, hours));
        Load({line, ":dalej"});
    }

    // Whether the statement passes now; if so it is set back to wait again.
    bool Passes() {
        EXPECT_TRUE(document.ExecuteLine()) << Failure();
        const bool passed = document.State().m_nCurrentLine == 1;
        document.JumpTo(0);
        return passed;
    }

    bool PassesAt(const char* reading, int hours) {
        clock.SetSystemTime(At(reading, hours));
        return Passes();
    }

    // Goes through the seconds of a span, its last one included, and gives those that passed.
    std::vector<std::int64_t> Passed(std::int64_t from, std::int64_t to) {
        std::vector<std::int64_t> passed;
        for (clock.SetSystemTime(from); clock.Now() <= to; clock.Advance(1000)) {
            if (Passes()) passed.push_back(clock.Now());
        }
        return passed;
    }

    const CWaitFor& Record() { return document.State().m_mapWaitFor.at(0); }
};

TEST_F(WaitForTest, FirstRunNotesTheTimesAndWaits) {
    Start("WAITFOR 12:00.00, 6:00.00", "2024-03-10 07:00:00", 1);
    EXPECT_FALSE(Passes());
    EXPECT_EQ(Record().nLine, 0);
    EXPECT_EQ(Record().nNext, 1);
    EXPECT_EQ(Record().nDay, 10);
    EXPECT_EQ(Record().nMonth, 3);
    EXPECT_EQ(Record().nYear, 2024);
    EXPECT_THAT(Record().arrTimes,
                ElementsAre(At("2024-03-10 06:00:00", 1), At("2024-03-10 12:00:00", 1)));
}

TEST_F(WaitForTest, PassesInTheSecondAfterTheTime) {
    Start("WAITFOR 12:00.00", "2024-03-10 11:59:50", 1);
    EXPECT_THAT(Passed(At("2024-03-10 11:59:50", 1), At("2024-03-10 12:00:30", 1)),
                ElementsAre(At("2024-03-10 12:00:01", 1)));
}

TEST_F(WaitForTest, StartedAtTheTimeItselfPasses) {
    Start("WAITFOR 12:00.00", "2024-03-10 12:00:00", 1);
    EXPECT_FALSE(Passes());
    EXPECT_TRUE(PassesAt("2024-03-10 12:00:01", 1));
}

TEST_F(WaitForTest, StartedASecondLateWaitsForTheNextDay) {
    Start("WAITFOR 12:00.00", "2024-03-10 12:00:01", 1);
    EXPECT_FALSE(Passes());
    EXPECT_FALSE(Passes());
    EXPECT_EQ(Record().arrTimes.front(), At("2024-03-11 12:00:00", 1));
}

TEST_F(WaitForTest, MissedSecondIsMissed) {
    Start("WAITFOR 12:00.00, 13:00.00", "2024-03-10 11:59:59", 1);
    EXPECT_FALSE(Passes());
    EXPECT_FALSE(PassesAt("2024-03-10 12:00:02", 1));
    EXPECT_TRUE(PassesAt("2024-03-10 13:00:01", 1));
}

TEST_F(WaitForTest, ShortCycleIsServedAgainInTheSameSecond) {
    Start("WAITFOR 12:00.00, 13:00.00", "2024-03-10 11:59:59", 1);
    EXPECT_FALSE(Passes());
    EXPECT_TRUE(PassesAt("2024-03-10 12:00:01", 1));
    EXPECT_TRUE(Passes());
    EXPECT_FALSE(PassesAt("2024-03-10 12:00:02", 1));
}

TEST_F(WaitForTest, LastTimeOfTheDayIsServedOnce) {
    Start("WAITFOR 12:00.00", "2024-03-10 11:59:59", 1);
    EXPECT_FALSE(Passes());
    EXPECT_TRUE(PassesAt("2024-03-10 12:00:01", 1));
    EXPECT_FALSE(Passes());
}

TEST_F(WaitForTest, EveryMinute) {
    Start("WAITFOR 30", "2024-03-10 07:00:00", 1);
    EXPECT_THAT(Passed(At("2024-03-10 07:00:00", 1), At("2024-03-10 07:02:40", 1)),
                ElementsAre(At("2024-03-10 07:00:31", 1), At("2024-03-10 07:01:31", 1),
                            At("2024-03-10 07:02:31", 1)));
}

TEST_F(WaitForTest, EveryHour) {
    Start("WAITFOR 15.10", "2024-03-10 07:00:00", 1);
    EXPECT_THAT(Passed(At("2024-03-10 07:00:00", 1), At("2024-03-10 09:00:00", 1)),
                ElementsAre(At("2024-03-10 07:15:11", 1), At("2024-03-10 08:15:11", 1)));
}

TEST_F(WaitForTest, OverMidnight) {
    Start("WAITFOR 23:59.58, 0:00.01", "2024-03-10 23:59:50", 1);
    EXPECT_THAT(Passed(At("2024-03-10 23:59:50", 1), At("2024-03-11 00:00:20", 1)),
                ElementsAre(At("2024-03-10 23:59:59", 1), At("2024-03-11 00:00:02", 1)));
}

TEST_F(WaitForTest, EveryMinuteOverMidnight) {
    Start("WAITFOR 0", "2024-03-10 23:58:30", 1);
    EXPECT_THAT(Passed(At("2024-03-10 23:58:30", 1), At("2024-03-11 00:01:30", 1)),
                ElementsAre(At("2024-03-10 23:59:01", 1), At("2024-03-11 00:00:01", 1),
                            At("2024-03-11 00:01:01", 1)));
}

TEST_F(WaitForTest, LastSecondOfTheDayIsOverlaidByTheChangeOfTheDay) {
    // At 0:00:00 the day is a later one than the record's: the times roll on before they are
    // compared.
    Start("WAITFOR 23:59.59", "2024-03-10 23:59:50", 1);
    EXPECT_THAT(Passed(At("2024-03-10 23:59:50", 1), At("2024-03-11 00:00:20", 1)), ElementsAre());
    EXPECT_EQ(Record().arrTimes.front(), At("2024-03-11 23:59:59", 1));
}

TEST_F(WaitForTest, OverTheEndOfAMonth) {
    Start("WAITFOR 12:00.00", "2024-04-30 11:59:50", 2);
    EXPECT_THAT(Passed(At("2024-04-30 11:59:50", 2), At("2024-05-02 13:00:00", 2)),
                ElementsAre(At("2024-04-30 12:00:01", 2), At("2024-05-01 12:00:01", 2),
                            At("2024-05-02 12:00:01", 2)));
}

TEST_F(WaitForTest, LastSecondOfAMonthIsNotOverlaid) {
    Start("WAITFOR 23:59.59", "2024-04-30 23:59:50", 2);
    EXPECT_THAT(Passed(At("2024-04-30 23:59:50", 2), At("2024-05-01 00:00:20", 2)),
                ElementsAre(At("2024-05-01 00:00:00", 2)));
}

TEST_F(WaitForTest, EveryHourOverTheEndOfAYear) {
    Start("WAITFOR 30.00", "2024-12-31 23:00:00", 1);
    EXPECT_THAT(Passed(At("2024-12-31 23:00:00", 1), At("2025-01-01 01:00:00", 1)),
                ElementsAre(At("2024-12-31 23:30:01", 1), At("2025-01-01 00:30:01", 1)));
}

TEST_F(WaitForTest, OverTheHourThatSpringLeavesOut) {
    Start("WAITFOR 30.00", "2024-03-31 00:50:00", 1);
    // 1:30, then the two that fall together at 3:30 as one, then 4:30.
    EXPECT_THAT(Passed(At("2024-03-31 00:50:00", 1), At("2024-03-31 05:00:00", 2)),
                ElementsAre(At("2024-03-31 01:30:01", 1), At("2024-03-31 03:30:01", 2),
                            At("2024-03-31 04:30:01", 2)));
}

TEST_F(WaitForTest, TimeThatSpringLeavesOutStaysLater) {
    Start("WAITFOR 2:30.00", "2024-03-30 12:00:00", 1);
    // The rolled entry reads 3:30 on the day of the change, and that reading is what rolls on.
    EXPECT_THAT(Passed(At("2024-03-30 12:00:00", 1), At("2024-04-01 12:00:00", 2)),
                ElementsAre(At("2024-03-31 03:30:01", 2), At("2024-04-01 03:30:01", 2)));
}

TEST_F(WaitForTest, HourThatAutumnRepeatsIsServedOnce) {
    Start("WAITFOR 30.00", "2024-10-27 01:00:00", 2);
    EXPECT_THAT(Passed(At("2024-10-27 01:00:00", 2), At("2024-10-27 04:00:00", 1)),
                ElementsAre(At("2024-10-27 01:30:01", 2), At("2024-10-27 02:30:01", 2),
                            At("2024-10-27 03:30:01", 1)));
}

TEST_F(WaitForTest, DayStepOverAutumnIsTwentyFiveHours) {
    Start("WAITFOR 12:00.00", "2024-10-26 11:59:59", 2);
    EXPECT_THAT(Passed(At("2024-10-26 11:59:59", 2), At("2024-10-27 13:00:00", 1)),
                ElementsAre(At("2024-10-26 12:00:01", 2), At("2024-10-27 12:00:01", 1)));
}

TEST_F(WaitForTest, ForwardJumpPastATimeMissesIt) {
    Start("WAITFOR 12:00.00, 18:00.00", "2024-03-10 11:00:00", 1);
    EXPECT_FALSE(Passes());
    EXPECT_FALSE(PassesAt("2024-03-10 15:00:00", 1));
    EXPECT_TRUE(PassesAt("2024-03-10 18:00:01", 1));
}

TEST_F(WaitForTest, BackwardJumpServesATimeAgain) {
    Start("WAITFOR 12:00.00, 18:00.00", "2024-03-10 11:59:00", 1);
    EXPECT_FALSE(Passes());
    EXPECT_TRUE(PassesAt("2024-03-10 12:00:01", 1));
    EXPECT_FALSE(PassesAt("2024-03-10 11:30:00", 1));
    EXPECT_TRUE(PassesAt("2024-03-10 12:00:01", 1));
}

TEST_F(WaitForTest, BackwardJumpBeforeARolledDayWaitsForThatDay) {
    Start("WAITFOR 12:00.00", "2024-03-10 13:00:00", 1);
    EXPECT_FALSE(Passes());
    EXPECT_FALSE(Passes());  // rolled to the 11th
    EXPECT_FALSE(PassesAt("2024-03-10 12:00:01", 1));
    EXPECT_TRUE(PassesAt("2024-03-11 12:00:01", 1));
}

TEST_F(WaitForTest, LaterDayPassesItsFirstTimeAtOnce) {
    Start("WAITFOR 6:00.00, 18:00.00", "2024-03-10 07:00:00", 1);
    EXPECT_FALSE(Passes());
    EXPECT_TRUE(PassesAt("2024-03-11 09:00:00", 1));
    EXPECT_EQ(Record().nDay, 11);
    EXPECT_FALSE(Passes());
    EXPECT_TRUE(PassesAt("2024-03-11 18:00:01", 1));
}

TEST_F(WaitForTest, EachMissedDayOfTheMonthRollsAndPasses) {
    Start("WAITFOR 6:00.00", "2024-03-10 05:00:00", 1);
    EXPECT_FALSE(Passes());
    EXPECT_TRUE(PassesAt("2024-03-13 05:00:00", 1));  // the 11th
    EXPECT_TRUE(Passes());                            // the 12th
    EXPECT_FALSE(Passes());                           // the 13th, still to come
    EXPECT_TRUE(PassesAt("2024-03-13 06:00:01", 1));
}

TEST_F(WaitForTest, LaterMonthWithALowerDayRollsOneDayATime) {
    Start("WAITFOR 6:00.00", "2024-03-30 05:00:00", 1);
    EXPECT_FALSE(Passes());
    EXPECT_TRUE(PassesAt("2024-04-01 05:00:00", 2));  // step from the 30th to the 31st, long past
    EXPECT_FALSE(Passes());
    EXPECT_EQ(Record().arrTimes.front(), At("2024-04-01 06:00:00", 2));
}

TEST_F(WaitForTest, WithoutATimeFails) {
    Start("WAITFOR", "2024-03-10 07:00:00", 1);
    EXPECT_FALSE(document.ExecuteLine());
    EXPECT_EQ(Failure(), "1: 11");
    EXPECT_TRUE(document.State().m_mapWaitFor.empty());
}

TEST_F(WaitForTest, CommasAloneWaitAndNoteNothing) {
    Start("WAITFOR ,", "2024-03-10 07:00:00", 1);
    EXPECT_FALSE(Passes());
    EXPECT_TRUE(document.State().m_mapWaitFor.empty());
}

TEST_F(WaitForTest, BadTokenFailsWithItsText) {
    Start("WAITFOR potem, 13:00.00", "2024-03-10 07:00:00", 1);
    EXPECT_FALSE(document.ExecuteLine());
    EXPECT_EQ(Failure(), "1: 3 potem");
    EXPECT_TRUE(document.State().m_mapWaitFor.empty());
}

TEST_F(WaitForTest, BadTokenBehindAGoodOneFailsWithTheErrorThatTheGoodOneLeft) {
    Start("WAITFOR 12:00.00, potem", "2024-03-10 07:00:00", 1);
    EXPECT_FALSE(document.ExecuteLine());
    EXPECT_EQ(Failure(), "1: 3 12:00");
    EXPECT_TRUE(document.State().m_mapWaitFor.empty());
}

TEST_F(WaitForTest, TimesNeedNoCommas) {
    Start("WAITFOR 6:00.00 18:00.00", "2024-03-10 07:00:00", 1);
    EXPECT_FALSE(Passes());
    EXPECT_THAT(Record().arrTimes,
                ElementsAre(At("2024-03-10 06:00:00", 1), At("2024-03-10 18:00:00", 1)));
}

TEST_F(WaitForTest, VariableGivesItsTextOnceOnly) {
    RunLines({"LOCAL kiedy = \"12:00.00\""});
    Start("WAITFOR kiedy", "2024-03-10 11:59:59", 1);
    EXPECT_FALSE(Passes());
    Variable("kiedy").SetValue(value::CVal("18:00.00"), value::KindCurrent);
    EXPECT_TRUE(PassesAt("2024-03-10 12:00:01", 1));
}

TEST_F(WaitForTest, RecordBelongsToItsLineCutToSixteenBits) {
    std::vector<std::string> lines(65538);
    lines[1] = "WAITFOR 12:00.00";
    lines[65537] = "WAITFOR 13:00.00";
    clock.SetSystemTime(At("2024-03-10 11:59:59", 1));
    Load(lines);
    document.JumpTo(1);
    EXPECT_TRUE(document.ExecuteLine());
    document.JumpTo(65537);
    clock.SetSystemTime(At("2024-03-10 12:00:01", 1));
    EXPECT_TRUE(document.ExecuteLine());
    EXPECT_EQ(document.State().m_mapWaitFor.size(), 1u);
    EXPECT_EQ(document.State().m_nCurrentLine,
              1);  // passed on the last line, and back to the record's line
}

TEST_F(WaitForTest, EndOfTheScriptReturnsToTheLowestLine) {
    clock.SetSystemTime(At("2024-03-10 11:59:59", 1));
    Load({"LOCAL n = 0", "WAITFOR 12:00.00", "WAITFOR 12:00.05", "SET n = n + 1"});
    EXPECT_TRUE(GoOn());
    clock.SetSystemTime(At("2024-03-10 12:00:01", 1));
    EXPECT_TRUE(GoOn());
    EXPECT_EQ(document.State().m_nCurrentLine, 2);
    clock.SetSystemTime(At("2024-03-10 12:00:06", 1));
    EXPECT_TRUE(GoOn());
    EXPECT_EQ(document.State().m_nCurrentLine, 1);
    EXPECT_EQ(Value(document, "n"), "171:1.00");
}

TEST_F(WaitForTest, RecordsSurviveAStopAndGoWithTheRunState) {
    Start("WAITFOR 12:00.00", "2024-03-10 07:00:00", 1);
    EXPECT_FALSE(Passes());
    document.Stop();
    EXPECT_EQ(document.State().m_mapWaitFor.size(), 1u);
    document.ClearRunState();
    EXPECT_TRUE(document.State().m_mapWaitFor.empty());
}

}  // namespace
}  // namespace kalvex::engine
