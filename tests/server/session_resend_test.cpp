// What a client finds that comes back after a break: its writes are done once, and it hears of the
// reports that have changed meanwhile.
#include "hand_pause.h"
#include "server_fixture.h"
#include "value/Status.h"

namespace kalvex::server {
namespace {

using testing::ElementsAre;
using testing::IsEmpty;

constexpr const char* kPlant =
    "[[access]]\nvariables = \"R\"\nwrite = \"100\"\n[[access]]\nwrite = \"0\"\n"
    "[[variable]]\nname = \"X\"\nat = 34\nrt = 30\n[[variable]]\nname = \"R\"\n";

class SessionResendTest : public ServerTest {
  protected:
    SessionResendTest() {
        m_storeSettings.pause = m_pause;
        Start(kPlant);
    }
    ~SessionResendTest() override { m_pause->Free(); }

    TestClient& Enter(std::string token, std::optional<std::uint64_t> changesSince = {}) {
        TestClient& client = Connect();
        vantrel::LoginRequest login;
        login.clientName = "Kalvex_stacja";
        login.token = std::move(token);
        login.changesSince = changesSince;
        client.Say(std::move(login));
        m_entered = client.Take<vantrel::LoginResult>().at(0);
        m_log.Take();
        return client;
    }

    // "id:result" of all answers that have come.
    std::vector<std::string> Results(TestClient& client) {
        std::vector<std::string> lines;
        for (const vantrel::ModifyResults& results : client.Take<vantrel::ModifyResults>()) {
            for (const auto& entry : results.entries) {
                lines.push_back(std::to_string(entry.id) + ":" + std::to_string(entry.result));
            }
        }
        return lines;
    }

    std::vector<std::string> Write(TestClient& client, value::ValueKind kind,
                                   std::string_view variable, value::CVal value,
                                   std::uint64_t serial, vantrel::RequestId id = 1) {
        client.Say(vantrel::ModifyRequests{
            {{id, kind, std::string(variable), m_start, std::move(value), serial}}});
        Settle();
        return Results(client);
    }

    std::string Current(TestClient& client) {
        client.Say(vantrel::SubscribeRequest{{{++m_handle, "X"}}, {}, 0, true});
        return Updates(client).back();
    }

    // "sequence: kind time" of all changes that have come.
    std::vector<std::string> Changes(TestClient& client) {
        std::vector<std::string> lines;
        for (const vantrel::ReportChange& change : client.Take<vantrel::ReportChange>()) {
            lines.push_back(std::to_string(change.sequence) + ": " + std::to_string(change.kind) +
                            " " + std::to_string(change.time - m_start));
        }
        return lines;
    }

    void ChangeHour(int hour) {
        ++m_number;
        Modify(*m_writer, value::KindHour, "X", m_start + hour * 3600, value::CVal(m_number));
    }

