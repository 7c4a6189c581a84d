#include "server/Store.h"

#include <gmock/gmock.h>
#include <gtest/gtest.h>

#include <memory>

#include "server_fixture.h"
#include "support/waiting_loop.h"

namespace kalvex {
namespace {

using testing::ElementsAre;
using testing::IsEmpty;
using testing::Pair;

constexpr std::uint16_t kLoaded = Status::ReportLoaded;

class StoreTest : public testing::Test {
  protected:
    StoreTest() { Open(); }

    void Open() {
        m_store = std::make_unique<Store>(m_loop);
        Notice error;
        ASSERT_TRUE(m_store->Open(m_folder.Path("store.sqlite"), error));
    }

    StoreOutcome Submit(std::vector<StoreOperation> operations,
                        Store::Urgency urgency = Store::Urgency::Now) {
        StoreOutcome result;
        bool answered = false;
        EXPECT_TRUE(
            m_store->Submit(std::move(operations), urgency, [&](const StoreOutcome& outcome) {
                result = outcome;
                answered = true;
            }));
        while (!answered) m_loop.WaitAndRun();
        return result;
    }

    StorePiece Read(const StoreQuery& query) {
        StorePiece result;
        bool answered = false;
        m_store->Read(query, [&](StorePiece piece) {
            result = std::move(piece);
            answered = true;
        });
        while (!answered) m_loop.WaitAndRun();
        return result;
    }

    std::vector<CVal> ReadAll(VariableId variable, ValueKind kind) {
        const StorePiece piece = Read({variable, kind, 0, kLargestTime, 1000});
        EXPECT_TRUE(piece.read);
        EXPECT_FALSE(piece.more);
        return piece.values;
    }

    // The one value of that kind.
    CVal ReadOne(VariableId variable, ValueKind kind) {
        const std::vector<CVal> values = ReadAll(variable, kind);
        EXPECT_EQ(values.size(), 1u);
        return values.size() == 1 ? values[0] : CVal();
    }

