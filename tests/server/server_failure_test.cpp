// The server while its store cannot be written: what was recorded comes into the archives when that
// is over, and what did not fit is a gap that the reports know.
#include "hand_pause.h"
#include "server_fixture.h"
#include "value/LocalTimeText.h"
#include "value/Status.h"

namespace kalvex::server {
namespace {

using testing::ElementsAre;
using testing::IsEmpty;

std::string At(std::int64_t time) {
    return std::to_string(time);
}

std::string Refused(const std::string& order, const std::string& reason) {
    return "1 Klient Kalvex_stacja, użytkownik NOBODY: odmowa: " + order + ", zmienna X " + reason;
}

std::string Recovered(std::int64_t operations) {
    return "1 Dane znów są zapisywane, czekało operacji " + std::to_string(operations);
}

constexpr const char* kPlant =
    "[archive]\nperiod = 600\n[reports]\nautomatic = [\"hour\"]\n[[access]]\nwrite = \"0\"\n"
    "[[variable]]\nname = \"X\"\nat = 2\nrt = 2\nvalue = 1\n"
    "[[variable]]\nname = \"S\"\nat = 4\nrt = 2\nvalue = 5\n"
    "[[variable]]\nname = \"A\"\nat = 4\nrt = 2\nreport = \"sum\"\nvalue = 3\n";

// The clock stands at 7:00.
class ServerFailureTest : public ServerTest {
  protected:
    ServerFailureTest() { m_storeSettings.pause = m_pause; }
    ~ServerFailureTest() override { m_pause->Free(); }

    // A store of another program holds the lock of the file.
    void Block() {
        ASSERT_TRUE(m_other.Open(m_folder.Path("data/store.sqlite")));
        ASSERT_TRUE(m_other.Execute("BEGIN IMMEDIATE"));
    }

    // Nothing can be written from 7:10:01 on, and little may wait; the second of the first loss.
    std::int64_t StartAndLoseValues() {
        m_storeSettings.limits = {.clients = 1, .urgent = 3000, .background = 1'000'000};
        Start(kPlant);
        Tick();
        TickOnce(599);
        Block();
        TickBlocked(1);
        AwaitFailure();
        EXPECT_THAT(m_log.Take(), ElementsAre("1 Błąd zapisu danych (database is locked)"));
        while (m_log.lines.empty()) TickBlocked(1);
        EXPECT_THAT(m_log.Take(), ElementsAre("1 Zbyt wiele danych czeka na zapis, wartości "
                                              "archiwalne przepadają"));
        return m_clock.Now();
    }

    // The log since the last look at it.
    std::vector<std::string> Unblock() {
        EXPECT_TRUE(m_other.Execute("COMMIT"));
        m_pause->Free();
        Settle();
        return m_log.Take();
    }

    // Seconds in which nothing can be written.
    void TickBlocked(std::int64_t seconds) {
        for (std::int64_t second = 0; second < seconds; ++second) {
            m_clock.Advance(1000);
            m_server->Tick();
            m_loop.Run();
        }
    }

    // One step, so many seconds later.
    void TickOnce(std::int64_t seconds) {
        m_clock.Advance((seconds - 1) * 1000);
        Tick();
    }

    // Waits until the writer has failed, and does what it has posted.
    void AwaitFailure() {
        m_pause->Await(1);
        m_loop.Run();
    }

    void WriteCurrent(TestClient& client, double number) {
        client.Say(vantrel::ModifyRequests{
            {{++m_lastRequest, value::KindCurrent, "X", 0, value::CVal(number)}}});
    }

    std::vector<std::string> Results(TestClient& client) {
        std::vector<std::string> lines;
        for (const vantrel::ModifyResults& results : client.Take<vantrel::ModifyResults>()) {
            for (const auto& [id, result] : results.entries) {
                lines.push_back(std::to_string(id) + ": " + std::to_string(result));
            }
        }
        return lines;
    }

    std::vector<std::string> Archive(const char* variable) {
        return Read(LogIn(), value::KindArchive, variable, 0, value::kLargestTime);
    }

    // The report of the hour that began then.
    std::vector<std::string> Hour(const char* variable, std::int64_t hour) {
        return Read(LogIn(), value::KindHour, variable, hour, hour);
    }

