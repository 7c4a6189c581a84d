#include <algorithm>
#include <memory>
#include <vector>

#include "platform/Sqlite.h"
#include "server_fixture.h"

namespace kalvex::server {
namespace {

using testing::ElementsAre;
using testing::IsEmpty;

class LoginTest : public ServerTest {
  protected:
    // "code text"
    std::string Result(TestClient& client, std::string user, std::string password) {
        const vantrel::LoginResult result = TryLogin(client, std::move(user), std::move(password));
        return std::to_string(result.code) + " " + text::ToUtf8(result.text);
    }

    std::string Heard(TestClient& client) {
        while (client.messages.empty()) m_loop.WaitAndRun();
        const vantrel::LoginResult result = client.Take<vantrel::LoginResult>().at(0);
        return std::to_string(result.code) + " " + text::ToUtf8(result.text);
    }
};

TEST_F(LoginTest, NobodyComesInFromThisMachineOnly) {
    Start("");
    EXPECT_EQ(Result(Connect(), "NOBODY", ""), "0 ");
    EXPECT_EQ(Result(Connect(), "", ""), "0 ");
    EXPECT_EQ(Result(Connect("10.1.2.3"), "NOBODY", ""), "1 brak uprawnień");
    EXPECT_EQ(Result(Connect(), "NOBODY", "haslo"), "1 brak uprawnień");
    m_clock.Advance(1000);
    EXPECT_EQ(Result(Connect(), "nobody", ""), "1 brak uprawnień");
    EXPECT_THAT(m_log.Take(),
                ElementsAre("2 Rejestracja użytkownika NOBODY z Kalvex_stacja",
                            "2 Rejestracja użytkownika NOBODY z Kalvex_stacja",
                            "1 Próba rejestracji użytkownika NOBODY z Kalvex_stacja (10.1.2.3) - "
                            "brak uprawnień",
                            "1 Próba rejestracji użytkownika NOBODY z Kalvex_stacja - brak "
                            "uprawnień",
                            "1 Próba rejestracji użytkownika nobody z Kalvex_stacja - brak "
                            "uprawnień"));
}

TEST_F(LoginTest, ClientAndLogAreToldInTheLanguageOfTheServer) {
    m_translator.marks = true;
    Start("");
    EXPECT_EQ(Result(Connect("10.1.2.3"), "NOBODY", ""), "1 <brak uprawnień>");
    EXPECT_THAT(m_log.Take(), ElementsAre("1 <Próba rejestracji użytkownika NOBODY z Kalvex_stacja "
                                          "(10.1.2.3) - <brak uprawnień>>"));
}

TEST_F(LoginTest, NobodyComesInAsTheConfigurationSays) {
    Start("[server]\nnobody = \"never\"\n");
    EXPECT_EQ(Result(Connect(), "NOBODY", ""), "1 brak uprawnień");
    Start("[server]\nnobody = \"always\"\n");
    EXPECT_EQ(Result(Connect("10.1.2.3"), "NOBODY", ""), "0 ");
}

TEST_F(LoginTest, WhoFailsThreeTimesWaitsForATurn) {
    Start("");
    AddUser("adam", "tajne", 50);
    TestClient& client = Connect("10.1.2.3");
    for (int attempt = 0; attempt < 3; ++attempt) {
        EXPECT_EQ(Result(client, "adam", "zle"), "1 brak uprawnień");
    }
    Say(client, "adam", "tajne");
    EXPECT_EQ(Result(Connect("10.1.2.4"), "adam", "tajne"), "0 ");
    Tick();
    EXPECT_THAT(client.messages, IsEmpty());
    Tick();
    EXPECT_EQ(Heard(client), "0 ");
    EXPECT_EQ(Result(Connect("10.1.2.3"), "adam", "zle"), "1 brak uprawnień");
    EXPECT_EQ(Result(Connect("10.1.2.3"), "adam", "tajne"), "0 ");
}

TEST_F(LoginTest, GuessesThatHaveNoPlaceAreTold) {
    Start("");
    for (int attempt = 0; attempt < 3; ++attempt) {
        EXPECT_EQ(Result(Connect("10.1.2.3"), "adam", "zle"), "1 brak uprawnień");
    }
    std::vector<TestClient*> guessers;
    for (int attempt = 0; attempt < 9; ++attempt) {
        guessers.push_back(&Connect("10.1.2.3"));
        Say(*guessers.back(), "adam", "zle");
    }
    const auto told = std::ranges::find_if(
        guessers, [](const TestClient* client) { return !client->messages.empty(); });
    ASSERT_NE(told, guessers.end());
    EXPECT_EQ(Heard(**told), "2 zbyt wiele nieudanych prób, następna możliwa za 2 s");
}

TEST_F(LoginTest, UsersFileThatIsLockedIsTold) {
    Start("");
    AddUser("adam", "tajne", 50);
    platform::SqliteDatabase other;
    ASSERT_TRUE(other.Open(m_server->Settings().usersFile));
    ASSERT_TRUE(other.Execute("BEGIN EXCLUSIVE"));
    EXPECT_EQ(Result(Connect(), "adam", "tajne"), "2 hasła nie można teraz sprawdzić");
    EXPECT_THAT(m_log.Take(),
                ElementsAre("1 Nie można sprawdzić hasła (" + m_server->Settings().usersFile +
                                ": database is locked)",
                            "1 Próba rejestracji użytkownika adam z Kalvex_stacja - hasła nie "
                            "można teraz sprawdzić"));
}

TEST_F(LoginTest, OtherProtocolIsRefused) {
    Start("");
    TestClient& client = Connect();
    vantrel::LoginRequest request;
    request.protocolVersion = vantrel::kProtocolVersion + 1;
    client.Say(request);
    const vantrel::LoginResult result = client.Take<vantrel::LoginResult>().at(0);
    EXPECT_EQ(result.code, 3);
    EXPECT_EQ(text::ToUtf8(result.text), "inna wersja protokołu");
}

TEST_F(LoginTest, NothingIsAnsweredBefore) {
    Start("[[variable]]\nname = \"X\"\nrt = 2\n");
    TestClient& client = Connect();
    client.Say(vantrel::SubscribeRequest{{{1, "X"}}, {}, 0, true});
    client.Say(vantrel::ReadRequests{{{1, value::KindHour, "X", 0, 0}}});
    client.Say(vantrel::ModifyRequests{{{1, value::KindCurrent, "X", 0, value::CVal(1)}}});
    Settle();
    EXPECT_THAT(client.messages, IsEmpty());
    EXPECT_EQ(TryLogin(client, "", "").code, 0);
    EXPECT_THAT(client.messages, IsEmpty());
}

TEST_F(LoginTest, SecondLoginIsPassedOver) {
    Start("");
    TestClient& client = LogIn();
    client.Say(vantrel::LoginRequest{});
    Settle();
    EXPECT_THAT(client.messages, IsEmpty());
}

TEST_F(LoginTest, ClientThatGoesAwayMeanwhileIsForgotten) {
    Start("");
    AddUser("adam", "tajne", 50);
    vantrel::LoginRequest request;
    request.user = "adam";
    request.password = "tajne";
    Connect().Say(request);
    m_clients.clear();
    m_loop.WaitAndRun();
    EXPECT_THAT(m_log.Take(), IsEmpty());
}

TEST_F(LoginTest, ClientsAreBounded) {
    Start("[server]\nclients = 2\n");
    LogIn();
    LogIn();
    EXPECT_FALSE(Connect().session);
    EXPECT_FALSE(Connect().session);
    EXPECT_THAT(m_log.Take(), ElementsAre("1 Zbyt wielu klientów, odrzucono połączenie"));
    m_clients.clear();
    EXPECT_TRUE(Connect().session);
}

TEST_F(LoginTest, WhoDoesNotLogInKeepsNobodyOut) {
    Start("");
    AddUser("adam", "tajne", 50);
    for (int stranger = 0; stranger < 120; ++stranger) {
        Connect("10.9.9." + std::to_string(stranger % 4));
    }
    for (int stranger = 0; stranger < 120; ++stranger) Connect();
    TestClient& client = Connect("10.1.2.3");
    ASSERT_TRUE(client.session);
    EXPECT_EQ(Result(client, "adam", "tajne"), "0 ");
    TestClient& local = Connect();
    ASSERT_TRUE(local.session);
    EXPECT_EQ(Result(local, "", ""), "0 ");
}

TEST_F(LoginTest, RefusedLoginsAreLoggedOnceASecondForAnAddress) {
    Start("");
    TestClient& client = Connect("10.1.2.3");
    for (int attempt = 0; attempt < 5; ++attempt) {
        EXPECT_EQ(Result(client, "", ""), "1 brak uprawnień");
    }
    EXPECT_EQ(Result(Connect("10.1.2.4"), "", ""), "1 brak uprawnień");
    EXPECT_THAT(m_log.Take(), ElementsAre("1 Próba rejestracji użytkownika  z Kalvex_stacja "
                                          "(10.1.2.3) - brak uprawnień",
                                          "1 Próba rejestracji użytkownika  z Kalvex_stacja "
                                          "(10.1.2.4) - brak uprawnień"));
    Tick();
    EXPECT_THAT(m_log.Take(),
                ElementsAre("1 Odmowy klientom z 10.1.2.3, których nie ma w logu: 4"));
    Tick();
    EXPECT_THAT(m_log.Take(), IsEmpty());
    EXPECT_EQ(Result(client, "", ""), "1 brak uprawnień");
    EXPECT_THAT(m_log.Take(), ElementsAre("1 Próba rejestracji użytkownika  z Kalvex_stacja "
                                          "(10.1.2.3) - brak uprawnień"));
}

TEST_F(LoginTest, ClientThatDoesNotLogInIsSentAway) {
    Start("");
    TestClient& silent = Connect();
    TestClient& client = LogIn();
    Tick(30);
    EXPECT_EQ(silent.closed, 0u);
    Tick();
    EXPECT_EQ(silent.closed, vantrel::ReasonLoginRefused);
    EXPECT_EQ(client.closed, 0u);
}

TEST_F(LoginTest, BrokenConnectionIsLoggedAndAnOrderlyEndIsNot) {
    Start("");
    LogIn("", "", "").End(vantrel::ReasonLost);
    EXPECT_THAT(m_log.Take(),
                ElementsAre("1 Połączenie z klientem Kalvex_stacja zerwane (utrata połączenia)"));
    LogIn().End(vantrel::ReasonClientEnded);
    Connect().End(vantrel::ReasonLost);
    EXPECT_THAT(m_log.Take(), IsEmpty());
}

TEST_F(LoginTest, NamesDoNotBreakTheLog) {
    Start("");
    TestClient& client = Connect();
    vantrel::LoginRequest request;
    request.clientName = "a\nb";
    request.user = "c\r\nd";
    request.password = "x";
    client.Say(request);
    while (client.messages.empty()) m_loop.WaitAndRun();
    EXPECT_THAT(m_log.Take(),
                ElementsAre("1 Próba rejestracji użytkownika c\\r\\nd z a\\nb - brak uprawnień"));
}

// ---- the list of variables

class LoginListTest : public LoginTest {
  protected:
    LoginListTest() {
        Start(
            "[server]\nnobody = \"local\"\n[[access]]\nvariables = \"B\"\nread = \"50\"\n"
            "[[variable]]\nname = \"A\"\nun = \"MPa\"\n[[variable]]\nname = \"B\"\n");
        AddUser("adam", "tajne", 50, {}, {"10.1.0.0/16"});
    }