    ZoneScope m_zone{"Europe/Warsaw"};
    ScratchFolder m_folder;
    WaitingLoop m_loop;
    std::unique_ptr<Store> m_store;
};

void ExpectSame(const CVal& value, const CVal& expected) {
    EXPECT_EQ(value.GetType(), expected.GetType());
    EXPECT_EQ(value.GetStatus(), expected.GetStatus());
    EXPECT_EQ(value.GetTime(), expected.GetTime());
    std::string text;
    std::string expectedText;
    value.GetValData(ValueType::Text, text);
    expected.GetValData(ValueType::Text, expectedText);
    EXPECT_EQ(text, expectedText);
}

TEST_F(StoreTest, ValuesOfEveryTypeComeBackAsTheyWere) {
    const VariableId x = m_store->Register("X");
    const std::vector<CVal> values{
        Stamped(CVal(true), 1, 0xFFFF),
        Stamped(CVal(static_cast<short>(-7)), 2),
        Stamped(CVal(7u), 3),
        Stamped(CVal(INT64_MIN), 4),
        Stamped(CVal(0.1), 5),
        Stamped(CVal(std::numeric_limits<double>::infinity()), 6),
        Stamped(CVal(std::numeric_limits<double>::quiet_NaN()), 7),
        Stamped(CVal(FromUtf8("zażółć\n")), 8),
        Stamped(CVal(std::string("a\0b\x81", 4)), 9),
        Stamped(CVal(""), 10),
        Stamped(CVal(), 11, Status::Unknown),
    };
    std::vector<StoreOperation> operations;
    for (const CVal& value : values) {
        operations.push_back(PutValue{x, KindArchive, value.GetTime(), value});
    }
    ASSERT_TRUE(Submit(operations).committed);
    const std::vector<CVal> read = ReadAll(x, KindArchive);
    ASSERT_EQ(read.size(), values.size());
    for (std::size_t index = 0; index < values.size(); ++index) {
        SCOPED_TRACE(index);
        ExpectSame(read[index], values[index]);
    }
}

TEST_F(StoreTest, CurrentValuesProgressAndNumbersOutlastARestart) {
    const VariableId x = m_store->Register(FromUtf8("Z1.PRZEPŁYW"));
    const VariableId y = m_store->Register("Y");
    EXPECT_NE(x, y);
    EXPECT_EQ(m_store->Register("Y"), y);
    EXPECT_FALSE(m_store->LastValue(x));
    ASSERT_TRUE(Submit({SaveLastValue{x, Stamped(CVal(1.5), 1000, 4)}, SaveProgress{"hour", 77},
                        SaveLastValue{x, Stamped(CVal(2.5), 1001, 2)}})
                    .committed);
    Open();
    EXPECT_EQ(m_store->Register("Y"), y);
    EXPECT_EQ(m_store->Register(FromUtf8("Z1.PRZEPŁYW")), x);
    EXPECT_GT(m_store->Register("Z"), std::max(x, y));
    ASSERT_TRUE(m_store->LastValue(x));
    ExpectSame(*m_store->LastValue(x), Stamped(CVal(2.5), 1001, 2));
    EXPECT_FALSE(m_store->LastValue(y));
    EXPECT_EQ(m_store->Progress("hour"), 77);
    EXPECT_FALSE(m_store->Progress("day"));
}

TEST_F(StoreTest, ClosingWritesWhatWasSubmitted) {
    const VariableId x = m_store->Register("X");
    for (int time = 1; time <= 500; ++time) {
        m_store->Submit({PutValue{x, KindArchive, time, CVal(time)}}, Store::Urgency::Now, {});
    }
    m_store->Close();
    Open();
    EXPECT_EQ(ReadAll(x, KindArchive).size(), 500u);
}

TEST_F(StoreTest, SecondValueOfASecondTakesThePlaceOfTheFirst) {
    const VariableId x = m_store->Register("X");
    Submit({PutValue{x, KindArchive, 5, CVal(1)}, PutValue{x, KindArchive, 5, CVal(2)}});
    ExpectSame(ReadOne(x, KindArchive), Stamped(CVal(2), 5));
}

TEST_F(StoreTest, VariablesAndKindsAreApart) {
    const VariableId x = m_store->Register("X");
    const VariableId y = m_store->Register("Y");
    Submit({PutValue{x, KindHour, 3600, CVal(1)}, PutValue{x, KindDay, 3600, CVal(2)},
            PutValue{y, KindHour, 3600, CVal(3)}});
    ExpectSame(ReadOne(x, KindHour), Stamped(CVal(1), 3600));
    ExpectSame(ReadOne(x, KindDay), Stamped(CVal(2), 3600));
    ExpectSame(ReadOne(y, KindHour), Stamped(CVal(3), 3600));
    EXPECT_THAT(ReadAll(y, KindDay), IsEmpty());
}

TEST_F(StoreTest, RangeComesInPieces) {
    const VariableId x = m_store->Register("X");
    std::vector<StoreOperation> operations;
    for (int time = 1; time <= 10; ++time) {
        operations.push_back(PutValue{x, KindArchive, time, CVal(time)});
    }
    Submit(operations);
    StorePiece piece = Read({x, KindArchive, 2, 9, 5});
    ASSERT_EQ(piece.values.size(), 5u);
    EXPECT_TRUE(piece.more);
    EXPECT_EQ(piece.values.front().GetTime(), 2);
    EXPECT_EQ(piece.values.back().GetTime(), 6);
    piece = Read({x, KindArchive, 7, 9, 3});
    ASSERT_EQ(piece.values.size(), 3u);
    EXPECT_FALSE(piece.more);
    EXPECT_EQ(piece.values.back().GetTime(), 9);
    EXPECT_THAT(Read({x, KindArchive, 9, 2, 5}).values, IsEmpty());
}

// The loop runs only at the end, so that the read is asked for while the writes are under way.
TEST_F(StoreTest, ReadSeesTheWritesBeforeIt) {
    const VariableId x = m_store->Register("X");
    std::size_t seen = 0;
    for (int time = 1; time <= 100; ++time) {
        m_store->Submit({PutValue{x, KindArchive, time, CVal(time)}}, Store::Urgency::Now, {});
        m_store->Read({x, KindArchive, 0, 1000, 1000}, [&seen, time](StorePiece piece) {
            EXPECT_GE(piece.values.size(), static_cast<std::size_t>(time));
            ++seen;
        });
    }
    m_store->Flush();
    while (m_loop.Run()) {
    }
    EXPECT_EQ(seen, 100u);
}

TEST_F(StoreTest, SubmissionsAreAnsweredInOrderAndTellTheirReports) {
    const VariableId x = m_store->Register("X");
    std::vector<int> order;
    std::vector<ChangedReports> changed(3);
    for (int index = 0; index < 3; ++index) {
        m_store->Submit(
            {PutValue{x, KindArchive, index, CVal(1)}, PutValue{x, KindHour, 3600 * index, CVal(1)},
             PutValue{x, KindHour, 3600 * index, CVal(2)}, PutValue{x, KindSpan, 5, CVal(index)}},
            Store::Urgency::Now, [&, index](const StoreOutcome& outcome) {
                order.push_back(index);
                changed[static_cast<std::size_t>(index)] = outcome.changed;
            });
    }
    m_store->Flush();
    while (m_loop.Run()) {
    }
    EXPECT_THAT(order, ElementsAre(0, 1, 2));
    EXPECT_THAT(changed[2], ElementsAre(Pair(KindHour, 7200), Pair(KindSpan, 5)));
}

TEST_F(StoreTest, FailedTransactionLeavesNothingAndIsTold) {
    SqliteDatabase other;
    ASSERT_TRUE(other.Open(m_folder.Path("store.sqlite")));
    ASSERT_TRUE(other.Execute("ALTER TABLE history RENAME TO elsewhere"));
    const VariableId x = m_store->Register("X");
    const StoreOutcome outcome =
        Submit({SaveLastValue{x, CVal(1)}, PutValue{x, KindHour, 0, CVal(1)}});
    EXPECT_FALSE(outcome.committed);
    EXPECT_EQ(outcome.error, "no such table: history");
    EXPECT_THAT(outcome.changed, IsEmpty());
    EXPECT_FALSE(Read({x, KindHour, 0, 0, 1}).read);

    ASSERT_TRUE(other.Execute("ALTER TABLE elsewhere RENAME TO history"));
    EXPECT_TRUE(Submit({PutValue{x, KindHour, 0, CVal(1)}}).committed);
    EXPECT_EQ(ReadAll(x, KindHour).size(), 1u);
    Open();
    EXPECT_EQ(m_store->Register("X"), x);
    EXPECT_FALSE(m_store->LastValue(x));
}

TEST_F(StoreTest, TooMuchWaitingIsRefused) {
    const VariableId x = m_store->Register("X");
    std::vector<StoreOperation> operations(Store::kMostUrgent + 1,
                                           PutValue{x, KindArchive, 1, CVal(1)});
    EXPECT_FALSE(m_store->Submit(operations, Store::Urgency::Now, {}));
    operations.resize(2);
    EXPECT_TRUE(Submit(operations).committed);
}

TEST_F(StoreTest, NewerFileIsRefused) {
    {
        SqliteDatabase database;
        ASSERT_TRUE(database.Open(m_folder.Path("newer.sqlite")));
        ASSERT_TRUE(database.Execute("PRAGMA user_version = 2"));
    }
    Store other(m_loop);
    Notice error;
    EXPECT_FALSE(other.Open(m_folder.Path("newer.sqlite"), error));
    EXPECT_EQ(InWords(error, Translator()),
              m_folder.Path("newer.sqlite") + ": Plik danych jest z nowszej wersji programu");
    EXPECT_FALSE(other.Open(m_folder.Path("brak/x.sqlite"), error));
    EXPECT_EQ(InWords(error, Translator()),
              m_folder.Path("brak/x.sqlite") + ": unable to open database file");
}

TEST_F(StoreTest, GapIsMarkedOnceBehindAKnownValue) {
    const VariableId x = m_store->Register("X");
    Submit({MarkGap{x, 50}});
    EXPECT_THAT(ReadAll(x, KindArchive), IsEmpty());
    Submit({PutValue{x, KindArchive, 100, CVal(1)}, MarkGap{x, 150}, MarkGap{x, 160}});
    const std::vector<CVal> values = ReadAll(x, KindArchive);
    ASSERT_EQ(values.size(), 2u);
    ExpectSame(values[1], Stamped(CVal(), 150, Status::Unknown));
}

TEST_F(StoreTest, OldArchiveValuesAreRemovedInPortions) {
    const VariableId x = m_store->Register("X");
    std::vector<StoreOperation> operations;
    for (int time = 1; time <= 10010; ++time) {
        operations.push_back(PutValue{x, KindArchive, time, CVal(time)});
    }
    operations.push_back(PutValue{x, KindHour, 0, CVal(1)});
    operations.push_back(RemoveArchive{x, 10005});
    Submit(operations);
    EXPECT_EQ(ReadAll(x, KindArchive).front().GetTime(), 10001);
    Submit({RemoveArchive{x, 10005}});
    EXPECT_EQ(ReadAll(x, KindArchive).front().GetTime(), 10005);
    Submit({RemoveArchive{x, 10005}});
    EXPECT_EQ(ReadAll(x, KindArchive).size(), 6u);
    EXPECT_EQ(ReadAll(x, KindHour).size(), 1u);
}

// The last value before the bound is the one that holds on it.
TEST_F(StoreTest, OldArchiveValueStaysUntilTheNextOneTakesItsPlace) {
    const VariableId x = m_store->Register("X");
    Submit({PutValue{x, KindArchive, 100, CVal(1)}, PutValue{x, KindArchive, 200, CVal(2)},
            PutValue{x, KindArchive, 500, CVal(3)}, RemoveArchive{x, 499}});
    EXPECT_EQ(ReadAll(x, KindArchive).front().GetTime(), 200);
    Submit({RemoveArchive{x, 500}});
    EXPECT_EQ(ReadAll(x, KindArchive).front().GetTime(), 500);
    Submit({RemoveArchive{x, 99999}});
    EXPECT_EQ(ReadAll(x, KindArchive).size(), 1u);
}

// ---- reports

class StoreReportTest : public StoreTest {
  protected:
    StoreReportTest() : m_nX(m_store->Register("X")) {}

