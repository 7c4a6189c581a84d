// What a server does with what a client says: a conversation with a server whose store is scratch.
// An input is a line of steps, in the form of fields; the content of each is a parcel.
#include <set>

#include "fuzz/WireFields.h"
#include "fuzz/client_messages.h"
#include "fuzz/fuzz.h"
#include "server/Server.h"
#include "support/log_recorder.h"
#include "support/scratch_folder.h"
#include "vantrel/Codes.h"
#include "vantrel/network/Parcel.h"

namespace kalvex::fuzz {

namespace {

// Tags of steps. Any other one is a parcel too.
constexpr std::uint64_t kParcel = (1 << 3) | 2;
constexpr std::uint64_t kSecond = (2 << 3) | 2;  // and a second goes by before

constexpr const char* kPlant = R"(
[server]
clients = 2
variables = 6
[[access]]
variables = "TAJNE"
read = "50"
[[access]]
write = "0"
[[variable]]
name = "Z1.PRZEPŁYW"
min = 0
max = 5000
at = 34
h = 10
rate = 5
rt = 30
[[variable]]
name = "TEKST"
type = "text"
at = 2
[[variable]]
name = "TAJNE"
[[variable]]
name = "LICZNIK"
type = "int"
signal = "counter rate=1"
)";

struct World {
    World() {
        std::vector<std::string> errors;
        folder.Put("plant.toml", kPlant);
        Demand(server.Start(folder.Path("plant.toml"), errors), "the server must start");
    }
    ~World() { server.Stop(); }

    void Settle() {
        do {
            server.GetStore().Flush();
        } while (loop.Run());
    }

    support::ScratchFolder folder;
    platform::VirtualClock clock{1710068400};
    support::SilentLog log;
    platform::Translator translator;
    platform::PostedWork loop;
    server::Server server{clock, log, translator, loop, platform::PasswordCost::Least};
};

// Looks at all that the server says.
class Client final : public vantrel::ServerLink {
  public:
    explicit Client(World& world) : m_world(world), m_session(world.server.Accept(*this)) {
        Demand(m_session != nullptr, "the client must be let in");
    }
    ~Client() override { m_session->OnClosed(vantrel::ReasonLost); }

    void Say(std::string_view bytes) {
        vantrel::ClientParcel parcel;
        if (vantrel::Unpack(bytes, parcel) != vantrel::WireFault::None) return;
        auto* message = std::get_if<vantrel::ClientMessage>(&parcel);
        if (message == nullptr) return;
        NoteRequests(*message);
        m_session->OnMessage(std::move(*message));
        m_world.loop.Run();
    }

    void Send(vantrel::ServerMessage message) override {
        const vantrel::PackedAnswer packed = vantrel::Pack(message);
        Demand(packed.leftOut == 0, "something cannot be sent");
        for (const std::string& bytes : packed.parcels) {
            vantrel::ServerParcel parcel;
            Demand(vantrel::Unpack(bytes, parcel) == vantrel::WireFault::None,
                   "what is sent does not decode");
        }
        if (const auto* login = std::get_if<vantrel::LoginResult>(&message)) {
            Demand(!m_loggedIn, "a login is answered that was not asked for");
            m_loggedIn = login->code == 0;
            return;
        }
        Demand(m_loggedIn, "something is said before the login");
        if (const auto* answer = std::get_if<vantrel::ReadAnswer>(&message)) {
            Demand(m_requests.count(answer->id) != 0, "an answer without a request");
        } else if (const auto* results = std::get_if<vantrel::ModifyResults>(&message)) {
            for (const auto& entry : results->entries) {
                Demand(m_requests.count(entry.id) != 0, "a result without a request");
            }
        }
    }
    void Close(std::uint32_t) override {}
    std::size_t Backlog() const override { return 0; }
    std::string PeerAddress() const override { return {}; }

  private:
    void NoteRequests(const vantrel::ClientMessage& message) {
        if (const auto* reads = std::get_if<vantrel::ReadRequests>(&message)) {
            for (const vantrel::ReadRequest& request : reads->requests)
                m_requests.insert(request.id);
        } else if (const auto* writes = std::get_if<vantrel::ModifyRequests>(&message)) {
            for (const vantrel::ModifyRequest& request : writes->requests)
                m_requests.insert(request.id);
        } else if (const auto* archive = std::get_if<vantrel::ArchiveModifyRequest>(&message)) {
            m_requests.insert(archive->id);
        } else if (const auto* known = std::get_if<vantrel::AcknowledgeRequests>(&message)) {
            for (const auto& request : known->requests) m_requests.insert(request.id);
        } else if (const auto* order = std::get_if<vantrel::PeriodRequest>(&message)) {
            m_requests.insert(order->id);
        }
    }

    World& m_world;
    std::set<vantrel::RequestId> m_requests;
    bool m_loggedIn = false;
    std::unique_ptr<vantrel::ServerSession> m_session;
};

}  // namespace

std::vector<std::string> FuzzCorpus() {
    const std::vector<vantrel::ClientMessage> messages = SampleClientMessages();
    const WireField login{kParcel, vantrel::Pack(messages.front()).parcels.front()};
    std::vector<std::string> corpus{"", JoinFields({login})};
    std::vector<WireField> all{login};
    for (const vantrel::ClientMessage& message : messages) {
        const std::string parcel = vantrel::Pack(message).parcels.front();
        corpus.push_back(JoinFields({login, {kParcel, parcel}, {kSecond, ""}}));
        all.push_back({kSecond, parcel});
    }
    corpus.push_back(JoinFields(all));
    return corpus;
}

}  // namespace kalvex::fuzz

extern "C" int LLVMFuzzerTestOneInput(const std::uint8_t* data, std::size_t size) {
    static kalvex::fuzz::World world;
    kalvex::fuzz::Client client(world);
    std::vector<kalvex::fuzz::WireField> steps;
    kalvex::fuzz::SplitFields(kalvex::fuzz::Bytes(data, size), steps);
    for (const kalvex::fuzz::WireField& step : steps) {
        if (step.tag == kalvex::fuzz::kSecond) {
            world.clock.Advance(1000);
            world.server.Tick();
        }
        client.Say(step.content);
    }
    world.Settle();
    return 0;
}
