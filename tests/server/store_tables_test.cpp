// What the store keeps for clients that come back: changes of reports by number, answers to writes.
#include <gmock/gmock.h>
#include <gtest/gtest.h>

#include <memory>

#include "server/Store.h"
#include "support/scratch_folder.h"
#include "support/waiting_loop.h"

namespace kalvex::server {
namespace {

using testing::ElementsAre;
using testing::Pair;

class StoreTablesTest : public testing::Test {
  protected:
    StoreTablesTest() { Open(); }

    void Open() {
        m_store = std::make_unique<Store>(m_loop);
        platform::Notice error;
        ASSERT_TRUE(m_store->Open(m_folder.Path("store.sqlite"), error));
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

    support::ScratchFolder m_folder;
    support::WaitingLoop m_loop;
    std::unique_ptr<Store> m_store;
};

std::vector<std::string> Dump(const std::vector<NumberedChange>& changes) {
    std::vector<std::string> lines;
    for (const NumberedChange& change : changes) {
        lines.push_back(std::to_string(change.sequence) + ": " + std::to_string(change.kind) + " " +
                        std::to_string(change.time));
    }
    return lines;
}

TEST_F(StoreTablesTest, ChangesOfReportsAreNumberedForTheLifeOfTheFile) {
    const VariableId x = m_store->Register("X");
    EXPECT_THAT(
        Submit({PutValue{x, value::KindDay, 7, value::CVal(1)},
                PutValue{x, value::KindHour, 3600, value::CVal(1)}})
            .changed,
        ElementsAre(Pair(Pair(value::KindHour, 3600), 1u), Pair(Pair(value::KindDay, 7), 2u)));
    EXPECT_THAT(Submit({PutValue{x, value::KindSpan, 5, value::CVal(1)}}).changed,
                ElementsAre(Pair(Pair(value::KindSpan, 5), 3u)));
    EXPECT_THAT(Submit({PutValue{x, value::KindHour, 3600, value::CVal(2)}}).changed,
                ElementsAre(Pair(Pair(value::KindHour, 3600), 4u)));
    Submit({PutValue{x, value::KindHour, 3600, value::CVal(2)}});
    m_store.reset();
    Open();
    EXPECT_THAT(Dump(m_store->ChangesAtOpening()), ElementsAre("2: 3 7", "3: 5 5", "4: 2 3600"));
    EXPECT_THAT(
        Submit({PutValue{m_store->Register("X"), value::KindSpan, 6, value::CVal(1)}}).changed,
        ElementsAre(Pair(Pair(value::KindSpan, 6), 5u)));
}

TEST_F(StoreTablesTest, TheLastHundredThousandChangesAreKept) {
    const VariableId x = m_store->Register("X");
    std::vector<StoreOperation> operations;
    for (std::int64_t time = 1; time <= 101000; ++time) {
        operations.emplace_back(PutValue{x, value::KindSpan, time, value::CVal(1)});
    }
    Submit(std::move(operations));
    m_store.reset();
    Open();
    ASSERT_EQ(m_store->ChangesAtOpening().size(), 100000u);
    EXPECT_EQ(m_store->ChangesAtOpening().front().sequence, 1001u);
    EXPECT_EQ(m_store->ChangesAtOpening().back().sequence, 101000u);
}

TEST_F(StoreTablesTest, AnswersAreKeptAndDropped) {
    Submit({SaveAnswer{"b", 1, 3, 0}, SaveAnswer{"a", UINT64_MAX, 1, 5},
            SaveAnswer{"a", 2, 2, 65535}, SaveAnswer{"c", 1, 4, 0}, SaveAnswer{"c", 2, 5, 0},
            DropAnswers{"a", 2}, DropAnswers{"c", 0}});
    m_store.reset();
    Open();
    std::vector<std::string> lines;
    for (const SaveAnswer& answer : m_store->AnswersAtOpening()) {
        lines.push_back(answer.token + " " + std::to_string(answer.serial) + " " +
                        std::to_string(answer.number) + " " + std::to_string(answer.result));
    }
    EXPECT_THAT(lines, ElementsAre("a 18446744073709551615 1 5", "b 1 3 0"));
}

}  // namespace
}  // namespace kalvex::server
