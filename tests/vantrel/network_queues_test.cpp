// What crosses between threads. Run under the thread sanitizer as well.
#include <gmock/gmock.h>

#include <atomic>
#include <string>
#include <thread>
#include <vector>

#include "support/waiting_loop.h"
#include "vantrel/network/HandOver.h"
#include "vantrel/network/Outbox.h"

namespace kalvex::vantrel {
namespace {

using testing::ElementsAre;
using testing::IsEmpty;

class NetworkQueuesHandOverTest : public testing::Test {
  protected:
    bool Push(int number, std::size_t weight) {
        return handOver->Push([this, number] { done.push_back(number); }, weight);
    }

    platform::PostedWork loop;
    std::shared_ptr<HandOver> handOver = std::make_shared<HandOver>(loop, 100);
    std::vector<int> done;
    int resumed = 0;

    void SetUp() override {
        handOver->OnRoom([this] { ++resumed; });
    }
};

TEST_F(NetworkQueuesHandOverTest, RunsEventsInOrderOnTheMainThreadOnly) {
    EXPECT_TRUE(Push(1, 10));
    EXPECT_TRUE(Push(2, 10));
    EXPECT_THAT(done, IsEmpty());
    loop.Run();
    EXPECT_THAT(done, ElementsAre(1, 2));
    EXPECT_FALSE(loop.Run());
    EXPECT_EQ(resumed, 0);
}

TEST_F(NetworkQueuesHandOverTest, FullInboxPausesTheReaderAndResumesItOnce) {
    EXPECT_TRUE(Push(1, 99));
    EXPECT_FALSE(Push(2, 1));
    EXPECT_EQ(resumed, 0);
    loop.Run();
    EXPECT_THAT(done, ElementsAre(1, 2));
    EXPECT_EQ(resumed, 1);
    EXPECT_TRUE(Push(3, 1));
    loop.Run();
    EXPECT_EQ(resumed, 1);
}

TEST_F(NetworkQueuesHandOverTest, TakesAnEventThatIsHeavierThanTheLimit) {
    EXPECT_FALSE(Push(1, 1000));
    loop.Run();
    EXPECT_THAT(done, ElementsAre(1));
    EXPECT_EQ(resumed, 1);
}

TEST_F(NetworkQueuesHandOverTest, EventThatIsPushedByAnEventComesLater) {
    handOver->Push(
        [this] {
            done.push_back(1);
            EXPECT_FALSE(Push(2, 100));
        },
        50);
    loop.Run();
    EXPECT_THAT(done, ElementsAre(1));
    EXPECT_EQ(resumed, 0);  // the inbox is still full
    loop.Run();
    EXPECT_THAT(done, ElementsAre(1, 2));
    EXPECT_EQ(resumed, 1);
}

TEST_F(NetworkQueuesHandOverTest, StopDropsWhatWaitsAndWhatComes) {
    EXPECT_FALSE(Push(1, 100));
    handOver->Stop();
    EXPECT_EQ(resumed, 1);  // the reader goes on, to find the end of its stream
    EXPECT_TRUE(Push(2, 1000));
    loop.Run();
    EXPECT_THAT(done, IsEmpty());
    EXPECT_FALSE(loop.Run());
    handOver->Stop();
    EXPECT_EQ(resumed, 1);
}

TEST_F(NetworkQueuesHandOverTest, StopByAnEventDropsTheEventsBehindIt) {
    handOver->Push([this] { handOver->Stop(); }, 1);
    Push(2, 1);
    loop.Run();
    EXPECT_THAT(done, IsEmpty());
}

TEST_F(NetworkQueuesHandOverTest, StopByAnEventDropsWhatItHolds) {
    const auto held = std::make_shared<int>(1);
    handOver->Push([held] {}, 1);
    EXPECT_EQ(held.use_count(), 2);
    handOver->Stop();
    EXPECT_EQ(held.use_count(), 1);
}

// A reader that pauses when told, as the carriers do.
TEST(NetworkQueuesHandOverThreadsTest, EachReaderKeepsItsOrderAndIsNeverLeftPaused) {
    constexpr int kReaders = 3;
    constexpr int kEvents = 5000;
    support::WaitingLoop loop;
    const auto handOver = std::make_shared<HandOver>(loop, 50);
    std::atomic<int> resumes = 0;
    handOver->OnRoom([&] {
        ++resumes;
        resumes.notify_all();
    });
    std::vector<std::vector<int>> done(kReaders);
    std::vector<std::thread> threads;
    for (int reader = 0; reader < kReaders; ++reader) {
        threads.emplace_back([&, reader] {
            for (int number = 0; number < kEvents; ++number) {
                const int before = resumes;
                const auto event = [&done, reader, number] { done[reader].push_back(number); };
                if (!handOver->Push(event, 1)) resumes.wait(before);
            }
        });
    }
    while (done[0].size() + done[1].size() + done[2].size() < kReaders * kEvents) {
        loop.WaitAndRun();
    }
    for (std::thread& thread : threads) thread.join();
    for (const std::vector<int>& numbers : done) {
        for (int number = 0; number < kEvents; ++number) ASSERT_EQ(numbers[number], number);
    }
    EXPECT_GT(resumes, 0);
}

TEST(NetworkQueuesHandOverThreadsTest, LoopMayGoAfterStop) {
    auto loop = std::make_unique<platform::PostedWork>();
    const auto handOver = std::make_shared<HandOver>(*loop, 50);
    std::atomic<bool> running = false;
    std::atomic<bool> enough = false;
    std::thread reader([&] {
        while (!enough) {
            handOver->Push([] {}, 1);
            running = true;
            running.notify_all();
        }
    });
    running.wait(false);
    handOver->Stop();
    loop.reset();
    enough = true;
    reader.join();
}

class NetworkQueuesOutboxTest : public testing::Test {
  protected:
    Outbox::Next Take() { return outbox.Take(parcel, drained); }

