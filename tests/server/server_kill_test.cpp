// The whole server killed in the middle of a stream of writes: whatever a client was told to be
// written is there at the next start.
#include <unistd.h>

#include <set>

#include "killed_writer.h"
#include "server_fixture.h"
#include "support/waiting_loop.h"
#include "value/ValueText.h"

namespace kalvex::server {
namespace {

constexpr int kRounds = 25;
constexpr int kArchiveValues = 5;
constexpr const char* kPlant =
    "[[access]]\nwrite = \"0\"\n[[variable]]\nname = \"X\"\nat = 32\nrt = 2\n"
    "[[variable]]\nname = \"S\"\nat = 2\nsignal = \"walk min=0 max=9 step=1\"\n";

// Tells the number of each write that the server has confirmed.
class TellingLink final : public vantrel::ServerLink {
  public:
    explicit TellingLink(int tell) : m_tell(tell) {}
    void Send(vantrel::ServerMessage message) override {
        const vantrel::ModifyResults* results = std::get_if<vantrel::ModifyResults>(&message);
        if (results == nullptr) return;
        for (const vantrel::ModifyResults::Entry& entry : results->entries) {
            if (entry.result != vantrel::ResultOk) ::_exit(2);
            TellConfirmed(m_tell, entry.id);
        }
    }
    void Close(std::uint32_t) override {}
    std::size_t Backlog() const override { return 0; }
    std::string PeerAddress() const override { return {}; }

  private:
    int m_tell;
};

// What write number n is: the report of hour n, archive values from second n * 100 on, or the
// current value n.
constexpr value::ValueKind KindOf(std::int64_t number) {
    constexpr value::ValueKind kKinds[] = {value::KindHour, value::KindArchive, value::KindCurrent};
    return kKinds[number % 3];
}

// A server with one client, which tells of each answer; for a process that will be killed.
struct Served {
    Served(const std::string& configuration, std::int64_t now, int tell) : clock(now), link(tell) {
        std::vector<std::string> errors;
        if (!server.Start(configuration, errors)) ::_exit(1);
        session = server.Accept(link);
    }

    platform::VirtualClock clock;
    support::LogRecorder log;
    const platform::Translator translator;
    support::WaitingLoop loop;
    Server server{clock, log, translator, loop, platform::PasswordCost::Least};
    TellingLink link;
    std::unique_ptr<vantrel::ServerSession> session;
};

[[noreturn]] void ServeUntilKilled(const std::string& configuration, vantrel::RequestId first,
                                   int tell) {
    Served served(configuration, 1700000000 + std::int64_t{first} * 10, tell);
    served.session->OnMessage(vantrel::LoginRequest{});
    for (vantrel::RequestId id = first;; ++id) {
        if (KindOf(id) != value::KindArchive) {
            served.session->OnMessage(
                vantrel::ModifyRequests{{{id, KindOf(id), "X", std::int64_t{id} * 3600,
                                          value::CVal(static_cast<int>(id))}}});
        } else {
            vantrel::ArchiveModifyRequest request{id, "X", 0, 0, {}};
            for (int index = 0; index < kArchiveValues; ++index) {
                request.values.push_back(support::Stamped(value::CVal(static_cast<int>(id)),
                                                          std::int64_t{id} * 100 + index));
            }
            served.session->OnMessage(std::move(request));
        }
        served.clock.Advance(300);
        served.server.Tick();
        if (id % 4 == 0) served.loop.WaitAndRun();
    }
}

vantrel::LoginRequest LoginWith(std::string token) {
    vantrel::LoginRequest login;
    login.token = std::move(token);
    return login;
}

vantrel::ModifyRequests SetX(vantrel::RequestId number) {
    return {{{number, value::KindCurrent, "X", 0, value::CVal(static_cast<int>(number)), number}}};
}

// Write number n: X is n, with the serial n.
[[noreturn]] void SetUntilKilled(const std::string& configuration, const std::string& token,
                                 int tell) {
    Served served(configuration, 1700000000, tell);
    served.session->OnMessage(LoginWith(token));
    for (vantrel::RequestId id = 1;; ++id) {
        served.session->OnMessage(SetX(id));
        if (id % 4 == 0) served.loop.WaitAndRun();
    }
}

class ServerKillTest : public ServerTest {
  protected:
    // The current value; 0 when there is none.
    std::int64_t Current() {
        TestClient& client = LogIn();
        client.Say(vantrel::SubscribeRequest{{{1, "X"}}, {}, 0, true});
        const std::vector<vantrel::ValueUpdates> updates = client.Take<vantrel::ValueUpdates>();
        return static_cast<std::int64_t>(value::ValueToDouble(updates.at(0).entries.at(0).value));
    }

