// Other variables and rights while the server runs.
#include <algorithm>
#include <cmath>
#include <numeric>

#include "server_fixture.h"

namespace kalvex::server {
namespace {

using testing::ElementsAre;
using testing::IsEmpty;

constexpr int kMany = 60000;
constexpr double kStep = 1000000;

// Variable VN counts from N in steps of a million a second, so that a value names its variable.
// Handle N + 1 stands for it.
class ReloadTest : public ServerTest {
  protected:
    static std::vector<int> Numbers(int first, int last) {
        std::vector<int> numbers(static_cast<std::size_t>(last - first));
        std::iota(numbers.begin(), numbers.end(), first);
        return numbers;
    }

    std::string Counters(const std::vector<int>& numbers, const std::string& more = {}) {
        std::string csv = "name,signal\n";
        for (const int number : numbers) {
            const std::string text = std::to_string(number);
            csv.append("V").append(text).append(",counter rate=1000000 start=");
            csv.append(text).append("\n");
        }
        m_folder.Put("many.csv", csv);
        return "[[variables]]\nfile = \"many.csv\"\n" + more;
    }

    // A client that has subscribed to all of them and has changes of all of them to come.
    TestClient& LagBehind(int count) {
        Start(Counters(Numbers(0, count)));
        TestClient& client = LogIn();
        std::vector<std::string> names;
        for (const int number : Numbers(0, count)) names.push_back("V" + std::to_string(number));
        Subscribe(client, names);
        client.backlog = vantrel::kMostBacklog;
        Tick(2);
        EXPECT_THAT(client.messages, IsEmpty());
        return client;
    }

    // The client has no room for what the old list has left, and room again a moment later.
    void ReloadAsItCatchesUp(TestClient& client, std::string_view toml) {
        client.busyAnswers = 1;
        client.backlog = 0;
        Configure(toml);
        m_server->Reload();
        EXPECT_THAT(m_log.Take(), ElementsAre("2 Konfiguracja odczytana ponownie"));
    }

    // The numbers of the variables whose values have come, each compared with its handle.
    static std::vector<int> Received(TestClient& client) {
        std::vector<int> numbers;
        for (const vantrel::ValueUpdates& updates : client.Take<vantrel::ValueUpdates>()) {
            for (const vantrel::ValueUpdates::Entry& entry : updates.entries) {
                double number = -1;
                EXPECT_TRUE(entry.value.GetValData(value::ValueType::Double, &number));
                const double expected = static_cast<double>(entry.handle) - 1;
                if (std::fmod(number, kStep) != expected) {
                    ADD_FAILURE() << "handle " << entry.handle << " got " << number;
                    return {};
                }
                numbers.push_back(static_cast<int>(expected));
            }
        }
        return numbers;
    }

