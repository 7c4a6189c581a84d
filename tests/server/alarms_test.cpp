#include "server/Alarms.h"

#include <gmock/gmock.h>
#include <gtest/gtest.h>

#include <string>

#include "support/value_dump.h"
#include "value/Status.h"

namespace kalvex::server {
namespace {

using testing::ElementsAre;
using testing::IsEmpty;

constexpr std::uint16_t kAlarm = value::Status::Alarm;
constexpr std::uint16_t kMem = value::Status::AlarmMem;
constexpr std::uint16_t kConfirmed = value::Status::ConfirmedAlarm;

class AlarmsTest : public testing::Test {
  protected:
    AlarmsTest() {
        m_limits.lowLow = -20;
        m_limits.low = -10;
        m_limits.high = 10;
        m_limits.highHigh = 20;
    }

    // "+HH" for one that has begun, "-H" for one that has ended, "+H as HH" for one that is
    // acknowledged as that one.
    std::vector<std::string> Lines(const std::vector<AlarmChange>& changes) {
        std::vector<std::string> lines;
        for (const AlarmChange& change : changes) {
            std::string line = change.began ? "+" : "-";
            line += RowOf(change.stage).word;
            if (change.after) line.append(" as ").append(RowOf(*change.after).word);
            lines.push_back(line);
        }
        return lines;
    }
    std::vector<std::string> Take(double number, std::uint16_t status = 0) {
        return Lines(m_alarms.Take(m_limits, support::Stamped(value::CVal(number), m_now, status),
                                   m_elapsed));
    }
    std::vector<std::string> Look() { return Lines(m_alarms.Look(m_limits, m_elapsed)); }
    void Pass(std::int64_t seconds) {
        m_now += seconds;
        m_elapsed += seconds;
    }
    std::optional<std::int64_t> NextLook() const { return m_alarms.NextLook(m_limits, m_elapsed); }