    std::shared_ptr<HandPause> m_pause = std::make_shared<HandPause>();
    platform::SqliteDatabase m_other;
};

TEST_F(ServerFailureTest, OutageOverTheEndOfAnHourCostsNothing) {
    Start(kPlant);
    Tick();
    TestClient& client = LogIn();
    m_clock.Advance(3580 * 1000);
    Tick();
    Block();
    TickBlocked(4);
    AwaitFailure();
    WriteCurrent(client, 7);
    TickBlocked(30);
    WriteCurrent(client, 9);
    EXPECT_THAT(Results(client), IsEmpty());
    EXPECT_THAT(m_log.Take(), ElementsAre("1 Błąd zapisu danych (database is locked)"));
    const std::int64_t last = m_clock.Now();
    EXPECT_THAT(Unblock(), ElementsAre(Recovered(78)));
    EXPECT_THAT(Results(client), ElementsAre("1: 0", "2: 0"));
    Tick(2);
    EXPECT_THAT(Archive("X"), ElementsAre("171 0 " + At(m_start) + " 1.00",
                                          "171 0 " + At(m_start + 3586) + " 7.00",
                                          "171 0 " + At(last) + " 9.00"));
    EXPECT_THAT(Archive("S"), ElementsAre("171 0 " + At(m_start + 3582) + " 5.00",
                                          "171 0 " + At(m_start + 3600) + " 5.00"));
    // 1 for 3586 seconds, 7 for 14.
    EXPECT_THAT(Hour("X", m_start), ElementsAre("171 128 " + At(m_start) + " 1.0233333333333334"));
}

TEST_F(ServerFailureTest, WriteIsConfirmedWhenItIsOnDisk) {
    Start(kPlant);
    Tick();
    TestClient& client = LogIn();
    Subscribe(client, {"X"});
    Block();
    WriteCurrent(client, 7);
    AwaitFailure();
    EXPECT_THAT(Updates(client), ElementsAre("1: 171 0 " + At(m_start + 1) + " 7.00"));
    EXPECT_THAT(Results(client), IsEmpty());
    Unblock();
    EXPECT_THAT(Results(client), ElementsAre("1: 0"));
}

TEST_F(ServerFailureTest, ReadThatCannotSeeWhatWaitsFails) {
    Start(kPlant);
    Tick();
    TestClient& client = LogIn();
    Block();
    TickBlocked(1);
    client.Say(vantrel::ReadRequests{{{1, value::KindArchive, "X", 0, value::kLargestTime}}});
    m_pause->Allow(5);
    m_pause->Await(6);
    while (client.messages.empty()) m_loop.WaitAndRun();
    EXPECT_EQ(client.Take<vantrel::ReadAnswer>().at(0).result, vantrel::ResultServerFault);
    Unblock();
    EXPECT_EQ(Archive("X").size(), 1u);
}

// Behind the first bound clients are refused, behind the second values are lost.
TEST_F(ServerFailureTest, ClientsAreRefusedBeforeAnythingIsLost) {
    m_storeSettings.limits = {.clients = 1, .urgent = 1'000'000, .background = 1'000'000};
    Start(kPlant);
    Tick();
    TestClient& client = LogIn();
    Subscribe(client, {"X"});
    Block();
    TickBlocked(1);
    AwaitFailure();
    m_log.Take();
    client.messages.clear();
    WriteCurrent(client, 7);
    client.Say(vantrel::ModifyRequests{{{2, value::KindHour, "X", m_start, value::CVal(7)}}});
    client.Say(vantrel::ArchiveModifyRequest{3, "X", 5, 5, {support::Stamped(value::CVal(3), 5)}});
    client.Say(vantrel::PeriodRequest{vantrel::PeriodAction::Init, value::KindHour, "X", m_start});
    EXPECT_THAT(Results(client), ElementsAre("1: 5", "2: 5", "3: 5"));
    EXPECT_THAT(Updates(client), ElementsAre("1: 171 0 " + At(m_start) + " 1.00"));
    EXPECT_THAT(m_log.Take(),
                ElementsAre("1 Zbyt wiele danych czeka na zapis, zapisy klientów są odrzucane",
                            Refused("zapis CURDATA", "(zbyt wiele danych czeka na zapis)"),
                            Refused("zapis HREP", "(zbyt wiele danych czeka na zapis)"),
                            Refused("zapis ARCH",
                                    "(zbyt wiele danych czeka na zapis, nie przyjęto żadnej "
                                    "z wartości: 1)"),
                            Refused("rozpoczęcie HREP", "(zbyt wiele danych czeka na zapis)")));
    TickBlocked(700);
    EXPECT_THAT(Unblock(), ElementsAre(Recovered(1408)));
    EXPECT_EQ(Archive("S").size(), 1u);
    EXPECT_EQ(Modify(client, value::KindCurrent, "X", 0, value::CVal(8)), vantrel::ResultOk);
    EXPECT_THAT(m_log.Take(), IsEmpty());
}

// Around the bound some writes are taken and some are not.
TEST_F(ServerFailureTest, RefusingIsToldOnceUntilAllIsWritten) {
    const std::string told = "1 Zbyt wiele danych czeka na zapis, zapisy klientów są odrzucane";
    const std::string refused = Refused("zapis CURDATA", "(zbyt wiele danych czeka na zapis)");
    m_storeSettings.limits = {.clients = 1, .urgent = 1'000'000, .background = 1'000'000};
    Start(kPlant);
    Tick();
    TestClient& client = LogIn();
    const auto writeTwo = [&] {
        m_log.Take();
        Block();
        WriteCurrent(client, 7);
        WriteCurrent(client, 8);
        std::vector<std::string> lines = m_log.Take();
        Unblock();
        return lines;
    };
    EXPECT_THAT(writeTwo(), ElementsAre(told, refused));
    EXPECT_THAT(writeTwo(), IsEmpty());
    Tick();
    EXPECT_THAT(writeTwo(), ElementsAre(told));
}

TEST_F(ServerFailureTest, RefusedWriteMayComeAgain) {
    m_storeSettings.limits = {.clients = 1, .urgent = 1'000'000, .background = 1'000'000};
    Start(kPlant);
    Tick();
    TestClient& client = Connect();
    vantrel::LoginRequest login;
    login.clientName = "Kalvex_stacja";
    login.token = "t";
    client.Say(std::move(login));
    const auto write = [&client] {
        client.Say(
            vantrel::ModifyRequests{{{1, value::KindCurrent, "X", 0, value::CVal(7), 1},
                                     {2, value::KindCurrent, "NIE_MA", 0, value::CVal(7), 2}}});
    };
    Block();
    TickBlocked(1);
    AwaitFailure();
    write();
    EXPECT_THAT(Results(client), ElementsAre("1: 5", "2: 1"));
    Unblock();
    write();
    Settle();
    EXPECT_THAT(Results(client), ElementsAre("2: 1", "1: 0"));
    write();
    EXPECT_THAT(Results(client), ElementsAre("1: 0", "2: 1"));
}

// S is sampled every ten minutes and A is a sum of such samples; X does not change.
TEST_F(ServerFailureTest, WhatIsLostIsCountedAndAGapInArchiveAndReports) {
    const std::int64_t first = StartAndLoseValues();
    EXPECT_LT(first, m_start + 1200);
    TickBlocked(m_start + 4200 - first);
    EXPECT_THAT(Unblock(), ElementsAre(Recovered(2 * (first - m_start - 601))));
    Tick();
    EXPECT_THAT(m_log.Take(),
                ElementsAre("1 Przepadło wartości 12 od " + value::FormatLocalTime(first) +
                            " do 2024-03-10 08:10:00"));
    TickOnce(599);
    for (int sample = 0; sample < 5; ++sample) TickOnce(600);
    EXPECT_THAT(Archive("X"), ElementsAre("171 0 " + At(m_start) + " 1.00"));
    std::vector<std::string> values = Archive("S");
    values.resize(3);
    EXPECT_THAT(values, ElementsAre("171 0 " + At(m_start + 600) + " 5.00",
                                    "255 1 " + At(m_start + 1200) + " ",
                                    "171 0 " + At(m_start + 4201) + " 5.00"));
    values = Archive("A");
    values.resize(3);
    EXPECT_THAT(values, ElementsAre("171 0 " + At(m_start + 600) + " 3.00",
                                    "255 1 " + At(m_start + 1200) + " ",
                                    "255 1 " + At(m_start + 3600) + " "));
    const std::int64_t next = m_start + 3600;
    EXPECT_THAT(Hour("X", m_start), ElementsAre("171 128 " + At(m_start) + " 1.00"));
    EXPECT_THAT(Hour("S", m_start), ElementsAre("171 192 " + At(m_start) + " 5.00"));
    EXPECT_THAT(Hour("S", next), ElementsAre("171 192 " + At(next) + " 5.00"));
    EXPECT_THAT(Hour("A", m_start), ElementsAre("171 192 " + At(m_start) + " 3.00"));
    EXPECT_THAT(Hour("A", next), ElementsAre("171 192 " + At(next) + " 12.00"));
}

// What was lost at the end is unknown at the next start.
TEST_F(ServerFailureTest, EndTellsWhatCouldNotBeWritten) {
    const std::int64_t first = StartAndLoseValues();
    TickBlocked(m_start + 1800 - first);
    m_pause->Free();
    m_server->Stop();
    const std::vector<std::string> lines = m_log.Take();
    ASSERT_EQ(lines.size(), 3u);
    EXPECT_EQ(lines[0], "1 Przepadło wartości 4 od " + value::FormatLocalTime(first) +
                            " do 2024-03-10 07:30:00");
    EXPECT_EQ(lines[1], "1 Nie zapisano operacji " + At(2 * (first - m_start - 601)) +
                            " (database is locked)");
    EXPECT_EQ(lines[2], "0 Zatrzymanie serwera sorvaned");
    ASSERT_TRUE(m_other.Execute("COMMIT"));
    m_storeSettings.limits = {};
    Restart();
    EXPECT_THAT(Archive("S"), ElementsAre("171 0 " + At(m_start + 600) + " 5.00",
                                          "255 1 " + At(m_start + 601) + " ",
                                          "171 0 " + At(m_start + 1800) + " 5.00"));
}

}  // namespace
}  // namespace kalvex::server
