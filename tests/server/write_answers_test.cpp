// Which writes have been answered, and how many of them are remembered.
#include "server/WriteAnswers.h"

#include <gmock/gmock.h>
#include <gtest/gtest.h>

namespace kalvex::server {
namespace {

using testing::ElementsAre;
using testing::IsEmpty;

class WriteAnswersTest : public testing::Test {
  protected:
    // "new", "under way", or the result.
    std::string Meet(const std::string& token, std::uint64_t serial, vantrel::RequestId id = 1) {
        const WriteAnswers::Meeting meeting = m_answers.Meet(token, serial, {9, id});
        EXPECT_FALSE(meeting.isNew && meeting.result);
        if (meeting.isNew) return "new";
        return meeting.result ? std::to_string(*meeting.result) : "under way";
    }

    // What the store is told.
    std::vector<std::string> Keep(const std::string& token, std::uint64_t serial,
                                  std::uint16_t result) {
        std::vector<StoreOperation> operations;
        m_answers.Keep(token, serial, result, operations);
        std::vector<std::string> lines;
        for (const StoreOperation& operation : operations) {
            if (const auto* save = std::get_if<SaveAnswer>(&operation)) {
                lines.push_back("save " + save->token + " " + std::to_string(save->serial) + " " +
                                std::to_string(save->number) + " " + std::to_string(save->result));
            } else {
                const auto& drop = std::get<DropAnswers>(operation);
                lines.push_back("drop " + drop.token + " " + std::to_string(drop.serial));
            }
        }
        return lines;
    }

    std::vector<std::string> Settle(const std::string& token, std::uint64_t serial,
                                    std::uint16_t result) {
        std::vector<std::string> lines;
        for (const WriteAnswers::Waiter& waiter : m_answers.Settle(token, serial, result)) {
            lines.push_back(std::to_string(waiter.session) + " " + std::to_string(waiter.id));
        }
        return lines;
    }

    // A write that is done at once.
    void Do(const std::string& token, std::uint64_t serial) {
        Meet(token, serial);
        Keep(token, serial, 0);
        Settle(token, serial, 0);
    }

    WriteAnswers m_answers;
};

TEST_F(WriteAnswersTest, FirstAnswerIsEveryAnswer) {
    EXPECT_EQ(Meet("a", 7, 1), "new");
    EXPECT_THAT(Keep("a", 7, 0), ElementsAre("save a 7 1 0"));
    EXPECT_EQ(Meet("a", 7, 2), "under way");
    EXPECT_EQ(Meet("b", 7), "new");
    EXPECT_EQ(Meet("a", 5), "new");
    EXPECT_THAT(Settle("a", 7, 5), ElementsAre("9 1", "9 2"));
    EXPECT_EQ(Meet("a", 7, 3), "5");
    EXPECT_EQ(Meet("a", 7, 4), "5");
}

TEST_F(WriteAnswersTest, WhatTheStoreHasKeptIsKnown) {
    m_answers.Load({{"a", 7, 3, 0}, {"b", 1, 8, 2}});
    EXPECT_EQ(Meet("a", 7), "0");
    EXPECT_EQ(Meet("b", 1), "2");
    EXPECT_EQ(Meet("b", 2), "new");
    EXPECT_THAT(Keep("b", 2, 0), ElementsAre("save b 2 9 0"));
}

TEST_F(WriteAnswersTest, LastThousandOfATokenAreKept) {
    for (std::uint64_t serial = 1; serial <= 1000; ++serial) Do("a", serial);
    EXPECT_EQ(Meet("a", 1), "0");
    EXPECT_EQ(Meet("a", 1001), "new");
    EXPECT_THAT(Keep("a", 1001, 3), ElementsAre("save a 1001 1001 3", "drop a 1"));
    EXPECT_EQ(Meet("a", 2), "0");
    EXPECT_EQ(Meet("a", 1), "new");
}

TEST_F(WriteAnswersTest, WriteUnderWayIsAnsweredThoughNotKept) {
    EXPECT_EQ(Meet("a", 1, 77), "new");
    Keep("a", 1, 0);
    for (std::uint64_t serial = 2; serial <= 1001; ++serial) Do("a", serial);
    EXPECT_THAT(Settle("a", 1, 0), ElementsAre("9 77"));
    EXPECT_EQ(Meet("a", 1), "new");
}

TEST_F(WriteAnswersTest, OnlyTheLastConversationOfATokenWaits) {
    m_answers.Meet("a", 1, {9, 77});
    m_answers.Meet("a", 1, {10, 5});
    m_answers.Meet("a", 1, {10, 6});
    Keep("a", 1, 0);
    EXPECT_THAT(Settle("a", 1, 0), ElementsAre("10 5", "10 6"));
}

TEST_F(WriteAnswersTest, AbandonedWriteMayComeAgain) {
    Do("a", 1);
    EXPECT_EQ(Meet("a", 2), "new");
    m_answers.Abandon("a", 2);
    EXPECT_EQ(Meet("a", 2), "new");
    EXPECT_EQ(Meet("a", 1), "0");
    EXPECT_EQ(Meet("b", 1), "new");
    m_answers.Abandon("b", 1);
    EXPECT_EQ(Meet("b", 1), "new");
}

TEST_F(WriteAnswersTest, TokenThatHasNotWrittenForLongestGoesFirst) {
    std::vector<SaveAnswer> kept;
    std::int64_t number = 0;
    for (int token = 0; token < 200; ++token) {
        for (std::uint64_t serial = 1; serial <= 1000; ++serial)
            kept.push_back({"t" + std::to_string(token), serial, ++number, 0});
    }
    m_answers.Load(kept);
    EXPECT_EQ(Meet("t0", 1001), "new");
    EXPECT_THAT(Keep("t0", 1001, 0), ElementsAre("save t0 1001 200001 0", "drop t0 1"));
    EXPECT_EQ(Meet("new", 1), "new");
    EXPECT_THAT(Keep("new", 1, 0), ElementsAre("save new 1 200002 0", "drop t1 0"));
    EXPECT_EQ(Meet("t2", 1), "0");
    EXPECT_EQ(Meet("t0", 2), "0");
    EXPECT_EQ(Meet("t1", 1000), "new");
    EXPECT_THAT(Keep("t1", 1000, 0), ElementsAre("save t1 1000 200003 0"));
}

}  // namespace
}  // namespace kalvex::server