    // The numbers of the variables that the client has been told it does not have, with that code.
    static std::vector<int> Refused(TestClient& client, std::uint16_t code) {
        std::vector<int> numbers;
        for (const vantrel::AccessErrors& errors : client.Take<vantrel::AccessErrors>()) {
            for (const vantrel::AccessErrors::Entry& entry : errors.entries) {
                EXPECT_EQ(entry.code, code);
                numbers.push_back(static_cast<int>(entry.handle) - 1);
            }
        }
        return numbers;
    }
};

TEST_F(ReloadTest, InsertionAtTheTopOfTheListMovesNoValue) {
    TestClient& client = LagBehind(kMany);
    std::vector<int> numbers = Numbers(0, kMany);
    for (int more = 0; more < 3; ++more) {
        numbers.insert(numbers.begin(), kMany + more);
        ReloadAsItCatchesUp(client, Counters(numbers));
        EXPECT_EQ(Received(client), Numbers(0, kMany));
        client.backlog = vantrel::kMostBacklog;
        Tick();
    }
    client.backlog = 0;
    client.session->OnDrained();
    EXPECT_EQ(Received(client), Numbers(0, kMany));
}

TEST_F(ReloadTest, ListThatShrinksLeavesNothingBehind) {
    TestClient& client = LagBehind(kMany);
    ReloadAsItCatchesUp(client, Counters(Numbers(kMany - 10, kMany)));
    EXPECT_EQ(Refused(client, 0), Numbers(0, kMany - 10));
    EXPECT_EQ(Received(client), Numbers(kMany - 10, kMany));
    Tick();
    EXPECT_EQ(Received(client), Numbers(kMany - 10, kMany));
    client.backlog = vantrel::kMostBacklog;
    Tick();
    ReloadAsItCatchesUp(client, Counters(Numbers(0, 10)));
    EXPECT_EQ(Received(client), Numbers(0, 10));
}

TEST_F(ReloadTest, ListInAnotherOrderMovesNoValue) {
    TestClient& client = LagBehind(1000);
    std::vector<int> numbers = Numbers(0, 1000);
    std::reverse(numbers.begin(), numbers.end());
    ReloadAsItCatchesUp(client, Counters(numbers));
    EXPECT_EQ(Received(client), Numbers(0, 1000));
    Tick();
    EXPECT_EQ(Received(client), numbers);
}

TEST_F(ReloadTest, ClientThatGoesOnLaggingHearsOfTheNewListLater) {
    TestClient& client = LagBehind(1000);
    Configure(Counters(Numbers(500, 1500)));
    m_server->Reload();
    EXPECT_EQ(Received(client), std::vector<int>());
    EXPECT_EQ(Refused(client, 0), Numbers(0, 500));
    client.backlog = 0;
    client.session->OnDrained();
    EXPECT_EQ(Received(client), Numbers(500, 1000));
}

TEST_F(ReloadTest, NoValueIsSentWhoseRightHasBeenWithdrawn) {
    TestClient& client = LagBehind(200);
    const std::string secret = "[[access]]\nvariables = \"V1??\"\nread = \"100\"\n";
    ReloadAsItCatchesUp(client, Counters(Numbers(0, 200), secret));
    EXPECT_EQ(Refused(client, 0), Numbers(100, 200));
    EXPECT_EQ(Received(client), Numbers(0, 100));
    Tick();
    EXPECT_EQ(Received(client), Numbers(0, 100));
    client.backlog = vantrel::kMostBacklog;
    Tick();
    ReloadAsItCatchesUp(client, Counters(Numbers(0, 200)));
    EXPECT_EQ(Received(client), Numbers(0, 200));
}

TEST_F(ReloadTest, UnsubscribingAndLeavingTouchNoOther) {
    TestClient& leaving = LagBehind(20);
    TestClient& staying = LogIn();
    Subscribe(staying, {"V0", "V1", "V2"});
    ReloadAsItCatchesUp(leaving, Counters({2, 1, 19, 0}));
    leaving.Say(vantrel::SubscribeRequest{{}, {1, 2, 3, 4, 5}, 0, true});
    EXPECT_EQ(Received(staying), Numbers(0, 3));
    leaving.End(vantrel::ReasonClientEnded);
    Tick();
    EXPECT_THAT(Received(staying), ElementsAre(2, 1, 0));
}

// A period is handed over in parts; the rest of it belongs to the list of its beginning.
TEST_F(ReloadTest, ReportsOfAPeriodThatIsHalfHandedOverAreComputed) {
    constexpr int kReports = 25000;
    std::vector<int> numbers = Numbers(0, kReports);
    const auto reports = [this, &numbers] {
        std::string csv = "name,rt\n";
        for (const int number : numbers) csv += "V" + std::to_string(number) + ",2\n";
        m_folder.Put("many.csv", csv);
        return "[reports]\nautomatic = [\"hour\"]\n[[variables]]\nfile = \"many.csv\"\n";
    };
    Start(reports());
    Tick();
    m_clock.Advance(3600 * 1000);
    m_server->Tick();
    std::reverse(numbers.begin(), numbers.end());
    Configure(reports());
    m_server->Reload();
    Tick(4);
    TestClient& client = LogIn();
    for (int number = 0; number < kReports; number += 997) {
        ASSERT_THAT(Read(client, value::KindHour, "V" + std::to_string(number), m_start, m_start),
                    ElementsAre("255 129 " + std::to_string(m_start) + " "))
            << number;
    }
}

// ---- what a variable has come to

constexpr const char* kSetpoint = "[[access]]\nwrite = \"0\"\n[[variable]]\nname = \"X\"\n";
constexpr const char* kWithoutIt = "[[variable]]\nname = \"Y\"\n";

class ReloadStateTest : public ServerTest {
  protected:
    void Reload(const char* toml) {
        Configure(toml);
        m_server->Reload();
    }

    std::string ValueOfX() {
        TestClient& client = LogIn();
        client.Say(vantrel::SubscribeRequest{{{1, "X"}}, {}, 0, true});
        const std::vector<std::string> updates = Updates(client);
        return updates.empty() ? "none" : updates.front();
    }

    std::string Written(int number) const {
        return "1: 171 0 " + std::to_string(m_start) + " " + std::to_string(number) + ".00";
    }
};

TEST_F(ReloadStateTest, SetpointOutlastsTheTimeWithoutItsVariable) {
    Start(kSetpoint);
    Modify(LogIn(), value::KindCurrent, "X", 0, value::CVal(1));
    Restart();
    Modify(LogIn(), value::KindCurrent, "X", 0, value::CVal(55));
    Reload(kWithoutIt);
    EXPECT_EQ(ValueOfX(), "none");
    Reload(kSetpoint);
    EXPECT_EQ(ValueOfX(), Written(55));
    Reload(kWithoutIt);
    Reload(kWithoutIt);
    Tick(11);
    Reload(kSetpoint);
    EXPECT_EQ(ValueOfX(), Written(55));
    Tick(11);
    Restart();
    EXPECT_EQ(ValueOfX(), Written(55));
}

TEST_F(ReloadStateTest, SetpointIsSavedWithoutItsVariable) {
    Start(kSetpoint);
    Modify(LogIn(), value::KindCurrent, "X", 0, value::CVal(55));
    Reload(kWithoutIt);
    End();
    Start(kWithoutIt);
    Reload(kSetpoint);
    EXPECT_EQ(ValueOfX(), Written(55));
}

TEST_F(ReloadStateTest, CounterGoesOnFromWhereItWas) {
    constexpr const char* kCounter =
        "[[variable]]\nname = \"X\"\ntype = \"int\"\nsignal = \"counter rate=0.4\"\n";
    Start(kCounter);
    Tick(5);
    Reload(kWithoutIt);
    Tick(60);
    Reload(kCounter);
    Tick();
    EXPECT_EQ(ValueOfX(), "1: 150 0 " + std::to_string(m_clock.Now()) + " 2");
}

}  // namespace
}  // namespace kalvex::server
