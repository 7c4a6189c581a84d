// Who wrote what the store keeps, and what stood there before.
#include <gmock/gmock.h>
#include <gtest/gtest.h>

#include <cmath>
#include <memory>

#include "server/Store.h"
#include "server/StoreReader.h"
#include "server_fixture.h"
#include "support/scratch_folder.h"
#include "support/waiting_loop.h"
#include "value/ValueText.h"

namespace kalvex::server {
namespace {

using testing::ElementsAre;
using testing::IsEmpty;

constexpr std::uint16_t kLoaded = value::Status::ReportLoaded;

class StoreHistoryTest : public testing::Test {
  protected:
    StoreHistoryTest() {
        Open();
        m_x = m_store->Register("X");
    }

    void Open() {
        m_store = std::make_unique<Store>(m_loop);
        platform::Notice error;
        ASSERT_TRUE(m_store->Open(m_path, error));
    }

    StoreOutcome Submit(std::vector<StoreOperation> operations) {
        StoreOutcome result;
        bool answered = false;
        EXPECT_TRUE(m_store->Submit(std::move(operations), Store::Urgency::Now,
                                    [&](const StoreOutcome& outcome) {
                                        result = outcome;
                                        answered = true;
                                    }));
        while (!answered) m_loop.WaitAndRun();
        return result;
    }

    void Put(value::ValueKind kind, std::int64_t time, value::CVal value, Origin origin = {},
             std::uint16_t status = 0) {
        value.SetStatus(status);
        Submit({PutValue{m_x, kind, time, std::move(value), origin}});
    }

    value::CVal StandingValue(value::ValueKind kind, std::int64_t time) {
        StoreReader reader;
        platform::Notice error;
        EXPECT_TRUE(reader.Open(m_path, error));
        return reader.Versions({m_x, kind, time}).at(0).value;
    }

    // "value status, written by user/client/address" of each version, the latest first.
    std::vector<std::string> Versions(value::ValueKind kind, std::int64_t time) {
        StoreReader reader;
        platform::Notice error;
        EXPECT_TRUE(reader.Open(m_path, error));
        const std::vector<ValueVersion> versions = kind == value::KindCurrent
                                                       ? reader.CurrentVersions(m_x)
                                                       : reader.Versions({m_x, kind, time});
        EXPECT_EQ(reader.Fault(), "");
        std::vector<std::string> lines;
        for (const ValueVersion& version : versions) {
            EXPECT_EQ(version.kind, kind);
            std::string text;
            version.value.GetValData(value::ValueType::Text, text);
            std::string line = text + " " + std::to_string(version.value.GetStatus()) + ", ";
            line += version.written ? std::to_string(*version.written) : "-";
            if (version.writer) {
                line += " by " + version.writer->user + "/" + version.writer->client + "/" +
                        version.writer->address;
            }
            lines.push_back(std::move(line));
        }
        return lines;
    }