    std::shared_ptr<HandPause> m_pause = std::make_shared<HandPause>();
    vantrel::LoginResult m_entered;
    vantrel::VariableHandle m_handle = 0;
    TestClient* m_writer = nullptr;
    int m_number = 0;
};

// ---- writes

TEST_F(SessionResendTest, WriteOfACurrentValueIsDoneOnce) {
    TestClient& client = Enter("t");
    EXPECT_THAT(Write(client, value::KindCurrent, "X", value::CVal(5), 1, 10), ElementsAre("10:0"));
    EXPECT_THAT(Write(client, value::KindCurrent, "X", value::CVal(6), 2, 11), ElementsAre("11:0"));
    EXPECT_THAT(Write(client, value::KindCurrent, "X", value::CVal(5), 1, 12), ElementsAre("12:0"));
    TestClient& back = Enter("t");
    EXPECT_THAT(Write(back, value::KindCurrent, "X", value::CVal(5), 1, 10), ElementsAre("10:0"));
    const std::string row = ": 171 0 " + std::to_string(m_start);
    EXPECT_EQ(Current(back), "1" + row + " 6.00");
    EXPECT_THAT(Write(back, value::KindCurrent, "X", value::CVal(7), 3, 13), ElementsAre("13:0"));
    EXPECT_EQ(Current(back), "2" + row + " 7.00");
}

TEST_F(SessionResendTest, WritesWithoutATokenOrASerialAreDoneEachTime) {
    TestClient& nameless = Enter("");
    Write(nameless, value::KindCurrent, "X", value::CVal(5), 1);
    Write(nameless, value::KindCurrent, "X", value::CVal(6), 1);
    EXPECT_EQ(Current(nameless), "1: 171 0 " + std::to_string(m_start) + " 6.00");
    TestClient& client = Enter("t");
    Write(client, value::KindCurrent, "X", value::CVal(7), 0);
    Write(client, value::KindCurrent, "X", value::CVal(8), 0);
    EXPECT_EQ(Current(client), "2: 171 0 " + std::to_string(m_start) + " 8.00");
}

TEST_F(SessionResendTest, SerialsAreEachTokensOwn) {
    Write(Enter("t"), value::KindCurrent, "X", value::CVal(5), 1);
    TestClient& other = Enter("u");
    Write(other, value::KindCurrent, "X", value::CVal(6), 1);
    EXPECT_EQ(Current(other), "1: 171 0 " + std::to_string(m_start) + " 6.00");
}

TEST_F(SessionResendTest, ReportAndArchiveAreWrittenOnce) {
    TestClient& client = Enter("t");
    EXPECT_THAT(Write(client, value::KindHour, "X", value::CVal(5), 1), ElementsAre("1:0"));
    EXPECT_THAT(Write(client, value::KindHour, "X", value::CVal(6), 1), ElementsAre("1:0"));
    for (const int value : {5, 6}) {
        client.Say(vantrel::ArchiveModifyRequest{
            2, "X", 100, 100, {support::Stamped(value::CVal(value), 100)}, 2});
        Settle();
        EXPECT_THAT(Results(client), ElementsAre("2:0"));
    }
    EXPECT_THAT(Read(client, value::KindHour, "X", m_start, m_start),
                ElementsAre("150 32 " + std::to_string(m_start) + " 5"));
    EXPECT_THAT(Read(client, value::KindArchive, "X", 0, 1000), ElementsAre("171 0 100 5.00"));
}

TEST_F(SessionResendTest, OrderIsDoneOnce) {
    TestClient& client = Enter("t");
    ModifyArchive(client, "X", {support::Stamped(value::CVal(5), m_start - 60)});
    m_clock.Advance(600 * 1000);
    const auto order = [&](std::uint64_t serial, vantrel::RequestId id) {
        client.Say(vantrel::PeriodRequest{vantrel::PeriodAction::Calculate, value::KindHour, "X",
                                          m_start, id, serial});
        Settle();
        return Results(client);
    };
    EXPECT_THAT(order(1, 7), ElementsAre("7:0"));
    Write(client, value::KindHour, "X", value::CVal(6), 2);
    EXPECT_THAT(order(1, 8), ElementsAre("8:0"));
    EXPECT_THAT(Read(client, value::KindHour, "X", m_start, m_start),
                ElementsAre("150 32 " + std::to_string(m_start) + " 6"));
    EXPECT_THAT(order(3, 9), ElementsAre("9:0"));
    EXPECT_THAT(Read(client, value::KindHour, "X", m_start, m_start),
                ElementsAre("171 192 " + std::to_string(m_start) + " 5.00"));
}

// What is recorded beside a client's write is longer than a transaction.
TEST_F(SessionResendTest, AnswerIsNotCutOffItsValue) {
    std::string plant = kPlant;
    for (int number = 1; number < 20000; ++number) {
        plant += "[[variable]]\nname = \"V" + std::to_string(number) + "\"\nat = 2\nvalue = 1\n";
    }
    TestClient& client = Enter("t");
    Write(client, value::KindCurrent, "X", value::CVal(4), 1);
    platform::SqliteDatabase file;
    ASSERT_TRUE(file.Open(m_folder.Path("data/store.sqlite")));
    ASSERT_TRUE(
        file.Execute("CREATE TRIGGER refuse BEFORE INSERT ON answers WHEN NEW.serial = 2 BEGIN "
                     "SELECT RAISE(ABORT, 'refused'); END"));
    Configure(plant);
    m_server->Reload();
    client.Say(vantrel::ModifyRequests{{{1, value::KindCurrent, "X", 0, value::CVal(5), 2}}});
    m_pause->Await(1);
    platform::SqliteStatement select;
    ASSERT_TRUE(select.Prepare(file,
                               "SELECT last_values.value FROM last_values, variables "
                               "WHERE name = 'X' AND variable = id"));
    ASSERT_TRUE(select.Next());
    EXPECT_EQ(select.Real(0), 4.0);
    select.Reset();
    ASSERT_TRUE(file.Execute("DROP TRIGGER refuse"));
    m_pause->Free();
    Settle();
    EXPECT_THAT(Results(client), ElementsAre("1:0"));
}

TEST_F(SessionResendTest, RepeatedWithinOneMessageIsDoneOnce) {
    TestClient& client = Enter("t");
    client.Say(vantrel::ModifyRequests{{{1, value::KindHour, "X", m_start, value::CVal(5), 1},
                                        {2, value::KindHour, "X", m_start, value::CVal(6), 1},
                                        {3, value::KindHour, "R", m_start, value::CVal(6), 2},
                                        {4, value::KindHour, "R", m_start, value::CVal(6), 2}}});
    EXPECT_THAT(Results(client), ElementsAre("3:2", "4:2"));
    Settle();
    EXPECT_THAT(Results(client), ElementsAre("1:0", "2:0"));
    EXPECT_THAT(Read(client, value::KindHour, "X", m_start, m_start),
                ElementsAre("150 32 " + std::to_string(m_start) + " 5"));
}

// The answer of the first is not there yet when the client comes back.
TEST_F(SessionResendTest, WriteUnderWayAnswersWhoeverComesBackForIt) {
    TestClient& client = Enter("t");
    client.Say(vantrel::ModifyRequests{{{1, value::KindHour, "X", m_start, value::CVal(5), 1}}});
    client.End(vantrel::ReasonLost);
    TestClient& back = Enter("t");
    back.Say(vantrel::ModifyRequests{{{7, value::KindHour, "X", m_start, value::CVal(6), 1}}});
    EXPECT_THAT(Results(back), IsEmpty());
    Settle();
    EXPECT_THAT(Results(back), ElementsAre("7:0"));
    EXPECT_THAT(Read(back, value::KindHour, "X", m_start, m_start),
                ElementsAre("150 32 " + std::to_string(m_start) + " 5"));
}

TEST_F(SessionResendTest, RefusedWriteStaysRefusedAndIsLoggedOnce) {
    TestClient& client = Enter("t");
    EXPECT_THAT(Write(client, value::KindCurrent, "R", value::CVal(5), 1), ElementsAre("1:2"));
    Configure(
        "[[access]]\nwrite = \"0\"\n[[variable]]\nname = \"X\"\n[[variable]]\nname = \"R\"\n");
    m_server->Reload();
    EXPECT_THAT(Write(client, value::KindCurrent, "R", value::CVal(5), 1), ElementsAre("1:2"));
    EXPECT_THAT(Write(client, value::KindCurrent, "R", value::CVal(5), 2), ElementsAre("1:0"));
    EXPECT_THAT(m_log.Take(),
                ElementsAre("1 Klient Kalvex_stacja, użytkownik NOBODY: odmowa: zapis CURDATA, "
                            "zmienna R (brak prawa do zapisu)",
                            "2 Konfiguracja odczytana ponownie"));
}

TEST_F(SessionResendTest, AnswersOutlastTheServer) {
    {
        TestClient& client = Enter("t");
        Write(client, value::KindCurrent, "X", value::CVal(5), 1);
        Write(client, value::KindCurrent, "X", value::CVal(6), 2);
        Write(client, value::KindCurrent, "R", value::CVal(6), 3);
    }
    Restart();
    TestClient& back = Enter("t");
    EXPECT_THAT(Write(back, value::KindCurrent, "X", value::CVal(5), 1), ElementsAre("1:0"));
    EXPECT_THAT(Write(back, value::KindCurrent, "R", value::CVal(5), 3), ElementsAre("1:2"));
    EXPECT_EQ(Current(back), "1: 171 0 " + std::to_string(m_start) + " 6.00");
    EXPECT_THAT(m_log.Take(), IsEmpty());
}

// What is kept of a write must not be kept without what it did.
TEST_F(SessionResendTest, AnswerOfACurrentWriteIsCommittedWithItsValue) {
    TestClient& client = Enter("t");
    Write(client, value::KindCurrent, "X", value::CVal(5), 1);
    platform::SqliteDatabase file;
    ASSERT_TRUE(file.Open(m_folder.Path("data/store.sqlite")));
    platform::SqliteStatement select;
    ASSERT_TRUE(select.Prepare(file,
                               "SELECT serial, last_values.value FROM answers, last_values, "
                               "variables WHERE name = 'X' AND variable = id"));
    ASSERT_TRUE(select.Next());
    EXPECT_EQ(select.Integer(0), 1);
    EXPECT_EQ(select.Real(1), 5.0);
}

// ---- changes of reports

TEST_F(SessionResendTest, ClientThatComesBackHearsOfEachPeriodThatHasChanged) {
    m_writer = &Enter("w");
    ChangeHour(0);
    Tick();
    TestClient& client = Enter("t");
    EXPECT_EQ(m_entered.sequence, 1u);
    client.End(vantrel::ReasonLost);
    for (const int hour : {1, 2, 1}) {
        ChangeHour(hour);
        Tick();
    }
    TestClient& back = Enter("t", 1);
    EXPECT_EQ(m_entered.sequence, 4u);
    EXPECT_THAT(Changes(back), ElementsAre("3: 2 7200", "4: 2 3600"));
    ChangeHour(0);
    EXPECT_THAT(Changes(back), IsEmpty());
    Tick();
    EXPECT_THAT(Changes(back), ElementsAre("5: 2 0"));
    TestClient& again = Enter("t", 4);
    EXPECT_THAT(Changes(again), ElementsAre("5: 2 0"));
}

TEST_F(SessionResendTest, WhatHasChangedOutlastsTheServer) {
    m_writer = &Enter("w");
    ChangeHour(0);
    ChangeHour(1);
    Restart();
    TestClient& client = Enter("t", 1);
    EXPECT_THAT(Changes(client), ElementsAre("2: 2 3600"));
    m_writer = &client;
    ChangeHour(2);
    Tick();
    EXPECT_THAT(Changes(client), ElementsAre("3: 2 7200"));
}

TEST_F(SessionResendTest, ClientThatDoesNotAskHearsOfNothingBeforeItSubscribes) {
    m_writer = &Enter("w");
    ChangeHour(0);
    Tick();
    TestClient& client = Enter("t");
    ChangeHour(1);
    Tick();
    EXPECT_THAT(Changes(client), IsEmpty());
    client.Say(vantrel::SubscribeRequest{{{1, "X"}}, {}, 577, true});
    EXPECT_THAT(Changes(client), IsEmpty());
    ChangeHour(2);
    Tick();
    EXPECT_THAT(Changes(client), ElementsAre("2: 2 3600", "3: 2 7200"));
}

TEST_F(SessionResendTest, SequenceBeyondTheStoreMeansTheLatest) {
    m_writer = &Enter("w");
    ChangeHour(0);
    Tick();
    TestClient& client = Enter("t", UINT64_MAX);
    EXPECT_EQ(m_entered.sequence, 1u);
    EXPECT_THAT(Changes(client), IsEmpty());
    ChangeHour(1);
    Tick();
    EXPECT_THAT(Changes(client), ElementsAre("2: 2 3600"));
}

TEST_F(SessionResendTest, SlowClientIsToldWhenItHasTakenTheRest) {
    m_writer = &Enter("w");
    TestClient& client = Enter("t", 0);
    client.backlog = vantrel::kMostBacklog;
    ChangeHour(0);
    ChangeHour(1);
    Tick();
    ChangeHour(0);
    Tick();
    EXPECT_THAT(Changes(client), IsEmpty());
    client.backlog = 0;
    client.session->OnDrained();
    EXPECT_THAT(Changes(client), ElementsAre("2: 2 3600", "3: 2 0"));
}

}  // namespace
}  // namespace kalvex::server
