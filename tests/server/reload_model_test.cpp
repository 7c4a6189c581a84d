// Definitions that change at random under clients in all states of lag, against a model of what
// each of them has to know.
#include <fmt/format.h>

#include <array>
#include <map>
#include <random>
#include <set>

#include "server_fixture.h"
#include "value/ValueText.h"

namespace kalvex::server {
namespace {

constexpr int kNames = 40;
constexpr int kReaders = 20;
constexpr int kSteps = 400;
constexpr int kSeeds = 4;
constexpr double kVersions = 1'000'000;  // a value tells its variable and its version

std::string NameOf(int variable) {
    return "V" + std::to_string(variable);
}

class ReloadModelTest : public ServerTest, public testing::WithParamInterface<int> {
  protected:
    // What a client has been told of a variable: a version, or that it is not there.
    struct Known {
        bool absent = false;
        int version = -1;
    };

    struct Reader {
        TestClient* client = nullptr;
        std::map<int, std::optional<Known>> subscribed;  // nothing before the first word
    };

    int Random(int below) { return std::uniform_int_distribution(0, below - 1)(m_random); }

    // ---- the world

    std::string Definitions() {
        std::string toml = "[server]\nclients = 100\n";
        for (const char* level : {"0", "50"}) {
            for (int variable = 0; variable < kNames; ++variable) {
                if (m_hidden[Index(variable)] != (level[0] == '5')) continue;
                toml +=
                    fmt::format("[[access]]\nvariables = \"{}\"\nread = \"{}\"\nwrite = \"50\"\n",
                                NameOf(variable), level);
            }
        }
        std::vector<int> order;
        for (int variable = 0; variable < kNames; ++variable) {
            if (m_defined[Index(variable)]) order.push_back(variable);
        }
        std::ranges::shuffle(order, m_random);
        for (const int variable : order) {
            toml += fmt::format("[[variable]]\nname = \"{}\"\nvalue = {}\nde = \"{}\"\n",
                                NameOf(variable), variable * kVersions, Random(1000));
        }
        return toml;
    }

    void Shuffle() {
        for (int variable = 0; variable < kNames; ++variable) {
            if (Random(4) == 0) m_defined[Index(variable)] = Random(4) != 0;
            if (Random(6) == 0) m_hidden[Index(variable)] = Random(3) == 0;
        }
    }

    void Reload() {
        Shuffle();
        Configure(Definitions());
        m_server->Reload();
    }

    void Write() {
        const int variable = Random(kNames);
        if (!m_defined[Index(variable)]) return;
        const int version = ++m_versions[Index(variable)];
        EXPECT_EQ(Modify(*m_writer, value::KindCurrent, NameOf(variable), 0,
                         value::CVal(variable * kVersions + version)),
                  vantrel::ResultOk);
    }

    static std::size_t Index(int variable) { return static_cast<std::size_t>(variable); }

    // ---- the clients

    void ChangeSubscription(Reader& reader) {
        vantrel::SubscribeRequest request;
        Hear(reader);
        std::set<int> variables;
        for (int times = 0; times < 5; ++times) variables.insert(Random(kNames));
        for (const int variable : variables) {
            const auto handle = static_cast<vantrel::VariableHandle>(variable + 1);
            if (reader.subscribed.erase(variable) != 0) {
                request.removed.push_back(handle);
            } else {
                reader.subscribed.emplace(variable, std::nullopt);
                request.added.push_back({handle, NameOf(variable)});
            }
        }
        reader.client->Say(std::move(request));
    }

    void ChangeLag(Reader& reader) {
        TestClient& client = *reader.client;
        switch (Random(3)) {
            case 0:
                client.backlog = vantrel::kMostBacklog;
                break;
            case 1:
                client.busyAnswers = Random(4);
                break;
            default:
                client.backlog = 0;
                client.session->OnDrained();
        }
    }

    void Hear(Reader& reader) {
        for (vantrel::ServerMessage& message : std::exchange(reader.client->messages, {})) {
            if (const auto* updates = std::get_if<vantrel::ValueUpdates>(&message)) {
                for (const auto& entry : updates->entries) HearValue(reader, entry);
            } else if (const auto* errors = std::get_if<vantrel::AccessErrors>(&message)) {
                for (const auto& entry : errors->entries) {
                    EXPECT_EQ(entry.code, 0);
                    KnownOf(reader, entry.handle) = {.absent = true};
                }
            }
        }
    }

    Known& KnownOf(Reader& reader, vantrel::VariableHandle handle) {
        const auto found = reader.subscribed.find(static_cast<int>(handle) - 1);
        EXPECT_NE(found, reader.subscribed.end()) << "told of handle " << handle;
        if (found == reader.subscribed.end()) return m_nobody;
        if (!found->second) found->second.emplace();
        return *found->second;
    }

    void HearValue(Reader& reader, const vantrel::ValueUpdates::Entry& entry) {
        const double told = value::ValueToDouble(entry.value);
        const int variable = static_cast<int>(told / kVersions);
        const int version = static_cast<int>(told - variable * kVersions);
        EXPECT_EQ(variable, static_cast<int>(entry.handle) - 1) << told;
        Known& known = KnownOf(reader, entry.handle);
        EXPECT_GE(version, known.absent ? 0 : known.version) << "older than what was told before";
        EXPECT_LE(version, m_versions[Index(variable)]) << "never written";
        known = {.absent = false, .version = version};
    }

    // Each client takes all that there is for it, and then knows what stands.
    void Compare() {
        for (Reader& reader : m_readers) {
            reader.client->backlog = 0;
            reader.client->busyAnswers = 0;
            reader.client->session->OnDrained();
        }
        Tick();
        for (Reader& reader : m_readers) {
            Hear(reader);
            for (const auto& [variable, known] : reader.subscribed) {
                ASSERT_TRUE(known) << NameOf(variable);
                const bool absent = !m_defined[Index(variable)] || m_hidden[Index(variable)];
                ASSERT_EQ(known->absent, absent) << NameOf(variable);
                if (absent) continue;
                ASSERT_EQ(known->version, m_versions[Index(variable)]);
            }
        }
    }

    void Step() {
        Reader& reader = m_readers[Index(Random(kReaders))];
        switch (Random(12)) {
            case 0:
                Reload();
                break;
            case 1:
                ChangeSubscription(reader);
                break;
            case 2:
                Tick();
                break;
            case 3:
            case 4:
            case 5:
                ChangeLag(reader);
                break;
            case 6:
                Hear(reader);
                break;
            default:
                Write();
        }
    }

    std::mt19937 m_random{static_cast<unsigned>(GetParam())};
    std::array<bool, kNames> m_defined{};
    std::array<bool, kNames> m_hidden{};
    std::array<int, kNames> m_versions{};
    TestClient* m_writer = nullptr;
    std::array<Reader, kReaders> m_readers;
    Known m_nobody;
};

TEST_P(ReloadModelTest, EachClientKnowsWhatStands) {
    Shuffle();
    Start(Definitions());
    AddUser("pisarz", "haslo", 50);
    m_writer = &LogIn("pisarz", "haslo");
    for (Reader& reader : m_readers) reader.client = &LogIn();
    for (int step = 0; step < kSteps && !HasFailure(); ++step) {
        Step();
        if (step % 50 == 49) Compare();
    }
    Compare();
}

INSTANTIATE_TEST_SUITE_P(Seeds, ReloadModelTest, testing::Range(1, kSeeds + 1));

}  // namespace
}  // namespace kalvex::server