    support::ZoneScope m_zone{"Europe/Warsaw"};
    support::ScratchFolder m_folder;
    std::string m_path = m_folder.Path("store.sqlite");
    support::WaitingLoop m_loop;
    std::unique_ptr<Store> m_store;
    VariableId m_x = 0;
};

TEST_F(StoreHistoryTest, WritersHaveNumbersForTheLifeOfTheFile) {
    const Writer adam{"adam", "Kalvex_a", "10.1.2.3"};
    const WriterId first = m_store->Register(adam);
    EXPECT_NE(first, kServerItself);
    EXPECT_EQ(m_store->Register(adam), first);
    const WriterId local = m_store->Register(Writer{"adam", "Kalvex_a", ""});
    EXPECT_NE(local, first);
    Put(value::KindArchive, 5, value::CVal(1), {first, 100});
    m_store.reset();
    Open();
    EXPECT_EQ(m_store->Register(adam), first);
    EXPECT_EQ(m_store->Register(Writer{"adam", "Kalvex_a", ""}), local);
    EXPECT_GT(m_store->Register(Writer{"ewa", "Kalvex_a", ""}), std::max(first, local));
    EXPECT_THAT(Versions(value::KindArchive, 5), ElementsAre("1 0, 100 by adam/Kalvex_a/10.1.2.3"));
}

TEST_F(StoreHistoryTest, ArchiveValueOfAClientLeavesWhatStoodThere) {
    const WriterId adam = m_store->Register(Writer{"adam", "K", ""});
    const WriterId ewa = m_store->Register(Writer{"ewa", "K", ""});
    Put(value::KindArchive, 5, value::CVal(1.5), {}, 2);
    Put(value::KindArchive, 5, value::CVal(2.5), {adam, 100});
    Put(value::KindArchive, 5, value::CVal("tekst"), {ewa, 200});
    Put(value::KindArchive, 5, value::CVal(4));
    EXPECT_THAT(
        Versions(value::KindArchive, 5),
        ElementsAre("4 0, -", "tekst 0, 200 by ewa/K/", "2.50 0, 100 by adam/K/", "1.50 2, -"));
    EXPECT_THAT(Versions(value::KindArchive, 6), IsEmpty());
}

TEST_F(StoreHistoryTest, SecondValueOfTheServerInOneSecondLeavesNone) {
    Put(value::KindArchive, 5, value::CVal(1.5));
    Put(value::KindArchive, 5, value::CVal(2.5));
    EXPECT_THAT(Versions(value::KindArchive, 5), ElementsAre("2.50 0, -"));
}

TEST_F(StoreHistoryTest, ValueThatComesAgainIsNoVersion) {
    const WriterId adam = m_store->Register(Writer{"adam", "K", ""});
    const WriterId ewa = m_store->Register(Writer{"ewa", "K", ""});
    for (const value::ValueKind kind : {value::KindArchive, value::KindHour}) {
        Put(kind, 3600, value::CVal(1.5), {adam, 100});
        Put(kind, 3600, value::CVal(1.5), {ewa, 200});
        EXPECT_THAT(Versions(kind, 3600), ElementsAre("1.50 0, 100 by adam/K/"));
        Put(kind, 3600, value::CVal(1.5), {ewa, 300}, 2);
        EXPECT_THAT(Versions(kind, 3600),
                    ElementsAre("1.50 2, 300 by ewa/K/", "1.50 0, 100 by adam/K/"));
    }
    Put(value::KindArchive, 7, value::CVal(0.0), {adam, 100});
    Put(value::KindArchive, 7, value::CVal(-0.0), {ewa, 200});
    EXPECT_THAT(Versions(value::KindArchive, 7), ElementsAre("0.00 0, 100 by adam/K/"));
    EXPECT_TRUE(std::signbit(value::ValueToDouble(StandingValue(value::KindArchive, 7))));
}

TEST_F(StoreHistoryTest, CorrectedReportLeavesEveryVersion) {
    const WriterId adam = m_store->Register(Writer{"adam", "K", ""});
    Put(value::KindHour, 3600, value::CVal(1.5), {kServerItself, 7200}, kLoaded);
    Put(value::KindHour, 3600, value::CVal(2.5), {kServerItself, 7300}, kLoaded);
    Put(value::KindHour, 3600, value::CVal(3.5), {adam, 7400}, value::Status::SetByUser);
    Put(value::KindHour, 3600, value::CVal(4.5), {adam, 7500}, value::Status::SetByUser);
    EXPECT_THAT(Versions(value::KindHour, 3600),
                ElementsAre("4.50 32, 7500 by adam/K/", "3.50 32, 7400 by adam/K/",
                            "2.50 128, 7300", "1.50 128, 7200"));
}

TEST_F(StoreHistoryTest, ReportThatWasBegunOrComputedTooEarlyIsNoVersion) {
    const std::int64_t hour = value::MakeLocalTime({2024, 3, 10, 7});
    const auto make = [&](vantrel::PeriodAction action, std::int64_t now) {
        Submit({MakeReport{action, m_x, value::KindHour, hour, ReportRule::Sum, 0, now, {0, now}}});
    };
    make(vantrel::PeriodAction::Init, hour);
    Put(value::KindArchive, hour + 10, value::CVal(1.0));
    make(vantrel::PeriodAction::Load, hour + 60);
    EXPECT_THAT(Versions(value::KindHour, hour), ElementsAre("1.00 448, -"));
    make(vantrel::PeriodAction::Load, hour + 3600);
    const std::string whole = "1.00 384, " + std::to_string(hour + 3600);
    EXPECT_THAT(Versions(value::KindHour, hour), ElementsAre(whole));
    Put(value::KindArchive, hour + 20, value::CVal(2.0));
    make(vantrel::PeriodAction::Load, hour + 3700);
    EXPECT_THAT(Versions(value::KindHour, hour),
                ElementsAre("3.00 384, " + std::to_string(hour + 3700), whole));
}

TEST_F(StoreHistoryTest, CurrentValueKeepsTheOneBefore) {
    const WriterId adam = m_store->Register(Writer{"adam", "K", ""});
    const auto save = [&](double number, std::int64_t time, Origin origin) {
        Submit({SaveLastValue{m_x, support::Stamped(value::CVal(number), time), origin}});
    };
    EXPECT_THAT(Versions(value::KindCurrent, 0), IsEmpty());
    save(1, 100, {});
    save(2, 101, {});
    EXPECT_THAT(Versions(value::KindCurrent, 0), ElementsAre("2.00 0, -"));
    save(3, 102, {adam, 102});
    EXPECT_THAT(Versions(value::KindCurrent, 0),
                ElementsAre("3.00 0, 102 by adam/K/", "2.00 0, -"));
    save(3, 102, {adam, 102});  // saved once more, as after a loss
    EXPECT_THAT(Versions(value::KindCurrent, 0),
                ElementsAre("3.00 0, 102 by adam/K/", "2.00 0, -"));
    save(3.5, 102, {adam, 102});
    EXPECT_THAT(Versions(value::KindCurrent, 0),
                ElementsAre("3.50 0, 102 by adam/K/", "3.00 0, 102 by adam/K/"));
    save(4, 103, {adam, 103});
    EXPECT_THAT(Versions(value::KindCurrent, 0),
                ElementsAre("4.00 0, 103 by adam/K/", "3.50 0, 102 by adam/K/"));
    save(5, 104, {});
    EXPECT_THAT(Versions(value::KindCurrent, 0), ElementsAre("5.00 0, -"));
}

TEST_F(StoreHistoryTest, VersionsGoWithTheirValues) {
    const WriterId adam = m_store->Register(Writer{"adam", "K", ""});
    for (const std::int64_t time : {100, 200, 500}) {
        Put(value::KindArchive, time, value::CVal(1), {adam, 1});
        Put(value::KindArchive, time, value::CVal(2), {adam, 2});
    }
    Put(value::KindHour, 0, value::CVal(1), {adam, 1});
    Put(value::KindHour, 0, value::CVal(2), {adam, 2});
    Submit({RemoveArchive{m_x, 499}});
    EXPECT_THAT(Versions(value::KindArchive, 100), IsEmpty());
    EXPECT_THAT(Versions(value::KindArchive, 200),
                ElementsAre("2 0, 2 by adam/K/", "1 0, 1 by adam/K/"));
    EXPECT_EQ(Versions(value::KindArchive, 500).size(), 2u);
    EXPECT_EQ(Versions(value::KindHour, 0).size(), 2u);
}

TEST_F(StoreHistoryTest, ReaderTakesNoOtherVersion) {
    {
        platform::SqliteDatabase database;
        ASSERT_TRUE(database.Open(m_folder.Path("other.sqlite")));
        ASSERT_TRUE(database.Execute("PRAGMA user_version = 2"));
    }
    StoreReader reader;
    platform::Notice error;
    EXPECT_FALSE(reader.Open(m_folder.Path("other.sqlite"), error));
    EXPECT_EQ(platform::InWords(error, platform::Translator()),
              m_folder.Path("other.sqlite") + ": Plik danych jest z innej wersji programu");
    StoreReader none;
    EXPECT_FALSE(none.Open(m_folder.Path("brak.sqlite"), error));
    EXPECT_EQ(platform::InWords(error, platform::Translator()),
              m_folder.Path("brak.sqlite") + ": unable to open database file");
}

// ---- late data

class StoreHistoryLateTest : public StoreHistoryTest {
  protected:
    std::int64_t m_hour = value::MakeLocalTime({2024, 3, 10, 7});
    std::int64_t m_day = value::MakeLocalTime({2024, 3, 10});
    std::int64_t m_month = value::MakeLocalTime({2024, 3, 1});
    std::int64_t m_now = value::MakeLocalTime({2024, 4, 2});

