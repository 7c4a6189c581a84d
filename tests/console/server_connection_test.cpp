// Who is let in to a module's console server, and what each may see and do.
#include "console_fixture.h"
#include "platform/Sqlite.h"

namespace kalvex::console {
namespace {

using testing::ElementsAre;
using testing::IsEmpty;

class ServerConnectionTest : public ConsoleTest {};

TEST_F(ServerConnectionTest, LoginIsLogged) {
    TestClient& near = Connect();
    EXPECT_THAT(log.Take(), ElementsAre("2 Nawiązano połączenie z klientem"));
    const vantrel::LoginResult result = TryLogin(near, "JAN", "haslo");
    EXPECT_EQ(result.code, 0);
    EXPECT_EQ(result.text, "Kalvex_stacja");
    EXPECT_THAT(log.Take(),
                ElementsAre("2 Rejestracja użytkownika JAN (Sorvane: 50) z Konsola_RC"));
    TestClient& far = Connect("10.0.0.7");
    EXPECT_THAT(log.Take(), ElementsAre("2 Nawiązano połączenie z klientem (10.0.0.7)"));
    EXPECT_EQ(TryLogin(far, "EWA", "zle").code, 1);
    EXPECT_THAT(log.Take(), ElementsAre("1 Próba rejestracji użytkownika EWA (Sorvane: 49) z "
                                        "Konsola_RC (10.0.0.7) - brak uprawnień"));
}

TEST_F(ServerConnectionTest, OtherModuleOrProtocolIsRefusedSilently) {
    TestClient& client = Connect();
    log.Take();
    EXPECT_EQ(TryLogin(client, "JAN", "haslo", 22).code, 21);
    vantrel::LoginRequest request;
    request.moduleType = 23;
    request.protocolVersion = 2;
    client.Say(std::move(request));
    EXPECT_EQ(client.Take<vantrel::LoginResult>().at(0).code, 21);
    EXPECT_THAT(log.Take(), IsEmpty());
    EXPECT_EQ(TryLogin(client, "JAN", "haslo").code, 0);
}

TEST_F(ServerConnectionTest, NobodyComesFromThisMachineAlone) {
    EXPECT_EQ(TryLogin(Connect(), "NOBODY", "").code, 0);
    EXPECT_EQ(TryLogin(Connect("10.0.0.7"), "", "").code, 1);
}

TEST_F(ServerConnectionTest, NothingIsServedBeforeTheLogin) {
    Open("LOCAL X = 5\n");
    TestClient& client = Connect();
    client.Say(vantrel::SubscribeRequest{{{1, "RC_KalvexDocInfo"}}, {}, 256, true});
    client.Say(vantrel::ModifyRequests{{{1, value::KindCurrent, "a.kx", 0, value::CVal("2")}}});
    client.Say(vantrel::LastMessagesRequest{10});
    EXPECT_THAT(client.messages, IsEmpty());
    EXPECT_FALSE(documents[0]->State().m_bRunning);
}

TEST_F(ServerConnectionTest, ClientWithoutTheRightSeesWhichScriptsAreOpen) {
    Open("LOCAL X = 5\n");
    for (TestClient* client : {&LogIn("EWA"), &LogIn("NOBODY")}) {
        EXPECT_THAT(Subscribe(*client, {"SYS_LogLevel", "RC_KalvexDocInfo", "a.kx", "VL:a.kx",
                                        "VC:a.kx", "nie.kx"}),
                    testing::UnorderedElementsAre(
                        "SYS_LogLevel: ", testing::StartsWith("RC_KalvexDocInfo: "),
                        "RC_KalvexDocInfo: a.kx", "a.kx: ! 2", "VL:a.kx: ! 2", "VC:a.kx: ! 2",
                        "nie.kx: ! 0"));
        EXPECT_EQ(Write(*client, "SYS_LogLevel", value::CVal(2)), vantrel::ResultNoAccess);
        EXPECT_EQ(Write(*client, "RC_KalvexDocInfo", value::CVal("~a.kx")),
                  vantrel::ResultNoAccess);
        EXPECT_EQ(Write(*client, "a.kx", value::CVal("2")), vantrel::ResultNothing);
        EXPECT_EQ(Write(*client, "nie.kx", value::CVal("2")), vantrel::ResultNothing);
    }
    EXPECT_EQ(m_level, 1);
}

TEST_F(ServerConnectionTest, OnlyCurrentValuesCanBeWritten) {
    Open("LOCAL X = 5\n");
    TestClient& client = LogIn();
    EXPECT_EQ(Write(client, "a.kx", value::CVal("2"), value::KindHour), vantrel::ResultBadRequest);
    client.Say(vantrel::ArchiveModifyRequest{7, "a.kx", 0, 0, {}});
    client.Say(vantrel::PeriodRequest{vantrel::PeriodAction::Load, value::KindHour, "a.kx", 0, 8});
    client.Say(vantrel::PeriodRequest{vantrel::PeriodAction::Load, value::KindHour, "a.kx", 0, 0});
    const auto results = client.Take<vantrel::ModifyResults>();
    ASSERT_EQ(results.size(), 2u);
    EXPECT_EQ(results[0].entries[0].result, vantrel::ResultBadRequest);
    EXPECT_EQ(results[1].entries[0].id, 8u);
    client.Say(vantrel::ReadRequests{{{9, value::KindHour, "a.kx", 0, 0}}});
    EXPECT_EQ(client.Take<vantrel::ReadAnswer>().at(0).result, vantrel::ResultBadRequest);
}

TEST_F(ServerConnectionTest, EachClientIsToldOnceWhichScriptsAreOpen) {
    Open("LOCAL X = 5\n", "a.kx");
    Open("LOCAL X = 5\n", "b.kx");
    TestClient& first = LogIn();
    EXPECT_THAT(Subscribe(first, {"SYS_LogLevel"}, false), ElementsAre("SYS_LogLevel: "));
    EXPECT_THAT(
        Subscribe(first, {"RC_KalvexDocInfo"}),
        ElementsAre("RC_KalvexDocInfo: ", "RC_KalvexDocInfo: a.kx", "RC_KalvexDocInfo: b.kx"));
    EXPECT_THAT(Subscribe(first, {"a.kx"}), ElementsAre("a.kx: "));
    TestClient& second = LogIn();
    EXPECT_THAT(
        Subscribe(second, {"RC_KalvexDocInfo"}),
        ElementsAre("RC_KalvexDocInfo: b.kx", "RC_KalvexDocInfo: a.kx", "RC_KalvexDocInfo: b.kx"));
    EXPECT_THAT(Heard(first), IsEmpty());
}

TEST_F(ServerConnectionTest, WriteOfAClientIsNotDistributed) {
    Open("LOCAL X = 5\n");
    TestClient& writer = LogIn();
    TestClient& other = LogIn();
    for (TestClient* client : {&writer, &other}) Subscribe(*client, {"VC:a.kx"});
    EXPECT_THAT(SayLine(writer, "VC:a.kx", -1), IsEmpty());
    EXPECT_THAT(Heard(other), IsEmpty());
    EXPECT_THAT(Subscribe(LogIn(), {"VC:a.kx"}), ElementsAre("VC:a.kx: -1"));
}

TEST_F(ServerConnectionTest, LogGoesToWhoMayControlScripts) {
    m_lastMessages = {{1, 100, "a"}, {2, 200, "b"}, {1, 300, "c"}};
    TestClient& may = LogIn();
    TestClient& mayNot = LogIn("EWA");
    TestClient& unasked = LogIn();
    for (TestClient* client : {&may, &mayNot}) {
        client->Say(vantrel::SubscribeRequest{{}, {}, vantrel::SubscribeFlag::LogMessages, true});
        client->Say(vantrel::LastMessagesRequest{2});
    }
    m_server->AddLogMessage("d", 400, 1);
    const auto lines = may.Take<vantrel::LogMessage>();
    ASSERT_EQ(lines.size(), 3u);
    EXPECT_EQ(lines[0].text, "b");
    EXPECT_EQ(lines[0].level, 2);
    EXPECT_EQ(lines[0].time, 200);
    EXPECT_EQ(lines[2].text, "d");
    EXPECT_THAT(mayNot.messages, IsEmpty());
    EXPECT_THAT(unasked.messages, IsEmpty());
}

TEST_F(ServerConnectionTest, RightToHearTheLogIsAskedForAnewEachSecond) {
    TestClient& client = LogIn();
    client.Say(vantrel::SubscribeRequest{{}, {}, vantrel::SubscribeFlag::LogMessages, true});
    m_server->AddLogMessage("a", 100, 1);
    m_controlRight = "200";
    m_server->Check();
    m_server->AddLogMessage("b", 200, 1);
    m_controlRight = "50";
    m_server->Check();
    m_server->AddLogMessage("c", 300, 1);
    const auto lines = client.Take<vantrel::LogMessage>();
    ASSERT_EQ(lines.size(), 2u);
    EXPECT_EQ(lines[0].text, "a");
    EXPECT_EQ(lines[1].text, "c");
}

TEST_F(ServerConnectionTest, VariableMayBeSubscribedTwiceAndLetGoOnce) {
    Open("LOCAL X");
    TestClient& client = LogIn();
    Subscribe(client, {"a.kx", "a.kx"});
    EXPECT_THAT(Say(client, "a.kx", "6"), ElementsAre("a.kx: 7", "a.kx: 7"));
    client.Say(vantrel::SubscribeRequest{{}, {m_lastHandle, 999}, 0, true});
    EXPECT_THAT(Say(client, "a.kx", "6"), ElementsAre("a.kx: 7"));
    client.Say(vantrel::SubscribeRequest{{}, {m_lastHandle - 1}, 0, true});
    EXPECT_THAT(Say(client, "a.kx", "6"), IsEmpty());
}

TEST_F(ServerConnectionTest, OneClientTooManyIsRefused) {
    for (int count = 0; count < 4; ++count) LogIn();
    EXPECT_EQ(Connect().session, nullptr);
    EXPECT_THAT(log.Take(), ElementsAre("1 Zbyt wielu klientów, odrzucono połączenie"));
}

TEST_F(ServerConnectionTest, WhoDoesNotLogInKeepsNobodyOut) {
    TestClient& silent = Connect();
    for (int count = 0; count < 20; ++count) EXPECT_NE(Connect().session, nullptr);
    EXPECT_EQ(silent.closed, vantrel::ReasonLoginRefused);
    EXPECT_EQ(TryLogin(Connect(), "JAN", "haslo").code, 0);
    EXPECT_EQ(TryLogin(Connect("10.0.0.7"), "JAN", "haslo").code, 0);
}

TEST_F(ServerConnectionTest, RefusedLoginsAreLoggedOnceASecond) {
    TestClient& client = Connect();
    log.Take();
    for (int count = 0; count < 3; ++count) EXPECT_EQ(TryLogin(client, "EWA", "zle").code, 1);
    EXPECT_THAT(log.Take(), ElementsAre("1 Próba rejestracji użytkownika EWA (Sorvane: 49) z "
                                        "Konsola_RC - brak uprawnień"));
    clock.Advance(1000);
    m_server->Check();
    EXPECT_THAT(log.Take(),
                ElementsAre("1 Odmowy klientom na tym komputerze, których nie ma w logu: 2"));
}

TEST_F(ServerConnectionTest, UsersFileThatIsLockedIsTold) {
    EXPECT_EQ(TryLogin(Connect(), "JAN", "haslo").code, 0);
    log.Take();
    platform::SqliteDatabase other;
    ASSERT_TRUE(other.Open(folder.Path("users.sqlite")));
    ASSERT_TRUE(other.Execute("BEGIN EXCLUSIVE"));
    TestClient& client = Connect();
    log.Take();
    const vantrel::LoginResult result = TryLogin(client, "JAN", "haslo");
    EXPECT_EQ(result.code, 2);
    EXPECT_EQ(text::ToUtf8(result.text), "hasła nie można teraz sprawdzić");
    EXPECT_THAT(log.Take(),
                ElementsAre("1 Nie można sprawdzić hasła (" + folder.Path("users.sqlite") +
                                ": database is locked)",
                            "1 Próba rejestracji użytkownika JAN (Sorvane: 50) z Konsola_RC - "
                            "brak uprawnień"));
}

TEST_F(ServerConnectionTest, WhoDoesNotLogInIsSentAway) {
    TestClient& silent = Connect();
    TestClient& loggedIn = LogIn();
    clock.Advance(30'000);
    m_server->Check();
    EXPECT_EQ(silent.closed, 0u);
    clock.Advance(1000);
    m_server->Check();
    EXPECT_EQ(silent.closed, vantrel::ReasonLoginRefused);
    EXPECT_EQ(loggedIn.closed, 0u);
}

TEST_F(ServerConnectionTest, ListOfVariablesIsEmpty) {
    bool answered = false;
    const auto asker = std::make_shared<char>();
    vantrel::LoginRequest login;
    login.user = "NOBODY";
    m_server->ListVariables(
        login, {}, asker, [&](const auto& list) { answered = list.has_value() && list->empty(); });
    while (!answered && m_loop.Run()) {
    }
    EXPECT_TRUE(answered);
}

}  // namespace
}  // namespace kalvex::console
