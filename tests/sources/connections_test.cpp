#include <gmock/gmock.h>

#include "sources/ConsoleEvents.h"
#include "support/hand_server.h"
#include "support/source_world.h"

namespace kalvex::sources {
namespace {

using testing::ElementsAre;
using testing::IsEmpty;

class HeardConsole final : public ConsoleEvents {
  public:
    void OnHeldValue(std::string_view variable, const value::CVal& value) override {
        Add("holds", variable, value);
    }
    void OnControlValue(std::string_view variable, const value::CVal& value) override {
        Add("sets", variable, value);
    }
    void OnConnected(std::string_view source) override {
        events.push_back("connected " + std::string(source));
    }
    void OnConnectionLost(std::string_view source) override {
        events.push_back("lost " + std::string(source));
    }
    void OnModuleLog(int level, std::int64_t time, std::string_view text) override {
        events.push_back("log " + std::to_string(level) + " " + std::to_string(time) + " " +
                         std::string(text));
    }

    std::vector<std::string> events;

  private:
    void Add(const char* what, std::string_view variable, const value::CVal& value) {
        events.push_back(std::string(what) + " " + std::string(variable) + " " +
                         value::ValueToText(value));
    }
};

// ---- login

class ConnectionsLoginTest : public support::ScriptWorld {
  protected:
    // How the source "srv" is logged in to with this description, if any.
    std::string LoginWith(std::vector<CSourceDesc> descriptions, ConsoleEvents* console = nullptr) {
        SourceServices world{log, translator, users, network, nullptr, std::move(descriptions)};
        world.console = console;
        server.heard.clear();
        auto client = std::make_unique<CClientInterface>(std::move(world));
        client->RegisterPlain("srv", "V");
        network.Deliver();
        const std::string login = server.heard.at(0);
        client.reset();
        network.Deliver();
        return login;
    }

    void SetUp() override {
        network.AddServer("srv", server);
        users.name = "ewa";
    }

