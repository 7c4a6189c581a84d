// Alarms at a server with clients: what they are told, the journal, acknowledgement, restarts.
#include "server/StoreReader.h"
#include "server_fixture.h"
#include "value/Status.h"
#include "value/ValueText.h"

namespace kalvex::server {
namespace {

using testing::ElementsAre;
using testing::IsEmpty;

constexpr std::uint16_t kConfirmed = value::Status::ConfirmedAlarm;

std::string At(std::int64_t time) {
    return std::to_string(time);
}

class ServerAlarmsTest : public ServerTest {
  protected:
    // A configuration with X of these keys, which anybody may write and adam acknowledge.
    static std::string Plant(const std::string& keys) {
        return "[[access]]\nwrite = \"0\"\n[[variable]]\nname = \"X\"\n" + keys;
    }
    void Begin(const std::string& keys) {
        Start(Plant(keys));
        AddUser("adam", "tajne", 50);
        m_client = &LogIn("adam", "tajne");
        Subscribe(*m_client, {"X"});
        m_writer = &LogIn();
    }
    void BeginAnew() {
        Restart();
        m_writer = &LogIn("adam", "tajne");
        m_client = &LogIn("adam", "tajne");
        m_client->Say(vantrel::SubscribeRequest{{{1, "X"}}, {}, 0, true});
    }
    void Reload(const std::string& keys) {
        Configure(Plant(keys));
        m_server->Reload();
        Settle();
    }
    std::uint16_t Write(double number, std::uint16_t status = 0) {
        return Modify(m_writer == nullptr ? *m_client : *m_writer, value::KindCurrent, "X", 0,
                      support::Stamped(value::CVal(number), 0, status));
    }
    std::vector<std::uint16_t> Acknowledge(TestClient& client, std::vector<std::string> names,
                                           std::uint64_t serial = 0) {
        vantrel::AcknowledgeRequests request;
        for (std::string& name : names) {
            request.requests.push_back({++m_lastRequest, std::move(name), serial});
        }
        client.Say(std::move(request));
        Settle();
        std::map<vantrel::RequestId, std::uint16_t> results;
        for (const vantrel::ModifyResults& message : client.Take<vantrel::ModifyResults>()) {
            for (const auto& entry : message.entries) results[entry.id] = entry.result;
        }
        std::vector<std::uint16_t> ordered;
        for (const auto& [id, result] : results) ordered.push_back(result);
        return ordered;
    }
    // "variable stage began value ended acknowledged who", times since the start.
    std::vector<std::string> Journal(const AlarmChoice& choice = {}) {
        Settle();
        StoreReader reader;
        platform::Notice fault;
        EXPECT_TRUE(reader.Open(m_folder.Path("data/store.sqlite"), fault));
        const auto time = [this](const std::optional<std::int64_t>& at) {
            return at ? std::to_string(*at - m_start) : "-";
        };
        std::vector<std::string> lines;
        reader.ReadAlarms(choice, [&](const JournalAlarm& alarm) {
            lines.push_back(alarm.variable + " " + std::string(RowOf(alarm.stage).word) + " " +
                            time(alarm.began) + " " +
                            (alarm.number ? value::FormatDouble(*alarm.number) : "-") + " " +
                            time(alarm.ended) + " " + time(alarm.acknowledged) + " " +
                            (alarm.who ? alarm.who->user : "-"));
        });
        EXPECT_EQ(reader.Fault(), "");
        return lines;
    }
    std::vector<std::string> Log() { return m_log.Take(); }