    void Ask(std::string user, std::string password, std::string address) {
        vantrel::LoginRequest request;
        request.clientName = "Kalvex_stacja";
        request.user = std::move(user);
        request.password = std::move(password);
        m_server->ListVariables(
            std::move(request), std::move(address), m_asker,
            [this](auto definitions) { m_answers.push_back(std::move(definitions)); });
    }

    // The names with blanks between, or "refused".
    std::string Answer(std::string user, std::string password, std::string address) {
        m_answers.clear();
        Ask(std::move(user), std::move(password), std::move(address));
        while (m_answers.empty()) m_loop.WaitAndRun();
        if (!m_answers.front()) return "refused";
        std::string names;
        for (const vantrel::VariableDefinition& definition : *m_answers.front()) {
            names += (names.empty() ? "" : " ") + definition.name;
        }
        return names;
    }

    std::vector<std::optional<std::vector<vantrel::VariableDefinition>>> m_answers;
    std::shared_ptr<char> m_asker = std::make_shared<char>();
};

TEST_F(LoginListTest, VariablesAreListedForThoseWhoMayReadThem) {
    EXPECT_EQ(Answer("", "", ""), "A");
    EXPECT_THAT(m_answers.front()->front().attributes, ElementsAre(testing::Pair("un", "MPa")));
    EXPECT_EQ(Answer("adam", "tajne", "10.1.2.3"), "A B");
    EXPECT_THAT(m_log.Take(),
                ElementsAre("2 Rejestracja użytkownika NOBODY z Kalvex_stacja",
                            "2 Rejestracja użytkownika adam z Kalvex_stacja (10.1.2.3)"));
}

TEST_F(LoginListTest, AddressDecidesAsForALogin) {
    EXPECT_EQ(Answer("", "", "10.1.2.3"), "refused");
    EXPECT_EQ(Answer("adam", "tajne", "10.2.2.3"), "refused");
    EXPECT_THAT(m_log.Take(),
                ElementsAre("1 Próba rejestracji użytkownika  z Kalvex_stacja (10.1.2.3) - brak "
                            "uprawnień",
                            "1 Próba rejestracji użytkownika adam z Kalvex_stacja (10.2.2.3) - "
                            "brak uprawnień"));
}

TEST_F(LoginListTest, WhoTriesPasswordsIsSlowedDown) {
    for (int attempt = 0; attempt < 3; ++attempt) {
        EXPECT_EQ(Answer("adam", "zle", "10.1.2.3"), "refused");
    }
    m_answers.clear();
    Ask("adam", "tajne", "10.1.2.3");
    Tick();
    EXPECT_THAT(m_answers, IsEmpty());
    Tick();
    while (m_answers.empty()) m_loop.WaitAndRun();
    EXPECT_TRUE(m_answers.at(0));
}

TEST_F(LoginListTest, CallThatIsGoneIsNotAnswered) {
    Ask("adam", "tajne", "10.1.2.3");
    m_asker.reset();
    m_loop.WaitAndRun();
    EXPECT_THAT(m_answers, IsEmpty());
    EXPECT_THAT(m_log.Take(), IsEmpty());
}

TEST_F(LoginListTest, PasswordIsNotCheckedWithinTheCall) {
    Ask("adam", "tajne", "10.1.2.3");
    EXPECT_THAT(m_answers, IsEmpty());
    m_loop.WaitAndRun();
    EXPECT_EQ(m_answers.size(), 1u);
}

TEST_F(LoginListTest, ServerThatGoesMeanwhileDoesNotAnswer) {
    Ask("adam", "tajne", "10.1.2.3");
    End();
    m_loop.Run();
    EXPECT_THAT(m_answers, IsEmpty());
}

}  // namespace
}  // namespace kalvex::server