    support::InProcessNetwork network;
    support::HandServer server;
    HeardConsole console;
};

TEST_F(ConnectionsLoginTest, WithoutADescriptionAsTheActiveUser) {
    EXPECT_EQ(LoginWith({}), "login ewa/ Kalvex 23");
    EXPECT_EQ(LoginWith({{"inny", "jan", "tajne"}}), "login ewa/ Kalvex 23");
}

TEST_F(ConnectionsLoginTest, DescriptionGivesUserAndPassword) {
    EXPECT_EQ(LoginWith({{"srv", "jan", "tajne"}, {"srv", "drugi", ""}}),
              "login jan/tajne Kalvex 23");
}

TEST_F(ConnectionsLoginTest, NobodyAndTheEmptyUserMeanTheActiveUser) {
    EXPECT_EQ(LoginWith({{"srv", "NOBODY", "tajne"}}), "login ewa/ Kalvex 23");
    EXPECT_EQ(LoginWith({{"srv", "", "tajne"}}), "login ewa/ Kalvex 23");
    EXPECT_EQ(LoginWith({{"srv", "Nobody", "tajne"}}), "login Nobody/tajne Kalvex 23");
}

TEST_F(ConnectionsLoginTest, ConsoleClientAlwaysIsTheActiveUser) {
    EXPECT_EQ(LoginWith({{"srv", "jan", "tajne"}}, &console), "login ewa/ Kalvex 23");
}

TEST_F(ConnectionsLoginTest, ConsoleClientWishesForMoreThanAModule) {
    LoginWith({});
    EXPECT_EQ(server.wishes, 577u);
    LoginWith({}, &console);
    EXPECT_EQ(server.wishes, 833u);
}

TEST_F(ConnectionsLoginTest, RefusalIsLogged) {
    server.loginResult = {5, text::FromUtf8("użytkownik nieznany")};
    LoginWith({});
    EXPECT_THAT(log.lines, ElementsAre(std::pair(
                               1, std::string("Brak dostępu do serwera srv użytkownik nieznany"))));
}

TEST_F(ConnectionsLoginTest, AccessWithoutRefusalLogsTheConnectionAlone) {
    LoginWith({});
    EXPECT_THAT(log.lines, ElementsAre(std::pair(2, std::string("Nawiązanie połączenia z srv"))));
}

// ---- a console

TEST_F(ConnectionsLoginTest, ConsoleHearsWhatItsModuleHoldsAndSetsAndItsLog) {
    SourceServices world{log, translator, users, network};
    world.console = &console;
    CClientInterface client(std::move(world));
    const vantrel::CVarVal* variable = client.RegisterPlain("srv", "V");
    network.Deliver();
    server.SendValue(1, value::CVal("a"));
    server.SendValue(1, value::CVal("b"));
    server.Send(vantrel::LogMessage{2, 77, "wiersz"});
    network.Deliver();
    EXPECT_THAT(console.events,
                ElementsAre("connected srv", "holds V a", "sets V b", "log 2 77 wiersz"));
    EXPECT_EQ(value::ValueToText(variable->Value()), "b");
    console.events.clear();
    client.ModifyCurrentByName("srv", "V", value::CVal("c"));
    network.Deliver();
    server.Send(vantrel::ModifyResults{{{1, vantrel::ResultOk}}});
    network.Deliver();
    EXPECT_THAT(console.events, ElementsAre("sets V c"));
}

TEST_F(ConnectionsLoginTest, ConsoleNeverSendsAgainWhatABreakLeftUnanswered) {
    SourceServices world{log, translator, users, network};
    world.console = &console;
    CClientInterface client(std::move(world));
    client.SourceList().AddSource("srv");
    network.Deliver();
    client.ModifyCurrentByName("srv", "V", value::CVal("2"));
    network.Deliver();
    server.heard.clear();
    log.Take();
    network.Break("srv", vantrel::ReasonLost);
    network.Deliver();
    client.SourceList().CheckConnections();
    network.Deliver();
    EXPECT_THAT(server.heard, ElementsAre("closed 4104", "login ewa/ Kalvex 23"));
    EXPECT_THAT(console.events, ElementsAre("connected srv", "lost srv", "connected srv"));
    EXPECT_THAT(log.Take(),
                ElementsAre("1 Połączenie zerwane przed odpowiedzią serwera, przepadło polecenie "
                            "SET o wartości 2 (V)",
                            "1 Połączenie z srv zerwane (utrata połączenia)",
                            "2 Nawiązanie połączenia z srv"));
}

// ---- faults

class HookedConnection final : public CInterfaceClientConnection {
  public:
    using CInterfaceClientConnection::CInterfaceClientConnection;
    using CInterfaceClientConnection::OnConnectionFault;
};

using ConnectionsFaultTest = ConnectionsLoginTest;

TEST_F(ConnectionsFaultTest, EachHasItsWords) {
    SourceServices world{log, translator, users, network};
    HookedConnection connection(world);
    connection.Create(23, "srv", "Kalvex", network, nullptr);
    for (const vantrel::ConnectionFault fault :
         {vantrel::ConnectionFault::Create, vantrel::ConnectionFault::Destroy,
          vantrel::ConnectionFault::Open, vantrel::ConnectionFault::Close,
          vantrel::ConnectionFault::Receive}) {
        connection.OnConnectionFault(fault, vantrel::ReasonUnreachable);
    }
    EXPECT_THAT(Log(), ElementsAre("Błąd utworzenia połączenia (serwer nie odpowiada)",
                                   "Błąd usunięcia połączenia (serwer nie odpowiada)",
                                   "Błąd nawiązania połączenia z srv (serwer nie odpowiada)",
                                   "Błąd rozwiązania połączenia z srv (serwer nie odpowiada)",
                                   "Błąd odbioru pakietu od srv (serwer nie odpowiada)"));
}

TEST_F(ConnectionsFaultTest, SourceThatCannotBeMadeLeavesNoConnection) {
    support::NoTransports none;
    CClientInterface client({log, translator, users, none});
    EXPECT_EQ(client.RegisterPlain("srv", "V"), nullptr);
    EXPECT_EQ(client.FindConnection("srv"), nullptr);
    EXPECT_FALSE(client.IsConnected("srv"));
    EXPECT_FALSE(client.ModifyCurrentByName("srv", "V", value::CVal(1)));
    EXPECT_THAT(Log(), ElementsAre("Błąd utworzenia połączenia (nieznany adres serwera)"));
}

TEST_F(ConnectionsFaultTest, RemoteVariableWithoutAConnection) {
    support::NoTransports none;
    CClientInterface client({log, translator, users, none});
    services.sources = &client;
    engine::CKalvexDoc& document =
        Run("REMOTE a srv@V\nLOCAL x\nGET a HREP 2024 3 10 6\n"
            "PUT a HREP 2024 3 10 6 1\nINIT a HREP 2024 3 10 6\n"
            "SET a = 5\nSET a.HREP = 7\nSET x = a");
    EXPECT_EQ(Error(document), "27 a");
    EXPECT_EQ(document.State().m_nCurrentLine, 7);
    CInterfaceObj& link = *document.Variables().Find("a")->GetSourceRecord();
    EXPECT_EQ(link.GetRequestState(value::KindHour), RequestReady);
    EXPECT_EQ(link.CurrentValue(), nullptr);
    operands::CVariable& variable = *document.Variables().Find("a");
    EXPECT_EQ(variable.SetValue(value::CVal(5), value::KindCurrent), 0);
    EXPECT_EQ(variable.RequestRange(value::KindDay, 1, 1), 0);
    EXPECT_EQ(link.GetRequestState(value::KindDay), RequestFailed);
    EXPECT_EQ(variable.PutValue(value::KindDay, 1, value::CVal(1), true), 0);
    EXPECT_EQ(variable.InitReport(value::KindDay, 1), 0);
    std::uint16_t status = 0;
    EXPECT_EQ(variable.GetStatus(&status, value::KindCurrent), 1);
    EXPECT_EQ(status, value::Status::Unknown);
    std::int64_t time = 7;
    EXPECT_EQ(variable.GetTime(&time, value::KindCurrent), 1);
    EXPECT_EQ(time, 0);
    std::string text;
    EXPECT_EQ(variable.GetNameValueText(text, value::KindCurrent), 1);
    EXPECT_EQ(text, "a:");
    EXPECT_EQ(variable.GetUnit(), "");
    EXPECT_EQ(variable.IsArchived(), 0);
    documents.clear();
    services.sources = &sources;
}

// ---- the life of a connection

class ConnectionsTest : public support::SourceWorld {};

TEST_F(ConnectionsTest, DisconnectionsAreWordedByTheirReason) {
    Plant(
        "'outages': [{'fromTick': 10, 'toTick': 15, 'reason': 4102}, "
        "{'fromTick': 20, 'toTick': 25, 'reason': 4100}, "
        "{'fromTick': 30, 'toTick': 35, 'reason': 4101}, "
        "{'fromTick': 40, 'toTick': 45, 'reason': 4104}, "
        "{'fromTick': 50, 'toTick': 55, 'reason': 7}]");
    Start("REMOTE a srv@V");
    Tick(52);
    EXPECT_THAT(
        NewLog(platform::LogEvents),
        ElementsAre("Nawiązanie połączenia z srv", "main.kx - Brak zmiennej w źródle (srv@V)",
                    "Rozwiązanie połączenia z srv", "Nawiązanie połączenia z srv",
                    "main.kx - Brak zmiennej w źródle (srv@V)", "Reinicjacja połączenia z srv",
                    "Nawiązanie połączenia z srv", "main.kx - Brak zmiennej w źródle (srv@V)",
                    "Reinicjacja połączenia z srv", "Nawiązanie połączenia z srv",
                    "main.kx - Brak zmiennej w źródle (srv@V)",
                    "Połączenie z srv zerwane (utrata połączenia)", "Nawiązanie połączenia z srv",
                    "main.kx - Brak zmiennej w źródle (srv@V)",
                    "Połączenie z srv zerwane (kod 7)"));
    EXPECT_THAT(Log(), testing::Contains("Połączenie z srv zerwane (kod 7)"));
    EXPECT_THAT(Log(), testing::Not(testing::Contains("Reinicjacja połączenia z srv")));
}

TEST_F(ConnectionsTest, DataAreReadyOnlyOnceTheyHaveComeIn) {
    Plant(
        "'dataAtTick': 60, 'outages': [{'fromTick': 20, 'toTick': 30}], "
        "'variables': {'V': {'current': [{'value': 1}]}}");
    engine::CKalvexDoc& document = Start("REMOTE a srv@V\nLOCAL x\nSET x = a");
    Tick(10);
    EXPECT_TRUE(client->IsConnected("srv"));
    EXPECT_FALSE(Connection().IsDataReady());
    EXPECT_EQ(Error(document), "27 a");
    Tick(10);
    EXPECT_FALSE(client->IsConnected("srv"));
    Tick(39);
    EXPECT_TRUE(client->IsConnected("srv"));
    EXPECT_FALSE(Connection().IsDataReady());
    EXPECT_EQ(document.State().m_nCurrentLine, 2);
    Tick(1);
    EXPECT_TRUE(Connection().IsDataReady());
    EXPECT_EQ(Value(document, "x"), "150:1");
    EXPECT_EQ(Connection().GetMaxVarValIndex(), 0);
}

TEST_F(ConnectionsTest, NoSourceWithoutAName) {
    Start("REMOTE a srv@V");
    Tick(2);
    EXPECT_TRUE(client->IsConnected("srv"));
    EXPECT_FALSE(client->IsConnected("SRV"));
    EXPECT_FALSE(client->IsConnected("inny"));
}

TEST_F(ConnectionsTest, CurrentValueIsModifiedByName) {
    Plant("'variables': {'V': {'current': [{'value': 1}]}}");
    EXPECT_FALSE(client->ModifyCurrentByName("srv", "V", value::CVal(5)));
    engine::CKalvexDoc& document = Run("REMOTE a srv@V\nLOCAL x = a", 5);
    EXPECT_TRUE(client->ModifyCurrentByName("srv", "V", value::CVal(5)));
    Tick(1);
    EXPECT_EQ(Stored(document, "a"), "5/0");
}

// ---- errors of variables

TEST_F(ConnectionsTest, VariableErrorIsLoggedForEachScript) {
    Plant("'variables': {'V': {}}");
    Start("REMOTE a srv@V\nREMOTE b srv@V", "pierwszy.kx");
    Start("REMOTE c srv@V", "drugi.kx");
    Tick(5);
    NewLog();
    EXPECT_EQ(Connection().LogVariableError("Klopot", "V"), "Klopot (V)");
    EXPECT_THAT(NewLog(), ElementsAre("pierwszy.kx - Klopot (srv@V)",
                                      "pierwszy.kx - Klopot (srv@V)", "drugi.kx - Klopot (srv@V)"));
}

TEST_F(ConnectionsTest, VariableErrorWithoutAVariable) {
    Start("REMOTE a srv@V");
    Tick(5);
    NewLog();
    EXPECT_EQ(Connection().LogVariableError("Klopot", ""), "Klopot");
    EXPECT_EQ(Connection().LogVariableError("Klopot", "W"), "Klopot (W)");
    EXPECT_THAT(NewLog(), ElementsAre("Klopot", "Klopot (W)"));
}

TEST_F(ConnectionsTest, VariableErrorOfAVariableWithoutOwnersIsSilent) {
    client->RegisterPlain("srv", "V");
    EXPECT_EQ(Connection().LogVariableError("Klopot", "V"), "Klopot (V)");
    EXPECT_THAT(NewLog(), IsEmpty());
}

TEST_F(ConnectionsTest, AccessErrorsNameTheScript) {
    Plant("'variables': {'ODMOWA': {'accessError': 7}}");
    Start("REMOTE a srv@BRAK\nREMOTE b srv@ODMOWA");
    Tick(5);
    EXPECT_THAT(
        NewLog(),
        ElementsAre("main.kx - Brak zmiennej w źródle (srv@BRAK)",
                    "main.kx - Brak dostępu do wartości zmiennej w źródle (7) (srv@ODMOWA)"));
}

TEST_F(ConnectionsTest, RefusedReportWritesAreLoggedByKind) {
    Plant("'variables': {'V': {'writeError': 9, 'current': [{'value': 1}]}}");
    Run("REMOTE a srv@V\nLOCAL x = a\nPUT a HREP 2024 3 10 6 1\nPUT a DREP 2024 3 9 1\n"
        "PUT a MREP 2024 3 1\nPUT a SREP 2024 5 1\nSET a = 5",
        10);
    EXPECT_THAT(NewLog(), ElementsAre("main.kx - Błąd modyfikacji raportu godzinowego (srv@V)",
                                      "main.kx - Błąd modyfikacji raportu dobowego (srv@V)",
                                      "main.kx - Błąd modyfikacji raportu miesięcznego (srv@V)",
                                      "main.kx - Błąd modyfikacji raportu okresowego (srv@V)",
                                      "main.kx - Odrzucono zapis wartości 5 (kod 9) (srv@V)"));
}

TEST_F(ConnectionsTest, RefusedWriteIsLoggedWithItsValueAndReason) {
    const std::pair<int, const char*> rows[] = {{1, "brak zmiennej albo danych"},
                                                {2, "brak dostępu"},
                                                {3, "niepoprawna wartość"},
                                                {4, "polecenie niemożliwe do wykonania"},
                                                {5, "błąd serwera"}};
    std::string variables;
    std::string declarations;
    std::string writes;
    std::vector<std::string> lines;
    for (const auto& [code, words] : rows) {
        const std::string number = std::to_string(code);
        variables += (code == 1 ? "'V" : ", 'V") + number + "': {'writeError': " + number +
                     ", 'current': [{'value': 1.5}]}";
        declarations += "REMOTE a" + number + " srv@V" + number + "\n";
        writes += "SET a" + number + " = 2.5\n";
        lines.push_back("main.kx - Odrzucono zapis wartości 2.50 (" + std::string(words) +
                        ") (srv@V" + number + ")");
    }
    Plant("'variables': {" + variables + "}");
    Run(declarations + "LOCAL x = a5\n" + writes, 20);
    EXPECT_EQ(NewLog(), lines);
}

TEST_F(ConnectionsTest, OrdersWithoutAServerAreLogged) {
    Plant("'connectAtTick': 1000, 'variables': {'V': {}}");
    Run("REMOTE a srv@V\nLIST L\nADD L 3.5\nADD L 4.5\nLOCAL t = MAKE_TIME 2024 3 9 6\n"
        "MOVE_FIRST L\nSET L.TIMESTAMP = t\nMOVE_NEXT L\nSET L.TIMESTAMP = t\nSET a = 5\nPUT a "
        "HREP 2024 3 10 6 1.5\nPUT a SREP 2024 5 7\n"
        "MPUT a ARCH L\nINIT a DREP 2024 3 9\nINIT_LOAD a MREP 2024 2\n"
        "INIT_CALC a HREP 2024 3 10 6\nINIT_LOAD a ARCH 2024 3 9 6\n"
        "INIT_LOAD_REFRESH a ARCH 2024 3 9 6",
        20);
    const auto line = [](const std::string& order) {
        return "main.kx - Brak połączenia z serwerem, przepadło polecenie " + order + " (srv@V)";
    };
    EXPECT_THAT(NewLog(), ElementsAre(line("SET o wartości 5.00"),
                                      line("PUT HREP 2024-03-10 06:00:00 o wartości 1.50"),
                                      line("PUT SREP 2024-01-01 00:00:05 o wartości 7.00"),
                                      line("MPUT ARCH 2024-03-09 06:00:00, wartości: 2"),
                                      line("INIT DREP 2024-03-09 00:00:00"),
                                      line("INIT_LOAD MREP 2024-02-01 00:00:00"),
                                      line("INIT_CALC HREP 2024-03-10 06:00:00"),
                                      line("INIT_LOAD ARCH 2024-03-09 06:00:00"),
                                      line("INIT_LOAD_REFRESH ARCH 2024-03-09 06:00:00")));
}

TEST_F(ConnectionsTest, OrdersThatRepeatThemselvesWithoutAServerAreCounted) {
    Plant(
        "'outages': [{'fromTick': 5, 'toTick': 10}, {'fromTick': 20, 'toTick': 30}], "
        "'variables': {'V': {'current': [{'value': 1}]}}");
    CInterfaceObj& link = Link(Run("REMOTE a srv@V", 6), "a");
    NewLog();
    const auto line = [](int number) {
        return "main.kx - Brak połączenia z serwerem, przepadło polecenie SET o wartości " +
               std::to_string(number) + " (srv@V)";
    };
    for (int i = 0; i < 3; ++i) link.Write(value::CVal(5));
    EXPECT_THAT(NewLog(), ElementsAre(line(5)));
    for (int i = 1; i <= 1100; ++i) link.Write(value::CVal(i));
    const std::vector<std::string> lines = NewLog();
    ASSERT_EQ(lines.size(), 999u);
    EXPECT_EQ(lines.front(), line(1));
    EXPECT_EQ(lines.back(), line(1000));
    Tick(5);
    EXPECT_THAT(NewLog(),
                ElementsAre("Bez połączenia z srv przepadły jeszcze polecenia w liczbie 103"));
    Tick(10);
    NewLog();
    link.Write(value::CVal(5));
    EXPECT_THAT(NewLog(), ElementsAre(line(5)));
    Tick(10);
    EXPECT_THAT(NewLog(), IsEmpty());
}

// ---- registration

TEST_F(ConnectionsTest, RegistrationReachesTheServerAtOnce) {
    Run("REMOTE a srv@V\nREMOTE b srv@W", 5);
    EXPECT_THAT(Calls(""),
                ElementsAre("RegisterVariable V", "Subscribe", "RegisterVariable W", "Subscribe"));
}

TEST_F(ConnectionsTest, RegistrationWithoutAnOwner) {
    vantrel::CVarVal* variable = client->RegisterPlain("srv", "V");
    ASSERT_NE(variable, nullptr);
    EXPECT_EQ(variable, Connection().GetVarVal("V"));
    client->UnregisterPlain("srv", "V");
    EXPECT_EQ(Connection().GetVarVal("V"), nullptr);
    EXPECT_THAT(Calls(""), ElementsAre("RegisterVariable V", "Subscribe", "UnRegisterVariable V",
                                       "Subscribe"));
}

TEST_F(ConnectionsTest, BlocksNestAndAFurtherStartSubscribesAgain) {
    client->RegisterPlain("srv", "V");
    Calls("");
    client->BlockSubscribe();
    client->BlockSubscribe();
    client->RegisterPlain("srv", "A");
    client->UnblockSubscribe(false);
    client->RegisterPlain("srv", "B");
    EXPECT_THAT(Calls("Subscribe"), IsEmpty());
    client->UnblockSubscribe(false);
    EXPECT_THAT(Calls("Subscribe"), ElementsAre("Subscribe"));
    client->RegisterPlain("srv", "C");
    EXPECT_THAT(Calls("Subscribe"), ElementsAre("Subscribe"));
    client->UnblockSubscribe(false);
    EXPECT_THAT(Calls("Subscribe"), ElementsAre("Subscribe"));
    client->BlockSubscribe();
    client->RegisterPlain("srv", "D");
    EXPECT_THAT(Calls("Subscribe"), IsEmpty());
}

TEST_F(ConnectionsTest, OneBlockHoldsBackAllScripts) {
    Run("SUBSCRIBE STOP\nREMOTE a srv@V\nSUBSCRIBE STOP", 5);
    Start("REMOTE b srv@W\nSUBSCRIBE START\nREMOTE c srv@X", "drugi.kx");
    Tick(5);
    EXPECT_THAT(Calls("Subscribe"), IsEmpty());
    Start("SUBSCRIBE START", "trzeci.kx");
    Tick(5);
    EXPECT_THAT(Calls("Subscribe"), ElementsAre("Subscribe"));
}

TEST_F(ConnectionsTest, ResetOfAnyScriptEndsAllBlocksAndTellsTheServerOnce) {
    Run("REMOTE a srv@V\nREMOTE b srv@W\nSUBSCRIBE STOP\nSUBSCRIBE STOP\nSUBSCRIBE STOP", 5);
    engine::CKalvexDoc& other = Start("REMOTE c srv@X\nREMOTE d srv@Y", "drugi.kx");
    Tick(5);
    Calls("");
    other.Reset();
    EXPECT_THAT(Calls(""),
                ElementsAre("UnRegisterVariable X", "UnRegisterVariable Y", "Subscribe"));
    client->RegisterPlain("srv", "Z");
    EXPECT_THAT(Calls("Subscribe"), ElementsAre("Subscribe"));
}

TEST_F(ConnectionsTest, ResetReleasesVariablesAndRequests) {
    Plant("'latencyTicks': 100, 'variables': {'V': {}}");
    engine::CKalvexDoc& document = Run("REMOTE a srv@V\nLOCAL x = a", 1);
    Tick(2);
    document.Variables().Find("a")->RequestRange(value::KindHour, 1, 1);
    document.Variables().Find("a")->RequestRange(value::KindArchive, 1, 2);
    document.Variables().Find("a")->SetValue(value::CVal(1), value::KindDay);
    Calls("");
    document.Reset();
    EXPECT_THAT(Calls("Cancel"),
                ElementsAre("CancelHourReportRequest", "CancelArchiveDataRequest"));
    EXPECT_EQ(Connection().GetVarVal("V"), nullptr);
    Tick(200);
}

TEST_F(ConnectionsTest, VariableOfTwoScriptsOutlivesTheResetOfOne) {
    Plant("'variables': {'V': {'current': [{'value': 1}, {'atTick': 30, 'value': 2}]}}");
    engine::CKalvexDoc& first = Start("REMOTE a srv@V", "pierwszy.kx");
    engine::CKalvexDoc& second = Start("REMOTE b srv@V", "drugi.kx");
    Tick(10);
    first.Reset();
    Tick(30);
    EXPECT_EQ(Stored(second, "b"), "2/0");
}

// ---- definitions

TEST_F(ConnectionsTest, DefinitionsReachTheVariables) {
    Plant(
        "'latencyTicks': 5, 'variables': {'V': {'attributes': {'un': 'm3/h', 'de': 'Przepływ', "
        "'nd': 'Z1', 'fo': '%.2f', 'min': '0', 'max': '500', 'at': 4, 'rt': 20}}, "
        "'W': {'attributes': {'at': 64, 'rt': 10}}}");
    engine::CKalvexDoc& document = Start("REMOTE a srv@V");
    EXPECT_FALSE(client->Services().definitionsChanged);
    Tick(2);
    EXPECT_TRUE(client->Services().definitionsChanged);
    operands::CVariable& a = *document.Variables().Find("a");
    EXPECT_EQ(a.GetUnit(), "m3/h");
    EXPECT_EQ(text::ToUtf8(a.GetDescription()), "Przepływ");
    EXPECT_EQ(a.GetDescName(), "Z1");
    EXPECT_EQ(a.GetDispFormat(), "%.2f");
    EXPECT_EQ(a.GetMinVal(), "0");
    EXPECT_EQ(a.GetMaxVal(), "500");
    EXPECT_EQ(a.IsArchived(), 1);
    EXPECT_EQ(a.HasHourReport(), 0);
    EXPECT_EQ(a.HasDayReport(), 1);
    EXPECT_EQ(a.HasMonthReport(), 0);
    EXPECT_EQ(a.HasSpanReport(), 1);
    engine::CKalvexDoc& other = Start("REMOTE b srv@V\nREMOTE c srv@W", "drugi.kx");
    Tick(1);
    EXPECT_EQ(other.Variables().Find("b")->GetUnit(), "m3/h");
    Tick(5);
    operands::CVariable& c = *other.Variables().Find("c");
    EXPECT_EQ(c.GetUnit(), "");
    EXPECT_EQ(c.IsArchived(), 0);
    EXPECT_EQ(c.HasHourReport(), 1);
    EXPECT_EQ(c.HasDayReport(), 0);
    EXPECT_EQ(c.HasMonthReport(), 1);
    EXPECT_EQ(c.HasSpanReport(), 0);
}

TEST_F(ConnectionsTest, ArchiveBits) {
    Plant(
        "'variables': {'A': {'attributes': {'at': 2}}, 'B': {'attributes': {'at': 32}}, "
        "'C': {'attributes': {'at': 89}}}");
    engine::CKalvexDoc& document = Run("REMOTE a srv@A\nREMOTE b srv@B\nREMOTE c srv@C", 5);
    EXPECT_EQ(document.Variables().Find("a")->IsArchived(), 1);
    EXPECT_EQ(document.Variables().Find("b")->IsArchived(), 1);
    EXPECT_EQ(document.Variables().Find("c")->IsArchived(), 0);
}

TEST_F(ConnectionsTest, NamesOfTheServersVariables) {
    Plant("'connectAtTick': null, 'variables': {'Z': {}, 'A': {}}");
    EXPECT_EQ(client->GetVariableNames("srv"), (std::vector<std::string>{"Z", "A"}));
    EXPECT_EQ(client->GetVariableNames("inny"), std::nullopt);
    EXPECT_NE(client->FindConnection("srv"), nullptr);
}

}  // namespace
}  // namespace kalvex::sources
