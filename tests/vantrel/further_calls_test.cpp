// Methods beside those of sorvane.proto, over a real port.
#include "vantrel/network/FurtherCalls.h"

#include <gmock/gmock.h>

#include <new>
#include <set>
#include <thread>

#include "support/network_world.h"
#include "vantrel/raw_peer.h"

namespace kalvex::vantrel {
namespace {

using testing::ElementsAre;

constexpr const char* kEcho = "/test.Service/Echo";

class EchoCall;

// Answers each parcel but one with the same.
class EchoMethods final : public FurtherMethods {
  public:
    std::optional<std::size_t> Find(std::string_view name) const override {
        if (name != kEcho) return {};
        return 7;
    }
    std::unique_ptr<FurtherCall> Accept(std::size_t method, FurtherLink& link) override;

    std::set<EchoCall*> calls;
    std::vector<std::string> heard;
    FurtherLink* link = nullptr;  // of the newest call
    int checks = 0;
};

class EchoCall final : public FurtherCall {
  public:
    EchoCall(EchoMethods& methods, FurtherLink& link) : m_methods(methods), m_link(link) {
        m_methods.calls.insert(this);
        m_methods.link = &link;
    }
    ~EchoCall() override { m_methods.calls.erase(this); }
    void OnParcel(std::string_view bytes) override {
        m_methods.heard.emplace_back(m_link.PeerAddress() + "|" + std::string(bytes));
        if (bytes == "end") return m_link.Finish(StreamEnd::NotFound, "nie ma, żółw");
        if (bytes == "large") throw std::bad_alloc();
        if (bytes != "quiet") m_link.Send(std::string(bytes));
    }
    void Check() override { ++m_methods.checks; }

  private:
    EchoMethods& m_methods;
    FurtherLink& m_link;
};

std::unique_ptr<FurtherCall> EchoMethods::Accept(std::size_t method, FurtherLink& link) {
    EXPECT_EQ(method, 7U);
    return std::make_unique<EchoCall>(*this, link);
}

class FurtherCallsTest : public testing::Test {
  protected:
    void Listen(FurtherMethods* further) {
        std::string error;
        server = ListenOnNetwork(settings, acceptor, world.loop, world.log, world.translator, error,
                                 further);
        EXPECT_EQ(error, "");
    }

    std::unique_ptr<RawClient> Dial(const char* method = kEcho) const {
        auto client = std::make_unique<RawClient>(
            Endpoint{.target = LocalSocketTarget(world.folder.Path("srv"))}, method);
        client->stream->Resume();
        return client;
    }

    // How the stream ended, the main thread working meanwhile.
    StreamEnd EndOf(RawClient& client) {
        StreamEnd end = StreamEnd::Orderly;
        bool ended = false;
        std::thread waiting([&] {
            end = client.events->AwaitEnd();
            world.loop.Post([&] { ended = true; });
        });
        world.RunUntil([&] { return ended; });
        waiting.join();
        return end;
    }

    void RunUntilHeard(std::size_t parcels) {
        world.RunUntil([this, parcels] { return methods.heard.size() >= parcels; });
    }

