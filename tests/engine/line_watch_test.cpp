// Lines that hold up all other scripts, by a clock of the test.
#include "engine/LineWatch.h"

#include <gmock/gmock.h>

#include <deque>

#include "support/script_world.h"

namespace kalvex::engine {
namespace {

using testing::ElementsAre;
using testing::IsEmpty;

// How far each look moves the clock; none where nothing is left.
std::deque<std::int64_t> g_steps;
std::int64_t g_now = 0;
platform::ThreadTime g_thread;

std::int64_t Now() {
    if (g_steps.empty()) return g_now;
    g_now += g_steps.front();
    g_steps.pop_front();
    return g_now;
}

class LineWatchTest : public support::ScriptWorld {
  protected:
    LineWatchTest() {
        g_steps.clear();
        g_now = 0;
        g_thread = {};
        services.lineWatch = &watch;
        services.counts = &counts;
        ticks.SetLineWatch(&watch);
    }

    // The tick begins, then each of its lines takes so many milliseconds. What the log says of it.
    std::vector<std::string> TickOf(std::initializer_list<int> lines) {
        const std::size_t before = Log().size();
        g_steps = {0};
        for (const int line : lines) g_steps.push_back(line * 1000);
        Tick(1);
        EXPECT_THAT(g_steps, IsEmpty());
        const std::vector<std::string> all = Log();
        return {all.begin() + static_cast<std::ptrdiff_t>(before), all.end()};
    }

    LineWatch watch{{Now, [] {
                         // A line that takes long waits, unless the test says otherwise.
                         ++g_thread.waits;
                         return g_thread;
                     }}};
    RunCounts counts;
};

constexpr const char* kLoop = "LOCAL N = 0\n:w\nSET N = N + 1\nGOTO w\n";

TEST_F(LineWatchTest, LineThatTakesLongIsNamed) {
    Open(kLoop).Start();
    EXPECT_THAT(TickOf({100}), IsEmpty());
    EXPECT_EQ(counts.slow, 0U);
    for (int i = 0; i < 49; ++i) TickOf({});
    EXPECT_THAT(TickOf({101}), ElementsAre("main.kx : Linia 2 trwała 101 ms (takich linii: 1)"));
    EXPECT_EQ(counts.slow, 1U);
}

TEST_F(LineWatchTest, EachLineOfATickIsLookedAt) {
    Run(kLoop, 1);
    EXPECT_THAT(TickOf({1, 2, 3, 4, 500, 6, 7, 8, 9, 10}),
                ElementsAre("main.kx : Linia 3 trwała 500 ms (takich linii: 1)"));
}

TEST_F(LineWatchTest, LineThatFailsOrIsNewIsLookedAtToo) {
    Open("BZDURA\n").Start();
    EXPECT_THAT(TickOf({700}), ElementsAre("main.kx : Linia 1 trwała 700 ms (takich linii: 1)",
                                           "main.kx : Linia 1 - Nieznane słowo kluczowe : BZDURA"));
}

TEST_F(LineWatchTest, ScriptIsToldOnceAMinuteWithTheNumberOfItsLines) {
    Run(kLoop, 1);
    EXPECT_THAT(TickOf({200, 0, 0, 300, 0, 0, 0, 0, 0, 400}),
                ElementsAre("main.kx : Linia 3 trwała 200 ms (takich linii: 1)"));
    g_now += 59'000'000;
    EXPECT_THAT(TickOf({0, 0, 150, 0, 0, 0, 0, 0, 0, 0}), IsEmpty());
    g_now += 1'000'000;
    EXPECT_THAT(TickOf({0, 0, 160, 0, 0, 0, 0, 0, 0, 0}),
                ElementsAre("main.kx : Linia 3 trwała 160 ms (takich linii: 4)"));
    EXPECT_EQ(counts.slow, 5U);
}

TEST_F(LineWatchTest, EachScriptHasItsOwnMinuteAndCount) {
    Open(kLoop, "a.kx").Start();
    Open(kLoop, "b.kx").Start();
    EXPECT_THAT(TickOf({200, 300}), ElementsAre("a.kx : Linia 1 trwała 200 ms (takich linii: 1)",
                                                "b.kx : Linia 1 trwała 300 ms (takich linii: 1)"));
    EXPECT_EQ(ticks.Scripts()[0].counts.slow, 1U);
    EXPECT_EQ(ticks.Scripts()[1].counts.slow, 1U);
}

TEST(LineWatchClocksTest, TimeForWhichTheMachineHadNoProcessorIsNotTheLines) {
    LineWatch watch({[] { return g_now; }, [] { return g_thread; }});
    watch.Begin();
    g_now += 300'000;
    g_thread.processor += 20'000;
    EXPECT_EQ(watch.Take(), 20'000);
    g_now += 300'000;
    g_thread.processor += 250'000;
    EXPECT_EQ(watch.Take(), 250'000);
    g_now += 300'000;
    ++g_thread.waits;
    EXPECT_EQ(watch.Take(), 300'000);
    g_now += 100'000;
    EXPECT_EQ(watch.Take(), 100'000);
    g_now += 200'000;
    g_thread.processor += 400'000;  // of lines before it, too
    EXPECT_EQ(watch.Take(), 200'000);
}

}  // namespace
}  // namespace kalvex::engine