    ChangedReports Make(PeriodAction action, ValueKind kind, std::int64_t time,
                        ReportRule rule = ReportRule::Mean, int dayStart = 0,
                        std::int64_t now = kLargestTime) {
        const StoreOutcome outcome =
            Submit({MakeReport{action, m_nX, kind, time, rule, dayStart, now}});
        EXPECT_TRUE(outcome.committed);
        return outcome.changed;
    }

    void Put(ValueKind kind, std::int64_t time, CVal value, std::uint16_t status = 0) {
        value.SetStatus(status);
        Submit({PutValue{m_nX, kind, time, value}});
    }

    void ExpectReport(ValueKind kind, double number, std::uint16_t status) {
        const CVal value = ReadOne(m_nX, kind);
        ASSERT_EQ(value.GetType(), ValueType::Double);
        EXPECT_DOUBLE_EQ(value.Real(), number);
        EXPECT_EQ(value.GetStatus(), status);
    }

    VariableId m_nX;
    std::int64_t m_tHour = MakeLocalTime({2024, 3, 10, 7});
    std::int64_t m_tDay = MakeLocalTime({2024, 3, 10});
    std::int64_t m_tMonth = MakeLocalTime({2024, 3, 1});
};

TEST_F(StoreReportTest, InitMakesARecordOnce) {
    EXPECT_THAT(Make(PeriodAction::Init, KindHour, m_tHour), ElementsAre(Pair(KindHour, m_tHour)));
    ExpectSame(ReadOne(m_nX, KindHour),
               Stamped(CVal(), m_tHour, Status::Unknown | Status::ReportInited));
    EXPECT_THAT(Make(PeriodAction::Init, KindHour, m_tHour), IsEmpty());
    Make(PeriodAction::Init, KindSpan, m_tHour + 3);
    ExpectSame(ReadOne(m_nX, KindSpan),
               Stamped(CVal(), m_tHour + 3, Status::Unknown | Status::ReportInited));
}

TEST_F(StoreReportTest, InitLeavesAValue) {
    Put(KindHour, m_tHour, CVal(5), Status::SetByUser);
    Make(PeriodAction::Init, KindHour, m_tHour);
    ExpectSame(ReadOne(m_nX, KindHour),
               Stamped(CVal(5), m_tHour, Status::SetByUser | Status::ReportInited));
}

// 10 from the hour before, 20 from half past.
TEST_F(StoreReportTest, LoadComputesTheHourFromTheArchive) {
    Put(KindArchive, m_tHour - 100, CVal(10));
    Put(KindArchive, m_tHour + 1800, CVal(20), Status::Alarm);
    Put(KindArchive, m_tHour + 3600, CVal(1000));
    Make(PeriodAction::Init, KindHour, m_tHour);
    EXPECT_THAT(Make(PeriodAction::Load, KindHour, m_tHour), ElementsAre(Pair(KindHour, m_tHour)));
    ExpectReport(KindHour, 15, kLoaded | Status::ReportInited | Status::Alarm);
}

TEST_F(StoreReportTest, IncreaseStartsFromTheLastKnownReadingBefore) {
    Put(KindArchive, m_tHour - 200, CVal(100));
    Put(KindArchive, m_tHour - 100, CVal(), Status::Unknown);
    Put(KindArchive, m_tHour, CVal(103));
    Put(KindArchive, m_tHour + 3599, CVal(110));
    Put(KindArchive, m_tHour + 3600, CVal(1000));
    Make(PeriodAction::Load, KindHour, m_tHour, ReportRule::Increase);
    ExpectReport(KindHour, 10, kLoaded);
}

TEST_F(StoreReportTest, SumTakesTheAmountsOfTheHour) {
    Put(KindArchive, m_tHour - 1, CVal(100));
    Put(KindArchive, m_tHour, CVal(1));
    Put(KindArchive, m_tHour + 3599, CVal(2));
    Put(KindArchive, m_tHour + 3600, CVal(100));
    Make(PeriodAction::Load, KindHour, m_tHour, ReportRule::Sum);
    ExpectReport(KindHour, 3, kLoaded);
}

TEST_F(StoreReportTest, LoadLeavesWhatAUserHasSetAndCalcDoesNot) {
    Put(KindArchive, m_tHour - 100, CVal(10));
    Put(KindHour, m_tHour, CVal(7), Status::SetByUser | Status::ReportInited);
    EXPECT_THAT(Make(PeriodAction::Load, KindHour, m_tHour), IsEmpty());
    ExpectSame(ReadOne(m_nX, KindHour),
               Stamped(CVal(7), m_tHour, Status::SetByUser | Status::ReportInited));
    EXPECT_THAT(Make(PeriodAction::Calculate, KindHour, m_tHour),
                ElementsAre(Pair(KindHour, m_tHour)));
    ExpectReport(KindHour, 10, kLoaded | Status::ReportInited);
}

TEST_F(StoreReportTest, CalcTakesWhatStandsThereNow) {
    Put(KindArchive, m_tHour - 100, CVal(10));
    Make(PeriodAction::Load, KindHour, m_tHour);
    Put(KindArchive, m_tHour, CVal(30));
    Make(PeriodAction::Calculate, KindHour, m_tHour);
    ExpectReport(KindHour, 30, kLoaded);
}

TEST_F(StoreReportTest, SameOutcomeIsNoChange) {
    Put(KindArchive, m_tHour - 100, CVal(10));
    EXPECT_EQ(Make(PeriodAction::Load, KindHour, m_tHour).size(), 1u);
    EXPECT_THAT(Make(PeriodAction::Calculate, KindHour, m_tHour), IsEmpty());
    Put(KindArchive, m_tHour, CVal(10), Status::Alarm);
    EXPECT_EQ(Make(PeriodAction::Calculate, KindHour, m_tHour).size(), 1u);
    Put(KindDay, m_tDay, CVal(10));
    const auto changedBy = [this](CVal value) {
        return Submit({PutValue{m_nX, KindDay, m_tDay, std::move(value)}}).changed.size();
    };
    EXPECT_EQ(changedBy(CVal(10)), 0u);
    EXPECT_EQ(changedBy(CVal(10.0)), 1u);
    EXPECT_EQ(changedBy(CVal(10.5)), 1u);
    EXPECT_EQ(changedBy(CVal("10.5")), 1u);
    EXPECT_EQ(changedBy(CVal("10.5")), 0u);
    EXPECT_EQ(changedBy(Stamped(CVal("10.5"), 0, Status::Alarm)), 1u);
}

// 10 for half an hour, then 20 for a quarter; the last quarter is still to come.
TEST_F(StoreReportTest, WhatIsStillToComeIsNotKnown) {
    Put(KindArchive, m_tHour, CVal(10));
    Put(KindArchive, m_tHour + 1800, CVal(20));
    Put(KindArchive, m_tHour + 2700, CVal(1000));
    Make(PeriodAction::Load, KindHour, m_tHour, ReportRule::Mean, 0, m_tHour + 2700);
    ExpectReport(KindHour, (10 * 2.0 + 20) / 3, kLoaded | Status::CalculateError);
    Make(PeriodAction::Load, KindHour, m_tHour, ReportRule::Sum, 0, m_tHour + 2700);
    ExpectReport(KindHour, 30, kLoaded | Status::CalculateError);
    Make(PeriodAction::Load, KindHour, m_tHour, ReportRule::Increase, 0, m_tHour + 3600);
    ExpectReport(KindHour, 10 + 980, kLoaded | Status::CalculateError);
}

TEST_F(StoreReportTest, HourThatHasNotBegunHasNoValue) {
    Put(KindArchive, m_tHour - 100, CVal(10));
    for (const ReportRule rule : {ReportRule::Mean, ReportRule::Sum, ReportRule::Increase}) {
        Make(PeriodAction::Load, KindHour, m_tHour, rule, 0, m_tHour - 1);
        ExpectSame(ReadOne(m_nX, KindHour), Stamped(CVal(), m_tHour, Status::Unknown | kLoaded));
    }
    Make(PeriodAction::Load, KindHour, m_tHour, ReportRule::Mean, 0, m_tHour);
    ExpectSame(ReadOne(m_nX, KindHour), Stamped(CVal(), m_tHour, Status::Unknown | kLoaded));
}

TEST_F(StoreReportTest, HourWithoutDataHasNoValue) {
    Make(PeriodAction::Load, KindHour, m_tHour);
    ExpectSame(ReadOne(m_nX, KindHour), Stamped(CVal(), m_tHour, Status::Unknown | kLoaded));
}

// On 27 October 2024 the day had 25 hours: 1, 2, ..., 25, of which hour 3 was set by hand to 100.
// (1 + ... + 25 - 3 + 100) = 422.
TEST_F(StoreReportTest, DayIsComputedFromItsHours) {
    const std::int64_t day = MakeLocalTime({2024, 10, 27});
    for (int hour = 0; hour < 25; ++hour) Put(KindHour, day + hour * 3600, CVal(hour + 1), kLoaded);
    Put(KindHour, day - 3600, CVal(1000));
    Put(KindHour, day + 25 * 3600, CVal(1000));
    Put(KindHour, day + 2 * 3600, CVal(100), Status::SetByUser);
    Make(PeriodAction::Load, KindDay, day, ReportRule::Sum);
    ExpectReport(KindDay, 422, kLoaded);
    Make(PeriodAction::Calculate, KindDay, day, ReportRule::Mean);
    ExpectReport(KindDay, 422.0 / 25, kLoaded);
}

TEST_F(StoreReportTest, GasDayTakesTheHoursFromSixToSix) {
    for (int hour = 0; hour < 48; ++hour) {
        Put(KindHour, m_tDay + hour * 3600, CVal(hour >= 6 && hour < 30 ? 1 : 1000));
    }
    Make(PeriodAction::Load, KindDay, m_tDay, ReportRule::Sum, 6);
    ExpectReport(KindDay, 24, kLoaded);
    EXPECT_EQ(ReadOne(m_nX, KindDay).GetTime(), m_tDay);
}

TEST_F(StoreReportTest, DayWithoutAnHourIsIncomplete) {
    for (int hour = 0; hour < 23; ++hour) Put(KindHour, m_tDay + hour * 3600, CVal(2));
    Make(PeriodAction::Load, KindDay, m_tDay, ReportRule::Sum);
    ExpectReport(KindDay, 46, kLoaded | Status::CalculateError);
}

// March 2024 had 30 days of 24 hours and one of 23: a mean of 1 and once 32.
TEST_F(StoreReportTest, MonthIsComputedFromItsDays) {
    for (std::int64_t day = m_tMonth; day < MakeLocalTime({2024, 4, 1});
         day = GetNextLocalDayTime(day)) {
        Put(KindDay, day, CVal(day == MakeLocalTime({2024, 3, 31}) ? 32 : 1));
    }
    Make(PeriodAction::Load, KindMonth, m_tMonth, ReportRule::Mean);
    ExpectReport(KindMonth, (30.0 * 24 * 1 + 23.0 * 32) / (30 * 24 + 23), kLoaded);
    Make(PeriodAction::Calculate, KindMonth, m_tMonth, ReportRule::Increase);
    ExpectReport(KindMonth, 62, kLoaded);
}

TEST_F(StoreReportTest, BackgroundWorkIsDoneBetweenTheRest) {
    Put(KindArchive, m_tHour - 100, CVal(10));
    const StoreOutcome outcome = Submit({MakeReport{PeriodAction::Load, m_nX, KindHour, m_tHour},
                                         SaveProgress{"hour", m_tHour + 3600}},
                                        Store::Urgency::Background);
    EXPECT_TRUE(outcome.committed);
    ExpectReport(KindHour, 10, kLoaded);
}

}  // namespace
}  // namespace kalvex