    support::NetworkWorld world;
    support::HandServer acceptor;
    EchoMethods methods;
    NetworkServerSettings settings = world.ServerSettings();
    std::unique_ptr<NetworkServer> server;
};

TEST_F(FurtherCallsTest, ParcelsGoBothWaysUntilTheServerEndsTheCallWithItsReason) {
    Listen(&methods);
    const auto client = Dial();
    client->stream->Send("one");
    client->stream->Send("");
    client->stream->Send("end");
    RunUntilHeard(3);
    EXPECT_THAT(methods.heard, ElementsAre("|one", "|", "|end"));
    EXPECT_EQ(client->events->Take(), "one");
    EXPECT_EQ(client->events->Take(), "");
    EXPECT_EQ(EndOf(*client), StreamEnd::NotFound);
    EXPECT_EQ(client->events->Detail(), "nie ma, żółw");
    world.RunUntil([this] { return methods.calls.empty(); });
}

TEST_F(FurtherCallsTest, EachWayToEndComesThrough) {
    Listen(&methods);
    for (const StreamEnd end : {StreamEnd::Orderly, StreamEnd::Refused, StreamEnd::Unreachable,
                                StreamEnd::TooLarge, StreamEnd::LoginRefused, StreamEnd::NotFound,
                                StreamEnd::NotAQuestion, StreamEnd::NotOffered, StreamEnd::Lost}) {
        const std::size_t before = methods.heard.size();
        const auto client = Dial();
        client->stream->Send("x");
        RunUntilHeard(before + 1);
        methods.link->Finish(end, "");
        EXPECT_EQ(EndOf(*client), end);
    }
}

TEST_F(FurtherCallsTest, MethodThatNobodyOffersIsNotThere) {
    Listen(&methods);
    EXPECT_EQ(EndOf(*Dial("/test.Service/Other")), StreamEnd::NotOffered);
    server.reset();
    Listen(nullptr);
    EXPECT_EQ(EndOf(*Dial()), StreamEnd::NotOffered);
}

TEST_F(FurtherCallsTest, ClientThatHasSaidAllWaitsForItsAnswer) {
    Listen(&methods);
    const auto client = Dial();
    client->stream->Send("quiet");
    client->stream->Finish(StreamEnd::Orderly);
    RunUntilHeard(1);
    for (int second = 0; second < 30; ++second) {
        world.loop.Run();
        world.now += 1000;
        server->Check();
    }
    EXPECT_EQ(methods.checks, 30);
    methods.link->Send("late");
    methods.link->Finish(StreamEnd::Orderly, "");
    EXPECT_EQ(client->events->Take(), "late");
    EXPECT_EQ(EndOf(*client), StreamEnd::Orderly);
}

TEST_F(FurtherCallsTest, ClientThatSaysNothingIsGivenUp) {
    Listen(&methods);
    const auto client = Dial();
    world.RunUntil([this] { return methods.link != nullptr; });
    for (int second = 0; second < 10; ++second) {
        world.now += 1000;
        server->Check();
    }
    EXPECT_EQ(EndOf(*client), StreamEnd::Lost);
    world.RunUntil([this] { return methods.calls.empty(); });
}

TEST_F(FurtherCallsTest, ClientThatGoesEndsItsCall) {
    Listen(&methods);
    {
        const auto client = Dial();
        client->stream->Send("x");
        RunUntilHeard(1);
    }
    world.RunUntil([this] { return methods.calls.empty(); });
}

TEST_F(FurtherCallsTest, QuestionThatIsTooLongIsNotTaken) {
    Listen(&methods);
    const auto client = Dial();
    client->stream->Send(std::string(kMaxQuestionBytes + 1, 'x'));
    EXPECT_EQ(EndOf(*client), StreamEnd::TooLarge);
    EXPECT_THAT(methods.heard, ElementsAre());
    const auto other = Dial();
    other->stream->Send(std::string(kMaxQuestionBytes, 'x'));
    RunUntilHeard(1);
}

TEST_F(FurtherCallsTest, CallForWhichThereIsNoMemoryEndsAlone) {
    Listen(&methods);
    const auto other = Dial();
    const auto client = Dial();
    client->stream->Send("large");
    EXPECT_EQ(EndOf(*client), StreamEnd::Lost);
    other->stream->Send("x");
    RunUntilHeard(2);
    EXPECT_EQ(other->events->Take(), "x");
    world.RunUntil([this] { return methods.calls.size() == 1; });
}

TEST_F(FurtherCallsTest, ClientThatReadsNothingIsCutOff) {
    settings.outboxLimit = 1 << 20;
    Listen(&methods);
    RawClient client(Endpoint{.target = LocalSocketTarget(world.folder.Path("srv"))}, kEcho);
    client.stream->Send("x");
    RunUntilHeard(1);
    while (!methods.calls.empty()) {
        methods.link->Send(std::string(100'000, 'x'));
        world.loop.Run();
    }
    client.stream->Resume();
    EXPECT_NE(EndOf(client), StreamEnd::Orderly);
}

TEST_F(FurtherCallsTest, OnlySoManyCallsAreTakenAtATime) {
    Listen(&methods);
    std::vector<std::unique_ptr<RawClient>> clients;
    while (methods.calls.size() < kMostFurtherCalls) {
        clients.push_back(Dial());
        const std::size_t wanted = clients.size();
        world.RunUntil([&] { return methods.calls.size() == wanted; });
    }
    EXPECT_EQ(EndOf(*Dial()), StreamEnd::TooLarge);
    clients.pop_back();
    world.RunUntil([&] { return methods.calls.size() < kMostFurtherCalls; });
    const auto next = Dial();
    world.RunUntil([&] { return methods.calls.size() == kMostFurtherCalls; });
}

TEST_F(FurtherCallsTest, ServerThatGoesTellsItsClients) {
    Listen(&methods);
    const auto client = Dial();
    client->stream->Send("x");
    RunUntilHeard(1);
    server.reset();
    EXPECT_EQ(methods.calls.size(), 0U);
    EXPECT_EQ(client->events->AwaitEnd(), StreamEnd::Unreachable);
}

TEST_F(FurtherCallsTest, ConversationsGoOnBesideThem) {
    Listen(&methods);
    const auto client = Dial();
    client->stream->Send("x");
    const auto talker = Dial("/sorvane.v1.DataServer/Converse");
    talker->stream->Send(Pack(ClientMessage(LoginRequest{1, 23, "Obcy", "", ""})).parcels.at(0));
    world.RunUntil(acceptor, "login / Obcy 23");
    RunUntilHeard(1);
}

}  // namespace
}  // namespace kalvex::vantrel
