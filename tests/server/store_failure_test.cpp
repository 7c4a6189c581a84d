// What the store does when its file cannot be written: nothing that was taken is lost or overtaken,
// and what waits is bounded.
#include <gmock/gmock.h>
#include <gtest/gtest.h>

#include <cstdio>
#include <cstdlib>
#include <filesystem>
#include <fstream>
#include <memory>
#include <thread>

#include "hand_pause.h"
#include "server/Store.h"
#include "support/one_thread.h"
#include "support/scratch_folder.h"
#include "support/small_disk.h"
#include "support/waiting_loop.h"
#include "support/zone_scope.h"
#include "value/LocalTime.h"

namespace kalvex::server {
namespace {

using testing::ElementsAre;
using testing::IsEmpty;
using testing::Pair;

constexpr std::int64_t kBatch = 20000;

class StoreFailureTest : public testing::Test {
  protected:
    // What was free stays free.
    ~StoreFailureTest() override { m_pause->Free(); }

    void Open(const std::string& file = "store.sqlite") {
        m_path = m_folder.Path(file);
        m_store = std::make_unique<Store>(m_loop, m_settings);
        m_store->OnTrouble([this](const StoreTrouble& trouble) {
            m_troubles.push_back(trouble.over ? "over " + std::to_string(trouble.operations)
                                              : trouble.error);
        });
        platform::Notice error;
        ASSERT_TRUE(m_store->Open(m_path, error));
        ASSERT_TRUE(m_other.Open(m_path));
        m_x = m_store->Register("X");
    }

    void Execute(const char* sql) { ASSERT_TRUE(m_other.Execute(sql)) << m_other.ErrorText(); }

    std::int64_t Count(const std::string& what) {
        platform::SqliteStatement select;
        const std::string sql = "SELECT count(*) FROM " + what;
        EXPECT_TRUE(select.Prepare(m_other, sql.c_str())) << m_other.ErrorText();
        return select.Next() ? select.Integer(0) : -1;
    }

    // Its number is told when it is written.
    bool Submit(int number, std::vector<StoreOperation> operations,
                Store::Urgency urgency = Store::Urgency::Now) {
        return m_store->Submit(std::move(operations), urgency,
                               [this, number](const StoreOutcome& outcome) {
                                   m_written.push_back(number);
                                   m_changed = outcome.changed;
                               });
    }

    std::vector<StoreOperation> Archive(std::int64_t from, std::int64_t count) {
        std::vector<StoreOperation> operations;
        for (std::int64_t time = from; time < from + count; ++time) {
            operations.push_back(PutValue{m_x, value::KindArchive, time, value::CVal(time)});
        }
        return operations;
    }

    void Finish() {
        m_store->Flush();
        while (m_loop.Run()) {
        }
    }

