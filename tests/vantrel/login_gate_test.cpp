#include "vantrel/LoginGate.h"

#include <gmock/gmock.h>
#include <gtest/gtest.h>

#include <string>
#include <vector>

namespace kalvex::vantrel {
namespace {

using testing::ElementsAre;

TEST(LoginGateTest, WaitsDoubleUpToAMinuteAndAreForgotten) {
    LoginGate gate;
    std::int64_t now = 1000;
    std::vector<std::int64_t> waits;
    for (int failure = 0; failure < 10; ++failure) {
        gate.OnFailure("10.1.2.3", "adam", now);
        waits.push_back(gate.Wait("10.1.2.3", "ewa", now));
        now += waits.back();
    }
    EXPECT_THAT(waits, ElementsAre(0, 0, 2, 4, 8, 16, 32, 64, 64, 64));
    EXPECT_EQ(gate.Wait("10.1.2.3", "adam", now), 0);
    gate.OnFailure("10.9.9.9", "adam", now + 601);
    gate.OnFailure("10.1.2.3", "adam", now + 601);
    EXPECT_EQ(gate.Wait("10.1.2.3", "adam", now + 601), 0);
}

TEST(LoginGateTest, ProgramsOfThisMachineAreToldApartByUser) {
    LoginGate gate;
    for (int failure = 0; failure < 3; ++failure) gate.OnFailure("", "Adam", 0);
    EXPECT_EQ(gate.Wait("", "ADAM", 0), 2);
    EXPECT_EQ(gate.Wait("", "ewa", 0), 0);
    gate.OnSuccess("", "adam");
    EXPECT_EQ(gate.Wait("", "adam", 0), 0);
}

TEST(LoginGateTest, RecordsAreBounded) {
    LoginGate gate;
    for (int address = 0; address < 10500; ++address) {
        for (int failure = 0; failure < 3; ++failure) {
            gate.OnFailure(std::to_string(address), "", 0);
        }
    }
    int known = 0;
    for (int address = 0; address < 10500; ++address) {
        if (gate.Wait(std::to_string(address), "", 0) > 0) ++known;
    }
    EXPECT_LE(known, 10000);
    EXPECT_GT(gate.Wait("10499", "", 0), 0);
}

}  // namespace
}  // namespace kalvex::vantrel