    void Load(value::ValueKind kind, std::int64_t time) {
        Submit({MakeReport{vantrel::PeriodAction::Load,
                           m_x,
                           kind,
                           time,
                           ReportRule::Sum,
                           0,
                           m_now,
                           {kServerItself, m_now}}});
    }

    void LoadAll() {
        Put(value::KindArchive, m_hour + 1, value::CVal(1.0));
        Load(value::KindHour, m_hour);
        Load(value::KindDay, m_day);
        Load(value::KindMonth, m_month);
    }

    StoreOutcome Compute(std::size_t most = 100) {
        return Submit({ComputeLate{m_now, most, {kServerItself, m_now}}});
    }

    void Mark(value::ValueKind kind, std::int64_t time) {
        Submit({MarkLate{{m_x, kind, time}, ReportRule::Sum, 0}});
    }

    // Without the status.
    std::string Standing(value::ValueKind kind, std::int64_t time) {
        const std::vector<std::string> versions = Versions(kind, time);
        return versions.empty() ? "none" : versions[0].substr(0, versions[0].find(' '));
    }
};

TEST_F(StoreHistoryLateTest, WhatChangesIsComputedUpToTheMonth) {
    LoadAll();
    Put(value::KindArchive, m_hour + 2, value::CVal(2.0));
    Mark(value::KindHour, m_hour);
    const StoreOutcome outcome = Compute();
    EXPECT_THAT(outcome.changed, ElementsAre(testing::Key(std::pair(value::KindHour, m_hour)),
                                             testing::Key(std::pair(value::KindDay, m_day)),
                                             testing::Key(std::pair(value::KindMonth, m_month))));
    EXPECT_THAT(outcome.kept, IsEmpty());
    EXPECT_FALSE(outcome.lateLeft);
    EXPECT_EQ(Standing(value::KindHour, m_hour), "3.00");
    EXPECT_EQ(Standing(value::KindDay, m_day), "3.00");
    EXPECT_EQ(Standing(value::KindMonth, m_month), "3.00");
    EXPECT_EQ(Versions(value::KindMonth, m_month).size(), 2u);
    EXPECT_THAT(Compute().changed, IsEmpty());
}

TEST_F(StoreHistoryLateTest, WhatComesOutTheSameEndsThere) {
    LoadAll();
    Put(value::KindDay, m_day, value::CVal(7.0), {}, kLoaded);
    Mark(value::KindHour, m_hour);
    EXPECT_THAT(Compute().changed, IsEmpty());
    EXPECT_EQ(Standing(value::KindDay, m_day), "7.00");
}

TEST_F(StoreHistoryLateTest, ReportOfAPersonStaysAndIsTold) {
    LoadAll();
    Put(value::KindHour, m_hour, value::CVal(9.0), {}, value::Status::SetByUser);
    Put(value::KindArchive, m_hour + 2, value::CVal(2.0));
    Mark(value::KindHour, m_hour);
    const StoreOutcome outcome = Compute();
    EXPECT_THAT(outcome.changed, IsEmpty());
    ASSERT_EQ(outcome.kept.size(), 1u);
    EXPECT_EQ(outcome.kept[0].variable, m_x);
    EXPECT_EQ(outcome.kept[0].kind, value::KindHour);
    EXPECT_EQ(outcome.kept[0].time, m_hour);
    EXPECT_EQ(Standing(value::KindHour, m_hour), "9.00");
}

TEST_F(StoreHistoryLateTest, ReportThatWasNotComputedIsLeftToWhoWill) {
    Put(value::KindArchive, m_hour + 1, value::CVal(1.0));
    Mark(value::KindHour, m_hour);
    EXPECT_THAT(Compute().changed, IsEmpty());
    EXPECT_EQ(Standing(value::KindHour, m_hour), "none");
    Submit({MakeReport{vantrel::PeriodAction::Init, m_x, value::KindHour, m_hour}});
    Mark(value::KindHour, m_hour);
    EXPECT_THAT(Compute().changed, IsEmpty());
    EXPECT_EQ(Standing(value::KindHour, m_hour), "");
}

TEST_F(StoreHistoryLateTest, MarksOutlastARestartAndAreTakenInPieces) {
    LoadAll();
    Put(value::KindArchive, m_hour + 2, value::CVal(2.0));
    Mark(value::KindDay, m_day);
    Mark(value::KindHour, m_hour);
    Mark(value::KindHour, m_hour);
    m_store.reset();
    Open();
    // The hour comes before the day that is computed from it.
    StoreOutcome outcome = Compute(1);
    EXPECT_THAT(outcome.changed, ElementsAre(testing::Key(std::pair(value::KindHour, m_hour))));
    EXPECT_TRUE(outcome.lateLeft);
    outcome = Compute(2);
    EXPECT_THAT(outcome.changed, ElementsAre(testing::Key(std::pair(value::KindDay, m_day)),
                                             testing::Key(std::pair(value::KindMonth, m_month))));
    EXPECT_FALSE(outcome.lateLeft);
}

class StoreHistoryChainTest : public StoreHistoryLateTest {
  protected:
    // A value at 7:10, hours up to 11:00 computed from it, and the next value at 10:30.
    void Fill(ReportRule rule) {
        m_rule = rule;
        Put(value::KindArchive, m_hour - 60, value::CVal(1.0));
        Put(value::KindArchive, m_hour + 600, value::CVal(2.0));
        Put(value::KindArchive, m_hour + 3 * 3600 + 1800, value::CVal(9.0));
        for (int hour = 0; hour < 5; ++hour) {
            Submit({MakeReport{vantrel::PeriodAction::Load,
                               m_x,
                               value::KindHour,
                               m_hour + hour * 3600,
                               rule,
                               0,
                               m_now,
                               {kServerItself, m_now}}});
        }
    }

