// Clients for whose words there is no memory.
#include <gmock/gmock.h>

#include <memory>
#include <new>
#include <optional>
#include <string>

#include "support/allocation_count.h"
#include "support/network_world.h"
#include "vantrel/raw_peer.h"

namespace kalvex::vantrel {
namespace {

using testing::ElementsAre;

constexpr std::size_t kLargest = 400'000;  // bytes at a time
constexpr std::size_t kManyValues = 20'000;

class NetworkMemoryTest : public testing::Test {
  protected:
    void SetUp() override {
        server = world.Listen(world.ServerSettings(), acceptor);
        raw.emplace(Endpoint{.target = LocalSocketTarget(world.folder.Path("srv"))},
                    StreamMethod::Converse);
        raw->stream->Resume();
        Say(LoginRequest{1, 23, "Obcy", "", ""});
        world.RunUntil(acceptor, "login / Obcy 23");
    }

    void Say(const ClientMessage& message) { raw->stream->Send(Pack(message).parcels.at(0)); }

    // Another client is served as if nothing had been.
    void ExpectOthersAreServed() {
        const RawClient other({.target = LocalSocketTarget(world.folder.Path("srv"))},
                              StreamMethod::Converse);
        other.stream->Resume();
        other.stream->Send(Pack(ClientMessage(LoginRequest{1, 24, "Swój", "", ""})).parcels.at(0));
        world.RunUntil(acceptor, "login / Swój 24");
    }

    support::NetworkWorld world;
    support::HandServer acceptor;
    std::unique_ptr<NetworkServer> server;
    std::optional<RawClient> raw;
};

TEST_F(NetworkMemoryTest, ParcelThatCannotBeDecodedEndsItsConversationAlone) {
    ArchiveModifyRequest request{.id = 1, .variable = "A", .values = {}};
    request.values.assign(kManyValues, value::CVal(1.5));
    std::string parcel = Pack(ClientMessage(request)).parcels.at(0);
    {
        const support::AllocationBound bound(kLargest);
        raw->stream->Send(std::move(parcel));
        world.RunUntil(acceptor, "closed 4108");
    }
    EXPECT_THAT(world.log.Take(),
                ElementsAre("1 Błąd odbioru pakietu od klienta Obcy (brak pamięci)"));
    ExpectOthersAreServed();
}

TEST_F(NetworkMemoryTest, AnswerThatCannotBeMadeEndsItsConversationAlone) {
    ReadAnswer answer{.id = 1, .result = 0, .values = {}};
    answer.values.emplace_back(std::string(2 * kLargest, 'x'));
    {
        const support::AllocationBound bound(kLargest);
        acceptor.Send(std::move(answer));
        world.RunUntil(acceptor, "closed 4104");
    }
    EXPECT_THAT(world.log.Take(),
                ElementsAre("1 Brak pamięci dla klienta Obcy - połączenie zerwane"));
    ExpectOthersAreServed();
}

TEST_F(NetworkMemoryTest, RequestThatCannotBeServedEndsItsConversationAlone) {
    acceptor.lacksMemory = true;
    Say(LastMessagesRequest{1});
    world.RunUntil(acceptor, "closed 4104");
    acceptor.lacksMemory = false;
    EXPECT_THAT(world.log.Take(),
                ElementsAre("1 Brak pamięci dla klienta Obcy - połączenie zerwane"));
    ExpectOthersAreServed();
}

// A client that asks for the list, up to where the server is asked.
class NetworkMemoryListTest : public NetworkMemoryTest {
  protected:
    void SetUp() override {
        NetworkMemoryTest::SetUp();
        lister.emplace(Endpoint{.target = LocalSocketTarget(world.folder.Path("srv"))},
                       StreamMethod::ListVariables);
        lister->stream->Resume();
    }

    void Ask() {
        lister->stream->Send(
            Pack(ClientMessage(LoginRequest{1, 23, "Inny", "ewa", ""})).parcels.at(0));
        world.RunUntil(acceptor, "list ewa");
    }

    void ExpectTheCallHasEndedAlone() {
        EXPECT_THAT(world.log.Take(),
                    ElementsAre("1 Brak pamięci dla klienta Inny - połączenie zerwane"));
        EXPECT_EQ(lister->events->AwaitEnd(), StreamEnd::Lost);
        ExpectOthersAreServed();
    }

    std::vector<VariableDefinition> definitions{{"A", {{"de", std::string(2 * kLargest, 'x')}}}};
    std::optional<RawClient> lister;
};

TEST_F(NetworkMemoryListTest, ListThatCannotBeMadeEndsItsCallAlone) {
    acceptor.definitions = definitions;
    {
        const support::AllocationBound bound(kLargest);
        Ask();
    }
    ExpectTheCallHasEndedAlone();
}

TEST_F(NetworkMemoryListTest, ListThatCannotBeSentEndsItsCallAlone) {
    acceptor.answersList = false;
    Ask();
    {
        const support::AllocationBound bound(kLargest);
        acceptor.listAnswer(std::move(definitions));
    }
    ExpectTheCallHasEndedAlone();
}

}  // namespace
}  // namespace kalvex::vantrel
