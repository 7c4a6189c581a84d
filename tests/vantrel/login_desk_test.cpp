#include "vantrel/LoginDesk.h"

#include <gmock/gmock.h>
#include <gtest/gtest.h>
#include <pthread.h>

#include <algorithm>
#include <memory>
#include <string>
#include <utility>
#include <vector>

#include "platform/Clock.h"
#include "platform/Sqlite.h"
#include "support/marking_translator.h"
#include "support/scratch_folder.h"
#include "support/waiting_loop.h"
#include "text/CodePage.h"

namespace kalvex::vantrel {
namespace {

using testing::ElementsAre;
using testing::IsEmpty;

class LoginDeskTest : public testing::Test {
  protected:
    LoginDeskTest() {
        std::string error;
        EXPECT_TRUE(m_users.Open(m_folder.Path("users.sqlite"), error)) << text::ToUtf8(error);
        platform::UserRecord adam;
        adam.name = "adam";
        adam.level = 50;
        adam.addresses = {"10.1.0.0/16"};
        EXPECT_TRUE(m_users.Add(adam, "tajne", error)) << text::ToUtf8(error);
    }

    static LoginRequest Request(std::string user, std::string password) {
        LoginRequest request;
        request.user = std::move(user);
        request.password = std::move(password);
        return request;
    }

    // Its verdict is kept as "code text user".
    void Ask(LoginRequest request, std::string address) {
        m_desk->Check(
            std::move(request), std::move(address), m_asker, [this](const LoginVerdict& verdict) {
                m_verdicts.push_back(std::to_string(verdict.code) + " " +
                                     text::ToUtf8(verdict.text) + " " + verdict.user.name);
                m_faults.push_back(verdict.fault);
            });
    }

    void Await(std::size_t verdicts) {
        while (m_verdicts.size() < verdicts) m_loop.WaitAndRun();
    }

    // What is answered when the next turn has come.
    void Turn() {
        const std::size_t before = m_verdicts.size();
        while (m_verdicts.size() == before) {
            m_clock.Advance(1000);
            m_desk->Step();
            if (!m_desk->IsChecking()) continue;
            m_loop.WaitAndRun();
        }
    }

    void FailThreeTimes(std::string user, std::string address) {
        for (int attempt = 0; attempt < 3; ++attempt) Result(user, "zle", address);
        m_verdicts.clear();
    }

    std::string Result(std::string user, std::string password, std::string address) {
        m_verdicts.clear();
        Ask(Request(std::move(user), std::move(password)), std::move(address));
        Await(1);
        return m_verdicts.at(0);
    }

