#include "workbench/qt/QtLoop.h"

#include <gmock/gmock.h>

#include <csignal>
#include <thread>
#include <vector>

#include "platform/SteadyTime.h"

namespace kalvex::window {
namespace {

using testing::ElementsAre;

class QtLoopTest : public testing::Test {
  protected:
    QtLoop m_loop{platform::SteadyMicroseconds};
    std::vector<int> m_done;
};

TEST_F(QtLoopTest, WorkOfAnotherThreadIsDoneInItsOrder) {
    std::thread other([this] {
        for (int i = 1; i <= 3; ++i) m_loop.Post([this, i] { m_done.push_back(i); });
        m_loop.Post([this] { m_loop.Quit(); });
    });
    m_loop.Run();
    other.join();
    EXPECT_THAT(m_done, ElementsAre(1, 2, 3));
}

TEST_F(QtLoopTest, ALoopThatHasQuitDoesNotRun) {
    m_loop.Quit();
    EXPECT_TRUE(m_loop.HasQuit());
    m_loop.Run();
}

TEST_F(QtLoopTest, TimerOfANumberBeginsAnewAndEnds) {
    EXPECT_TRUE(m_loop.SetTimer(4, 10, [this] { m_done.push_back(1); }));
    EXPECT_TRUE(m_loop.SetTimer(4, 10, [this] {
        m_done.push_back(2);
        m_loop.KillTimer(4);
        m_loop.Post([this] { m_loop.Quit(); });
    }));
    m_loop.KillTimer(5);
    m_loop.Run();
    EXPECT_THAT(m_done, ElementsAre(2));
}

TEST_F(QtLoopTest, ASignalWaitsForTheLoop) {
    m_loop.OnSignal(SIGUSR2, [this] {
        m_done.push_back(SIGUSR2);
        m_loop.Quit();
    });
    std::raise(SIGUSR2);
    EXPECT_THAT(m_done, ElementsAre());
    m_loop.Run();
    EXPECT_THAT(m_done, ElementsAre(SIGUSR2));
}

// Two idle ticks lie before each that runs.
class IdleSource final : public app::TickSource {
  public:
    static constexpr int kRuns = 3;

    explicit IdleSource(QtLoop& loop) : m_loop(loop) {}

    void RunTick() override {
        ++ran;
        idle = 2;
        if (ran == kRuns) m_loop.Quit();
    }
    // A loop that is late makes up for its ticks before it ends.
    bool NeedsTicks() const override { return ran < kRuns; }
    int GetIdleTicks() const override { return idle; }
    void SkipTicks(int count) override {
        idle -= count;
        skipped += count;
    }

    int ran = 0;
    int idle = 0;
    int skipped = 0;

  private:
    QtLoop& m_loop;
};

TEST_F(QtLoopTest, TicksComeUntilTheirSourceGoes) {
    IdleSource source(m_loop);
    m_loop.SetTickSource(&source);
    m_loop.Run();
    m_loop.SetTickSource(nullptr);
    EXPECT_EQ(source.ran, IdleSource::kRuns);
    EXPECT_EQ(source.skipped, 4);
}

// What acts on the scripts finds them as of now: the idle ticks that have passed are counted first.
TEST(QtLoopTurnTest, IdleTicksThatHavePassedAreCountedBeforeTheWork) {
    std::int64_t now = 0;
    QtLoop loop([&now] { return now; });
    IdleSource source(loop);
    source.idle = 5;
    loop.SetTickSource(&source);
    loop.Turn([] {});
    now = 3000;
    int skippedBefore = -1;
    loop.Turn([&] { skippedBefore = source.skipped; });
    EXPECT_EQ(skippedBefore, 4);
    EXPECT_EQ(source.ran, 0);
    loop.SetTickSource(nullptr);
}

}  // namespace
}  // namespace kalvex::window
