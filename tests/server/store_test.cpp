#include "server/Store.h"

#include <gmock/gmock.h>
#include <gtest/gtest.h>

#include <memory>

#include "server/StoreReader.h"
#include "server_fixture.h"
#include "support/waiting_loop.h"

namespace kalvex::server {
namespace {

using testing::ElementsAre;
using testing::IsEmpty;
using testing::Key;
using testing::Pair;

constexpr std::uint16_t kLoaded = value::Status::ReportLoaded;

class StoreTest : public testing::Test {
  protected:
    StoreTest() { Open(); }

    void Open() {
        m_store = std::make_unique<Store>(m_loop);
        platform::Notice error;
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

    std::vector<value::CVal> ReadAll(VariableId variable, value::ValueKind kind) {
        const StorePiece piece = Read({variable, kind, 0, value::kLargestTime, 1000});
        EXPECT_TRUE(piece.read);
        EXPECT_FALSE(piece.more);
        return piece.values;
    }

    // The one value of that kind.
    value::CVal ReadOne(VariableId variable, value::ValueKind kind) {
        const std::vector<value::CVal> values = ReadAll(variable, kind);
        EXPECT_EQ(values.size(), 1u);
        return values.size() == 1 ? values[0] : value::CVal();
    }

    support::ZoneScope m_zone{"Europe/Warsaw"};
    support::ScratchFolder m_folder;
    support::WaitingLoop m_loop;
    std::unique_ptr<Store> m_store;
};

void ExpectSame(const value::CVal& value, const value::CVal& expected) {
    EXPECT_EQ(value.GetType(), expected.GetType());
    EXPECT_EQ(value.GetStatus(), expected.GetStatus());
    EXPECT_EQ(value.GetTime(), expected.GetTime());
    std::string text;
    std::string expectedText;
    value.GetValData(value::ValueType::Text, text);
    expected.GetValData(value::ValueType::Text, expectedText);
    EXPECT_EQ(text, expectedText);
}

TEST_F(StoreTest, ValuesOfEveryTypeComeBackAsTheyWere) {
    const VariableId x = m_store->Register("X");
    const std::vector<value::CVal> values{
        support::Stamped(value::CVal(true), 1, 0xFFFF),
        support::Stamped(value::CVal(static_cast<short>(-7)), 2),
        support::Stamped(value::CVal(7u), 3),
        support::Stamped(value::CVal(INT64_MIN), 4),
        support::Stamped(value::CVal(0.1), 5),
        support::Stamped(value::CVal(std::numeric_limits<double>::infinity()), 6),
        support::Stamped(value::CVal(std::numeric_limits<double>::quiet_NaN()), 7),
        support::Stamped(value::CVal(text::FromUtf8("zażółć\n")), 8),
        support::Stamped(value::CVal(std::string("a\0b\x81", 4)), 9),
        support::Stamped(value::CVal(""), 10),
        support::Stamped(value::CVal(), 11, value::Status::Unknown),
    };
    std::vector<StoreOperation> operations;
    for (const value::CVal& value : values) {
        operations.push_back(PutValue{x, value::KindArchive, value.GetTime(), value});
    }
    Submit(operations);
    const std::vector<value::CVal> read = ReadAll(x, value::KindArchive);
    ASSERT_EQ(read.size(), values.size());
    for (std::size_t index = 0; index < values.size(); ++index) {
        SCOPED_TRACE(index);
        ExpectSame(read[index], values[index]);
    }
}

TEST_F(StoreTest, CurrentValuesProgressAndNumbersOutlastARestart) {
    const VariableId x = m_store->Register(text::FromUtf8("Z1.PRZEPŁYW"));
    const VariableId y = m_store->Register("Y");
    EXPECT_NE(x, y);
    EXPECT_EQ(m_store->Register("Y"), y);
    EXPECT_FALSE(m_store->LastValue(x));
    Submit({SaveLastValue{x, support::Stamped(value::CVal(1.5), 1000, 4)}, SaveProgress{"hour", 77},
            SaveLastValue{x, support::Stamped(value::CVal(2.5), 1001, 2)}});
    Open();
    EXPECT_EQ(m_store->Register("Y"), y);
    EXPECT_EQ(m_store->Register(text::FromUtf8("Z1.PRZEPŁYW")), x);
    EXPECT_GT(m_store->Register("Z"), std::max(x, y));
    ASSERT_TRUE(m_store->LastValue(x));
    ExpectSame(*m_store->LastValue(x), support::Stamped(value::CVal(2.5), 1001, 2));
    EXPECT_FALSE(m_store->LastValue(y));
    EXPECT_EQ(m_store->Progress("hour"), 77);
    EXPECT_FALSE(m_store->Progress("day"));
}

TEST_F(StoreTest, ClosingWritesWhatWasSubmitted) {
    const VariableId x = m_store->Register("X");
    for (int time = 1; time <= 500; ++time) {
        m_store->Submit({PutValue{x, value::KindArchive, time, value::CVal(time)}},
                        Store::Urgency::Now, {});
    }
    m_store->Close();
    Open();
    EXPECT_EQ(ReadAll(x, value::KindArchive).size(), 500u);
}

TEST_F(StoreTest, SecondValueOfASecondTakesThePlaceOfTheFirst) {
    const VariableId x = m_store->Register("X");
    Submit({PutValue{x, value::KindArchive, 5, value::CVal(1)},
            PutValue{x, value::KindArchive, 5, value::CVal(2)}});
    ExpectSame(ReadOne(x, value::KindArchive), support::Stamped(value::CVal(2), 5));
}

TEST_F(StoreTest, VariablesAndKindsAreApart) {
    const VariableId x = m_store->Register("X");
    const VariableId y = m_store->Register("Y");
    Submit({PutValue{x, value::KindHour, 3600, value::CVal(1)},
            PutValue{x, value::KindDay, 3600, value::CVal(2)},
            PutValue{y, value::KindHour, 3600, value::CVal(3)}});
    ExpectSame(ReadOne(x, value::KindHour), support::Stamped(value::CVal(1), 3600));
    ExpectSame(ReadOne(x, value::KindDay), support::Stamped(value::CVal(2), 3600));
    ExpectSame(ReadOne(y, value::KindHour), support::Stamped(value::CVal(3), 3600));
    EXPECT_THAT(ReadAll(y, value::KindDay), IsEmpty());
}

TEST_F(StoreTest, RangeComesInPieces) {
    const VariableId x = m_store->Register("X");
    std::vector<StoreOperation> operations;
    for (int time = 1; time <= 10; ++time) {
        operations.push_back(PutValue{x, value::KindArchive, time, value::CVal(time)});
    }
    Submit(operations);
    StorePiece piece = Read({x, value::KindArchive, 2, 9, 5});
    ASSERT_EQ(piece.values.size(), 5u);
    EXPECT_TRUE(piece.more);
    EXPECT_EQ(piece.values.front().GetTime(), 2);
    EXPECT_EQ(piece.values.back().GetTime(), 6);
    piece = Read({x, value::KindArchive, 7, 9, 3});
    ASSERT_EQ(piece.values.size(), 3u);
    EXPECT_FALSE(piece.more);
    EXPECT_EQ(piece.values.back().GetTime(), 9);
    EXPECT_THAT(Read({x, value::KindArchive, 9, 2, 5}).values, IsEmpty());
}

TEST_F(StoreTest, PieceEndsWithTheValueThatFillsIt) {
    const VariableId x = m_store->Register("X");
    const std::string text(kTextsOfAPiece / 4, 'x');
    std::vector<StoreOperation> operations;
    for (int time = 1; time <= 9; ++time) {
        operations.push_back(PutValue{x, value::KindArchive, time, value::CVal(text)});
    }
    Submit(operations);
    StorePiece piece = Read({x, value::KindArchive, 1, 9, 2000});
    ASSERT_EQ(piece.values.size(), 4u);
    EXPECT_TRUE(piece.more);
    piece = Read({x, value::KindArchive, 6, 9, 2000});
    ASSERT_EQ(piece.values.size(), 4u);
    EXPECT_FALSE(piece.more);
    piece = Read({x, value::KindArchive, 6, 9, 4});
    ASSERT_EQ(piece.values.size(), 4u);
    EXPECT_FALSE(piece.more);
}

// The loop runs only at the end, so that the read is asked for while the writes are under way.
TEST_F(StoreTest, ReadSeesTheWritesBeforeIt) {
    const VariableId x = m_store->Register("X");
    std::size_t seen = 0;
    for (int time = 1; time <= 100; ++time) {
        m_store->Submit({PutValue{x, value::KindArchive, time, value::CVal(time)}},
                        Store::Urgency::Now, {});
        m_store->Read({x, value::KindArchive, 0, 1000, 1000}, [&seen, time](StorePiece piece) {
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
        m_store->Submit({PutValue{x, value::KindArchive, index, value::CVal(1)},
                         PutValue{x, value::KindHour, 3600 * index, value::CVal(1)},
                         PutValue{x, value::KindHour, 3600 * index, value::CVal(2)},
                         PutValue{x, value::KindSpan, 5, value::CVal(index)}},
                        Store::Urgency::Now, [&, index](const StoreOutcome& outcome) {
                            order.push_back(index);
                            changed[static_cast<std::size_t>(index)] = outcome.changed;
                        });
    }
    m_store->Flush();
    while (m_loop.Run()) {
    }
    EXPECT_THAT(order, ElementsAre(0, 1, 2));
    EXPECT_THAT(changed[2],
                ElementsAre(Key(Pair(value::KindHour, 7200)), Key(Pair(value::KindSpan, 5))));
}

TEST_F(StoreTest, NewerFileIsRefused) {
    {
        platform::SqliteDatabase database;
        ASSERT_TRUE(database.Open(m_folder.Path("newer.sqlite")));
        ASSERT_TRUE(database.Execute("PRAGMA user_version = 4"));
    }
    Store other(m_loop);
    platform::Notice error;
    EXPECT_FALSE(other.Open(m_folder.Path("newer.sqlite"), error));
    EXPECT_EQ(platform::InWords(error, platform::Translator()),
              m_folder.Path("newer.sqlite") + ": Plik danych jest z nowszej wersji programu");
    EXPECT_FALSE(other.Open(m_folder.Path("brak/x.sqlite"), error));
    EXPECT_EQ(platform::InWords(error, platform::Translator()),
              m_folder.Path("brak/x.sqlite") + ": unable to open database file");
}

void MakeFirstVersion(const std::string& path) {
    platform::SqliteDatabase database;
    ASSERT_TRUE(database.Open(path));
    ASSERT_TRUE(database.Execute(
        "CREATE TABLE variables (id INTEGER PRIMARY KEY, name TEXT NOT NULL UNIQUE);"
        "CREATE TABLE last_values (variable INTEGER PRIMARY KEY, time INTEGER NOT NULL, "
        "type INTEGER NOT NULL, status INTEGER NOT NULL, value);"
        "CREATE TABLE history (variable INTEGER NOT NULL, kind INTEGER NOT NULL, "
        "time INTEGER NOT NULL, type INTEGER NOT NULL, status INTEGER NOT NULL, value, "
        "PRIMARY KEY (variable, kind, time)) WITHOUT ROWID;"
        "INSERT INTO history VALUES (7, 2, 3600, 150, 128, 8);"
        "INSERT INTO variables VALUES (7, 'X');"
        "INSERT INTO last_values VALUES (7, 100, 150, 4, 5);"
        "PRAGMA user_version = 1"));
}

std::int64_t VersionOf(const std::string& path) {
    platform::SqliteDatabase database;
    platform::SqliteStatement version;
    EXPECT_TRUE(database.OpenExisting(path));
    EXPECT_TRUE(version.Prepare(database, "PRAGMA user_version") && version.Next());
    return version.Integer(0);
}

TEST_F(StoreTest, FileOfAnOlderVersionStaysInACopy) {
    MakeFirstVersion(m_folder.Path("first.sqlite"));
    {
        Store other(m_loop);
        platform::Notice error;
        ASSERT_TRUE(other.Open(m_folder.Path("first.sqlite"), error));
        other.Close();
    }
    EXPECT_EQ(VersionOf(m_folder.Path("first.sqlite")), 3);
    EXPECT_EQ(VersionOf(m_folder.Path("first.sqlite.v1")), 1);
    EXPECT_FALSE(m_folder.Has("first.sqlite.v3"));
    EXPECT_FALSE(m_folder.Has("store.sqlite.v0"));
    platform::SqliteDatabase copy;
    platform::SqliteStatement row;
    ASSERT_TRUE(copy.OpenExisting(m_folder.Path("first.sqlite.v1")));
    ASSERT_TRUE(row.Prepare(copy, "SELECT name, value FROM variables, last_values"));
    ASSERT_TRUE(row.Next());
    EXPECT_EQ(row.Text(0), "X");
    EXPECT_EQ(row.Integer(1), 5);
}

TEST_F(StoreTest, FileOfAnOlderVersionIsLeftAloneWithoutACopy) {
    MakeFirstVersion(m_folder.Path("first.sqlite"));
    m_folder.MakeFolder("first.sqlite.v1");
    Store other(m_loop);
    platform::Notice error;
    EXPECT_FALSE(other.Open(m_folder.Path("first.sqlite"), error));
    EXPECT_EQ(platform::InWords(error, platform::Translator()),
              m_folder.Path("first.sqlite.v1") +
                  ": nie można zachować danych sprzed zmiany wersji (Is a directory)");
    EXPECT_EQ(VersionOf(m_folder.Path("first.sqlite")), 1);
    EXPECT_FALSE(m_folder.Has("first.sqlite.v1.new"));
}

TEST_F(StoreTest, FileOfTheFirstVersionIsTaken) {
    MakeFirstVersion(m_folder.Path("first.sqlite"));
    Store other(m_loop);
    platform::Notice error;
    ASSERT_TRUE(other.Open(m_folder.Path("first.sqlite"), error));
    EXPECT_EQ(other.Register("X"), 7);
    EXPECT_EQ(DumpRow(other.LastValue(7).value_or(value::CVal())), "150 4 100 5");
    EXPECT_THAT(other.ChangesAtOpening(), IsEmpty());
    EXPECT_THAT(other.AnswersAtOpening(), IsEmpty());
    StoreReader reader;
    ASSERT_TRUE(reader.Open(m_folder.Path("first.sqlite"), error));
    const std::vector<ValueVersion> hour = reader.Versions({7, value::KindHour, 3600});
    ASSERT_EQ(hour.size(), 1u);
    EXPECT_EQ(DumpRow(hour[0].value), "150 128 3600 8");
    EXPECT_FALSE(hour[0].written || hour[0].writer);
}

TEST_F(StoreTest, GapIsMarkedOnceBehindAKnownValue) {
    const VariableId x = m_store->Register("X");
    Submit({MarkGap{x, 50}});
    EXPECT_THAT(ReadAll(x, value::KindArchive), IsEmpty());
    Submit(
        {PutValue{x, value::KindArchive, 100, value::CVal(1)}, MarkGap{x, 150}, MarkGap{x, 160}});
    const std::vector<value::CVal> values = ReadAll(x, value::KindArchive);
    ASSERT_EQ(values.size(), 2u);
    ExpectSame(values[1], support::Stamped(value::CVal(), 150, value::Status::Unknown));
}

TEST_F(StoreTest, OldArchiveValuesAreRemovedInPortions) {
    const VariableId x = m_store->Register("X");
    std::vector<StoreOperation> operations;
    for (int time = 1; time <= 10010; ++time) {
        operations.push_back(PutValue{x, value::KindArchive, time, value::CVal(time)});
    }
    operations.push_back(PutValue{x, value::KindHour, 0, value::CVal(1)});
    operations.push_back(RemoveArchive{x, 10005});
    Submit(operations);
    EXPECT_EQ(ReadAll(x, value::KindArchive).front().GetTime(), 10001);
    Submit({RemoveArchive{x, 10005}});
    EXPECT_EQ(ReadAll(x, value::KindArchive).front().GetTime(), 10005);
    Submit({RemoveArchive{x, 10005}});
    EXPECT_EQ(ReadAll(x, value::KindArchive).size(), 6u);
    EXPECT_EQ(ReadAll(x, value::KindHour).size(), 1u);
}

// The last value before the bound is the one that holds on it.
TEST_F(StoreTest, OldArchiveValueStaysUntilTheNextOneTakesItsPlace) {
    const VariableId x = m_store->Register("X");
    Submit({PutValue{x, value::KindArchive, 100, value::CVal(1)},
            PutValue{x, value::KindArchive, 200, value::CVal(2)},
            PutValue{x, value::KindArchive, 500, value::CVal(3)}, RemoveArchive{x, 499}});
    EXPECT_EQ(ReadAll(x, value::KindArchive).front().GetTime(), 200);
    Submit({RemoveArchive{x, 500}});
    EXPECT_EQ(ReadAll(x, value::KindArchive).front().GetTime(), 500);
    Submit({RemoveArchive{x, 99999}});
    EXPECT_EQ(ReadAll(x, value::KindArchive).size(), 1u);
}

// ---- reports

class StoreReportTest : public StoreTest {
  protected:
    StoreReportTest() : m_x(m_store->Register("X")) {}

    ChangedReports Make(vantrel::PeriodAction action, value::ValueKind kind, std::int64_t time,
                        ReportRule rule = ReportRule::Mean, int dayStart = 0,
                        std::int64_t now = value::kLargestTime) {
        return Submit({MakeReport{action, m_x, kind, time, rule, dayStart, now}}).changed;
    }

    void Put(value::ValueKind kind, std::int64_t time, value::CVal value,
             std::uint16_t status = 0) {
        value.SetStatus(status);
        Submit({PutValue{m_x, kind, time, value}});
    }

    void ExpectReport(value::ValueKind kind, double number, std::uint16_t status) {
        const value::CVal value = ReadOne(m_x, kind);
        ASSERT_EQ(value.GetType(), value::ValueType::Double);
        EXPECT_DOUBLE_EQ(value.Real(), number);
        EXPECT_EQ(value.GetStatus(), status);
    }

    VariableId m_x;
    std::int64_t m_hour = value::MakeLocalTime({2024, 3, 10, 7});
    std::int64_t m_day = value::MakeLocalTime({2024, 3, 10});
    std::int64_t m_month = value::MakeLocalTime({2024, 3, 1});
};

TEST_F(StoreReportTest, InitMakesARecordOnce) {
    EXPECT_THAT(Make(vantrel::PeriodAction::Init, value::KindHour, m_hour),
                ElementsAre(Key(Pair(value::KindHour, m_hour))));
    ExpectSame(ReadOne(m_x, value::KindHour),
               support::Stamped(value::CVal(), m_hour,
                                value::Status::Unknown | value::Status::ReportInited));
    EXPECT_THAT(Make(vantrel::PeriodAction::Init, value::KindHour, m_hour), IsEmpty());
    Make(vantrel::PeriodAction::Init, value::KindSpan, m_hour + 3);
    ExpectSame(ReadOne(m_x, value::KindSpan),
               support::Stamped(value::CVal(), m_hour + 3,
                                value::Status::Unknown | value::Status::ReportInited));
}

TEST_F(StoreReportTest, InitLeavesAValue) {
    Put(value::KindHour, m_hour, value::CVal(5), value::Status::SetByUser);
    Make(vantrel::PeriodAction::Init, value::KindHour, m_hour);
    ExpectSame(ReadOne(m_x, value::KindHour),
               support::Stamped(value::CVal(5), m_hour,
                                value::Status::SetByUser | value::Status::ReportInited));
}

// 10 from the hour before, 20 from half past.
TEST_F(StoreReportTest, LoadComputesTheHourFromTheArchive) {
    Put(value::KindArchive, m_hour - 100, value::CVal(10));
    Put(value::KindArchive, m_hour + 1800, value::CVal(20), value::Status::Alarm);
    Put(value::KindArchive, m_hour + 3600, value::CVal(1000));
    Make(vantrel::PeriodAction::Init, value::KindHour, m_hour);
    EXPECT_THAT(Make(vantrel::PeriodAction::Load, value::KindHour, m_hour),
                ElementsAre(Key(Pair(value::KindHour, m_hour))));
    ExpectReport(value::KindHour, 15, kLoaded | value::Status::ReportInited | value::Status::Alarm);
}

TEST_F(StoreReportTest, IncreaseStartsFromTheLastKnownReadingBefore) {
    Put(value::KindArchive, m_hour - 200, value::CVal(100));
    Put(value::KindArchive, m_hour - 100, value::CVal(), value::Status::Unknown);
    Put(value::KindArchive, m_hour, value::CVal(103));
    Put(value::KindArchive, m_hour + 3599, value::CVal(110));
    Put(value::KindArchive, m_hour + 3600, value::CVal(1000));
    Make(vantrel::PeriodAction::Load, value::KindHour, m_hour, ReportRule::Increase);
    ExpectReport(value::KindHour, 10, kLoaded);
}

TEST_F(StoreReportTest, SumTakesTheAmountsOfTheHour) {
    Put(value::KindArchive, m_hour - 1, value::CVal(100));
    Put(value::KindArchive, m_hour, value::CVal(1));
    Put(value::KindArchive, m_hour + 3599, value::CVal(2));
    Put(value::KindArchive, m_hour + 3600, value::CVal(100));
    Make(vantrel::PeriodAction::Load, value::KindHour, m_hour, ReportRule::Sum);
    ExpectReport(value::KindHour, 3, kLoaded);
}

TEST_F(StoreReportTest, LoadLeavesWhatAUserHasSetAndCalcDoesNot) {
    Put(value::KindArchive, m_hour - 100, value::CVal(10));
    Put(value::KindHour, m_hour, value::CVal(7),
        value::Status::SetByUser | value::Status::ReportInited);
    EXPECT_THAT(Make(vantrel::PeriodAction::Load, value::KindHour, m_hour), IsEmpty());
    ExpectSame(ReadOne(m_x, value::KindHour),
               support::Stamped(value::CVal(7), m_hour,
                                value::Status::SetByUser | value::Status::ReportInited));
    EXPECT_THAT(Make(vantrel::PeriodAction::Calculate, value::KindHour, m_hour),
                ElementsAre(Key(Pair(value::KindHour, m_hour))));
    ExpectReport(value::KindHour, 10, kLoaded | value::Status::ReportInited);
}

TEST_F(StoreReportTest, CalcTakesWhatStandsThereNow) {
    Put(value::KindArchive, m_hour - 100, value::CVal(10));
    Make(vantrel::PeriodAction::Load, value::KindHour, m_hour);
    Put(value::KindArchive, m_hour, value::CVal(30));
    Make(vantrel::PeriodAction::Calculate, value::KindHour, m_hour);
    ExpectReport(value::KindHour, 30, kLoaded);
}

TEST_F(StoreReportTest, SameOutcomeIsNoChange) {
    Put(value::KindArchive, m_hour - 100, value::CVal(10));
    EXPECT_EQ(Make(vantrel::PeriodAction::Load, value::KindHour, m_hour).size(), 1u);
    EXPECT_THAT(Make(vantrel::PeriodAction::Calculate, value::KindHour, m_hour), IsEmpty());
    Put(value::KindArchive, m_hour, value::CVal(10), value::Status::Alarm);
    EXPECT_EQ(Make(vantrel::PeriodAction::Calculate, value::KindHour, m_hour).size(), 1u);
    Put(value::KindDay, m_day, value::CVal(10));
    const auto changedBy = [this](value::CVal value) {
        return Submit({PutValue{m_x, value::KindDay, m_day, std::move(value)}}).changed.size();
    };
    EXPECT_EQ(changedBy(value::CVal(10)), 0u);
    EXPECT_EQ(changedBy(value::CVal(10.0)), 1u);
    EXPECT_EQ(changedBy(value::CVal(10.5)), 1u);
    EXPECT_EQ(changedBy(value::CVal("10.5")), 1u);
    EXPECT_EQ(changedBy(value::CVal("10.5")), 0u);
    EXPECT_EQ(changedBy(support::Stamped(value::CVal("10.5"), 0, value::Status::Alarm)), 1u);
}

// 10 for half an hour, then 20 for a quarter; the last quarter is still to come.
TEST_F(StoreReportTest, WhatIsStillToComeIsNotKnown) {
    Put(value::KindArchive, m_hour, value::CVal(10));
    Put(value::KindArchive, m_hour + 1800, value::CVal(20));
    Put(value::KindArchive, m_hour + 2700, value::CVal(1000));
    Make(vantrel::PeriodAction::Load, value::KindHour, m_hour, ReportRule::Mean, 0, m_hour + 2700);
    ExpectReport(value::KindHour, (10 * 2.0 + 20) / 3, kLoaded | value::Status::CalculateError);
    Make(vantrel::PeriodAction::Load, value::KindHour, m_hour, ReportRule::Sum, 0, m_hour + 2700);
    ExpectReport(value::KindHour, 30, kLoaded | value::Status::CalculateError);
    Make(vantrel::PeriodAction::Load, value::KindHour, m_hour, ReportRule::Increase, 0,
         m_hour + 3600);
    ExpectReport(value::KindHour, 10 + 980, kLoaded | value::Status::CalculateError);
}

TEST_F(StoreReportTest, HourThatHasNotBegunHasNoValue) {
    Put(value::KindArchive, m_hour - 100, value::CVal(10));
    for (const ReportRule rule : {ReportRule::Mean, ReportRule::Sum, ReportRule::Increase}) {
        Make(vantrel::PeriodAction::Load, value::KindHour, m_hour, rule, 0, m_hour - 1);
        ExpectSame(ReadOne(m_x, value::KindHour),
                   support::Stamped(value::CVal(), m_hour, value::Status::Unknown | kLoaded));
    }
    Make(vantrel::PeriodAction::Load, value::KindHour, m_hour, ReportRule::Mean, 0, m_hour);
    ExpectSame(ReadOne(m_x, value::KindHour),
               support::Stamped(value::CVal(), m_hour, value::Status::Unknown | kLoaded));
}

TEST_F(StoreReportTest, HourWithoutDataHasNoValue) {
    Make(vantrel::PeriodAction::Load, value::KindHour, m_hour);
    ExpectSame(ReadOne(m_x, value::KindHour),
               support::Stamped(value::CVal(), m_hour, value::Status::Unknown | kLoaded));
}

// On 27 October 2024 the day had 25 hours: 1, 2, ..., 25, of which hour 3 was set by hand to 100.
// (1 + ... + 25 - 3 + 100) = 422.
TEST_F(StoreReportTest, DayIsComputedFromItsHours) {
    const std::int64_t day = value::MakeLocalTime({2024, 10, 27});
    for (int hour = 0; hour < 25; ++hour)
        Put(value::KindHour, day + hour * 3600, value::CVal(hour + 1), kLoaded);
    Put(value::KindHour, day - 3600, value::CVal(1000));
    Put(value::KindHour, day + 25 * 3600, value::CVal(1000));
    Put(value::KindHour, day + 2 * 3600, value::CVal(100), value::Status::SetByUser);
    Make(vantrel::PeriodAction::Load, value::KindDay, day, ReportRule::Sum);
    ExpectReport(value::KindDay, 422, kLoaded);
    Make(vantrel::PeriodAction::Calculate, value::KindDay, day, ReportRule::Mean);
    ExpectReport(value::KindDay, 422.0 / 25, kLoaded);
}

TEST_F(StoreReportTest, GasDayTakesTheHoursFromSixToSix) {
    for (int hour = 0; hour < 48; ++hour) {
        Put(value::KindHour, m_day + hour * 3600, value::CVal(hour >= 6 && hour < 30 ? 1 : 1000));
    }
    Make(vantrel::PeriodAction::Load, value::KindDay, m_day, ReportRule::Sum, 6);
    ExpectReport(value::KindDay, 24, kLoaded);
    EXPECT_EQ(ReadOne(m_x, value::KindDay).GetTime(), m_day);
}

TEST_F(StoreReportTest, DayWithoutAnHourIsIncomplete) {
    for (int hour = 0; hour < 23; ++hour) Put(value::KindHour, m_day + hour * 3600, value::CVal(2));
    Make(vantrel::PeriodAction::Load, value::KindDay, m_day, ReportRule::Sum);
    ExpectReport(value::KindDay, 46, kLoaded | value::Status::CalculateError);
}

// March 2024 had 30 days of 24 hours and one of 23: a mean of 1 and once 32.
TEST_F(StoreReportTest, MonthIsComputedFromItsDays) {
    for (std::int64_t day = m_month; day < value::MakeLocalTime({2024, 4, 1});
         day = value::GetNextLocalDayTime(day)) {
        Put(value::KindDay, day, value::CVal(day == value::MakeLocalTime({2024, 3, 31}) ? 32 : 1));
    }
    Make(vantrel::PeriodAction::Load, value::KindMonth, m_month, ReportRule::Mean);
    ExpectReport(value::KindMonth, (30.0 * 24 * 1 + 23.0 * 32) / (30 * 24 + 23), kLoaded);
    Make(vantrel::PeriodAction::Calculate, value::KindMonth, m_month, ReportRule::Increase);
    ExpectReport(value::KindMonth, 62, kLoaded);
}

TEST_F(StoreReportTest, BackgroundWorkIsDoneBetweenTheRest) {
    Put(value::KindArchive, m_hour - 100, value::CVal(10));
    Submit({MakeReport{vantrel::PeriodAction::Load, m_x, value::KindHour, m_hour},
            SaveProgress{"hour", m_hour + 3600}},
           Store::Urgency::Background);
    ExpectReport(value::KindHour, 10, kLoaded);
}

}  // namespace
}  // namespace kalvex::server
