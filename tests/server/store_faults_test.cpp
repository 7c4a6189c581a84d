// The store on a disk that fails: at each place once, and from each place on for ten seconds.
#include <gtest/gtest.h>

#include <algorithm>
#include <chrono>
#include <filesystem>
#include <memory>
#include <string>
#include <vector>

#include "faulty_disk.h"
#include "server/Store.h"
#include "support/scratch_folder.h"
#include "support/waiting_loop.h"
#include "support/zone_scope.h"
#include "value/LocalTime.h"

namespace kalvex::server {
namespace {

constexpr std::int64_t kTenSeconds = 10'000;

// Ends the disk's fault once the writer has waited for so long.
class MendingPause final : public StorePause {
  public:
    MendingPause(FaultyDisk& disk, std::int64_t after) : m_disk(disk), m_left(after) {}

    void Wait(std::chrono::milliseconds time) override {
        m_left -= time.count();
        if (m_left <= 0) m_disk.Mend();
    }
    void Cut() override {}

  private:
    FaultyDisk& m_disk;
    std::int64_t m_left;
};

// All rows of all tables; what a moment has brought about is passed over.
std::vector<std::string> Dump(const std::string& path) {
    platform::SqliteDatabase database;
    EXPECT_TRUE(database.OpenExisting(path));
    std::vector<std::string> rows;
    const auto read = [&](const std::string& sql, int columns) {
        platform::SqliteStatement select;
        EXPECT_TRUE(select.Prepare(database, sql.c_str())) << database.ErrorText();
        while (select.Next()) {
            std::string row = sql;
            for (int column = 0; column < columns; ++column) row += '|' + select.Text(column);
            rows.push_back(std::move(row));
        }
    };
    read("PRAGMA integrity_check", 1);
    read("SELECT * FROM variables", 2);
    read("SELECT * FROM writers", 4);
    read("SELECT * FROM last_values ORDER BY variable", 13);
    read("SELECT * FROM history", 8);
    read("SELECT * FROM versions", 9);
    read("SELECT * FROM progress", 2);
    // A transaction that was taken back has used up its numbers.
    read("SELECT kind, time FROM report_changes ORDER BY sequence", 2);
    read("SELECT * FROM alarms", 8);
    read("SELECT * FROM rollups", 14);
    read("SELECT * FROM rollup_marks", 2);
    return rows;
}

// The first row in which two dumps differ, as it is and as it should be; empty when none does.
std::string Difference(const std::vector<std::string>& found,
                       const std::vector<std::string>& expected) {
    const auto [is, should] =
        std::mismatch(found.begin(), found.end(), expected.begin(), expected.end());
    if (is == found.end() && should == expected.end()) return {};
    return (is == found.end() ? "nothing" : *is) + " instead of " +
           (should == expected.end() ? "nothing" : *should);
}

class StoreFaultsTest : public testing::Test {
  protected:
    // What a server does with its store, enough of it for the log to be brought into the file.
    void Use(Store& store) {
        const std::int64_t hour = value::MakeLocalTime({2024, 3, 10, 7});
        const std::string text(4000, 'x');
        std::vector<int> written;
        int submitted = 0;
        const auto submit = [&](std::vector<StoreOperation> operations, Store::Urgency urgency) {
            const int number = submitted++;
            EXPECT_TRUE(
                store.Submit(std::move(operations), urgency,
                             [&, number](const StoreOutcome&) { written.push_back(number); }));
            while (written.size() < static_cast<std::size_t>(submitted)) m_loop.WaitAndRun();
        };
        for (int round = 0; round < 3; ++round) {
            const VariableId x = store.Register("X" + std::to_string(round));
            const Origin origin{store.Register(Writer{"adam", "K" + std::to_string(round), ""}),
                                hour};
            std::vector<StoreOperation> values;
            for (std::int64_t k = 0; k < 400; ++k) {
                values.emplace_back(
                    PutValue{x, value::KindArchive, hour + k, value::CVal(text), origin});
            }
            submit(std::move(values), Store::Urgency::Now);
            submit({SaveLastValue{x, value::CVal(round), origin},
                    PutValue{x, value::KindArchive, hour, value::CVal(1.5), origin}},
                   Store::Urgency::Now);
            submit({MakeReport{vantrel::PeriodAction::Load, x, value::KindHour, hour,
                               ReportRule::Mean, 0, hour + 7200, origin},
                    MarkGap{x, hour + 500, hour + 600}, SaveProgress{"p", hour + round}},
                   Store::Urgency::Background);
            const AlarmId alarm = store.NewAlarm();
            submit({BeginAlarm{alarm, x, AlarmStage::High, hour, 12.5},
                    AcknowledgeAlarms{x, origin}, EndAlarm{alarm, hour + 60}},
                   Store::Urgency::Now);
            submit({RollUp{hour + 7200, INT64_MAX}}, Store::Urgency::Background);
            submit({RemoveArchive{x, hour + 100}}, Store::Urgency::Background);
        }
    }

