// The whole server killed in the middle of a stream of writes: whatever a client was told to be
// written is there at the next start.
#include <unistd.h>

#include <set>

#include "killed_writer.h"
#include "server_fixture.h"
#include "support/waiting_loop.h"
#include "value/ValueText.h"

namespace kalvex {
namespace {

constexpr int kRounds = 15;
constexpr int kArchiveValues = 5;
constexpr const char* kPlant =
    "[[access]]\nwrite = \"0\"\n[[variable]]\nname = \"X\"\nat = 32\nrt = 2\n"
    "[[variable]]\nname = \"S\"\nat = 2\nsignal = \"walk min=0 max=9 step=1\"\n";

// Tells the number of each write that the server has confirmed.
class TellingLink final : public ServerLink {
  public:
    explicit TellingLink(int tell) : m_nTell(tell) {}
    void Send(ServerMessage message) override {
        const ModifyResults* results = std::get_if<ModifyResults>(&message);
        if (results == nullptr) return;
        for (const ModifyResults::Entry& entry : results->entries) {
            if (entry.result != ResultOk) ::_exit(2);
            TellConfirmed(m_nTell, entry.id);
        }
    }
    void Close(std::uint32_t) override {}
    std::size_t Backlog() const override { return 0; }
    std::string PeerAddress() const override { return {}; }

  private:
    int m_nTell;
};

// Write number n: even, the report of hour n; odd, archive values from second n * 100 on.
[[noreturn]] void ServeUntilKilled(const std::string& configuration, RequestId first, int tell) {
    VirtualClock clock(1700000000 + std::int64_t{first} * 10);
    LogRecorder log;
    const Translator translator;
    WaitingLoop loop;
    Server server(clock, log, translator, loop, PasswordCost::Least);
    std::vector<std::string> errors;
    if (!server.Start(configuration, errors)) ::_exit(1);
    TellingLink link(tell);
    const std::unique_ptr<ServerSession> session = server.Accept(link);
    session->OnMessage(LoginRequest{});
    for (RequestId id = first;; ++id) {
        if (id % 2 == 0) {
            session->OnMessage(ModifyRequests{
                {{id, KindHour, "X", std::int64_t{id} * 3600, CVal(static_cast<int>(id))}}});
        } else {
            ArchiveModifyRequest request{id, "X", 0, 0, {}};
            for (int index = 0; index < kArchiveValues; ++index) {
                request.values.push_back(
                    Stamped(CVal(static_cast<int>(id)), std::int64_t{id} * 100 + index));
            }
            session->OnMessage(std::move(request));
        }
        clock.Advance(300);
        server.Tick();
        if (id % 4 == 0) loop.WaitAndRun();
    }
}

class ServerKillTest : public ServerTest {
  protected:
    std::set<std::int64_t> TimesOf(ValueKind kind) {
        TestClient& client = LogIn();
        client.Say(ReadRequests{{{++m_nLastRequest, kind, "X", 0, INT64_MAX}}});
        Settle();
        std::set<std::int64_t> times;
        for (const ReadAnswer& answer : client.Take<ReadAnswer>()) {
            EXPECT_EQ(answer.result, ResultOk);
            for (const CVal& value : answer.values) {
                times.insert(value.GetTime());
                const std::int64_t unit = kind == KindHour ? 3600 : 100;
                EXPECT_EQ(static_cast<std::int64_t>(ValueToDouble(value)), value.GetTime() / unit);
            }
        }
        return times;
    }
};

TEST_F(ServerKillTest, EveryConfirmedWriteIsFound) {
    std::vector<std::int64_t> confirmed;
    RequestId next = 10;
    for (int round = 0; round < kRounds; ++round) {
        Configure(kPlant);
        const std::size_t enough = 1 + static_cast<std::size_t>(round) * 17 % 61;
        const std::string configuration = m_folder.Path("plant.toml");
        const std::vector<std::int64_t> more =
            RunAndKill([&](int tell) { ServeUntilKilled(configuration, next, tell); }, enough);
        ASSERT_GE(more.size(), enough);
        confirmed.insert(confirmed.end(), more.begin(), more.end());
        next = static_cast<RequestId>(more.back()) + 100000;

        Start(kPlant);
        const std::set<std::int64_t> hours = TimesOf(KindHour);
        const std::set<std::int64_t> archive = TimesOf(KindArchive);
        for (const std::int64_t id : confirmed) {
            if (id % 2 == 0) {
                ASSERT_EQ(hours.count(id * 3600), 1u) << id;
                continue;
            }
            for (int index = 0; index < kArchiveValues; ++index) {
                ASSERT_EQ(archive.count(id * 100 + index), 1u) << id;
            }
        }
        ASSERT_EQ(archive.size() % kArchiveValues, 0u);
        End();
    }
}

}  // namespace
}  // namespace kalvex
