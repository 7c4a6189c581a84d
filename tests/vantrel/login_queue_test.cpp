#include "vantrel/LoginQueue.h"

#include <gmock/gmock.h>
#include <gtest/gtest.h>

#include <algorithm>
#include <memory>
#include <string>
#include <utility>
#include <vector>

namespace kalvex::vantrel {
namespace {

using testing::ElementsAre;
using testing::IsEmpty;

class LoginQueueTest : public testing::Test {
  protected:
    // The name of the one that has no place, empty when all have.
    std::string Put(const std::string& group, std::string name, std::int64_t since = 0) {
        auto login = std::make_unique<PendingLogin>();
        login->request.user = std::move(name);
        login->asker = m_asker;
        login->since = since;
        return NameOf(m_queue.Put(group, std::move(login)));
    }

    static std::string NameOf(const PendingLoginPtr& login) {
        return login ? login->request.user : "";
    }

    std::vector<std::string> TakeAll() {
        std::vector<std::string> names;
        while (const PendingLoginPtr login = m_queue.Take()) names.push_back(NameOf(login));
        return names;
    }

    std::shared_ptr<char> m_asker = std::make_shared<char>();
    LoginQueue m_queue{3, 5};
};

TEST_F(LoginQueueTest, GroupsTakeTurns) {
    for (const char* name : {"a1", "a2", "a3"}) Put("a", name);
    Put("b", "b1");
    EXPECT_EQ(NameOf(m_queue.Take()), "a1");
    Put("c", "c1");
    EXPECT_THAT(TakeAll(), ElementsAre("b1", "a2", "c1", "a3"));
}

TEST_F(LoginQueueTest, GroupIsBounded) {
    for (const char* name : {"a1", "a2", "a3"}) EXPECT_EQ(Put("a", name), "");
    EXPECT_THAT(Put("a", "a4"), testing::StartsWith("a"));
    EXPECT_EQ(m_queue.Size(), 3u);
    EXPECT_EQ(Put("b", "b1"), "");
}

TEST_F(LoginQueueTest, LargestGroupMakesRoom) {
    for (const char* name : {"a1", "a2"}) EXPECT_EQ(Put("a", name), "");
    for (const char* group : {"b", "c", "d"}) EXPECT_EQ(Put(group, group), "");
    EXPECT_THAT(Put("e", "e"), testing::StartsWith("a"));
    EXPECT_EQ(m_queue.Size(), 5u);
}

TEST_F(LoginQueueTest, WhoeverIsLeftOutIsChosenByChance) {
    bool isFirst = false;
    bool isLast = false;
    while (!isFirst || !isLast) {
        for (const char* name : {"a1", "a2", "a3"}) Put("a", name);
        const std::string left = Put("a", "a4");
        isFirst = isFirst || left == "a1";
        isLast = isLast || left == "a4";
        TakeAll();
    }
}

TEST_F(LoginQueueTest, FirstOfManyStaysAsOftenAsTheLast) {
    // 3 of 30 stay: the first one in 200 of 2000 runs, give or take 13.
    int stayed = 0;
    for (int run = 0; run < 2000; ++run) {
        for (int login = 0; login < 30; ++login) Put("a", login == 0 ? "first" : "other");
        stayed += static_cast<int>(std::ranges::count(TakeAll(), "first"));
    }
    EXPECT_GT(stayed, 100);
    EXPECT_LT(stayed, 300);
}

TEST_F(LoginQueueTest, WhatIsNotWantedAnyMoreLeaves) {
    for (const char* name : {"a1", "a2", "a3"}) Put("a", name);
    m_asker = std::make_shared<char>();
    EXPECT_EQ(Put("a", "a4"), "");
    EXPECT_EQ(m_queue.Size(), 1u);
    EXPECT_THAT(TakeAll(), ElementsAre("a4"));
    Put("a", "a5");
    m_asker.reset();
    EXPECT_EQ(m_queue.Take(), nullptr);
    EXPECT_EQ(m_queue.Draw("a"), nullptr);
}

TEST_F(LoginQueueTest, OneOfAGroupIsDrawn) {
    for (const char* name : {"a1", "a2"}) Put("a", name);
    Put("b", "b1");
    EXPECT_THAT(NameOf(m_queue.Draw("a")), testing::StartsWith("a"));
    EXPECT_THAT(m_queue.Groups(), ElementsAre("b", "a"));
    EXPECT_THAT(NameOf(m_queue.Draw("a")), testing::StartsWith("a"));
    EXPECT_EQ(m_queue.Draw("a"), nullptr);
    EXPECT_THAT(m_queue.Groups(), ElementsAre("b"));
}

TEST_F(LoginQueueTest, RoomIsWhereNobodyLosesAPlace) {
    for (const char* name : {"a1", "a2", "a3"}) {
        EXPECT_TRUE(m_queue.HasRoom("a"));
        Put("a", name);
    }
    EXPECT_FALSE(m_queue.HasRoom("a"));
    EXPECT_TRUE(m_queue.HasRoom("b"));
    Put("b", "b1");
    Put("c", "c1");
    EXPECT_FALSE(m_queue.HasRoom("d"));
    m_asker.reset();
    EXPECT_TRUE(m_queue.HasRoom("a"));
}

TEST_F(LoginQueueTest, GroupIsTakenAsAWhole) {
    for (const char* name : {"a1", "a2"}) Put("a", name);
    Put("b", "b1");
    EXPECT_TRUE(m_queue.HasGroup("a"));
    std::vector<std::string> names;
    for (const PendingLoginPtr& login : m_queue.TakeGroup("a")) names.push_back(NameOf(login));
    EXPECT_THAT(names, ElementsAre("a1", "a2"));
    EXPECT_FALSE(m_queue.HasGroup("a"));
    EXPECT_THAT(m_queue.TakeGroup("a"), IsEmpty());
    EXPECT_THAT(TakeAll(), ElementsAre("b1"));
}

TEST_F(LoginQueueTest, OlderOnesAreTaken) {
    Put("a", "a1", 5);
    Put("a", "a2", 7);
    Put("b", "b1", 6);
    std::vector<std::string> names;
    for (const PendingLoginPtr& login : m_queue.TakeOlder(7)) names.push_back(NameOf(login));
    EXPECT_THAT(names, ElementsAre("a1", "b1"));
    EXPECT_THAT(m_queue.Groups(), ElementsAre("a"));
    EXPECT_THAT(m_queue.TakeOlder(7), IsEmpty());
}

}  // namespace
}  // namespace kalvex::vantrel