    support::ScratchFolder m_folder;
    platform::UserStore m_users{platform::PasswordCost::Least};
    platform::VirtualClock m_clock{1000};
    support::MarkingTranslator m_translator{false};
    support::WaitingLoop m_loop;
    std::vector<std::string> m_verdicts;
    std::vector<std::string> m_faults;
    std::shared_ptr<char> m_asker = std::make_shared<char>();
    std::unique_ptr<LoginDesk> m_desk = std::make_unique<LoginDesk>(
        m_users, m_clock, m_translator, m_loop, platform::PasswordCost::Least);
};

TEST_F(LoginDeskTest, PasswordDecides) {
    EXPECT_EQ(Result("ADAM", "tajne", "10.1.2.3"), "0  adam");
    EXPECT_EQ(Result("adam", "tajne", ""), "0  adam");
    EXPECT_EQ(Result("adam", "Tajne", "10.1.2.3"), "1 brak uprawnień ");
    EXPECT_EQ(Result("adam", "tajne", "10.2.2.3"), "1 brak uprawnień ");
    EXPECT_EQ(Result("ewa", "tajne", "10.1.2.3"), "1 brak uprawnień ");
    EXPECT_EQ(Result("adam", "", "10.1.2.3"), "1 brak uprawnień ");
    EXPECT_EQ(Result(std::string(65, 'a'), "x", "10.1.2.4"), "1 brak uprawnień ");
    EXPECT_EQ(Result("adam", std::string(257, 'x'), "10.1.2.4"), "1 brak uprawnień ");
}

TEST_F(LoginDeskTest, NobodyComesInAsAllowed) {
    EXPECT_EQ(Result("", "", ""), "1 brak uprawnień ");
    m_desk->AllowNobody(NobodyAccess::Local);
    EXPECT_EQ(Result("", "", ""), "0  NOBODY");
    EXPECT_EQ(Result("NOBODY", "", ""), "0  NOBODY");
    EXPECT_EQ(Result("nobody", "", ""), "1 brak uprawnień ");
    EXPECT_EQ(Result("NOBODY", "x", ""), "1 brak uprawnień ");
    EXPECT_EQ(Result("", "", "10.1.2.3"), "1 brak uprawnień ");
    m_desk->AllowNobody(NobodyAccess::Always);
    EXPECT_EQ(Result("", "", "10.1.2.3"), "0  NOBODY");
}

TEST_F(LoginDeskTest, OtherProtocolIsRefusedInTheLanguageOfTheServer) {
    m_translator.marks = true;
    LoginRequest request = Request("adam", "tajne");
    request.protocolVersion = kProtocolVersion + 1;
    Ask(request, "10.1.2.3");
    EXPECT_THAT(m_verdicts, ElementsAre("3 <inna wersja protokołu> "));
}

TEST_F(LoginDeskTest, WhoFailsIsCheckedAtTurns) {
    FailThreeTimes("adam", "10.1.2.3");
    Ask(Request("adam", "zle"), "10.1.2.3");
    Ask(Request("adam", "zle"), "10.1.2.3");
    EXPECT_THAT(m_verdicts, IsEmpty());
    EXPECT_EQ(Result("adam", "tajne", "10.1.2.4"), "0  adam") << "from elsewhere at once";
    m_verdicts.clear();
    m_clock.Advance(1000);
    m_desk->Step();
    EXPECT_FALSE(m_desk->IsChecking());
    m_clock.Advance(1000);
    m_desk->Step();
    Await(1);
    EXPECT_FALSE(m_desk->IsChecking()) << "one at a time";
    EXPECT_THAT(m_verdicts, ElementsAre("1 brak uprawnień "));
}

TEST_F(LoginDeskTest, RightPasswordGetsInWhileSomebodyElseGuesses) {
    // One of three at each turn, so in one of 150 turns for sure.
    FailThreeTimes("adam", "");
    int turns = 0;
    while (turns < 150 && std::ranges::count(m_verdicts, "0  adam") == 0) {
        ++turns;
        m_verdicts.clear();
        for (const char* password : {"zle", "tajne", "zle"}) Ask(Request("adam", password), "");
        while (m_verdicts.size() < 3) Turn();
    }
    EXPECT_EQ(std::ranges::count(m_verdicts, "0  adam"), 1);
}

TEST_F(LoginDeskTest, NobodyOvertakesThoseWhoWait) {
    FailThreeTimes("adam", "10.1.2.3");
    Ask(Request("adam", "tajne"), "10.1.2.3");
    m_clock.Advance(2000);
    Ask(Request("adam", "zle"), "10.1.2.3");
    EXPECT_FALSE(m_desk->IsChecking());
    m_desk->Step();
    EXPECT_TRUE(m_desk->IsChecking());
}

TEST_F(LoginDeskTest, NobodyOvertakesThoseWhoWaitForAnAddress) {
    for (int user = 0; user < 20; ++user) Result("obcy" + std::to_string(user), "zle", "10.1.2.3");
    Ask(Request("adam", "tajne"), "10.1.2.3");
    m_clock.Advance(4000);
    Ask(Request("ewa", "zle"), "10.1.2.3");
    EXPECT_FALSE(m_desk->IsChecking());
    m_desk->Step();
    EXPECT_TRUE(m_desk->IsChecking());
}

TEST_F(LoginDeskTest, GuessesAtManyUsersLeaveTheTurnsOfOtherAddresses) {
    constexpr int kUsers = 20;
    const auto name = [](int user) { return "obcy" + std::to_string(user); };
    for (int user = 0; user < kUsers; ++user) FailThreeTimes(name(user), "");
    FailThreeTimes("adam", "10.1.2.3");
    for (int user = 0; user < kUsers; ++user) Ask(Request(name(user), "zle"), "");
    Ask(Request("adam", "tajne"), "10.1.2.3");
    m_clock.Advance(2000);
    m_desk->Step();
    Await(9);
    EXPECT_LE(std::ranges::find(m_verdicts, "0  adam") - m_verdicts.begin(), 2);
    EXPECT_FALSE(m_desk->IsChecking());
    m_desk->Step();
    EXPECT_TRUE(m_desk->IsChecking()) << "the turn of those who had no room is not over";
}

TEST_F(LoginDeskTest, LoginOfTheUserEndsTheWaitOfTheOthers) {
    LoginRequest own = Request("adam", "tajne");
    own.token = "abc";
    Ask(own, "");
    Await(1);
    FailThreeTimes("adam", "");
    Ask(Request("adam", "zle"), "");
    EXPECT_FALSE(m_desk->IsChecking());
    Ask(own, "");
    Await(2);
    EXPECT_THAT(m_verdicts, ElementsAre("0  adam", "1 brak uprawnień "));
}

TEST_F(LoginDeskTest, GuessesAtOneUserDoNotHoldUpAnother) {
    FailThreeTimes("ewa", "");
    for (int guess = 0; guess < 100; ++guess) Ask(Request("ewa", "zle"), "");
    m_verdicts.clear();
    EXPECT_EQ(Result("adam", "tajne", ""), "0  adam");
}

TEST_F(LoginDeskTest, GuessesThatWaitAreBounded) {
    FailThreeTimes("adam", "10.1.2.3");
    for (int guess = 0; guess < 10; ++guess) Ask(Request("adam", "zle"), "10.1.2.3");
    EXPECT_THAT(m_verdicts, ElementsAre("2 zbyt wiele nieudanych prób, następna możliwa za 2 s ",
                                        "2 zbyt wiele nieudanych prób, następna możliwa za 2 s "));
}

TEST_F(LoginDeskTest, WhoIsNotDrawnForLongIsAnswered) {
    FailThreeTimes("adam", "10.1.2.3");
    for (int guess = 0; guess < 8; ++guess) Ask(Request("adam", "zle"), "10.1.2.3");
    for (int second = 0; second < 4; ++second) {
        m_clock.Advance(1000);
        m_desk->Step();
        while (m_desk->IsChecking()) m_loop.WaitAndRun();
    }
    EXPECT_EQ(std::ranges::count(m_verdicts, "1 brak uprawnień "), 1);
    EXPECT_EQ(m_verdicts.back(), "2 zbyt wiele nieudanych prób, następna możliwa za 2 s ");
    EXPECT_EQ(m_verdicts.size(), 8u);
}

TEST_F(LoginDeskTest, ProgramThatHasLoggedInIsNotHeldUp) {
    LoginRequest own = Request("adam", "tajne");
    own.token = "abc";
    Ask(own, "");
    Await(1);
    FailThreeTimes("adam", "");
    Ask(own, "");
    Await(1);
    EXPECT_THAT(m_verdicts, ElementsAre("0  adam"));
    FailThreeTimes("adam", "");
    own.token = "abd";
    Ask(own, "");
    EXPECT_FALSE(m_desk->IsChecking());
    own.token = "abc";
    own.password = "zle";
    Ask(own, "");
    Await(1);
    EXPECT_THAT(m_verdicts, ElementsAre("1 brak uprawnień "));
    own.password = "tajne";
    Ask(own, "");
    EXPECT_FALSE(m_desk->IsChecking()) << "the token is known no longer";
}

TEST_F(LoginDeskTest, WhoIsKnownGoesFirst) {
    Result("adam", "tajne", "10.1.2.3");
    m_verdicts.clear();
    for (int guess = 0; guess < 3; ++guess) Ask(Request("obcy", "zle"), "10.1.2.3");
    Ask(Request("adam", "tajne"), "10.1.2.3");
    Await(4);
    EXPECT_THAT(m_verdicts, ElementsAre("1 brak uprawnień ", "0  adam", "1 brak uprawnień ",
                                        "1 brak uprawnień "));
}

TEST_F(LoginDeskTest, StrangersHaveTheirTurnBesideThoseWhoAreKnown) {
    Result("adam", "tajne", "10.1.2.3");
    m_verdicts.clear();
    for (int login = 0; login < 8; ++login) Ask(Request("adam", "tajne"), "10.1.2.3");
    Ask(Request("obcy", "zle"), "10.1.9.9");
    Await(9);
    EXPECT_EQ(std::ranges::find(m_verdicts, "1 brak uprawnień ") - m_verdicts.begin(), 4);
}

TEST_F(LoginDeskTest, AddressesTakeTurns) {
    for (int guess = 0; guess < 8; ++guess) {
        Ask(Request("obcy" + std::to_string(guess), "zle"), "10.1.9.9");
    }
    Ask(Request("adam", "tajne"), "10.1.2.3");
    Await(9);
    EXPECT_LE(std::ranges::find(m_verdicts, "0  adam") - m_verdicts.begin(), 2);
}

TEST_F(LoginDeskTest, WhatIsNotWantedAnyMoreIsNotChecked) {
    const auto others = std::exchange(m_asker, std::make_shared<char>());
    for (int call = 0; call < 1000; ++call) {
        Ask(Request("adam", "zle"), "");
        m_asker = std::make_shared<char>();
    }
    m_asker = others;
    Ask(Request("adam", "tajne"), "");
    Await(1);
    EXPECT_THAT(m_verdicts, ElementsAre("0  adam"));
    EXPECT_FALSE(m_desk->IsChecking());
}

TEST_F(LoginDeskTest, GuessThatIsNotWantedAnyMoreCounts) {
    for (int guess = 0; guess < 3; ++guess) {
        Ask(Request("adam", "zle"), "");
        m_asker = std::make_shared<char>();
        while (m_desk->IsChecking()) m_loop.WaitAndRun();
    }
    Ask(Request("adam", "tajne"), "");
    EXPECT_FALSE(m_desk->IsChecking());
    EXPECT_THAT(m_verdicts, IsEmpty());
}

TEST_F(LoginDeskTest, AddressOfALoginWithAPasswordIsKnown) {
    m_desk->AllowNobody(NobodyAccess::Always);
    Result("", "", "10.1.2.3");
    Result("adam", "zle", "10.1.2.3");
    EXPECT_FALSE(m_desk->KnowsAddress("10.1.2.3"));
    Result("adam", "tajne", "10.1.2.3");
    EXPECT_TRUE(m_desk->KnowsAddress("10.1.2.3"));
}

TEST_F(LoginDeskTest, WaitingChecksOfAnAddressAreBounded) {
    for (int attempt = 0; attempt < 100; ++attempt) {
        Ask(Request("obcy" + std::to_string(attempt), "zle"), "");
    }
    Await(100);
    EXPECT_EQ(std::ranges::count(m_verdicts, "1 brak uprawnień "), 65);
    EXPECT_EQ(std::ranges::count(m_verdicts, "2 hasła nie można teraz sprawdzić "), 35);
}

TEST_F(LoginDeskTest, UsersFileThatIsLockedIsNoFailure) {
    platform::SqliteDatabase other;
    ASSERT_TRUE(other.Open(m_folder.Path("users.sqlite")));
    ASSERT_TRUE(other.Execute("BEGIN EXCLUSIVE"));
    for (int attempt = 0; attempt < 4; ++attempt) {
        EXPECT_EQ(Result("adam", "tajne", "10.1.2.3"), "2 hasła nie można teraz sprawdzić ");
    }
    EXPECT_THAT(m_faults, testing::Each(m_folder.Path("users.sqlite") + ": database is locked"));
    ASSERT_TRUE(other.Execute("ROLLBACK"));
    EXPECT_EQ(Result("adam", "tajne", "10.1.2.3"), "0  adam");
}

TEST_F(LoginDeskTest, WithoutAThreadItIsNotNow) {
    pthread_attr_t usual;
    pthread_attr_t impossible;
    ASSERT_EQ(pthread_getattr_default_np(&usual), 0);
    ASSERT_EQ(pthread_attr_init(&impossible), 0);
    ASSERT_EQ(pthread_attr_setstacksize(&impossible, std::size_t{1} << 46), 0);
    ASSERT_EQ(pthread_setattr_default_np(&impossible), 0);
    Ask(Request("adam", "tajne"), "10.1.2.3");
    ASSERT_EQ(pthread_setattr_default_np(&usual), 0);
    EXPECT_THAT(m_verdicts, ElementsAre("2 hasła nie można teraz sprawdzić "));
    EXPECT_THAT(m_faults, ElementsAre("Resource temporarily unavailable"));
    EXPECT_EQ(Result("adam", "tajne", "10.1.2.3"), "0  adam");
    pthread_attr_destroy(&usual);
    pthread_attr_destroy(&impossible);
}

TEST_F(LoginDeskTest, DeskThatGoesMeanwhileDecidesNothing) {
    Ask(Request("adam", "tajne"), "10.1.2.3");
    m_desk.reset();
    m_loop.Run();
    EXPECT_THAT(m_verdicts, IsEmpty());
}

}  // namespace
}  // namespace kalvex::vantrel
