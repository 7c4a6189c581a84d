#include "vantrel/LoginGate.h"

#include <gmock/gmock.h>
#include <gtest/gtest.h>

#include <string>
#include <vector>

namespace kalvex::vantrel {
namespace {

using testing::ElementsAre;

class LoginGateTest : public testing::Test {
  protected:
    void Fail(int times, std::string_view address, std::string_view user, std::int64_t now = 0) {
        for (int time = 0; time < times; ++time) m_gate.OnFailure(address, user, now);
    }

    std::int64_t Wait(std::string_view address, std::string_view user, std::int64_t now = 0) {
        return m_gate.Wait(LoginGate::KeyOf(address, user), now);
    }

    LoginGate m_gate;
};

TEST_F(LoginGateTest, WaitsGrowToFourSecondsAndAreForgotten) {
    std::int64_t now = 1000;
    std::vector<std::int64_t> waits;
    for (int failure = 0; failure < 6; ++failure) {
        Fail(1, "10.1.2.3", "adam", now);
        waits.push_back(Wait("10.1.2.3", "ADAM", now));
        now += waits.back();
    }
    EXPECT_THAT(waits, ElementsAre(0, 0, 2, 4, 4, 4));
    EXPECT_EQ(Wait("10.1.2.3", "adam", now), 0);
    Fail(1, "10.1.2.3", "adam", now + 601);
    EXPECT_EQ(Wait("10.1.2.3", "adam", now + 601), 0);
}

TEST_F(LoginGateTest, OwnLoginsDoNotTakeTheBrakeOffOtherUsers) {
    for (int failure = 0; failure < 3; ++failure) {
        m_gate.OnFailure("10.1.2.3", "jan", 0);
        m_gate.OnSuccess("10.1.2.3", "ewa");
    }
    EXPECT_EQ(Wait("10.1.2.3", "jan"), 2);
    m_gate.OnSuccess("10.1.2.3", "Jan");
    EXPECT_EQ(Wait("10.1.2.3", "jan"), 0);
}

TEST_F(LoginGateTest, GuessesAtOneUserDoNotSlowDownAnother) {
    Fail(1000, "10.1.2.3", "jan");
    EXPECT_EQ(m_gate.BrakeOn("10.1.2.3", "jan", false, 0), "10.1.2.3\nJAN");
    EXPECT_EQ(m_gate.BrakeOn("10.1.2.3", "ewa", false, 0), "");
    EXPECT_EQ(m_gate.BrakeOn("10.1.2.4", "jan", false, 0), "");
}

TEST_F(LoginGateTest, GuessesAtManyUsersSlowDownTheAddressWhateverSucceeds) {
    for (int user = 0; user < 10; ++user) {
        EXPECT_EQ(m_gate.BrakeOn("10.1.2.3", "ewa", false, 0), "") << user;
        Fail(2, "10.1.2.3", "jan" + std::to_string(user));
        m_gate.OnSuccess("10.1.2.3", "eve");
    }
    EXPECT_EQ(m_gate.BrakeOn("10.1.2.3", "ewa", false, 0), "10.1.2.3");
    EXPECT_EQ(m_gate.Wait("10.1.2.3", 0), 2);
    EXPECT_EQ(m_gate.BrakeOn("10.1.2.3", "ewa", true, 0), "");
    EXPECT_EQ(m_gate.BrakeOn("10.1.2.4", "ewa", false, 0), "");
    EXPECT_EQ(m_gate.BrakeOn("10.1.2.3", "ewa", false, 2), "");
}

TEST_F(LoginGateTest, ThisMachineAsAWholeIsNotSlowedDown) {
    for (int user = 0; user < 30; ++user) Fail(2, "", "jan" + std::to_string(user));
    EXPECT_EQ(m_gate.BrakeOn("", "ewa", false, 0), "");
    Fail(1, "", "jan7");
    EXPECT_EQ(m_gate.BrakeOn("", "jan7", true, 0), "\nJAN7");
}

TEST_F(LoginGateTest, TurnsComeFourSecondsApart) {
    const std::string brake = LoginGate::KeyOf("", "jan");
    EXPECT_TRUE(m_gate.TakeTurn(brake, 0));
    std::vector<std::int64_t> turns;
    Fail(3, "", "jan");
    for (std::int64_t now = 0; now < 20; ++now) {
        if (!m_gate.TakeTurn(brake, now)) continue;
        turns.push_back(now);
        Fail(1, "", "jan", now);
    }
    EXPECT_THAT(turns, ElementsAre(2, 6, 10, 14, 18));
}

TEST_F(LoginGateTest, TurnWhoseCheckIsNotOverIsTheOnlyOne) {
    Fail(3, "", "jan");
    EXPECT_TRUE(m_gate.TakeTurn("\nJAN", 2));
    EXPECT_FALSE(m_gate.TakeTurn("\nJAN", 5));
    EXPECT_EQ(m_gate.BrakeOn("", "jan", false, 5), "\nJAN");
    EXPECT_TRUE(m_gate.TakeTurn("\nJAN", 6));
}

TEST_F(LoginGateTest, BrakeTellsItsAddress) {
    EXPECT_EQ(LoginGate::AddressOf(LoginGate::KeyOf("10.1.2.3", "jan")), "10.1.2.3");
    EXPECT_EQ(LoginGate::AddressOf("10.1.2.3"), "10.1.2.3");
    EXPECT_EQ(LoginGate::AddressOf(LoginGate::KeyOf("", "jan")), "");
}

TEST_F(LoginGateTest, RecordsAreBounded) {
    for (int address = 0; address < 10500; ++address) Fail(3, std::to_string(address), "jan");
    int known = 0;
    for (int address = 0; address < 10500; ++address) {
        if (Wait(std::to_string(address), "jan") > 0) ++known;
    }
    EXPECT_LE(known, 10000);
    EXPECT_GT(Wait("10499", "jan"), 0);
}

}  // namespace
}  // namespace kalvex::vantrel