    // The hours that change when the value at 7:50 comes late, counted from 7:00.
    std::vector<int> ChangeLate(double number) {
        Put(value::KindArchive, m_hour + 3000, value::CVal(number));
        Submit({MarkLate{{m_x, value::KindHour, m_hour}, m_rule, 0}});
        std::vector<int> hours;
        for (const auto& [period, sequence] : Compute().changed) {
            EXPECT_EQ(period.first, value::KindHour);
            hours.push_back(static_cast<int>((period.second - m_hour) / 3600));
        }
        return hours;
    }

    ReportRule m_rule = ReportRule::Mean;
};

TEST_F(StoreHistoryChainTest, ValueCountsInTheHoursBehindUpToTheNextOne) {
    Fill(ReportRule::Mean);
    EXPECT_THAT(ChangeLate(5), ElementsAre(0, 1, 2, 3));
    EXPECT_EQ(Standing(value::KindHour, m_hour + 3600), "5.00");
    EXPECT_EQ(Standing(value::KindHour, m_hour + 3 * 3600), "7.00");
}

TEST_F(StoreHistoryChainTest, ReportsOfAPersonBetweenThemEndNothing) {
    Fill(ReportRule::Mean);
    Put(value::KindHour, m_hour, value::CVal(70.0), {}, value::Status::SetByUser);
    Put(value::KindHour, m_hour + 3600, value::CVal(80.0), {}, value::Status::SetByUser);
    EXPECT_THAT(ChangeLate(5), ElementsAre(2, 3));
}

TEST_F(StoreHistoryChainTest, ReadingCountsInTheHourOfTheNextOne) {
    Fill(ReportRule::Increase);
    EXPECT_EQ(Standing(value::KindHour, m_hour + 3 * 3600), "7.00");
    EXPECT_THAT(ChangeLate(4), ElementsAre(0, 3));
    EXPECT_EQ(Standing(value::KindHour, m_hour + 3 * 3600), "5.00");
}

TEST_F(StoreHistoryChainTest, AmountCountsInItsHourAlone) {
    Fill(ReportRule::Sum);
    EXPECT_THAT(ChangeLate(4), ElementsAre(0));
}

}  // namespace
}  // namespace kalvex::server