    Outbox outbox{10};
    std::string parcel;
    bool drained = false;
};

TEST_F(NetworkQueuesOutboxTest, FirstParcelWantsAWriterAndTheOthersQueue) {
    EXPECT_EQ(outbox.Add("one"), Outbox::Put::WriterNeeded);
    EXPECT_EQ(outbox.Add("two"), Outbox::Put::Queued);
    EXPECT_EQ(Take(), Outbox::Next::Parcel);
    EXPECT_EQ(parcel, "one");
    EXPECT_EQ(Take(), Outbox::Next::Parcel);
    EXPECT_EQ(parcel, "two");
    EXPECT_EQ(Take(), Outbox::Next::Nothing);
    EXPECT_FALSE(drained);
    EXPECT_EQ(outbox.Add("three"), Outbox::Put::WriterNeeded);
}

TEST_F(NetworkQueuesOutboxTest, FullOutboxRefusesAndKeepsWhatItHas) {
    EXPECT_EQ(outbox.Add("12345"), Outbox::Put::WriterNeeded);
    EXPECT_EQ(outbox.Add("67890"), Outbox::Put::Queued);
    EXPECT_EQ(outbox.Add("x"), Outbox::Put::Full);
    Take();
    EXPECT_EQ(outbox.Add("x"), Outbox::Put::Queued);
    Take();
    EXPECT_EQ(parcel, "67890");
    Take();
    EXPECT_EQ(parcel, "x");
}

TEST_F(NetworkQueuesOutboxTest, EndComesBehindWhatWaits) {
    outbox.Add("one");
    EXPECT_EQ(outbox.Close(), Outbox::Put::Queued);
    EXPECT_EQ(outbox.Add("late"), Outbox::Put::Queued);
    EXPECT_EQ(Take(), Outbox::Next::Parcel);
    EXPECT_EQ(Take(), Outbox::Next::End);
}

TEST_F(NetworkQueuesOutboxTest, EndWantsAWriterWhenNothingWaits) {
    EXPECT_EQ(outbox.Close(), Outbox::Put::WriterNeeded);
    EXPECT_EQ(Take(), Outbox::Next::End);
    EXPECT_EQ(outbox.Close(), Outbox::Put::Queued);
}

TEST_F(NetworkQueuesOutboxTest, DrainedIsToldOnceToWhoAskedForABacklog) {
    EXPECT_EQ(outbox.Backlog(), 0u);
    outbox.Add("one");
    outbox.Add("two");
    EXPECT_EQ(outbox.Backlog(), 2u);
    Take();
    Take();
    EXPECT_FALSE(drained);
    EXPECT_EQ(outbox.Backlog(), 1u);  // it is being written
    Take();
    EXPECT_TRUE(drained);
    EXPECT_EQ(outbox.Backlog(), 0u);
    outbox.Add("three");
    Take();
    Take();
    EXPECT_FALSE(drained);
}

TEST_F(NetworkQueuesOutboxTest, StuckMeansThatTheWriterHasNotComeByThoughItHadWork) {
    EXPECT_FALSE(outbox.IsStuck());
    EXPECT_FALSE(outbox.IsStuck());  // nothing to do
    outbox.Add("one");
    EXPECT_FALSE(outbox.IsStuck());  // called just now
    EXPECT_TRUE(outbox.IsStuck());
    outbox.Add("two");
    EXPECT_TRUE(outbox.IsStuck());
    Take();
    EXPECT_FALSE(outbox.IsStuck());
    EXPECT_TRUE(outbox.IsStuck());
}

TEST(NetworkQueuesOutboxThreadsTest, WriterGetsAllParcelsInOrder) {
    constexpr int kParcels = 20000;
    Outbox outbox(1 << 20);
    std::atomic<int> wanted = 0;  // calls for the writer that it has not followed
    std::vector<std::string> written;
    std::thread writer([&] {
        for (;;) {
            wanted.wait(0);
            --wanted;
            std::string parcel;
            bool drained = false;
            Outbox::Next next;
            while ((next = outbox.Take(parcel, drained)) == Outbox::Next::Parcel) {
                written.push_back(parcel);
            }
            if (next == Outbox::Next::End) return;
        }
    });
    const auto call = [&](Outbox::Put put) {
        ASSERT_NE(put, Outbox::Put::Full);
        if (put != Outbox::Put::WriterNeeded) return;
        ++wanted;
        wanted.notify_all();
    };
    for (int number = 0; number < kParcels; ++number) {
        call(outbox.Add(std::to_string(number)));
        outbox.Backlog();
        outbox.IsStuck();
    }
    call(outbox.Close());
    writer.join();
    ASSERT_EQ(written.size(), static_cast<std::size_t>(kParcels));
    for (int number = 0; number < kParcels; ++number) {
        ASSERT_EQ(written[number], std::to_string(number));
    }
}

}  // namespace
}  // namespace kalvex::vantrel