    AlarmLimits m_limits;
    Alarms m_alarms;
    std::int64_t m_now = 1710050400;
    std::int64_t m_elapsed = 100;
};

// ---- limits

TEST_F(AlarmsTest, EachLimitHasItsStageAndIsNotBeyondItself) {
    EXPECT_THAT(Take(10), IsEmpty());
    EXPECT_THAT(Take(10.5), ElementsAre("+H"));
    EXPECT_THAT(Take(20), IsEmpty());
    EXPECT_THAT(Take(20.5), ElementsAre("-H", "+HH"));
    EXPECT_THAT(Take(0), ElementsAre("-HH"));
    EXPECT_THAT(Take(-10), IsEmpty());
    EXPECT_THAT(Take(-10.5), ElementsAre("+L"));
    EXPECT_THAT(Take(-20), IsEmpty());
    EXPECT_THAT(Take(-20.5), ElementsAre("-L", "+LL"));
    EXPECT_THAT(Take(0), ElementsAre("-LL"));
}

TEST_F(AlarmsTest, OneLimitStandsAloneAndEqualOnesAreTheMoreSevere) {
    m_limits = {};
    m_limits.highHigh = 5;
    EXPECT_THAT(Take(6), ElementsAre("+HH"));
    EXPECT_THAT(Take(5), ElementsAre("-HH"));
    m_limits.high = 5;
    EXPECT_THAT(Take(6), ElementsAre("+HH"));
}

TEST_F(AlarmsTest, ValueThatLeapsAcrossEndsOneAlarmAndBeginsTheOther) {
    EXPECT_THAT(Take(15), ElementsAre("+H"));
    EXPECT_THAT(Take(-30), ElementsAre("-H", "+LL"));
    EXPECT_THAT(Take(30), ElementsAre("-LL", "+HH"));
}

TEST_F(AlarmsTest, AlarmEndsWhenTheValueIsBackByTheHysteresis) {
    m_limits.hysteresis = 2;
    Take(21);
    EXPECT_THAT(Take(18.001), IsEmpty());
    EXPECT_THAT(Take(18), ElementsAre("-HH", "+H as HH"));
    EXPECT_THAT(Take(8.001), IsEmpty());
    EXPECT_THAT(Take(8), ElementsAre("-H"));
    EXPECT_THAT(Take(9.999), IsEmpty());
    EXPECT_THAT(Take(-21), ElementsAre("+LL"));
    EXPECT_THAT(Take(-18.001), IsEmpty());
    EXPECT_THAT(Take(-18), ElementsAre("-LL", "+L as LL"));
    EXPECT_THAT(Take(-8.001), IsEmpty());
    EXPECT_THAT(Take(-8), ElementsAre("-L"));
}

TEST_F(AlarmsTest, UnknownValueNeitherBeginsNorEndsAnAlarm) {
    EXPECT_THAT(Take(30, value::Status::Unknown), IsEmpty());
    EXPECT_THAT(Take(30, value::Status::TransmissionError), IsEmpty());
    Take(15);
    EXPECT_THAT(Take(0, value::Status::Unknown), IsEmpty());
    EXPECT_THAT(Take(30, value::Status::TransmissionError), IsEmpty());
    EXPECT_THAT(Take(0), ElementsAre("-H"));
}

// ---- delay

TEST_F(AlarmsTest, LimitIsExceededForTheWholeDelayAndTheEndIsNotDelayed) {
    m_limits.delay = 10;
    EXPECT_THAT(Take(15), IsEmpty());
    EXPECT_EQ(NextLook(), m_elapsed + 10);
    Pass(9);
    EXPECT_THAT(Look(), IsEmpty());
    Pass(1);
    EXPECT_THAT(Look(), ElementsAre("+H"));
    EXPECT_EQ(NextLook(), std::nullopt);
    EXPECT_THAT(Take(10), ElementsAre("-H"));
}

TEST_F(AlarmsTest, DelayBeginsAnewWhenTheLimitWasNotExceeded) {
    m_limits.delay = 10;
    m_limits.hysteresis = 5;
    Take(15);
    Pass(9);
    EXPECT_THAT(Take(10), IsEmpty());
    EXPECT_THAT(Take(15), IsEmpty());
    Pass(9);
    EXPECT_THAT(Take(16, value::Status::Unknown), IsEmpty());
    EXPECT_THAT(Take(15), IsEmpty());
    Pass(9);
    EXPECT_THAT(Take(12), IsEmpty());
    Pass(1);
    EXPECT_THAT(Take(12), ElementsAre("+H"));
}

TEST_F(AlarmsTest, EachLimitHasItsOwnDelay) {
    m_limits.delay = 10;
    Take(15);
    Pass(4);
    Take(25);
    Pass(6);
    EXPECT_THAT(Look(), ElementsAre("+H"));
    EXPECT_EQ(NextLook(), m_elapsed + 4);
    Pass(4);
    EXPECT_THAT(Look(), ElementsAre("-H", "+HH"));
}

TEST_F(AlarmsTest, ClockThatJumpsDoesNotEndADelay) {
    m_limits.delay = 10;
    Take(15);
    m_now += 100000;
    EXPECT_THAT(Take(16), IsEmpty());
    m_now -= 200000;
    Pass(9);
    EXPECT_THAT(Take(17), IsEmpty());
    Pass(1);
    EXPECT_THAT(Look(), ElementsAre("+H"));
}

// ---- rate

class AlarmsRateTest : public AlarmsTest {
  protected:
    AlarmsRateTest() {
        m_limits = {};
        m_limits.rate = 2;
    }
};

TEST_F(AlarmsRateTest, ChangeForEachSecondIsFromValueToValue) {
    EXPECT_THAT(Take(0), IsEmpty());
    Pass(10);
    EXPECT_THAT(Take(20), IsEmpty());
    Pass(10);
    EXPECT_THAT(Take(40.5), ElementsAre("+RATE"));
    Pass(10);
    EXPECT_THAT(Take(40.5), ElementsAre("-RATE"));
    Pass(1);
    EXPECT_THAT(Take(38), ElementsAre("+RATE"));
}

TEST_F(AlarmsRateTest, OfEqualTimesTheValueOfAnEarlierSecondCounts) {
    EXPECT_THAT(Take(0), IsEmpty());
    EXPECT_THAT(Take(1000), IsEmpty());
    Pass(1);
    EXPECT_THAT(Take(1002), IsEmpty());
    EXPECT_THAT(Take(1003), ElementsAre("+RATE"));
    EXPECT_THAT(Take(999), ElementsAre("-RATE"));
    EXPECT_THAT(Take(998), IsEmpty());
    EXPECT_THAT(Take(997), ElementsAre("+RATE"));
}

TEST_F(AlarmsRateTest, ValueThatStaysEndsTheAlarmWhenItsChangeIsSlowEnough) {
    Take(0);
    Pass(1);
    EXPECT_THAT(Take(6), ElementsAre("+RATE"));
    EXPECT_EQ(NextLook(), m_elapsed + 1);
    Pass(1);
    EXPECT_THAT(Look(), IsEmpty());
    Pass(1);
    EXPECT_THAT(Look(), ElementsAre("-RATE"));
    EXPECT_EQ(NextLook(), std::nullopt);
}

TEST_F(AlarmsRateTest, ClockThatJumpsMakesNoChangeSlowOrFast) {
    Take(0);
    Pass(1);
    m_now += 100000;
    EXPECT_THAT(Take(6), ElementsAre("+RATE"));
    Pass(10);
    m_now -= 100009;
    EXPECT_THAT(Take(20), ElementsAre("-RATE"));
}

TEST_F(AlarmsRateTest, UnknownValueIsPassedOver) {
    Take(0);
    Pass(5);
    EXPECT_THAT(Take(1000, value::Status::Unknown), IsEmpty());
    Pass(5);
    EXPECT_THAT(Take(20), IsEmpty());
}

TEST_F(AlarmsRateTest, RateIsDelayedToo) {
    m_limits.delay = 2;
    Take(0);
    Pass(1);
    EXPECT_THAT(Take(5), IsEmpty());
    Pass(1);
    EXPECT_THAT(Take(10), IsEmpty());
    Pass(1);
    EXPECT_THAT(Take(15), ElementsAre("+RATE"));
}

// ---- stale

class AlarmsStaleTest : public AlarmsTest {
  protected:
    AlarmsStaleTest() {
        m_limits = {};
        m_limits.stale = 60;
        m_alarms.Begin(support::Stamped(value::CVal(1.0), m_now), m_elapsed);
    }
};

TEST_F(AlarmsStaleTest, NoValueForSoLong) {
    EXPECT_EQ(NextLook(), m_elapsed + 60);
    Pass(30);
    EXPECT_THAT(Take(1), IsEmpty());
    EXPECT_EQ(NextLook(), m_elapsed + 60);
    Pass(59);
    EXPECT_THAT(Look(), IsEmpty());
    Pass(1);
    EXPECT_THAT(Look(), ElementsAre("+STALE"));
    EXPECT_EQ(NextLook(), std::nullopt);
    EXPECT_THAT(Take(1), ElementsAre("-STALE"));
}

TEST_F(AlarmsStaleTest, UnknownValueIsNoNewer) {
    Take(1);
    Pass(30);
    EXPECT_THAT(Take(1, value::Status::TransmissionError), IsEmpty());
    Pass(30);
    EXPECT_THAT(Take(1, value::Status::Unknown), ElementsAre("+STALE"));
    EXPECT_THAT(Take(2, value::Status::Unknown), IsEmpty());
    EXPECT_THAT(Take(2), ElementsAre("-STALE"));
}

TEST_F(AlarmsStaleTest, DelayDoesNotCountAndClockThatJumpsNeither) {
    m_limits.delay = 3600;
    m_now += 100000;
    EXPECT_THAT(Look(), IsEmpty());
    Pass(60);
    EXPECT_THAT(Look(), ElementsAre("+STALE"));
}

TEST_F(AlarmsStaleTest, OneThatStoodBeforeStandsUntilAValueComes) {
    m_alarms = {};
    m_alarms.Restore(AlarmStage::Stale);
    m_alarms.Begin(support::Stamped(value::CVal(1.0), m_now), m_elapsed);
    EXPECT_THAT(Look(), IsEmpty());
    EXPECT_THAT(Take(1), ElementsAre("-STALE"));
}

// ---- acknowledgement

TEST_F(AlarmsTest, StatusTellsWhatStandsAndWhatNobodyKnowsOf) {
    EXPECT_EQ(m_alarms.Status(), 0);
    Take(15);
    EXPECT_EQ(m_alarms.Status(), kAlarm | kMem);
    EXPECT_TRUE(m_alarms.Acknowledge());
    EXPECT_EQ(m_alarms.Status(), kAlarm | kConfirmed);
    EXPECT_FALSE(m_alarms.Acknowledge());
    Take(0);
    EXPECT_EQ(m_alarms.Status(), 0);
    Take(15);
    Take(0);
    EXPECT_EQ(m_alarms.Status(), kMem);
    EXPECT_TRUE(m_alarms.Acknowledge());
    EXPECT_EQ(m_alarms.Status(), 0);
}

TEST_F(AlarmsTest, MoreSevereStageCountsAnewAndLessSevereOneKeeps) {
    Take(15);
    m_alarms.Acknowledge();
    EXPECT_THAT(Take(25), ElementsAre("-H", "+HH"));
    EXPECT_EQ(m_alarms.Status(), kAlarm | kMem);
    m_alarms.Acknowledge();
    EXPECT_THAT(Take(15), ElementsAre("-HH", "+H as HH"));
    EXPECT_EQ(m_alarms.Status(), kAlarm | kConfirmed);
    EXPECT_THAT(Take(-15), ElementsAre("-H", "+L"));
    EXPECT_EQ(m_alarms.Status(), kAlarm | kMem);
}

TEST_F(AlarmsTest, AlarmsOfSeveralKindsStandSideBySide) {
    m_limits.rate = 2;
    m_limits.stale = 60;
    Take(0);
    Pass(1);
    EXPECT_THAT(Take(15), ElementsAre("+H", "+RATE"));
    m_alarms.Acknowledge();
    Pass(60);
    EXPECT_THAT(Look(), ElementsAre("-RATE", "+STALE"));
    EXPECT_EQ(m_alarms.Status(), kAlarm | kMem);
    EXPECT_TRUE(m_alarms.Stands(AlarmStage::High));
    EXPECT_TRUE(m_alarms.Stands(AlarmStage::Stale));
    Pass(60);
    EXPECT_THAT(Take(0), ElementsAre("-H", "-STALE"));
    EXPECT_EQ(m_alarms.Status(), kMem);
}

// ---- what was before

TEST_F(AlarmsTest, RestoredAlarmEndsByTheHysteresisAndWaitsOn) {
    m_limits.hysteresis = 2;
    m_alarms.Restore(AlarmStage::HighHigh);
    m_alarms.RestoreWaiting();
    m_alarms.Begin(support::Stamped(value::CVal(19.0), m_now), m_elapsed);
    EXPECT_EQ(m_alarms.Status(), kAlarm | kMem);
    EXPECT_THAT(Look(), IsEmpty());
    EXPECT_THAT(Take(9), ElementsAre("-HH", "+H as HH"));
    EXPECT_THAT(Take(8), ElementsAre("-H"));
    EXPECT_EQ(m_alarms.Status(), kMem);
}

TEST_F(AlarmsTest, OtherLimitsCountWithTheNextLook) {
    Take(15);
    m_limits.highHigh = 12;
    EXPECT_THAT(Look(), ElementsAre("-H", "+HH"));
    m_limits.highHigh.reset();
    EXPECT_THAT(Look(), ElementsAre("-HH", "+H as HH"));
    m_limits = {};
    EXPECT_THAT(Look(), ElementsAre("-H"));
    EXPECT_EQ(m_alarms.Status(), kMem);
}

TEST_F(AlarmsTest, StagesHaveTheirNumbers) {
    std::vector<std::string> lines;
    for (std::int64_t number = 0; number <= 7; ++number) {
        const std::optional<AlarmStage> stage = AlarmStageOf(number);
        lines.emplace_back(stage ? RowOf(*stage).word : "");
    }
    EXPECT_THAT(lines, ElementsAre("", "LL", "L", "H", "HH", "RATE", "STALE", ""));
}

}  // namespace
}  // namespace kalvex::server
