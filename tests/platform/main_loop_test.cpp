#include <gmock/gmock.h>
#include <gtest/gtest.h>
#include <unistd.h>

#include <csignal>
#include <optional>
#include <string>
#include <thread>
#include <vector>

#include "platform/posix/PosixMainLoop.h"

namespace kalvex::platform {
namespace {

using testing::ElementsAre;

TEST(MainLoopPostedWorkTest, WorkIsDoneInOrderAndOnce) {
    PostedWork loop;
    std::vector<int> done;
    EXPECT_FALSE(loop.Run());
    loop.Post([&] { done.push_back(1); });
    loop.Post([&] {
        done.push_back(2);
        loop.Post([&] { done.push_back(3); });
    });
    EXPECT_TRUE(done.empty());
    EXPECT_TRUE(loop.Run());
    EXPECT_THAT(done, ElementsAre(1, 2));
    EXPECT_TRUE(loop.Run());
    EXPECT_THAT(done, ElementsAre(1, 2, 3));
    EXPECT_FALSE(loop.Run());
}

TEST(MainLoopPostedWorkTest, WakesWhenTheInboxStopsBeingEmpty) {
    int wakes = 0;
    PostedWork loop([&] { ++wakes; });
    loop.Post([] {});
    loop.Post([] {});
    EXPECT_EQ(wakes, 1);
    loop.Run();
    loop.Post([] {});
    EXPECT_EQ(wakes, 2);
}

TEST(MainLoopTest, SignalIsPendingUntilItsHandlerIsCalled) {
    PosixMainLoop loop;
    bool seen = true;
    loop.OnSignal(SIGUSR1, [&] {
        seen = SignalQueue::IsPending(SIGUSR1);
        loop.Quit();
    });
    EXPECT_FALSE(SignalQueue::IsPending(SIGUSR1));
    std::raise(SIGUSR1);
    EXPECT_TRUE(SignalQueue::IsPending(SIGUSR1));
    loop.Run();
    EXPECT_FALSE(seen);
}

TEST(MainLoopTest, WaitEndsWhenTheWatchedDescriptorCanBeReadOrHasEnded) {
    PosixMainLoop loop;
    int ends[2];
    ASSERT_EQ(::pipe(ends), 0);
    loop.AroundWait([] { return std::nullopt; }, [&] { loop.Quit(); });
    loop.Watch(ends[0]);
    loop.Post([] {});
    loop.Run();
    EXPECT_FALSE(loop.IsReadable());
    ASSERT_EQ(::write(ends[1], "x", 1), 1);
    loop.Run();
    EXPECT_TRUE(loop.IsReadable());
    char taken;
    ASSERT_EQ(::read(ends[0], &taken, 1), 1);
    ::close(ends[1]);
    loop.Run();
    EXPECT_TRUE(loop.IsReadable());
    loop.Watch(-1);
    loop.Post([] {});
    loop.Run();
    EXPECT_FALSE(loop.IsReadable());
    ::close(ends[0]);
}

TEST(MainLoopTest, DoesPostedWorkTimersAndSignals) {
    PosixMainLoop loop;
    std::vector<std::string> done;
    loop.OnSignal(SIGUSR1, [&] {
        done.push_back("signal");
        loop.Quit();
    });
    int ticks = 0;
    loop.Every(1, [&] {
        if (++ticks == 3) std::raise(SIGUSR1);
    });
    std::thread other([&] { loop.Post([&] { done.push_back("posted"); }); });
    other.join();
    loop.Run();
    EXPECT_THAT(done, ElementsAre("posted", "signal"));
    EXPECT_GE(ticks, 3);
}

TEST(MainLoopTest, TimerCanCancelItselfAndAnotherThatIsDue) {
    PosixMainLoop loop;
    int first = 0;
    int second = 0;
    int calls = 0;
    const auto work = [&] {
        ++calls;
        loop.Cancel(first);
        loop.Cancel(second);
        loop.Every(1, [&] { loop.Quit(); });
    };
    first = loop.Every(1, work);
    second = loop.Every(1, work);
    loop.Run();
    EXPECT_EQ(calls, 1);
}

TEST(MainLoopTest, WaitsNoLongerThanItIsToldBeforehand) {
    PosixMainLoop loop;
    std::vector<std::optional<std::int64_t>> waits{0, 300, 1000};
    int ended = 0;
    loop.AroundWait(
        [&]() -> std::optional<std::int64_t> {
            const auto wait = waits.back();
            waits.pop_back();
            if (waits.empty()) loop.Quit();
            return wait;
        },
        [&] { ++ended; });
    loop.Run();
    EXPECT_EQ(ended, 2);
}

TEST(MainLoopTest, EndOfAWaitComesBeforePostedWork) {
    PosixMainLoop loop;
    std::vector<std::string> done;
    loop.AroundWait([]() -> std::optional<std::int64_t> { return std::nullopt; },
                    [&] { done.push_back("woken"); });
    loop.Post([&] {
        done.push_back("posted");
        loop.Quit();
    });
    loop.Run();
    EXPECT_THAT(done, ElementsAre("woken", "posted"));
}

}  // namespace
}  // namespace kalvex::platform
