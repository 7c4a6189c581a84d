// Archives that are read in pieces, and what happens meanwhile.
#include "server_fixture.h"
#include "value/Status.h"

namespace kalvex::server {
namespace {

using testing::ElementsAre;
using testing::IsEmpty;

constexpr const char* kPlant = R"(
[[variable]]
name = "Z1.N"
type = "int"
at = 32
rt = 2
[[variable]]
name = "Z1.T"
type = "text"
at = 32
)";

class SessionLongReadTest : public ServerTest {
  protected:
    SessionLongReadTest() : m_client(StartAndLogIn()) {
        std::vector<value::CVal> values;
        for (int time = 1; time <= 7000; ++time)
            values.push_back(support::Stamped(value::CVal(time), time));
        EXPECT_EQ(ModifyArchive(m_client, "Z1.N", values), vantrel::ResultOk);
        EXPECT_EQ(ModifyArchive(m_client, "Z1.T", {support::Stamped(value::CVal("x"), 5)}),
                  vantrel::ResultOk);
    }
    TestClient& StartAndLogIn() {
        Start(kPlant);
        AddUser("adam", "tajne", 50);
        return LogIn("adam", "tajne");
    }

    TestClient& m_client;
};

TEST_F(SessionLongReadTest, ComesInPieces) {
    m_client.Say(vantrel::ReadRequests{{{1, value::KindArchive, "Z1.N", 2, 6999}}});
    Settle();
    const std::vector<vantrel::ReadAnswer> answers = m_client.Take<vantrel::ReadAnswer>();
    ASSERT_EQ(answers.size(), 4u);
    int next = 2;
    for (const vantrel::ReadAnswer& answer : answers) {
        EXPECT_LE(answer.values.size(), 2000u);
        EXPECT_EQ(answer.last, next + static_cast<int>(answer.values.size()) == 7000);
        for (const value::CVal& value : answer.values) ASSERT_EQ(value.GetTime(), next++);
    }
    EXPECT_EQ(next, 7000);
}

TEST_F(SessionLongReadTest, WaitsForASlowClient) {
    m_client.backlog = 8;
    m_client.Say(vantrel::ReadRequests{{{1, value::KindArchive, "Z1.N", 1, 7000}}});
    Settle();
    EXPECT_THAT(m_client.messages, IsEmpty());
    m_client.backlog = 0;
    m_client.session->OnDrained();
    m_client.backlog = 8;
    Settle();
    EXPECT_EQ(m_client.Take<vantrel::ReadAnswer>().size(), 1u);
    m_client.backlog = 0;
    m_client.session->OnDrained();
    Settle();
    EXPECT_EQ(m_client.Take<vantrel::ReadAnswer>().size(), 3u);
}

TEST_F(SessionLongReadTest, EndsWhenItsVariableIsTakenOutOrItsRightWithdrawn) {
    const std::string secret = std::string("[[access]]\nread = \"100\"\n") + kPlant;
    const std::pair<std::string, std::uint16_t> rows[] = {{"", vantrel::ResultNothing},
                                                          {secret, vantrel::ResultNothing}};
    for (const auto& [toml, result] : rows) {
        m_client.Say(vantrel::ReadRequests{{{1, value::KindArchive, "Z1.N", 1, 7000}}});
        m_client.backlog = 8;
        Settle();
        EXPECT_EQ(m_client.Take<vantrel::ReadAnswer>().size(), 1u);
        m_client.backlog = 0;
        Configure(toml);
        m_server->Reload();
        m_client.session->OnDrained();
        Settle();
        const std::vector<vantrel::ReadAnswer> answers = m_client.Take<vantrel::ReadAnswer>();
        ASSERT_EQ(answers.size(), 1u);
        EXPECT_EQ(answers[0].result, result);
        EXPECT_TRUE(answers[0].last);
        EXPECT_THAT(answers[0].values, IsEmpty());
        Configure(kPlant);
        m_server->Reload();
        m_client.messages.clear();
    }
}

TEST_F(SessionLongReadTest, ShortReadDoesNotWaitForItsEnd) {
    m_client.Say(vantrel::ReadRequests{
        {{1, value::KindArchive, "Z1.N", 1, 7000}, {2, value::KindArchive, "Z1.T", 1, 7000}}});
    Settle();
    std::vector<vantrel::RequestId> order;
    for (const vantrel::ReadAnswer& answer : m_client.Take<vantrel::ReadAnswer>())
        order.push_back(answer.id);
    EXPECT_THAT(order, ElementsAre(1, 2, 1, 1, 1));
}

TEST_F(SessionLongReadTest, CancelledReadIsNotAnswered) {
    m_client.Say(vantrel::ReadRequests{
        {{1, value::KindArchive, "Z1.N", 1, 7000}, {2, value::KindArchive, "Z1.N", 1, 7000}}});
    m_client.Say(vantrel::CancelRequests{{1, 2, 77}});
    Settle();
    EXPECT_THAT(m_client.messages, IsEmpty());
    EXPECT_EQ(Read(m_client, value::KindArchive, "Z1.T", 0, 10).size(), 1u);
}

// ---- thinned

TEST_F(SessionLongReadTest, ThinnedRangeHasSoManyValuesAtMost) {
    m_client.Say(vantrel::ReadRequests{{{1, value::KindArchive, "Z1.N", 2, 6999, 100}}});
    Settle();
    const std::vector<vantrel::ReadAnswer> answers = m_client.Take<vantrel::ReadAnswer>();
    ASSERT_EQ(answers.size(), 1u);
    EXPECT_TRUE(answers[0].last);
    // 48 pieces of 146 s with their first and last values.
    EXPECT_EQ(answers[0].values.size(), 96u);
    EXPECT_EQ(DumpRow(answers[0].values[0]), "150 0 2 2");
    EXPECT_EQ(DumpRow(answers[0].values[1]), "150 0 147 147");
    EXPECT_EQ(DumpRow(answers[0].values[95]), "150 0 6999 6999");
}

TEST_F(SessionLongReadTest, ThinnedRangeOfManyPointsComesInPieces) {
    m_client.Say(vantrel::ReadRequests{{{1, value::KindArchive, "Z1.N", 1, 7000, UINT32_MAX}}});
    Settle();
    const std::vector<vantrel::ReadAnswer> answers = m_client.Take<vantrel::ReadAnswer>();
    ASSERT_EQ(answers.size(), 4u);
    int next = 1;
    for (const vantrel::ReadAnswer& answer : answers) {
        for (const value::CVal& value : answer.values) ASSERT_EQ(value.GetTime(), next++);
    }
    EXPECT_EQ(next, 7001);
}

TEST_F(SessionLongReadTest, FewerThanEightPointsAreRefused) {
    m_client.Say(vantrel::ReadRequests{{{1, value::KindArchive, "Z1.N", 1, 7000, 7},
                                        {2, value::KindArchive, "Z1.N", 1, 7000, 8},
                                        {3, value::KindHour, "Z1.N", 3600, 3600, 8}}});
    Settle();
    std::vector<std::string> lines;
    for (const vantrel::ReadAnswer& answer : m_client.Take<vantrel::ReadAnswer>()) {
        lines.push_back(std::to_string(answer.id) + ": " + std::to_string(answer.result) + " " +
                        std::to_string(answer.values.size()));
    }
    EXPECT_THAT(lines, ElementsAre("1: 4 0", "2: 0 4", "3: 1 0"));
}

TEST_F(SessionLongReadTest, ThinnedReadsGoOneBehindTheOther) {
    m_client.Say(vantrel::ReadRequests{{{1, value::KindArchive, "Z1.N", 1, 7000, 5000},
                                        {2, value::KindArchive, "Z1.N", 1, 7000, 5000},
                                        {3, value::KindArchive, "Z1.N", 1, 7000},
                                        {4, value::KindArchive, "Z1.N", 1, 7000, 5000}}});
    m_client.Say(vantrel::CancelRequests{{1}});
    Settle();
    std::vector<vantrel::RequestId> order;
    for (const vantrel::ReadAnswer& answer : m_client.Take<vantrel::ReadAnswer>())
        order.push_back(answer.id);
    EXPECT_THAT(order, ElementsAre(2, 3, 2, 3, 2, 4, 3, 4, 3, 4));
}

TEST_F(SessionLongReadTest, CancelledNumberMayBeGivenAgain) {
    for (int round = 0; round < 3; ++round) {
        m_client.Say(vantrel::ReadRequests{{{1, value::KindArchive, "Z1.N", 1, 7000}}});
        m_client.Say(vantrel::CancelRequests{{1}});
    }
    m_client.Say(vantrel::ReadRequests{{{1, value::KindArchive, "Z1.N", 1, 7000, 50}}});
    Settle();
    EXPECT_TRUE(m_client.Take<vantrel::ReadAnswer>().back().last);
    EXPECT_EQ(Read(m_client, value::KindArchive, "Z1.T", 0, 10).size(), 1u);
}

// ---- bounds

TEST_F(SessionLongReadTest, ReadsUnderWayAreBounded) {
    m_client.backlog = 8;
    vantrel::ReadRequests requests;
    for (vantrel::RequestId id = 1; id <= 1002; ++id) {
        requests.requests.push_back({id, value::KindHour, "Z1.N", 0, 0});
    }
    requests.requests.push_back({5, value::KindHour, "Z1.N", 0, 0});
    m_client.Say(requests);
    const std::vector<vantrel::ReadAnswer> refused = m_client.Take<vantrel::ReadAnswer>();
    ASSERT_EQ(refused.size(), 3u);
    EXPECT_EQ(refused[0].id, 1001u);
    EXPECT_EQ(refused[0].result, vantrel::ResultBadRequest);
    EXPECT_EQ(refused[2].id, 5u);
    EXPECT_THAT(m_log.Take(), ElementsAre("1 Klient Kalvex_stacja: zbyt wiele odczytów naraz"));
}

TEST_F(SessionLongReadTest, ClientThatGoesAwayMeanwhileIsForgotten) {
    m_client.Say(vantrel::ReadRequests{{{1, value::KindArchive, "Z1.N", 1, 7000}}});
    m_client.Say(vantrel::ModifyRequests{{{2, value::KindHour, "Z1.N", 0, value::CVal(1)}}});
    m_client.End(vantrel::ReasonLost);
    Settle();
    EXPECT_THAT(m_client.messages, IsEmpty());
    EXPECT_EQ(Read(LogIn(), value::KindHour, "Z1.N", 0, 0).size(), 1u);
}

}  // namespace
}  // namespace kalvex::server
