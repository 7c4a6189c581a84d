#include <gmock/gmock.h>

#include "vantrel/network/Patience.h"
#include "vantrel/network/Reception.h"

namespace kalvex::vantrel {
namespace {

using Due = PeerWatch::Due;
using testing::ElementsAre;

constexpr LifeSigns kHeard{.heard = true};
constexpr LifeSigns kHeardAndSpoke{.heard = true, .spoke = true};
constexpr LifeSigns kHeardButStuck{.heard = true, .spoke = true, .stuck = true};
constexpr LifeSigns kSpoke{.spoke = true};

TEST(NetworkPatiencePeerWatchTest, BeatIsDueAfterTwoSecondsWithoutAWord) {
    PeerWatch watch(0);
    EXPECT_EQ(watch.Look(1000, kHeard), Due::Nothing);
    EXPECT_EQ(watch.Look(2000, kHeard), Due::Beat);
    EXPECT_EQ(watch.Look(3000, kHeard), Due::Nothing);
    EXPECT_EQ(watch.Look(4000, kHeard), Due::Beat);
    EXPECT_EQ(watch.Look(5000, kHeardAndSpoke), Due::Nothing);
    EXPECT_EQ(watch.Look(6999, kHeard), Due::Nothing);
    EXPECT_EQ(watch.Look(7000, kHeard), Due::Beat);
}

TEST(NetworkPatiencePeerWatchTest, SilenceOfTenSecondsIsTheEnd) {
    PeerWatch watch(500);
    for (std::int64_t now = 1500; now < 10500; now += 1000) {
        EXPECT_EQ(watch.Look(now, kSpoke), Due::Nothing);
    }
    EXPECT_EQ(watch.Look(10500, kSpoke), Due::Silent);
}

TEST(NetworkPatiencePeerWatchTest, OneWordEndsTheSilence) {
    PeerWatch watch(0);
    for (std::int64_t now = 1000; now < 10000; now += 1000) watch.Look(now, kSpoke);
    EXPECT_EQ(watch.Look(10000, kHeardAndSpoke), Due::Nothing);
    for (std::int64_t now = 11000; now < 20000; now += 1000) {
        EXPECT_EQ(watch.Look(now, kSpoke), Due::Nothing);
    }
    EXPECT_EQ(watch.Look(20000, kSpoke), Due::Silent);
}

TEST(NetworkPatiencePeerWatchTest, PeerThatTakesNothingForTenSecondsIsStuck) {
    PeerWatch watch(0);
    for (std::int64_t now = 1000; now < 10000; now += 1000) {
        EXPECT_EQ(watch.Look(now, kHeardButStuck), Due::Nothing);
    }
    EXPECT_EQ(watch.Look(10000, kHeardButStuck), Due::Stuck);
}

TEST(NetworkPatiencePeerWatchTest, PeerThatTakesSomethingIsNotStuck) {
    PeerWatch watch(0);
    for (std::int64_t now = 1000; now < 10000; now += 1000) watch.Look(now, kHeardButStuck);
    EXPECT_EQ(watch.Look(10000, kHeardAndSpoke), Due::Nothing);
    EXPECT_EQ(watch.Look(11000, kHeardButStuck), Due::Nothing);
}

TEST(NetworkPatiencePeerWatchTest, SideThatWasHeldUpItselfBlamesNobody) {
    PeerWatch watch(0);
    EXPECT_EQ(watch.Look(60'000, kSpoke), Due::Nothing);  // counts as 5 seconds
    EXPECT_EQ(watch.Look(64'000, kSpoke), Due::Nothing);
    EXPECT_EQ(watch.Look(65'000, kSpoke), Due::Silent);
}

TEST(NetworkPatienceRetryPauseTest, GrowsToFiveSecondsAndBeginsAnew) {
    RetryPause pause;
    std::vector<std::int64_t> pauses;
    for (int attempt = 0; attempt < 6; ++attempt) pauses.push_back(pause.Next());
    EXPECT_THAT(pauses, ElementsAre(500, 1000, 2000, 4000, 5000, 5000));
    pause.Reset();
    EXPECT_EQ(pause.Next(), 500);
}

// ---- the reading side of a stream

class FakeStream final : public Stream {
  public:
    bool Send(std::string) override { return true; }
    void Resume() override { ++resumed; }
    void Finish(StreamEnd, std::string) override {}
    void Cancel() override {}
    std::size_t Backlog() const override { return 0; }
    bool IsStuck() override { return false; }

    int resumed = 0;
};

class Listener final : public ReceptionListener<ClientParcel> {
  public:
    void OnParcel(ClientParcel parcel) override {
        heard.push_back(parcel.index() == 0 ? "message" : "farewell");
    }
    void OnWireFault(WireFault fault) override {
        heard.push_back("fault " + std::to_string(static_cast<int>(fault)));
    }
    void OnDrained() override { heard.push_back("drained"); }
    void OnEnded(StreamEnd, const std::string& detail) override { heard.push_back(detail); }

    std::vector<std::string> heard;
};

class NetworkPatienceReceptionTest : public testing::Test {
  protected:
    void SetUp() override { reception->Start(stream, listener); }

    platform::PostedWork loop;
    std::shared_ptr<FakeStream> stream = std::make_shared<FakeStream>();
    Listener listener;
    std::shared_ptr<Reception<ClientParcel>> reception =
        std::make_shared<Reception<ClientParcel>>(loop, 200);
};

TEST_F(NetworkPatienceReceptionTest, StartBeginsToRead) {
    EXPECT_EQ(stream->resumed, 1);
    EXPECT_FALSE(reception->TakeHeard());
}

TEST_F(NetworkPatienceReceptionTest, HeartbeatIsASignOfLifeAndNothingElse) {
    EXPECT_TRUE(reception->OnParcel(Pack(Heartbeat{})));
    EXPECT_TRUE(reception->TakeHeard());
    EXPECT_FALSE(reception->TakeHeard());
    EXPECT_FALSE(loop.Run());
}

TEST_F(NetworkPatienceReceptionTest, WhatComesInGoesToTheListenerInOrder) {
    reception->OnParcel(Pack(ClientMessage(LastMessagesRequest{1})).parcels[0]);
    reception->OnParcel("rubbish");
    reception->OnDrained();
    reception->OnParcel(Pack(Farewell{1}));
    reception->OnEnded(StreamEnd::Lost, "ended");
    loop.Run();
    EXPECT_THAT(listener.heard, ElementsAre("message", "fault 1", "drained", "farewell", "ended"));
}

TEST_F(NetworkPatienceReceptionTest, FullInboxPausesReadingUntilTheMainThreadHasBeenThere) {
    const std::string parcel = Pack(Farewell{4106});
    bool goOn = true;
    int taken = 0;
    while (goOn) {
        goOn = reception->OnParcel(parcel);
        ++taken;
    }
    EXPECT_EQ(taken, 40);  // of 5 bytes each
    EXPECT_EQ(stream->resumed, 1);
    loop.Run();
    EXPECT_EQ(stream->resumed, 2);
    EXPECT_EQ(listener.heard.size(), 40u);
}

TEST_F(NetworkPatienceReceptionTest, ValuesWeighWhatTheyBecome) {
    ArchiveModifyRequest request{1, "A", 0, 0, std::vector<value::CVal>(4)};
    const std::string parcel = Pack(ClientMessage(request)).parcels[0];
    ASSERT_LT(parcel.size(), 50u);
    EXPECT_FALSE(reception->OnParcel(parcel));
    loop.Run();
    reception->Stop();
}

}  // namespace
}  // namespace kalvex::vantrel