    // The file after such a use on a disk that fails so; all is acknowledged, in order.
    std::vector<std::string> Rows(FaultyDisk& disk, std::int64_t after, std::int64_t count,
                                  std::int64_t seconds) {
        const support::ScratchFolder folder;
        const std::string path = folder.Path("store.sqlite");
        {
            Store store(m_loop, {.pause = std::make_shared<MendingPause>(disk, seconds)});
            platform::Notice error;
            EXPECT_TRUE(store.Open(path, error));
            disk.Fail(after, count);
            Use(store);
            disk.Mend();
            store.Close();
        }
        return Dump(path);
    }

    support::ZoneScope m_zone{"Europe/Warsaw"};
    support::WaitingLoop m_loop;
};

#if defined(__SANITIZE_ADDRESS__) || defined(__SANITIZE_THREAD__)
constexpr int kNear = 3;  // it all takes so much longer
constexpr int kLeastRuns = 15;
#else
constexpr int kNear = 8;
constexpr int kLeastRuns = 40;
#endif

// From each place to the next, which are the further apart the more of them there have been.
std::int64_t Next(std::int64_t place) {
    return place + 1 + place / kNear;
}

TEST_F(StoreFaultsTest, EachFaultOnceLosesNothing) {
    FaultyDisk disk;
    const std::vector<std::string> expected = Rows(disk, 0, 0, 0);
    ASSERT_GT(expected.size(), 900u);
    std::int64_t place = 0;
    int runs = 0;
    for (;; place = Next(place), ++runs) {
        ASSERT_EQ(Difference(Rows(disk, place, 1, kTenSeconds), expected), "") << place;
        if (disk.Failures() == 0) break;
    }
    EXPECT_GT(runs, kLeastRuns);
}

TEST_F(StoreFaultsTest, TenSecondsOfFaultsLoseNothing) {
    FaultyDisk disk;
    const std::vector<std::string> expected = Rows(disk, 0, 0, 0);
    std::int64_t place = 0;
    int runs = 0;
    for (;; place = Next(place), ++runs) {
        ASSERT_EQ(Difference(Rows(disk, place, INT64_MAX, kTenSeconds), expected), "") << place;
        if (disk.Failures() == 0) break;
    }
    EXPECT_GT(runs, kLeastRuns);
}

TEST_F(StoreFaultsTest, ReadThatStandsHoldsUpNoOther) {
    FaultyDisk disk;
    const support::ScratchFolder folder;
    Store store(m_loop);
    platform::Notice error;
    ASSERT_TRUE(store.Open(folder.Path("store.sqlite"), error));
    Use(store);
    std::vector<int> answered;
    const auto read = [&](int number) {
        const VariableId x = store.Register("X" + std::to_string(number));
        store.Read({x, value::KindArchive, 0, INT64_MAX, 10}, [&, number](const StorePiece& piece) {
            EXPECT_EQ(piece.values.size(), 10u);
            answered.push_back(number);
        });
    };
    disk.HoldRead();
    read(1);
    disk.AwaitHeld();
    read(2);
    while (answered.empty()) m_loop.WaitAndRun();
    EXPECT_EQ(answered, std::vector{2});
    disk.Release();
    while (answered.size() < 2) m_loop.WaitAndRun();
    EXPECT_EQ(answered, (std::vector{2, 1}));
}

// Either it opens, or it can be opened when the disk is whole again.
TEST_F(StoreFaultsTest, FaultWhileAFileIsOpenedLeavesItAsItWas) {
    FaultyDisk disk;
    const support::ScratchFolder folder;
    const std::string kept = folder.Path("kept.sqlite");
    {
        Store store(m_loop);
        platform::Notice error;
        ASSERT_TRUE(store.Open(kept, error));
        Use(store);
    }
    const std::vector<std::string> expected = Dump(kept);
    const std::string path = folder.Path("store.sqlite");
    const auto opens = [&] {
        Store store(m_loop, {.pause = std::make_shared<MendingPause>(disk, kTenSeconds)});
        platform::Notice error;
        return store.Open(path, error);
    };
    bool failed = true;
    for (std::int64_t place = 0; failed; ++place) {
        std::filesystem::copy_file(kept, path, std::filesystem::copy_options::overwrite_existing);
        disk.Fail(place, 1);
        opens();
        failed = disk.Failures() > 0;
        disk.Mend();
        ASSERT_TRUE(opens()) << place;
        ASSERT_EQ(Difference(Dump(path), expected), "") << place;
    }
}

}  // namespace
}  // namespace kalvex::server