    std::set<std::int64_t> TimesOf(value::ValueKind kind) {
        TestClient& client = LogIn();
        client.Say(vantrel::ReadRequests{{{++m_lastRequest, kind, "X", 0, INT64_MAX}}});
        Settle();
        std::set<std::int64_t> times;
        for (const vantrel::ReadAnswer& answer : client.Take<vantrel::ReadAnswer>()) {
            EXPECT_EQ(answer.result, vantrel::ResultOk);
            for (const value::CVal& value : answer.values) {
                times.insert(value.GetTime());
                const std::int64_t unit = kind == value::KindHour ? 3600 : 100;
                EXPECT_EQ(static_cast<std::int64_t>(value::ValueToDouble(value)),
                          value.GetTime() / unit);
            }
        }
        return times;
    }
};

// Nothing changes in it; tells each second that is over.
[[noreturn]] void IdleUntilKilled(const std::string& configuration, std::int64_t start, int tell) {
    platform::VirtualClock clock(start);
    support::LogRecorder log;
    const platform::Translator translator;
    support::WaitingLoop loop;
    Server server(clock, log, translator, loop, platform::PasswordCost::Least);
    std::vector<std::string> errors;
    if (!server.Start(configuration, errors)) ::_exit(1);
    for (;;) {
        clock.Advance(1000);
        server.Tick();
        server.GetStore().Flush();
        TellConfirmed(tell, clock.Now());
    }
}

TEST_F(ServerKillTest, QuietServerLeavesItsArchiveKnown) {
    constexpr const char* kQuiet = "[[variable]]\nname = \"X\"\nat = 2\nvalue = 5\n";
    Configure(kQuiet);
    const std::string configuration = m_folder.Path("plant.toml");
    const std::vector<std::int64_t> seconds =
        RunAndKill([&](int tell) { IdleUntilKilled(configuration, m_start, tell); }, 100);
    m_clock.Advance((seconds.back() + 1 - m_start) * 1000);
    Start(kQuiet);
    Tick();
    EXPECT_THAT(Read(LogIn(), value::KindArchive, "X", 0, value::kLargestTime),
                testing::ElementsAre("171 0 " + std::to_string(m_start) + " 5.00"));
}

TEST_F(ServerKillTest, EveryConfirmedWriteIsFound) {
    std::vector<std::int64_t> confirmed;
    vantrel::RequestId next = 10;
    for (int round = 0; round < kRounds; ++round) {
        Configure(kPlant);
        const std::size_t enough = 1 + static_cast<std::size_t>(round) * 17 % 61;
        const std::string configuration = m_folder.Path("plant.toml");
        const std::vector<std::int64_t> more =
            RunAndKill([&](int tell) { ServeUntilKilled(configuration, next, tell); }, enough);
        ASSERT_GE(more.size(), enough);
        confirmed.insert(confirmed.end(), more.begin(), more.end());
        next = static_cast<vantrel::RequestId>(more.back()) + 100000;

        Start(kPlant);
        const std::set<std::int64_t> hours = TimesOf(value::KindHour);
        const std::set<std::int64_t> archive = TimesOf(value::KindArchive);
        const std::int64_t current = Current();
        ASSERT_TRUE(current == 0 || KindOf(current) == value::KindCurrent) << current;
        for (const std::int64_t id : confirmed) {
            if (KindOf(id) == value::KindHour) {
                ASSERT_EQ(hours.count(id * 3600), 1u) << id;
            } else if (KindOf(id) == value::KindCurrent) {
                ASSERT_GE(current, id);
            } else {
                for (int index = 0; index < kArchiveValues; ++index) {
                    ASSERT_EQ(archive.count(id * 100 + index), 1u) << id;
                }
            }
        }
        ASSERT_EQ(archive.size() % kArchiveValues, 0u);
        End();
    }
}

// A client that comes back after the kill repeats what it has no answer to, and more than that.
TEST_F(ServerKillTest, RepeatedWritesAreDoneOnce) {
    for (int round = 0; round < kRounds; ++round) {
        Configure(kPlant);
        const std::size_t enough = 1 + static_cast<std::size_t>(round) * 17 % 61;
        const std::string configuration = m_folder.Path("plant.toml");
        const std::string token = "t" + std::to_string(round);
        const std::vector<std::int64_t> confirmed =
            RunAndKill([&](int tell) { SetUntilKilled(configuration, token, tell); }, enough);
        ASSERT_GE(confirmed.size(), enough);
        const std::int64_t last = confirmed.back();

        Start(kPlant);
        TestClient& client = Connect();
        client.Say(LoginWith(token));
        Subscribe(client, {"X"});
        const auto end = static_cast<vantrel::RequestId>(last + 100);
        for (vantrel::RequestId id = static_cast<vantrel::RequestId>(last > 900 ? last - 900 : 1);
             id <= end; ++id) {
            client.Say(SetX(id));
            Settle();
        }
        for (const vantrel::ValueUpdates& updates : client.Take<vantrel::ValueUpdates>()) {
            ASSERT_EQ(updates.entries.size(), 1u);
            ASSERT_GT(value::ValueToDouble(updates.entries[0].value), static_cast<double>(last));
        }
        std::int64_t answered = 0;
        for (const vantrel::ModifyResults& results : client.Take<vantrel::ModifyResults>()) {
            for (const auto& entry : results.entries) {
                ASSERT_EQ(entry.result, vantrel::ResultOk);
                answered = entry.id;
            }
        }
        ASSERT_EQ(answered, end);
        End();
    }
}

}  // namespace
}  // namespace kalvex::server
