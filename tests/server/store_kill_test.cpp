// What is acknowledged is on disk, however the process ends.
#include <gtest/gtest.h>
#include <unistd.h>

#include <cstdint>
#include <map>
#include <memory>
#include <vector>

#include "hand_pause.h"
#include "killed_writer.h"
#include "server/Store.h"
#include "support/scratch_folder.h"
#include "support/waiting_loop.h"

namespace kalvex::server {
namespace {

constexpr int kRounds = 50;
constexpr int kBatch = 7;

// Writes archive and report values without end and tells the number of each acknowledged batch. Now
// and then the file is locked, so that a transaction fails and is repeated.
[[noreturn]] void WriteUntilKilled(const std::string& path, std::int64_t first, int tell) {
    support::WaitingLoop loop;
    const auto pause = std::make_shared<HandPause>();
    Store store(loop, {.limits = {}, .pause = pause});
    platform::SqliteDatabase other;
    std::size_t failures = 0;
    platform::Notice error;
    if (!store.Open(path, error) || !other.Open(path)) ::_exit(1);
    const VariableId x = store.Register("X");
    for (std::int64_t batch = first;; ++batch) {
        std::vector<StoreOperation> operations;
        for (std::int64_t index = 0; index < kBatch; ++index) {
            const std::int64_t time = batch * kBatch + index;
            operations.push_back(PutValue{x, value::KindArchive, time, value::CVal(time * 3)});
        }
        operations.push_back(PutValue{x, value::KindHour, batch * 3600, value::CVal(batch)});
        const bool locked = batch % 7 == 0 && other.Execute("BEGIN IMMEDIATE");
        const bool taken =
            store.Submit(std::move(operations), Store::Urgency::Now,
                         [batch, tell](const StoreOutcome&) { TellConfirmed(tell, batch); });
        if (!taken) ::_exit(3);
        if (locked) {
            pause->Await(++failures);
            other.Execute("COMMIT");
            pause->Allow(1);
        }
        // Keeps a few batches under way, so that some are cut off in the middle.
        if (batch % 5 == 0) loop.WaitAndRun();
    }
}

std::vector<value::CVal> ReadAll(Store& store, support::WaitingLoop& loop, VariableId x,
                                 value::ValueKind kind) {
    std::vector<value::CVal> values;
    bool answered = false;
    store.Read({x, kind, 0, INT64_MAX, 10'000'000}, [&](StorePiece piece) {
        EXPECT_TRUE(piece.read);
        values = std::move(piece.values);
        answered = true;
    });
    while (!answered) loop.WaitAndRun();
    return values;
}

TEST(StoreKillTest, EveryAcknowledgedWriteIsFound) {
    const support::ScratchFolder folder;
    const std::string path = folder.Path("store.sqlite");
    std::vector<std::int64_t> acknowledged;
    std::int64_t next = 1;
    for (int round = 0; round < kRounds; ++round) {
        const std::size_t enough = 1 + static_cast<std::size_t>(round) * 13 % 101;
        const std::vector<std::int64_t> more =
            RunAndKill([&](int tell) { WriteUntilKilled(path, next, tell); }, enough);
        ASSERT_GE(more.size(), enough);
        acknowledged.insert(acknowledged.end(), more.begin(), more.end());
        next = more.back() + 1000000;

        support::WaitingLoop loop;
        Store store(loop);
        platform::Notice error;
        ASSERT_TRUE(store.Open(path, error));
        const VariableId x = store.Register("X");
        std::map<std::int64_t, std::int64_t> archive;
        for (const value::CVal& value : ReadAll(store, loop, x, value::KindArchive)) {
            archive[value.GetTime()] = value.Integer();
        }
        std::map<std::int64_t, std::int64_t> hours;
        for (const value::CVal& value : ReadAll(store, loop, x, value::KindHour)) {
            hours[value.GetTime()] = value.Integer();
        }
        for (const std::int64_t batch : acknowledged) {
            ASSERT_EQ(hours.count(batch * 3600), 1u) << batch;
            ASSERT_EQ(hours[batch * 3600], batch);
            for (std::int64_t time = batch * kBatch; time < (batch + 1) * kBatch; ++time) {
                ASSERT_EQ(archive.count(time), 1u) << time;
                ASSERT_EQ(archive[time], time * 3);
            }
        }
        // A batch is there as a whole or not at all.
        ASSERT_EQ(archive.size(), hours.size() * kBatch);
    }
}

}  // namespace
}  // namespace kalvex::server