    TestClient* m_client = nullptr;  // that watches
    TestClient* m_writer = nullptr;  // the same, where there is none
};

TEST_F(ServerAlarmsTest, StatusFollowsTheAlarmToItsEnd) {
    Begin("at = 2\nh = 10\nhysteresis = 1\n");
    EXPECT_EQ(Write(12.5), 0);
    EXPECT_THAT(Updates(*m_client), ElementsAre("1: 171 16388 " + At(m_start) + " 12.50"));
    Tick();
    EXPECT_THAT(Updates(*m_client), IsEmpty());
    EXPECT_THAT(Acknowledge(*m_client, {"X"}), ElementsAre(0));
    EXPECT_THAT(Updates(*m_client), ElementsAre("1: 171 12 " + At(m_start) + " 12.50"));
    Tick();
    EXPECT_EQ(Write(9), 0);
    EXPECT_THAT(Updates(*m_client), ElementsAre("1: 171 0 " + At(m_start + 2) + " 9.00"));
    EXPECT_THAT(Journal(), ElementsAre("X H 0 12.50 2 1 adam"));
    EXPECT_THAT(
        Read(*m_client, value::KindArchive, "X", 0, value::kLargestTime),
        ElementsAre("171 16388 " + At(m_start) + " 12.50", "171 12 " + At(m_start + 1) + " 12.50",
                    "171 0 " + At(m_start + 2) + " 9.00"));
    EXPECT_THAT(Log(), ElementsAre("2 Alarm X H: 12.50",
                                   "2 Alarm X potwierdzony: klient Kalvex_stacja, użytkownik adam",
                                   "2 Koniec alarmu X H: 9.00"));
}

TEST_F(ServerAlarmsTest, AlarmThatEndedIsRememberedUntilItIsAcknowledged) {
    Begin("h = 10\n");
    Write(12);
    Write(5);
    EXPECT_THAT(Updates(*m_client), ElementsAre("1: 171 16388 " + At(m_start) + " 12.00",
                                                "1: 171 16384 " + At(m_start) + " 5.00"));
    Tick();
    Write(6);
    EXPECT_THAT(Updates(*m_client), ElementsAre("1: 171 16384 " + At(m_start + 1) + " 6.00"));
    EXPECT_THAT(Acknowledge(*m_client, {"X"}), ElementsAre(0));
    EXPECT_THAT(Updates(*m_client), ElementsAre("1: 171 0 " + At(m_start + 1) + " 6.00"));
    EXPECT_THAT(Acknowledge(*m_client, {"X"}), ElementsAre(0));
    EXPECT_THAT(Updates(*m_client), IsEmpty());
    EXPECT_THAT(Journal(), ElementsAre("X H 0 12.00 0 1 adam"));
}

TEST_F(ServerAlarmsTest, ShortAlarmWithinOneMessageIsNotMissed) {
    Begin("h = 10\n");
    vantrel::ModifyRequests message;
    for (const double number : {1.0, 99.0, 2.0}) {
        message.requests.push_back(
            {++m_lastRequest, value::KindCurrent, "X", 0, value::CVal(number)});
    }
    m_client->Say(std::move(message));
    Settle();
    EXPECT_THAT(Journal(), ElementsAre("X H 0 99.00 0 - -"));
}

TEST_F(ServerAlarmsTest, StatusAloneIsToldAndArchivedWhenADelayIsOver) {
    Begin("at = 2\nh = 10\nalarm-delay = 5\n");
    Write(12);
    Updates(*m_client);
    Tick(4);
    EXPECT_THAT(Updates(*m_client), IsEmpty());
    Tick();
    EXPECT_THAT(Updates(*m_client), ElementsAre("1: 171 16388 " + At(m_start) + " 12.00"));
    EXPECT_THAT(
        Read(*m_client, value::KindArchive, "X", 0, value::kLargestTime),
        ElementsAre("171 0 " + At(m_start) + " 12.00", "171 16388 " + At(m_start + 5) + " 12.00"));
    EXPECT_THAT(Journal(), ElementsAre("X H 5 12.00 - - -"));
}

TEST_F(ServerAlarmsTest, AmountIsNotCountedTwiceBecauseOfItsAlarm) {
    Begin("at = 2\nreport = \"sum\"\nh = 10\nalarm-delay = 5\n");
    Write(12);
    Tick(6);
    EXPECT_THAT(Updates(*m_client), ElementsAre("1: 171 0 " + At(m_start) + " 12.00",
                                                "1: 171 16388 " + At(m_start) + " 12.00"));
    EXPECT_THAT(Read(*m_client, value::KindArchive, "X", 0, value::kLargestTime),
                ElementsAre("171 0 " + At(m_start) + " 12.00"));
}

TEST_F(ServerAlarmsTest, SamplesAndSignalsBearTheStatus) {
    Start(
        "[archive]\nperiod = 2\n[[access]]\nacknowledge = \"0\"\n[[variable]]\nname = \"X\"\n"
        "at = 4\nh = 6\nsignal = \"constant value=7\"\n");
    m_client = &LogIn();
    Subscribe(*m_client, {"X"});
    Tick(3);
    EXPECT_THAT(Updates(*m_client), ElementsAre("1: 171 16388 " + At(m_start + 1) + " 7.00"));
    EXPECT_THAT(Acknowledge(*m_client, {"X"}), ElementsAre(0));
    Tick();
    EXPECT_THAT(Updates(*m_client), ElementsAre("1: 171 12 " + At(m_start + 1) + " 7.00"));
    EXPECT_THAT(Read(*m_client, value::KindArchive, "X", 0, value::kLargestTime),
                ElementsAre("171 16388 " + At(m_start + 2) + " 7.00",
                            "171 12 " + At(m_start + 4) + " 7.00"));
}

TEST_F(ServerAlarmsTest, ValueThatDoesNotComeIsToldWithoutANewTime) {
    Begin("stale = 60\n");
    Tick(60);
    EXPECT_THAT(Updates(*m_client), ElementsAre("1: 255 16389 0 "));
    Write(1);
    EXPECT_THAT(Updates(*m_client), ElementsAre("1: 171 16384 " + At(m_start + 60) + " 1.00"));
    EXPECT_THAT(Journal(), ElementsAre("X STALE 60 - 60 - -"));
}

TEST_F(ServerAlarmsTest, ClockThatJumpsEndsNoDelayAndMakesNothingStale) {
    Begin("h = 10\nalarm-delay = 5\nstale = 60\n");
    Write(12);
    m_clock.SetSystemTime(m_start + 100000);
    Tick(4);
    EXPECT_THAT(Journal(), IsEmpty());
    m_clock.SetSystemTime(m_start);
    Tick();
    EXPECT_THAT(Journal(), ElementsAre("X H 1 12.00 - - -"));
}

TEST_F(ServerAlarmsTest, WithoutLimitsTheStatusIsTheClients) {
    Begin("");
    Write(12, value::Status::AlarmMem | value::Status::Alarm);
    EXPECT_THAT(Updates(*m_client), ElementsAre("1: 171 16388 " + At(m_start) + " 12.00"));
    EXPECT_THAT(Acknowledge(*m_client, {"X"}), ElementsAre(4));
    EXPECT_THAT(Journal(), IsEmpty());
    EXPECT_THAT(Log(), ElementsAre("1 Klient Kalvex_stacja, użytkownik adam: odmowa: potwierdzenie "
                                   "alarmów, zmienna X (zmienna nie ma alarmów)"));
}

TEST_F(ServerAlarmsTest, WithLimitsAlarmBitsAreTheServersAndOthersTheClients) {
    Begin("h = 10\n");
    Write(5, kAlarmBits | value::Status::SetByDevice);
    EXPECT_THAT(Updates(*m_client), ElementsAre("1: 171 16 " + At(m_start) + " 5.00"));
}

TEST_F(ServerAlarmsTest, WriterIsToldBehindTheAnswerWhatItDidNotWrite) {
    Begin("h = 10\n");
    m_client->messages.clear();
    const auto write = [this](double number, std::uint16_t status) {
        m_client->Say(
            vantrel::ModifyRequests{{{++m_lastRequest, value::KindCurrent, "X", 0,
                                      support::Stamped(value::CVal(number), 0, status)}}});
        Settle();
        std::string kinds;
        for (const vantrel::ServerMessage& message : m_client->messages) {
            if (std::holds_alternative<vantrel::ValueUpdates>(message)) kinds += "value ";
            if (std::holds_alternative<vantrel::ModifyResults>(message)) kinds += "answer ";
        }
        m_client->messages.clear();
        return kinds;
    };
    EXPECT_EQ(write(5, 0), "value answer ");
    EXPECT_EQ(write(12, 0), "value answer value ");
    EXPECT_EQ(write(13, 16388), "value answer ");
    EXPECT_EQ(write(5, 0), "value answer value ");
}

// ---- acknowledgement

TEST_F(ServerAlarmsTest, WriteOfTheStandingValueWithConfirmedAlarmAcknowledges) {
    Begin("h = 10\n");
    m_writer = &LogIn("adam", "tajne");
    Write(12);
    Updates(*m_client);
    EXPECT_EQ(Write(13, kConfirmed), 0);
    EXPECT_THAT(Updates(*m_client), ElementsAre("1: 171 16388 " + At(m_start) + " 13.00"));
    EXPECT_EQ(Write(13, kConfirmed), 0);
    EXPECT_THAT(Updates(*m_client), ElementsAre("1: 171 12 " + At(m_start) + " 13.00"));
    EXPECT_THAT(Journal(), ElementsAre("X H 0 12.00 - 0 adam"));
}

TEST_F(ServerAlarmsTest, WithoutTheRightNobodyAcknowledges) {
    Begin("h = 10\n");
    TestClient& nobody = LogIn();
    Write(12);
    m_log.Take();
    EXPECT_THAT(Acknowledge(nobody, {"X", "BRAK"}), ElementsAre(2, 1));
    EXPECT_EQ(Modify(nobody, value::KindCurrent, "X", 0,
                     support::Stamped(value::CVal(12.0), 0, kConfirmed)),
              2);
    EXPECT_EQ(Modify(nobody, value::KindCurrent, "X", 0, value::CVal(14.0)), 0);
    EXPECT_THAT(Journal(), ElementsAre("X H 0 12.00 - - -"));
    EXPECT_THAT(Log(),
                ElementsAre("1 Klient Kalvex_stacja, użytkownik NOBODY: odmowa: potwierdzenie "
                            "alarmów, zmienna X (brak prawa do potwierdzania alarmów)",
                            "1 Klient Kalvex_stacja, użytkownik NOBODY: odmowa: potwierdzenie "
                            "alarmów, zmienna BRAK (nie ma takiej zmiennej)",
                            "1 Klient Kalvex_stacja, użytkownik NOBODY: odmowa: zapis CURDATA, "
                            "zmienna X (brak prawa do potwierdzania alarmów)"));
}

TEST_F(ServerAlarmsTest, HiddenVariableIsAnsweredAsOneThatIsNotThere) {
    Start(
        "[[access]]\nread = \"90\"\nwrite = \"0\"\nacknowledge = \"90\"\n[[variable]]\n"
        "name = \"X\"\nh = 10\n");
    m_client = &LogIn();
    Write(12);
    EXPECT_THAT(Acknowledge(*m_client, {"X", "BRAK"}), ElementsAre(1, 1));
    EXPECT_EQ(Log().at(1),
              "1 Klient Kalvex_stacja, użytkownik NOBODY: odmowa: potwierdzenie alarmów, zmienna X "
              "(brak prawa do odczytu i potwierdzania alarmów)");
}

TEST_F(ServerAlarmsTest, AcknowledgementThatIsSentAgainAcknowledgesNothingNew) {
    Begin("h = 10\n");
    m_writer = nullptr;
    m_client = &Connect();
    vantrel::LoginRequest login;
    login.moduleType = 23;
    login.user = "adam";
    login.password = "tajne";
    login.token = "t";
    m_client->Say(std::move(login));
    while (m_client->messages.empty()) m_loop.WaitAndRun();
    m_client->messages.clear();
    Write(12);
    EXPECT_THAT(Acknowledge(*m_client, {"X"}, 7), ElementsAre(0));
    Write(5);
    Write(12);
    EXPECT_THAT(Acknowledge(*m_client, {"X"}, 7), ElementsAre(0));
    EXPECT_THAT(Journal(), ElementsAre("X H 0 12.00 0 0 adam", "X H 0 12.00 - - -"));
}

TEST_F(ServerAlarmsTest, StageThatIsLessSevereKeepsTheAcknowledgement) {
    Begin("h = 10\nhh = 20\n");
    Write(25);
    Tick();
    Acknowledge(*m_client, {"X"});
    Tick();
    Write(15);
    Write(25);
    EXPECT_THAT(Journal(),
                ElementsAre("X HH 0 25.00 2 1 adam", "X H 2 15.00 2 1 adam", "X HH 2 25.00 - - -"));
}

// ---- over a restart and a reload

TEST_F(ServerAlarmsTest, AlarmsOutlastARestart) {
    Begin("h = 10\nhysteresis = 5\n");
    Write(12);
    Acknowledge(*m_client, {"X"});
    Write(8);
    BeginAnew();
    EXPECT_THAT(Updates(*m_client), ElementsAre("1: 171 12 " + At(m_start) + " 8.00"));
    Tick(2);
    EXPECT_THAT(Updates(*m_client), IsEmpty());
    Write(5);
    EXPECT_THAT(Updates(*m_client), ElementsAre("1: 171 0 " + At(m_start + 2) + " 5.00"));
    Write(30);
    Write(4);
    BeginAnew();
    EXPECT_THAT(Updates(*m_client), ElementsAre("1: 171 16384 " + At(m_start + 2) + " 4.00"));
    Acknowledge(*m_client, {"X"});
    EXPECT_THAT(Journal(), ElementsAre("X H 0 12.00 2 0 adam", "X H 2 30.00 2 2 adam"));
}

TEST_F(ServerAlarmsTest, ChangedLimitsCountWithTheNextLook) {
    Begin("h = 10\n");
    Write(12);
    m_log.Take();
    Reload("h = 10\nhh = 11\n");
    Tick();
    Reload("h = 15\n");
    Tick();
    EXPECT_THAT(Journal(), ElementsAre("X H 0 12.00 1 - -", "X HH 1 12.00 2 - -"));
    EXPECT_THAT(Updates(*m_client).back(), "1: 171 16384 " + At(m_start) + " 12.00");
}

TEST_F(ServerAlarmsTest, RemovedLimitsEndTheAlarmWhichWaitsOn) {
    Begin("h = 10\n");
    Write(12);
    Tick();
    m_log.Take();
    Reload("");
    Tick();
    EXPECT_EQ(Log().at(0), "2 Koniec alarmu X H: 12.00");
    EXPECT_THAT(Journal(), ElementsAre("X H 0 12.00 1 - -"));
    Write(13);
    EXPECT_THAT(Updates(*m_client).back(), "1: 171 16384 " + At(m_start + 2) + " 13.00");
    EXPECT_THAT(Acknowledge(*m_client, {"X"}), ElementsAre(0));
    EXPECT_THAT(Updates(*m_client), ElementsAre("1: 171 0 " + At(m_start + 2) + " 13.00"));
    Write(14, value::Status::Alarm);
    EXPECT_THAT(Updates(*m_client), ElementsAre("1: 171 4 " + At(m_start + 2) + " 14.00"));
}

TEST_F(ServerAlarmsTest, VariableThatIsTakenOutEndsItsAlarm) {
    Begin("h = 10\n");
    Write(12);
    Configure("[[variable]]\nname = \"Y\"\n");
    m_server->Reload();
    Tick();
    EXPECT_THAT(Journal(), ElementsAre("X H 0 12.00 0 - -"));
    Reload("h = 10\n");
    Tick();
    EXPECT_THAT(Journal(), ElementsAre("X H 0 12.00 0 - -", "X H 2 12.00 - - -"));
}

// ---- the journal

TEST_F(ServerAlarmsTest, JournalIsKeptAsLongAsTheArchive) {
    Begin("h = 10\n[archive]\nkeep-days = 1\n");
    Write(12);
    Write(5);
    Acknowledge(*m_client, {"X"});
    Write(13);
    Write(5);
    Write(14);
    Write(5);
    Write(15);
    Write(5);
    const auto pass = [this](std::int64_t seconds) {
        m_clock.Advance(seconds * 1000);
        Tick();
        return Journal();
    };
    const char* const latest = "X H 0 15.00 0 - -";
    EXPECT_THAT(pass(86399), ElementsAre("X H 0 12.00 0 0 adam", "X H 0 13.00 0 - -",
                                         "X H 0 14.00 0 - -", latest));
    EXPECT_THAT(pass(0), ElementsAre(latest));
    Write(16);
    EXPECT_THAT(pass(std::int64_t{2} * 86400), ElementsAre("X H 86401 16.00 - - -"));
}

TEST_F(ServerAlarmsTest, JournalIsReadByNameTimeAndState) {
    Start(
        "[[access]]\nwrite = \"0\"\nacknowledge = \"0\"\n[[variable]]\nname = \"X\"\nh = 10\n"
        "[[variable]]\nname = \"Y\"\nl = 0\n");
    m_client = &LogIn();
    Write(12);
    Tick();
    Modify(*m_client, value::KindCurrent, "Y", 0, value::CVal(-1.0));
    Tick();
    Write(5);
    Acknowledge(*m_client, {"X"});
    const std::string x = "X H 0 12.00 2 2 NOBODY";
    const std::string y = "Y L 1 -1.00 - - -";
    EXPECT_THAT(Journal(), ElementsAre(x, y));
    EXPECT_THAT(Journal({.variables = "?Y*"}), IsEmpty());
    EXPECT_THAT(Journal({.variables = "Y*"}), ElementsAre(y));
    EXPECT_THAT(Journal({.active = true}), ElementsAre(y));
    EXPECT_THAT(Journal({.from = m_start + 1}), ElementsAre(y));
    EXPECT_THAT(Journal({.to = m_start}), ElementsAre(x));
}

// ---- a flood

TEST_F(ServerAlarmsTest, TenThousandAlarmsInASecondAreStoredAndTold) {
    constexpr std::size_t kMany = 10000;
    std::string toml = "[[access]]\nwrite = \"0\"\nacknowledge = \"0\"\n";
    std::vector<std::string> names;
    for (std::size_t index = 0; index < kMany; ++index) {
        names.push_back("Z" + std::to_string(index));
        toml += "[[variable]]\nname = \"" + names.back() + "\"\nat = 2\nh = 10\n";
    }
    Start(toml);
    m_client = &LogIn();
    TestClient& watcher = LogIn();
    Subscribe(watcher, names);
    vantrel::ModifyRequests message;
    for (const std::string& name : names) {
        message.requests.push_back(
            {++m_lastRequest, value::KindCurrent, name, 0, value::CVal(12.0)});
    }
    m_client->Say(std::move(message));
    Settle();
    std::size_t done = 0;
    for (const vantrel::ModifyResults& results : m_client->Take<vantrel::ModifyResults>()) {
        for (const auto& entry : results.entries) done += entry.result == 0 ? 1 : 0;
    }
    EXPECT_EQ(done, kMany);
    const std::vector<std::string> updates = Updates(watcher);
    EXPECT_EQ(updates.size(), kMany);
    EXPECT_EQ(updates.back(), At(kMany) + ": 171 16388 " + At(m_start) + " 12.00");
    const std::vector<std::string> journal = Journal();
    EXPECT_EQ(journal.size(), kMany);
    EXPECT_EQ(journal.back(), "Z9999 H 0 12.00 - - -");
    Tick();
    const std::vector<std::string> log = Log();
    ASSERT_EQ(log.size(), PlantAlarms::kLinesASecond + 1);
    EXPECT_EQ(log.front(), "2 Alarm Z0 H: 12.00");
    EXPECT_EQ(log.back(), "2 Alarmy bez wierszy w logu: początków 9980, końców 0, potwierdzeń 0");
    EXPECT_EQ(Acknowledge(*m_client, names), std::vector<std::uint16_t>(kMany, 0));
    EXPECT_EQ(Updates(watcher).size(), kMany);
    EXPECT_THAT(Journal({.active = true}).size(), kMany);
    Tick(2);
    EXPECT_EQ(Log().back(), "2 Alarmy bez wierszy w logu: początków 0, końców 0, potwierdzeń 9980");
}

}  // namespace
}  // namespace kalvex::server
