#include "server/Signals.h"

#include <gtest/gtest.h>

namespace kalvex::server {
namespace {

Signal Parsed(std::string_view text) {
    platform::Notice error;
    std::optional<Signal> signal = Signal::Parse(text, error);
    EXPECT_TRUE(signal) << text;
    return *signal;
}

double At(std::string_view text, std::int64_t time) {
    return Parsed(text).ValueAt(time, std::nullopt, 0, 0);
}

TEST(SignalsTest, ConstantStands) {
    EXPECT_EQ(At("constant value=-2.5", 0), -2.5);
    EXPECT_EQ(At("constant value=-2.5", 1000000), -2.5);
}

TEST(SignalsTest, RampRunsFromOneToTheOtherAndAnew) {
    EXPECT_DOUBLE_EQ(At("ramp from=10 to=20 period=100", 0), 10);
    EXPECT_DOUBLE_EQ(At("ramp from=10 to=20 period=100", 25), 12.5);
    EXPECT_DOUBLE_EQ(At("ramp from=10 to=20 period=100", 99), 19.9);
    EXPECT_DOUBLE_EQ(At("ramp from=10 to=20 period=100", 100), 10);
    EXPECT_DOUBLE_EQ(At("ramp from=20 to=10 period=100", 75), 12.5);
}

TEST(SignalsTest, SineSwingsAroundItsMean) {
    EXPECT_NEAR(At("sine mean=50 amplitude=5 period=60", 0), 50, 1e-12);
    EXPECT_NEAR(At("sine mean=50 amplitude=5 period=60", 15), 55, 1e-12);
    EXPECT_NEAR(At("sine mean=50 amplitude=5 period=60", 45), 45, 1e-12);
    EXPECT_NEAR(At("sine mean=50 amplitude=5 period=60 phase=15", 15), 50, 1e-12);
    EXPECT_NEAR(At("sine mean=50 amplitude=5 period=60 phase=15", 0), 45, 1e-12);
}

TEST(SignalsTest, SquareIsHighForItsDuty) {
    EXPECT_EQ(At("square low=0 high=1 period=10", 4), 1);
    EXPECT_EQ(At("square low=0 high=1 period=10", 5), 0);
    EXPECT_EQ(At("square low=0 high=1 period=10 duty=0.8", 7), 1);
    EXPECT_EQ(At("square low=0 high=1 period=10 duty=0.8", 8), 0);
    EXPECT_EQ(At("square low=0 high=1 period=10 duty=0", 0), 0);
    EXPECT_EQ(At("square low=0 high=1 period=10 duty=1", 9), 1);
}

TEST(SignalsTest, CounterGrowsFromTheLastValue) {
    const Signal counter = Parsed("counter rate=0.5 start=100");
    EXPECT_EQ(counter.ValueAt(5, std::nullopt, 0, 0), 100);
    EXPECT_EQ(counter.ValueAt(6, 250.0, 1, 0), 250.5);
    EXPECT_EQ(counter.ValueAt(6, 250.0, 10, 0), 255);
    EXPECT_EQ(counter.ValueAt(6, 250.0, -10, 0), 250);
    EXPECT_EQ(Parsed("counter rate=2").ValueAt(0, std::nullopt, 0, 0), 0);
}

TEST(SignalsTest, WalkStaysWithinItsStepAndBounds) {
    const Signal walk = Parsed("walk min=0 max=10 step=2");
    EXPECT_EQ(walk.ValueAt(0, std::nullopt, 1, 1), 5);
    EXPECT_EQ(Parsed("walk min=0 max=10 step=2 start=1").ValueAt(0, std::nullopt, 1, 1), 1);
    std::uint64_t state = 7;
    double value = 5;
    double least = value;
    double most = value;
    bool moved = false;
    for (int second = 0; second < 10000; ++second) {
        const double next = walk.ValueAt(second, value, 1, NextRandom(state));
        EXPECT_LE(next, value + 2);
        EXPECT_GE(next, value - 2);
        moved = moved || next != value;
        value = next;
        least = std::min(least, value);
        most = std::max(most, value);
    }
    EXPECT_TRUE(moved);
    EXPECT_GE(least, 0);
    EXPECT_LT(least, 1);
    EXPECT_LE(most, 10);
    EXPECT_GT(most, 9);
    EXPECT_EQ(walk.ValueAt(0, 99.0, 0, 1), 10);
}

TEST(SignalsTest, WrongTextsAreTold) {
    struct Row {
        const char* text;
        const char* error;
    };
    constexpr Row kRows[] = {
        {"", "nieznany rodzaj sygnału \"\""},
        {"Sine mean=1", "nieznany rodzaj sygnału \"Sine\""},
        {"sine mean=1 amplitude=2 period=3 faza=4", "nieznany parametr sygnału \"faza\""},
        {"sine mean=1 amplitude=2", "brak parametru period"},
        {"sine mean=1 amplitude=2 period=x", "parametr period musi być liczbą"},
        {"sine mean amplitude=2 period=3", "parametr mean musi być liczbą"},
        {"constant value=1e999", "parametr value musi być liczbą"},
        {"ramp from=0 to=1 period=0", "period musi być większe od 0"},
        {"sine mean=1 amplitude=2 period=-3", "period musi być większe od 0"},
        {"square low=0 high=1 period=0", "period musi być większe od 0"},
        {"square low=0 high=1 period=1 duty=1.1", "duty musi być od 0 do 1"},
        {"walk min=2 max=1 step=1", "min nie może być większe od max"},
        {"walk min=1 max=2 step=-1", "step nie może być ujemne"},
        {"walk min=1 max=2 step=1 start=3", "start musi być od min do max"},
        {"counter start=5", "brak parametru rate"},
    };
    for (const Row& row : kRows) {
        platform::Notice error;
        EXPECT_FALSE(Signal::Parse(row.text, error)) << row.text;
        EXPECT_EQ(platform::InWords(error, platform::Translator()), row.error) << row.text;
    }
}

}  // namespace
}  // namespace kalvex::server