    support::ZoneScope m_zone{"Europe/Warsaw"};
    support::ScratchFolder m_folder;
    std::string m_path;
    support::WaitingLoop m_loop;
    std::shared_ptr<HandPause> m_pause = std::make_shared<HandPause>();
    StoreSettings m_settings{.limits = {}, .pause = m_pause};
    platform::SqliteDatabase m_other;
    std::unique_ptr<Store> m_store;
    VariableId m_x = 0;
    std::vector<int> m_written;
    ChangedReports m_changed;
    std::vector<std::string> m_troubles;
};

TEST_F(StoreFailureTest, FailedTransactionIsRepeatedAndTheRestWaitsBehindIt) {
    Open();
    Execute("ALTER TABLE history RENAME TO elsewhere");
    Submit(1,
           {SaveLastValue{m_x, value::CVal(1)}, PutValue{m_x, value::KindHour, 0, value::CVal(1)}});
    m_pause->Await(1);
    Submit(2, {SaveLastValue{m_x, value::CVal(2)}});
    m_pause->Allow(1);
    m_pause->Await(2);
    m_loop.Run();
    EXPECT_THAT(m_troubles, ElementsAre("no such table: history"));
    EXPECT_THAT(m_written, IsEmpty());
    EXPECT_EQ(Count("last_values"), 0);

    Execute("ALTER TABLE elsewhere RENAME TO history");
    m_pause->Allow(1);
    Finish();
    EXPECT_THAT(m_troubles, ElementsAre("no such table: history", "over 3"));
    EXPECT_THAT(m_written, ElementsAre(1, 2));
    EXPECT_EQ(Count("history"), 1);
    EXPECT_EQ(Count("last_values WHERE value = 2"), 1);
    EXPECT_EQ(Count("variables"), 1);
}

TEST_F(StoreFailureTest, PausesDoubleUpToTwoSecondsAndBeginAnew) {
    Open();
    for (int outage = 0; outage < 2; ++outage) {
        Execute("BEGIN IMMEDIATE");
        Submit(outage, Archive(outage, 1));
        m_pause->Allow(7);
        m_pause->Await(static_cast<std::size_t>(8 * (outage + 1)));
        Execute("COMMIT");
        m_pause->Allow(1);
        Finish();
    }
    EXPECT_THAT(m_pause->Await(16), ElementsAre(100, 200, 400, 800, 1600, 2000, 2000, 2000, 100,
                                                200, 400, 800, 1600, 2000, 2000, 2000));
    EXPECT_THAT(m_troubles,
                ElementsAre("database is locked", "over 1", "database is locked", "over 1"));
    EXPECT_THAT(m_written, ElementsAre(0, 1));
}

TEST_F(StoreFailureTest, FullDiskLosesNothing) {
    m_folder.MakeFolder("dysk");
    if (!support::MountSmallDisk(m_folder.Path("dysk"), 2048))
        GTEST_SKIP() << "no disk of its own for this user";
    Open("dysk/store.sqlite");
    m_folder.Put("dysk/inny", std::string(1600 * 1024, 'x'));
    for (int number = 0; number < 10; ++number) Submit(number, Archive(number * 1000, 1000));
    m_pause->Await(1);
    m_loop.Run();
    ASSERT_EQ(m_troubles.size(), 1u);
    EXPECT_EQ(m_troubles[0], "database or disk is full");
    EXPECT_LT(m_written.size(), 10u);

    std::filesystem::remove(m_folder.Path("dysk/inny"));
    m_pause->Free();
    Finish();
    EXPECT_THAT(m_written, ElementsAre(0, 1, 2, 3, 4, 5, 6, 7, 8, 9));
    EXPECT_EQ(Count("history"), 10000);
    EXPECT_EQ(m_troubles.size(), 2u);
    m_store->Close();
    m_other.Close();
    umount2(m_folder.Path("dysk").c_str(), MNT_DETACH);
}

TEST_F(StoreFailureTest, StoreOpensOnAFullDiskAndWritesWhenThereIsRoom) {
    m_folder.MakeFolder("dysk");
    if (!support::MountSmallDisk(m_folder.Path("dysk"), 2048))
        GTEST_SKIP() << "no disk of its own for this user";
    Open("dysk/store.sqlite");
    Submit(1, Archive(0, 1000));
    Finish();
    m_store->Close();
    m_other.Close();
    m_store.reset();
    std::ofstream filler(m_folder.Path("dysk/inny"));
    while (filler << std::string(1024, 'x') << std::flush) {
    }
    filler.close();
    Open("dysk/store.sqlite");
    std::size_t read = 0;
    m_store->Read({m_x, value::KindArchive, 0, 2000, 2000},
                  [&](StorePiece piece) { read = piece.values.size(); });
    Finish();
    EXPECT_EQ(read, 1000u);
    EXPECT_FALSE(std::filesystem::exists(m_path + ".reserve"));
    Submit(2, Archive(1000, 15000));
    m_pause->Await(1);
    m_loop.Run();
    EXPECT_THAT(m_troubles, ElementsAre("database or disk is full"));

    std::filesystem::remove(m_folder.Path("dysk/inny"));
    m_pause->Free();
    Finish();
    EXPECT_THAT(m_written, ElementsAre(1, 2));
    EXPECT_EQ(Count("history"), 16000);
    EXPECT_EQ(std::filesystem::file_size(m_path + ".reserve"), 256u << 10);
    m_store.reset();
    m_other.Close();
    umount2(m_folder.Path("dysk").c_str(), MNT_DETACH);
}

TEST_F(StoreFailureTest, LongSubmissionIsCutAndAnsweredOnce) {
    Open();
    Execute(
        "CREATE TRIGGER stop BEFORE INSERT ON history WHEN NEW.time = 30000 "
        "BEGIN SELECT RAISE(ABORT, 'zatrzymane'); END");
    std::vector<StoreOperation> operations = Archive(0, 45000);
    operations.front() = PutValue{m_x, value::KindHour, 0, value::CVal(1)};
    operations.back() = PutValue{m_x, value::KindDay, 0, value::CVal(1)};
    Submit(1, std::move(operations));
    Submit(2, {});
    m_pause->Await(1);
    m_loop.Run();
    EXPECT_EQ(Count("history"), kBatch - 1);  // and a name
    EXPECT_THAT(m_written, IsEmpty());
    Execute("DROP TRIGGER stop");
    m_pause->Free();
    Finish();
    EXPECT_EQ(Count("history"), 45000);
    EXPECT_THAT(m_written, ElementsAre(1, 2));
}

TEST_F(StoreFailureTest, CutSubmissionTellsTheReportsOfAllItsParts) {
    Open();
    std::vector<StoreOperation> operations = Archive(0, 45000);
    operations.front() = PutValue{m_x, value::KindHour, 0, value::CVal(1)};
    operations.back() = PutValue{m_x, value::KindSpan, 7, value::CVal(1)};
    Submit(1, std::move(operations));
    Finish();
    EXPECT_THAT(m_changed, ElementsAre(Pair(Pair(value::KindHour, 0), 1u),
                                       Pair(Pair(value::KindSpan, 7), 2u)));
}

TEST_F(StoreFailureTest, ChangesThatWereTakenBackAreNotKept) {
    Open();
    Execute("ALTER TABLE progress RENAME TO elsewhere");
    Submit(1, {PutValue{m_x, value::KindHour, 0, value::CVal(1)}, SaveProgress{"hour", 1}});
    m_pause->Await(1);
    EXPECT_EQ(Count("report_changes"), 0);
    Execute("ALTER TABLE elsewhere RENAME TO progress");
    m_pause->Allow(1);
    Finish();
    ASSERT_EQ(m_changed.size(), 1u);
    EXPECT_EQ(m_changed.begin()->first, std::pair(value::KindHour, std::int64_t{0}));
    EXPECT_EQ(Count("report_changes"), 1);
    EXPECT_EQ(Count("report_changes WHERE sequence = " + std::to_string(m_changed.begin()->second)),
              1);
}

TEST_F(StoreFailureTest, SubmissionThatFitsATransactionIsNotCut) {
    Open();
    Execute(
        "CREATE TRIGGER stop BEFORE INSERT ON history WHEN NEW.time = 25000 "
        "BEGIN SELECT RAISE(ABORT, 'zatrzymane'); END");
    Execute("BEGIN IMMEDIATE");
    Submit(0, {});
    m_pause->Await(1);
    Submit(1, Archive(0, 10000));
    Submit(2, Archive(10000, kBatch));
    Execute("COMMIT");
    m_pause->Allow(1);
    m_pause->Await(2);
    EXPECT_EQ(Count("history"), 10000);
    Execute("DROP TRIGGER stop");
    m_pause->Free();
    Finish();
    EXPECT_EQ(Count("history"), 30000);
}

TEST_F(StoreFailureTest, OneSubmissionHasTheValuesOfVeryManyVariables) {
    constexpr std::int64_t kMany = 600'000;
    Open();
    std::vector<StoreOperation> operations;
    for (std::int64_t variable = 1; variable <= kMany; ++variable) {
        operations.push_back(SaveLastValue{variable, value::CVal(variable)});
    }
    EXPECT_TRUE(Submit(1, std::move(operations)));
    Finish();
    EXPECT_THAT(m_written, ElementsAre(1));
    EXPECT_EQ(Count("last_values WHERE value = variable"), kMany);
}

TEST_F(StoreFailureTest, ManyNewNamesAreThereBeforeTheFirstValueOfAny) {
    Open();
    Execute(
        "CREATE TRIGGER stop BEFORE INSERT ON history "
        "BEGIN SELECT RAISE(ABORT, 'zatrzymane'); END");
    for (int index = 0; index < 45000; ++index) m_store->Register("V" + std::to_string(index));
    Submit(1, Archive(0, 1));
    m_pause->Await(1);
    EXPECT_EQ(Count("variables"), 2 * kBatch);
    Execute("DROP TRIGGER stop");
    m_pause->Free();
    Finish();
    EXPECT_EQ(Count("variables"), 45001);
    EXPECT_EQ(Count("history"), 1);
}

TEST_F(StoreFailureTest, WhatWaitsIsBoundedAndTheBoundRefusesNothingForItsOwnSize) {
    m_settings.limits = {.clients = 10000, .urgent = 20000, .background = 1000};
    Open();
    Execute("BEGIN IMMEDIATE");
    EXPECT_TRUE(m_store->HasRoomForClients());
    EXPECT_TRUE(
        Submit(1, {PutValue{m_x, value::KindHour, 0, value::CVal(std::string(9000, 'a'))}}));
    EXPECT_TRUE(m_store->HasRoomForClients());
    EXPECT_TRUE(Submit(2, {PutValue{m_x, value::KindDay, 0, value::CVal(std::string(9000, 'a'))}}));
    EXPECT_FALSE(m_store->HasRoomForClients());
    EXPECT_TRUE(m_store->HasRoom(Store::Urgency::Now));
    EXPECT_TRUE(Submit(3, Archive(1, 50000)));
    EXPECT_FALSE(m_store->HasRoom(Store::Urgency::Now));
    EXPECT_FALSE(Submit(4, {}));
    EXPECT_TRUE(Submit(5, Archive(0, 100), Store::Urgency::Background));
    EXPECT_FALSE(Submit(6, {}, Store::Urgency::Background));
    Execute("COMMIT");
    m_pause->Free();
    Finish();
    EXPECT_THAT(m_written, ElementsAre(1, 2, 3, 5));
    EXPECT_TRUE(m_store->HasRoomForClients());
    EXPECT_TRUE(Submit(7, {}, Store::Urgency::Background));
}

// The writer hangs at the first one, so that the others are there together.
TEST_F(StoreFailureTest, BackgroundComesBehindAllThatWasUrgentBefore) {
    const std::int64_t hour = value::MakeLocalTime({2024, 3, 10, 7});
    Open();
    Execute("BEGIN IMMEDIATE");
    Submit(1, {PutValue{m_x, value::KindArchive, hour - 1, value::CVal(1.0)}});
    m_pause->Await(1);
    Submit(2, Archive(0, kBatch - 1));
    Submit(3, {PutValue{m_x, value::KindArchive, hour, value::CVal(1.0)},
               PutValue{m_x, value::KindArchive, hour, value::CVal(2.0)}});
    Submit(4, {MakeReport{vantrel::PeriodAction::Load, m_x, value::KindHour, hour}},
           Store::Urgency::Background);
    Execute("COMMIT");
    m_pause->Free();
    Finish();
    EXPECT_THAT(m_written, ElementsAre(1, 2, 3, 4));
    EXPECT_EQ(Count("history WHERE kind = 2 AND value = 2"), 1);
}

TEST_F(StoreFailureTest, ReadWaitsSomeSecondsForTheWritesBeforeIt) {
    Open();
    Submit(1, Archive(0, 1));
    Finish();
    Execute("BEGIN IMMEDIATE");
    std::vector<std::string> answers;
    const auto read = [&] {
        m_store->Read({m_x, value::KindArchive, 0, 10, 10}, [&](StorePiece piece) {
            answers.push_back(piece.read ? std::to_string(piece.values.size()) : "failed");
        });
    };
    read();
    m_loop.WaitAndRun();
    EXPECT_THAT(answers, ElementsAre("1"));
    Submit(2, Archive(1, 1));
    read();
    m_pause->Allow(4);
    m_pause->Await(5);
    m_loop.Run();
    EXPECT_THAT(answers, ElementsAre("1"));
    m_pause->Allow(1);
    m_pause->Await(6);
    while (answers.size() < 2) m_loop.WaitAndRun();
    EXPECT_THAT(answers, ElementsAre("1", "failed"));
    Execute("COMMIT");
    m_pause->Free();
    Finish();
    read();
    Finish();
    EXPECT_THAT(answers, ElementsAre("1", "failed", "2"));
}

TEST_F(StoreFailureTest, ClosingGivesUpAndTellsHowMuch) {
    Open();
    Execute("BEGIN IMMEDIATE");
    Submit(1, Archive(0, 3));
    Submit(2, Archive(3, 4));
    Submit(3, Archive(7, 5), Store::Urgency::Background);
    m_pause->Free();
    const StoreTrouble left = m_store->Close();
    EXPECT_FALSE(left.over);
    EXPECT_EQ(left.error, "database is locked");
    EXPECT_EQ(left.operations, 7u);
    Execute("COMMIT");
    EXPECT_EQ(Count("history"), 0);
}

TEST_F(StoreFailureTest, ClosingBeginsTheShortPausesAnew) {
    Open();
    Execute("BEGIN IMMEDIATE");
    Submit(1, Archive(0, 3));
    m_pause->Allow(5);
    m_pause->Await(6);
    // Closing cuts the one that lasts.
    std::thread later([this] {
        m_pause->Await(7);
        m_pause->Allow(3);
    });
    m_store->Close();
    later.join();
    Execute("COMMIT");
    EXPECT_THAT(m_pause->Await(9), ElementsAre(100, 200, 400, 800, 1600, 2000, 100, 200, 400));
}

// What is under way is written, and a transaction more; what waits behind them is told.
TEST_F(StoreFailureTest, ClosingBeginsNothingWhenItsTimeIsOver) {
    std::int64_t now = 0;
    m_settings.now = [&now] { return now += 1'000'000; };
    Open();
    Execute("BEGIN IMMEDIATE");
    Submit(1, Archive(0, 3));
    m_pause->Await(1);
    Submit(2, Archive(3, 15000));
    Submit(3, Archive(15003, 15000));
    Execute("COMMIT");
    const StoreTrouble left = m_store->Close();
    EXPECT_FALSE(left.over);
    EXPECT_EQ(left.error, "");
    EXPECT_EQ(left.operations, 15000u);
    EXPECT_EQ(Count("history"), 15003);
}

TEST_F(StoreFailureTest, ClosingWritesWhenItWorksAgain) {
    Open();
    Execute("BEGIN IMMEDIATE");
    Submit(1, Archive(0, 3));
    m_pause->Await(1);
    Execute("COMMIT");
    const StoreTrouble left = m_store->Close();
    EXPECT_TRUE(left.over);
    EXPECT_EQ(left.operations, 0u);
    EXPECT_EQ(Count("history"), 3);
}

TEST(StoreFailureThreadsTest, StoreWithoutThreadsDoesNotOpen) {
    if (::geteuid() != 0) GTEST_SKIP() << "only root can be another account";
    const support::ScratchFolder folder;
    const auto open = [&folder] {
        if (!support::LeaveOneThread(folder.Path())) std::_Exit(2);
        platform::PostedWork loop;
        Store store(loop);
        platform::Notice error;
        const bool opened = store.Open(folder.Path("store.sqlite"), error);
        std::fprintf(stderr, "%s", InWords(error, platform::Translator()).c_str());
        std::_Exit(opened ? 1 : 0);
    };
    EXPECT_EXIT(open(), testing::ExitedWithCode(0), "^Resource temporarily unavailable$");
}

}  // namespace
}  // namespace kalvex::server
