// The server through time: signals, archives, automatic reports, restarts, changes of
// configuration.
#include <sys/stat.h>
#include <unistd.h>

#include "server_fixture.h"
#include "value/Status.h"

namespace kalvex::server {
namespace {

using testing::ElementsAre;
using testing::IsEmpty;

std::string At(std::int64_t time) {
    return std::to_string(time);
}

TEST_F(ServerTest, SignalsMoveOnceASecond) {
    Start(
        "[[variable]]\nname = \"X\"\nsignal = \"ramp from=0 to=100 period=100\"\n"
        "[[variable]]\nname = \"C\"\ntype = \"int\"\nsignal = \"counter rate=0.5\"\n"
        "[[variable]]\nname = \"K\"\nsignal = \"constant value=7\"\n");
    TestClient& client = LogIn();
    Subscribe(client, {"X", "C", "K"});
    const std::int64_t position = m_start % 100;
    Tick();
    EXPECT_THAT(
        Updates(client),
        ElementsAre("1: 171 0 " + At(m_start + 1) + " " + std::to_string(position + 1) + ".00",
                    "2: 150 0 " + At(m_start + 1) + " 0", "3: 171 0 " + At(m_start + 1) + " 7.00"));
    m_server->Tick();
    EXPECT_THAT(Updates(client), IsEmpty());
    Tick(2);
    const std::vector<std::string> updates = Updates(client);
    ASSERT_EQ(updates.size(), 3u);
    EXPECT_EQ(updates[2], "2: 150 0 " + At(m_start + 3) + " 1");
}

TEST_F(ServerTest, CurrentValuesOutlastARestart) {
    Start(
        "[[access]]\nwrite = \"0\"\n"
        "[[variable]]\nname = \"X\"\n[[variable]]\nname = \"T\"\ntype = \"text\"\n"
        "[[variable]]\nname = \"V\"\nvalue = 3\n"
        "[[variable]]\nname = \"C\"\nsignal = \"counter rate=1 start=100\"\n");
    TestClient* client = &LogIn();
    Modify(*client, value::KindCurrent, "X", 0, support::Stamped(value::CVal(1.5), 0, 4));
    Modify(*client, value::KindCurrent, "T", 0, value::CVal(text::FromUtf8("zażółć")));
    Modify(*client, value::KindCurrent, "V", 0, value::CVal(8));
    Tick(3);
    End();
    m_clock.Advance(100000);
    Restart();
    client = &LogIn();
    client->Say(vantrel::SubscribeRequest{{{1, "X"}, {2, "T"}, {3, "V"}, {4, "C"}}, {}, 0, true});
    EXPECT_THAT(Updates(*client), ElementsAre("1: 171 4 " + At(m_start) + " 1.50",
                                              "2: 190 0 " + At(m_start) + " zażółć",
                                              "3: 171 0 " + At(m_start) + " 8.00",
                                              "4: 171 0 " + At(m_start + 3) + " 102.00"));
    Tick();
    EXPECT_THAT(Updates(*client), IsEmpty());
    Tick();
    EXPECT_THAT(Updates(*client), ElementsAre("4: 171 0 " + At(m_clock.Now()) + " 103.00"));
}

TEST_F(ServerTest, SignalsAreSavedWhileTheServerRunsAndWritesAtOnce) {
    Start(
        "[server]\nsave-period = 5\n[[access]]\nwrite = \"0\"\n[[variable]]\nname = \"X\"\n"
        "[[variable]]\nname = \"S\"\nsignal = \"constant value=7\"\n");
    const auto saved = [this](const char* name) {
        platform::SqliteDatabase database;
        platform::SqliteStatement select;
        EXPECT_TRUE(database.Open(m_folder.Path("data/store.sqlite")));
        EXPECT_TRUE(select.Prepare(database,
                                   "SELECT value FROM last_values JOIN variables ON id = variable "
                                   "WHERE name = ?"));
        select.BindText(1, name);
        return select.Next() ? select.Real(0) : 0;
    };
    Modify(LogIn(), value::KindCurrent, "X", 0, value::CVal(1.5));
    EXPECT_EQ(saved("X"), 1.5);
    Tick(4);
    EXPECT_EQ(saved("S"), 0);
    Tick();
    EXPECT_EQ(saved("S"), 7);
}

TEST_F(ServerTest, ChangesAreArchivedWithBitTwo) {
    Start(
        "[[access]]\nwrite = \"0\"\n"
        "[[variable]]\nname = \"X\"\nat = 2\n[[variable]]\nname = \"Y\"\nat = 32\n"
        "[[variable]]\nname = \"S\"\nat = 2\nsignal = \"square low=0 high=1 period=4\"\n");
    TestClient& client = LogIn();
    Modify(client, value::KindCurrent, "X", 0, value::CVal(1));
    Modify(client, value::KindCurrent, "Y", 0, value::CVal(1));
    Tick();
    Modify(client, value::KindCurrent, "X", 0, support::Stamped(value::CVal(2), 0, 4));
    Tick(8);
    EXPECT_THAT(
        Read(client, value::KindArchive, "X", 0, value::kLargestTime),
        ElementsAre("171 0 " + At(m_start) + " 1.00", "171 4 " + At(m_start + 1) + " 2.00"));
    EXPECT_THAT(Read(client, value::KindArchive, "Y", 0, value::kLargestTime), IsEmpty());
    // The hour begins a period of 4 s: high at 1, low from 2, high from 4, low from 6, high from 8.
    EXPECT_THAT(
        Read(client, value::KindArchive, "S", 0, value::kLargestTime),
        ElementsAre("171 0 " + At(m_start + 1) + " 1.00", "171 0 " + At(m_start + 2) + " 0.00",
                    "171 0 " + At(m_start + 4) + " 1.00", "171 0 " + At(m_start + 6) + " 0.00",
                    "171 0 " + At(m_start + 8) + " 1.00"));
}

TEST_F(ServerTest, SamplesAreArchivedWithBitFour) {
    Start(
        "[archive]\nperiod = 10\n[[variable]]\nname = \"X\"\nat = 4\nvalue = 5\n"
        "[[variable]]\nname = \"U\"\nat = 4\n");
    TestClient& client = LogIn();
    Tick(25);
    EXPECT_THAT(
        Read(client, value::KindArchive, "X", 0, value::kLargestTime),
        ElementsAre("171 0 " + At(m_start + 10) + " 5.00", "171 0 " + At(m_start + 20) + " 5.00"));
    EXPECT_THAT(Read(client, value::KindArchive, "U", 0, value::kLargestTime),
                ElementsAre("255 1 " + At(m_start + 10) + " ", "255 1 " + At(m_start + 20) + " "));
}

TEST_F(ServerTest, TimeWithoutAServerIsUnknownInTheArchive) {
    Start(
        "[[access]]\nwrite = \"0\"\n[[variable]]\nname = \"X\"\nat = 2\n"
        "[[variable]]\nname = \"Y\"\nat = 32\n");
    Modify(LogIn(), value::KindCurrent, "X", 0, value::CVal(1));
    Tick(3);
    ModifyArchive(LogIn(), "Y", {support::Stamped(value::CVal(1), m_start)});
    End();
    m_clock.Advance(100000);
    Restart();
    EXPECT_THAT(Read(LogIn(), value::KindArchive, "X", 0, value::kLargestTime),
                ElementsAre("171 0 " + At(m_start) + " 1.00", "255 1 " + At(m_start + 4) + " ",
                            "171 0 " + At(m_start + 103) + " 1.00"));
    EXPECT_THAT(Read(LogIn(), value::KindArchive, "Y", 0, value::kLargestTime),
                ElementsAre("171 0 " + At(m_start) + " 1.00"));
}

// Amounts of 3 at 7:10; away from 7:10:02 to 8:05.
TEST_F(ServerTest, TimeWithoutAServerIsMissingInTheSumOfEachHour) {
    Start(
        "[[access]]\nwrite = \"0\"\n"
        "[[variable]]\nname = \"X\"\nat = 2\nrt = 2\nreport = \"sum\"\n");
    m_clock.Advance(600 * 1000);
    Modify(LogIn(), value::KindCurrent, "X", 0, value::CVal(3));
    Tick();
    End();
    m_clock.Advance(3299 * 1000);
    Restart();
    const std::int64_t next = m_start + 3600;
    EXPECT_THAT(Read(LogIn(), value::KindArchive, "X", 0, value::kLargestTime),
                ElementsAre("171 0 " + At(m_start + 600) + " 3.00",
                            "255 1 " + At(m_start + 602) + " ", "255 1 " + At(next) + " "));
    Modify(LogIn(), value::KindCurrent, "X", 0, value::CVal(4));
    m_clock.Advance(3600 * 1000);
    Order(LogIn(), vantrel::PeriodAction::Load, value::KindHour, "X", m_start);
    Order(LogIn(), vantrel::PeriodAction::Load, value::KindHour, "X", next);
    EXPECT_THAT(Read(LogIn(), value::KindHour, "X", 0, value::kLargestTime),
                ElementsAre("171 192 " + At(m_start) + " 3.00", "171 192 " + At(next) + " 4.00"));
}

TEST_F(ServerTest, QuickRestartLeavesNoGap) {
    Start("[[access]]\nwrite = \"0\"\n[[variable]]\nname = \"X\"\nat = 2\n");
    Modify(LogIn(), value::KindCurrent, "X", 0, value::CVal(1));
    Tick();
    m_clock.Advance(1000);
    Restart();
    EXPECT_EQ(Read(LogIn(), value::KindArchive, "X", 0, value::kLargestTime).size(), 1u);
}

// Without its polite end.
TEST_F(ServerTest, SignOfLifeIsWrittenWhenNothingElseIs) {
    Start("[[access]]\nwrite = \"0\"\n[[variable]]\nname = \"X\"\nat = 2\nvalue = 1\n");
    Tick(30);
    m_server.reset();
    m_clock.Advance(1000);
    Restart();
    EXPECT_THAT(Read(LogIn(), value::KindArchive, "X", 0, value::kLargestTime),
                ElementsAre("171 0 " + At(m_start) + " 1.00"));
}

TEST_F(ServerTest, OldArchiveValuesGo) {
    Start(
        "[archive]\nkeep-days = 1\n[[access]]\nwrite = \"0\"\n"
        "[[variable]]\nname = \"X\"\nat = 32\n");
    TestClient& client = LogIn();
    ModifyArchive(client, "X",
                  {support::Stamped(value::CVal(1), m_start - 86401),
                   support::Stamped(value::CVal(2), m_start - 86400),
                   support::Stamped(value::CVal(3), m_start - 86398)});
    Tick();
    EXPECT_THAT(Read(client, value::KindArchive, "X", 0, value::kLargestTime),
                ElementsAre("171 0 " + At(m_start - 86400) + " 2.00",
                            "171 0 " + At(m_start - 86398) + " 3.00"));
}

TEST_F(ServerTest, EachGroupOfVariablesIsKeptForItsTime) {
    Start(
        "[archive]\nkeep-days = 1\n[[access]]\nwrite = \"0\"\n"
        "[[retention]]\nvariables = \"G.*\"\nkeep-days = 3\nreports-keep-days = 2\n"
        "[[retention]]\nvariables = \"G.X\"\nkeep-days = 1\n"
        "[[variable]]\nname = \"G.X\"\nat = 32\nrt = 6\n"
        "[[variable]]\nname = \"X\"\nat = 32\nrt = 6\n");
    TestClient& client = LogIn();
    const std::int64_t day = value::MakeLocalTime({2024, 3, 7});
    for (const char* name : {"G.X", "X"}) {
        ModifyArchive(client, name,
                      {support::Stamped(value::CVal(1), m_start - 4 * 86400),
                       support::Stamped(value::CVal(2), m_start - 2 * 86400),
                       support::Stamped(value::CVal(3), m_start)});
        Modify(client, value::KindHour, name, m_start - 3 * 86400, value::CVal(4));
        Modify(client, value::KindHour, name, m_start - 86400, value::CVal(5));
        Modify(client, value::KindDay, name, day, value::CVal(6));
    }
    Tick(2);
    const auto count = [&](value::ValueKind kind, const char* name) {
        return Read(client, kind, name, 0, value::kLargestTime).size();
    };
    EXPECT_EQ(count(value::KindArchive, "G.X"), 3u);  // the oldest holds until the second
    EXPECT_EQ(count(value::KindHour, "G.X"), 1u);
    EXPECT_EQ(count(value::KindDay, "G.X"), 0u);
    EXPECT_EQ(count(value::KindArchive, "X"), 2u);
    EXPECT_EQ(count(value::KindHour, "X"), 2u);
    EXPECT_EQ(count(value::KindDay, "X"), 1u);
}

// ---- automatic reports

// The clock stands at 7:00; the archive has 10 from 6:30, 20 from 7:15.
TEST_F(ServerTest, ReportsAreComputedAtTheEndOfTheirPeriods) {
    Start(
        "[reports]\nday-start = 8\nautomatic = [\"hour\", \"day\"]\n[[access]]\nwrite = \"0\"\n"
        "[[variable]]\nname = \"X\"\nat = 32\nrt = 6\n[[variable]]\nname = \"Y\"\nat = 32\nrt = "
        "4\n");
    TestClient& client = LogIn();
    Subscribe(client, {"X"});
    ModifyArchive(client, "X",
                  {support::Stamped(value::CVal(10), m_start - 1800),
                   support::Stamped(value::CVal(20), m_start + 900)});
    Tick();
    m_clock.Advance(3597 * 1000);
    Tick();
    EXPECT_THAT(Read(client, value::KindHour, "X", m_start, m_start), ElementsAre("result 1"));
    EXPECT_THAT(client.Take<vantrel::ReportChange>(), IsEmpty());
    Tick();
    EXPECT_THAT(Read(client, value::KindHour, "X", m_start, m_start),
                ElementsAre("171 128 " + At(m_start) + " 17.50"));
    EXPECT_THAT(Read(client, value::KindHour, "X", m_start - 3600, m_start - 3600),
                ElementsAre("result 1"));
    // The day of reports of March 9 ends at 8:00 of March 10 and knows one hour.
    const std::int64_t day = value::MakeLocalTime({2024, 3, 9});
    EXPECT_THAT(Read(client, value::KindDay, "X", day, day),
                ElementsAre("171 192 " + At(day) + " 17.50"));
    EXPECT_THAT(Read(client, value::KindDay, "Y", day, day),
                ElementsAre("255 129 " + At(day) + " "));
    EXPECT_THAT(Read(client, value::KindHour, "Y", m_start, m_start), ElementsAre("result 1"));
    Tick();
    std::vector<int> kinds;
    for (const vantrel::ReportChange& change : client.Take<vantrel::ReportChange>())
        kinds.push_back(change.kind);
    EXPECT_THAT(kinds, ElementsAre(value::KindHour, value::KindDay));
}

TEST_F(ServerTest, ReportsMissedWithoutAServerAreMadeUpFor) {
    Start(
        "[reports]\nautomatic = [\"hour\"]\n[[access]]\nwrite = \"0\"\n"
        "[[variable]]\nname = \"X\"\nat = 32\nrt = 2\n");
    ModifyArchive(LogIn(), "X", {support::Stamped(value::CVal(10), m_start)});
    Tick();
    End();
    m_clock.Advance(3 * 3600 * 1000);
    Restart();
    Tick();
    EXPECT_THAT(
        Read(LogIn(), value::KindHour, "X", 0, value::kLargestTime),
        ElementsAre("171 128 " + At(m_start) + " 10.00", "171 128 " + At(m_start + 3600) + " 10.00",
                    "171 128 " + At(m_start + 7200) + " 10.00"));
}

TEST_F(ServerTest, ReportsAreMadeUpForTwoMonthsBack) {
    Start("[reports]\nautomatic = [\"day\"]\n[[variable]]\nname = \"X\"\nrt = 4\n");
    Tick();
    End();
    m_clock.Advance(std::int64_t{400} * 86400 * 1000);
    Restart();
    Tick();
    const std::vector<std::string> days =
        Read(LogIn(), value::KindDay, "X", 0, value::kLargestTime);
    EXPECT_EQ(days.size(), 62u);
}

TEST_F(ServerTest, ManyVariablesAreComputedOverSeveralSteps) {
    std::string csv = "name,rt\n";
    for (int index = 0; index < 25000; ++index) csv += "V" + std::to_string(index) + ",2\n";
    m_folder.Put("many.csv", csv);
    Start("[reports]\nautomatic = [\"hour\"]\n[[variables]]\nfile = \"many.csv\"\n");
    Tick();
    m_clock.Advance(3600 * 1000);
    m_server->Tick();
    Tick(2);
    TestClient& client = LogIn();
    for (const char* name : {"V0", "V12345", "V19999", "V20000", "V24999"}) {
        EXPECT_THAT(Read(client, value::KindHour, name, m_start, m_start),
                    ElementsAre("255 129 " + At(m_start) + " "))
            << name;
    }
}

// ---- configuration, start and end

TEST_F(ServerTest, ReloadTellsClientsOfWhatHasChanged) {
    Start(
        "[[access]]\nwrite = \"0\"\n[[variable]]\nname = \"A\"\nun = \"m\"\n"
        "[[variable]]\nname = \"B\"\nvalue = 2\n[[variable]]\nname = \"C\"\nvalue = 3\n");
    TestClient& client = LogIn();
    Subscribe(client, {"A", "B", "C", "D"});
    Modify(client, value::KindCurrent, "A", 0, value::CVal(5));
    client.messages.clear();
    Configure(
        "[[access]]\nvariables = \"C\"\nread = \"100\"\n[[access]]\nwrite = \"0\"\n"
        "[[variable]]\nname = \"D\"\nvalue = 4\n"
        "[[variable]]\nname = \"A\"\nun = \"km\"\n[[variable]]\nname = \"C\"\n");
    m_server->Reload();
    EXPECT_THAT(m_log.Take(), ElementsAre("2 Konfiguracja odczytana ponownie"));
    const std::vector<vantrel::AccessErrors> errors = client.Take<vantrel::AccessErrors>();
    ASSERT_EQ(errors.size(), 1u);
    ASSERT_EQ(errors[0].entries.size(), 2u);
    EXPECT_EQ(errors[0].entries[0].handle, 2u);
    EXPECT_EQ(errors[0].entries[0].code, 0);
    EXPECT_EQ(errors[0].entries[1].handle, 3u);
    EXPECT_EQ(errors[0].entries[1].code, 0);
    const std::vector<vantrel::VariableDefinitions> definitions =
        client.Take<vantrel::VariableDefinitions>();
    ASSERT_EQ(definitions.size(), 1u);
    EXPECT_EQ(definitions[0].definitions[0].name, "A");
    EXPECT_THAT(definitions[0].definitions[0].attributes, ElementsAre(testing::Pair("un", "km")));
    EXPECT_THAT(Updates(client), ElementsAre("1: 171 0 " + At(m_start) + " 5.00",
                                             "4: 171 0 " + At(m_start) + " 4.00"));
    Modify(client, value::KindCurrent, "D", 0, value::CVal(6));
    EXPECT_THAT(Updates(client), ElementsAre("4: 171 0 " + At(m_start) + " 6.00"));
}

TEST_F(ServerTest, ReloadWithAnErrorChangesNothing) {
    Start("[[variable]]\nname = \"A\"\nvalue = 1\n");
    TestClient& client = LogIn();
    Subscribe(client, {"A"});
    Configure("[[variable]]\nname = \"B\"\nat = 5000\n[[variable]]\nname = 5.5.5\n");
    m_server->Reload();
    const std::vector<std::string> lines = m_log.Take();
    ASSERT_EQ(lines.size(), 2u);
    EXPECT_EQ(lines[0].substr(0, 2 + m_folder.Path("plant.toml").size()),
              "1 " + m_folder.Path("plant.toml"));
    EXPECT_EQ(lines[1], "1 Konfiguracja bez zmian");
    EXPECT_THAT(client.messages, IsEmpty());
    client.Say(vantrel::SubscribeRequest{{{9, "A"}}, {}, 0, true});
    EXPECT_THAT(Updates(client), ElementsAre("9: 171 0 " + At(m_start) + " 1.00"));
}

TEST_F(ServerTest, ReloadTellsWhatHasToWaitForTheNextStart) {
    Start("[[variable]]\nname = \"A\"\nvalue = 1\n");
    Configure(
        "[server]\nname = \"Inny\"\n[network]\naddress = \"localhost:0\"\n"
        "[[variable]]\nname = \"B\"\nvalue = 2\n");
    m_server->Reload();
    EXPECT_THAT(m_log.Take(),
                ElementsAre("1 server.name: zmiana zadziała po ponownym uruchomieniu serwera",
                            "1 network.address: zmiana zadziała po ponownym uruchomieniu serwera",
                            "2 Konfiguracja odczytana ponownie"));
    EXPECT_EQ(m_server->Settings().name, "sorvaned");
    TestClient& client = LogIn();
    client.Say(vantrel::SubscribeRequest{{{1, "B"}}, {}, 0, true});
    EXPECT_THAT(Updates(client), ElementsAre("1: 171 0 " + At(m_start) + " 2.00"));
}

TEST_F(ServerTest, VariableThatComesBackHasItsData) {
    const char* both =
        "[[access]]\nwrite = \"0\"\n[[variable]]\nname = \"A\"\nrt = 2\n"
        "[[variable]]\nname = \"B\"\nrt = 2\n";
    Start(both);
    Modify(LogIn(), value::KindHour, "A", m_start, value::CVal(1));
    Modify(LogIn(), value::KindHour, "B", m_start, value::CVal(2));
    Start("[[variable]]\nname = \"C\"\nrt = 2\n[[variable]]\nname = \"B\"\nrt = 2\n");
    EXPECT_THAT(Read(LogIn(), value::KindHour, "B", m_start, m_start),
                ElementsAre("150 32 " + At(m_start) + " 2"));
    EXPECT_THAT(Read(LogIn(), value::KindHour, "C", m_start, m_start), ElementsAre("result 1"));
    Start(both);
    EXPECT_THAT(Read(LogIn(), value::KindHour, "A", m_start, m_start),
                ElementsAre("150 32 " + At(m_start) + " 1"));
}

TEST_F(ServerTest, ChangedTypeConvertsTheKeptValue) {
    Start("[[variable]]\nname = \"A\"\nvalue = 7.9\n");
    Tick(10);
    Start("[[variable]]\nname = \"A\"\ntype = \"int\"\n");
    TestClient& client = LogIn();
    client.Say(vantrel::SubscribeRequest{{{1, "A"}}, {}, 0, true});
    EXPECT_THAT(Updates(client), ElementsAre("1: 150 0 " + At(m_start) + " 7"));
}

TEST_F(ServerTest, FolderIsForOneServer) {
    Start("");
    Server second(m_clock, m_log, m_translator, m_loop, platform::PasswordCost::Least);
    std::vector<std::string> errors;
    EXPECT_FALSE(second.Start(m_folder.Path("plant.toml"), errors));
    EXPECT_THAT(errors, ElementsAre(m_folder.Path("data") +
                                    ": używa go już inny serwer (server_threads_test[" +
                                    std::to_string(::getpid()) + "])"));
}

class ServerFilesTest : public ServerTest {
  protected:
    mode_t Mode(const std::string& name) const {
        struct stat info {};
        EXPECT_EQ(::stat(m_folder.Path(name).c_str(), &info), 0) << name;
        return info.st_mode & 07777;
    }
    void Open(const std::string& name, mode_t mode) const {
        ASSERT_EQ(::chmod(m_folder.Path(name).c_str(), mode), 0) << name;
    }
    std::string Closed(const std::string& name) const {
        return "1 " + m_folder.Path(name) + ": dostęp mieli inni, teraz ma go tylko właściciel";
    }
};

TEST_F(ServerFilesTest, AreForTheirOwnerAlone) {
    const mode_t mask = ::umask(0);
    Start("[[variable]]\nname = \"A\"\nat = 2\nvalue = 1\n");
    Tick();
    ::umask(mask);
    EXPECT_EQ(Mode("data"), 0700u);
    for (const std::string name :
         {"lock", "store.sqlite", "store.sqlite-wal", "store.sqlite-shm", "users.sqlite"}) {
        EXPECT_EQ(Mode("data/" + name), 0600u) << name;
    }
}

TEST_F(ServerFilesTest, ThatWereOpenAreClosedAndTold) {
    Start("");
    End();
    m_log.Take();
    m_folder.Put("data/store.sqlite-shm", "");
    Open("data", 0750);
    for (const std::string name : {"store.sqlite", "store.sqlite-shm", "users.sqlite"})
        Open("data/" + name, 0640);
    Server server(m_clock, m_log, m_translator, m_loop, platform::PasswordCost::Least);
    std::vector<std::string> errors;
    ASSERT_TRUE(server.Start(m_folder.Path("plant.toml"), errors));
    EXPECT_THAT(
        m_log.Take(),
        ElementsAre(Closed("data"), Closed("data/store.sqlite"), Closed("data/store.sqlite-shm"),
                    Closed("data/users.sqlite"), "0 Uruchomienie serwera sorvaned"));
    EXPECT_EQ(Mode("data"), 0700u);
    for (const std::string name : {"store.sqlite", "store.sqlite-shm", "users.sqlite"})
        EXPECT_EQ(Mode("data/" + name), 0600u) << name;
    server.Stop();
}

TEST_F(ServerFilesTest, ThatStayOpenKeepTheServerFromStarting) {
    Configure("[server]\nusers = \"/proc/self/status\"\n");
    Server server(m_clock, m_log, m_translator, m_loop, platform::PasswordCost::Least);
    std::vector<std::string> errors;
    EXPECT_FALSE(server.Start(m_folder.Path("plant.toml"), errors));
    EXPECT_THAT(errors, ElementsAre("/proc/self/status: dostęp mają inni i nie można go odebrać "
                                    "(Operation not permitted)"));
}

TEST_F(ServerTest, StartTellsWhatFails) {
    Server server(m_clock, m_log, m_translator, m_loop, platform::PasswordCost::Least);
    std::vector<std::string> errors;
    Configure("[server]\nclients = 0\n");
    EXPECT_FALSE(server.Start(m_folder.Path("plant.toml"), errors));
    EXPECT_THAT(errors,
                ElementsAre(m_folder.Path("plant.toml") +
                            ":2: server.clients: oczekiwano liczby całkowitej od 1 do 10000"));
    Server other(m_clock, m_log, m_translator, m_loop, platform::PasswordCost::Least);
    Configure("[server]\nusers = \"brak/users.sqlite\"\n");
    errors.clear();
    EXPECT_FALSE(other.Start(m_folder.Path("plant.toml"), errors));
    EXPECT_THAT(errors,
                ElementsAre(m_folder.Path("brak/users.sqlite") + ": No such file or directory"));
}

TEST_F(ServerTest, EndCommitsWhatIsUnderWay) {
    Start("[[access]]\nwrite = \"0\"\n[[variable]]\nname = \"X\"\nat = 2\nrt = 2\n");
    TestClient& client = LogIn();
    client.Say(vantrel::ModifyRequests{{{1, value::KindCurrent, "X", 0, value::CVal(1)},
                                        {2, value::KindHour, "X", m_start, value::CVal(2)}}});
    client.Say(vantrel::ArchiveModifyRequest{3, "X", 5, 5, {support::Stamped(value::CVal(3), 5)}});
    Restart();
    TestClient& again = LogIn();
    EXPECT_THAT(Read(again, value::KindArchive, "X", 0, value::kLargestTime),
                ElementsAre("171 0 5 3.00", "171 0 " + At(m_start) + " 1.00"));
    EXPECT_THAT(Read(again, value::KindHour, "X", m_start, m_start),
                ElementsAre("150 32 " + At(m_start) + " 2"));
}

TEST_F(ServerTest, StartAndEndAreLogged) {
    Start("[server]\nname = \"Stacja\"\n");
    m_server->Stop();
    EXPECT_THAT(m_log.Take(), ElementsAre("0 Zatrzymanie serwera Stacja"));
    m_server->Stop();
    EXPECT_THAT(m_log.Take(), IsEmpty());
}

// ---- health

TEST_F(ServerTest, LittleSpaceOnTheDiskIsToldAndThatThereIsEnough) {
    Start("[server]\nfree-space = 100\n");
    m_freeBytes = std::uint64_t{99} << 20;
    Tick();
    m_log.Take();
    m_clock.Advance(30'000);
    Tick();
    EXPECT_THAT(m_log.Take(), ElementsAre("1 Mało miejsca na dysku danych: 99 MiB"));
    m_freeBytes = std::uint64_t{125} << 20;
    m_clock.Advance(30'000);
    Tick();
    EXPECT_THAT(m_log.Take(), ElementsAre("1 Miejsca na dysku danych znów wystarcza: 125 MiB"));
    EXPECT_EQ(m_server->Figures().freeBytes, m_freeBytes);
}

TEST_F(ServerTest, FiguresTellWhatThereIs) {
    Start(
        "[[variable]]\nname = \"X\"\nat = 32\nvalue = 1\n"
        "[[variable]]\nname = \"S\"\nsignal = \"sine mean=5 amplitude=2 period=10\"\nat = 4\n");
    Connect();
    TestClient& client = LogIn();
    Subscribe(client, {"X", "S"});
    Tick(5);
    Settle();
    const ServerFigures figures = m_server->Figures();
    EXPECT_EQ(figures.uptime, 5);
    EXPECT_EQ(figures.clients, 1u);
    EXPECT_EQ(figures.strangers, 1u);
    EXPECT_EQ(figures.subscriptions, 2u);
    EXPECT_EQ(figures.variables, m_server->GetPlant().Size());
    EXPECT_EQ(figures.store.waiting, 0u);
    EXPECT_GT(figures.store.stored, 0u);
    EXPECT_EQ(figures.store.repeated, 0u);
    EXPECT_GT(figures.store.commits.GetCount(), 0u);
    EXPECT_EQ(figures.lost, 0u);
    EXPECT_GT(figures.storeBytes, 0u);
}

}  // namespace
}  // namespace kalvex::server
