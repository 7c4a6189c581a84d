// The server under a clock that jumps.
#include "server_fixture.h"
#include "value/Status.h"

namespace kalvex::server {
namespace {

using testing::ElementsAre;
using testing::IsEmpty;

constexpr std::int64_t kFar = 60 * value::kSecondsPerDay;

class ServerClockTest : public ServerTest {
  protected:
    void Jump(std::int64_t seconds) { m_clock.SetSystemTime(m_clock.Now() + seconds); }
    // The server is away for five minutes, in which the clock may jump.
    void StartLater(const std::string& toml, std::int64_t jump = 0) {
        End();
        Jump(jump);
        m_clock.Advance(300 * 1000);
        Start(toml);
    }
    std::vector<std::string> All(TestClient& client, value::ValueKind kind, std::string_view name) {
        return Read(client, kind, name, 0, value::kLargestTime);
    }
    std::string At(std::int64_t second) const { return std::to_string(m_start + second); }
};

TEST_F(ServerClockTest, JumpAheadRemovesNothing) {
    Start(
        "[archive]\nkeep-days = 30\n[[access]]\nwrite = \"0\"\n"
        "[[variable]]\nname = \"X\"\nat = 32\n");
    TestClient& client = LogIn();
    ModifyArchive(client, "X",
                  {support::Stamped(value::CVal(1), m_start - 200),
                   support::Stamped(value::CVal(2), m_start - 100)});
    Tick();
    Jump(kFar);
    Tick(5);
    Jump(-kFar);
    Tick(5);
    EXPECT_THAT(m_log.Take(),
                ElementsAre("1 Zegar przeskoczył o 5184000 s", "1 Zegar przeskoczył o -5184000 s"));
    EXPECT_THAT(All(client, value::KindArchive, "X"),
                ElementsAre("171 0 " + At(-200) + " 1.00", "171 0 " + At(-100) + " 2.00"));
}

TEST_F(ServerClockTest, ClockThatStaysAheadRemovesAfterAnHour) {
    Start(
        "[archive]\nkeep-days = 30\n[[access]]\nwrite = \"0\"\n"
        "[[variable]]\nname = \"X\"\nat = 32\n");
    TestClient& client = LogIn();
    ModifyArchive(client, "X",
                  {support::Stamped(value::CVal(1), m_start - 200),
                   support::Stamped(value::CVal(2), m_start - 100)});
    Tick();
    Jump(kFar);
    Tick();
    m_clock.Advance(3599 * 1000);
    Tick(2);
    EXPECT_THAT(All(client, value::KindArchive, "X"), ElementsAre("171 0 " + At(-100) + " 2.00"));
}

TEST_F(ServerClockTest, JumpAheadHasNoReportComputed) {
    Start(
        "[reports]\nautomatic = [\"hour\", \"day\", \"month\"]\n[[access]]\nwrite = \"0\"\n"
        "[[variable]]\nname = \"X\"\nat = 32\nrt = 14\n");
    TestClient& client = LogIn();
    ModifyArchive(client, "X", {support::Stamped(value::CVal(10), m_start - 7200)});
    Tick();
    Jump(kFar);
    Tick(5);
    Jump(-kFar);
    Tick(5);
    for (const value::ValueKind kind : {value::KindHour, value::KindDay, value::KindMonth}) {
        EXPECT_THAT(All(client, kind, "X"), IsEmpty()) << kind;
    }
    m_clock.Advance(3600 * 1000);
    Tick();
    EXPECT_THAT(All(client, value::KindHour, "X"), ElementsAre("171 128 " + At(0) + " 10.00"));
}

TEST_F(ServerClockTest, OrderedReportEndsAtTheConfirmedTime) {
    Start("[[access]]\nwrite = \"0\"\n[[variable]]\nname = \"X\"\nat = 32\nrt = 2\n");
    TestClient& client = LogIn();
    ModifyArchive(client, "X", {support::Stamped(value::CVal(10), m_start - 7200)});
    Tick();
    Jump(kFar);
    Tick();
    Order(client, vantrel::PeriodAction::Calculate, value::KindHour, "X", m_start);
    EXPECT_THAT(All(client, value::KindHour, "X"), ElementsAre("171 192 " + At(0) + " 10.00"));
}

TEST_F(ServerClockTest, ReadingTheConfigurationConfirmsTheClock) {
    Start(
        "[reports]\nautomatic = [\"month\"]\n[[access]]\nwrite = \"0\"\n"
        "[[variable]]\nname = \"X\"\nrt = 8\n");
    TestClient& client = LogIn();
    Tick();
    Jump(31 * value::kSecondsPerDay);
    Tick();
    EXPECT_THAT(All(client, value::KindMonth, "X"), IsEmpty());
    m_server->Reload();
    Tick();
    const std::string march = std::to_string(value::MakeLocalTime({2024, 3, 1}));
    EXPECT_THAT(All(client, value::KindMonth, "X"), ElementsAre("255 129 " + march + " "));
}

// The server was started under a clock that was ahead, so it had to believe it.
TEST_F(ServerClockTest, PlaceOfTheReportsReturns) {
    const std::string toml =
        "[reports]\nautomatic = [\"hour\"]\n[[access]]\nwrite = \"0\"\n"
        "[[variable]]\nname = \"X\"\nat = 32\nrt = 2\n";
    Jump(kFar);
    Start(toml);
    Tick();
    Jump(-kFar);
    Tick();
    ModifyArchive(LogIn(), "X", {support::Stamped(value::CVal(10), m_start - 7200)});
    m_clock.Advance(3600 * 1000);
    Tick();
    EXPECT_THAT(All(LogIn(), value::KindHour, "X"), ElementsAre("171 128 " + At(0) + " 10.00"));
    End();
    Jump(kFar);
    Start(toml);
    Tick();
    End();
    Jump(-kFar);
    Start(toml);
    m_clock.Advance(3600 * 1000);
    Tick();
    EXPECT_THAT(All(LogIn(), value::KindHour, "X"),
                testing::Contains("171 128 " + At(3600) + " 10.00"));
}

TEST_F(ServerClockTest, ClockThatGoesBackAndForthLeavesTheReports) {
    Start(
        "[archive]\nkeep-days = 30\n[reports]\nautomatic = [\"hour\"]\n"
        "[[access]]\nwrite = \"0\"\n[[variable]]\nname = \"X\"\nat = 32\nrt = 2\n");
    TestClient& client = LogIn();
    Tick();
    Jump(-kFar);
    Tick(5);
    Jump(kFar);
    Tick(5);
    EXPECT_THAT(All(client, value::KindHour, "X"), IsEmpty());
    m_clock.Advance(3600 * 1000);
    Tick();
    EXPECT_THAT(All(client, value::KindHour, "X"), ElementsAre("255 129 " + At(0) + " "));
}

// A machine without a battery begins in the past.
TEST_F(ServerClockTest, HoursAreMadeUpForAsFarAsTheArchiveIsKept) {
    const std::string toml =
        "[archive]\nkeep-days = 1\n[reports]\nautomatic = [\"hour\"]\n[[access]]\nwrite = \"0\"\n"
        "[[variable]]\nname = \"X\"\nat = 32\nrt = 2\n";
    Start(toml);
    Tick();
    End();
    const std::int64_t back = m_clock.Now();
    m_clock.SetSystemTime(1000);
    Start(toml);
    Tick();
    m_clock.SetSystemTime(back);
    Tick();
    EXPECT_THAT(All(LogIn(), value::KindHour, "X"), IsEmpty());
    m_clock.Advance(3600 * 1000);
    Tick();
    const std::vector<std::string> hours = All(LogIn(), value::KindHour, "X");
    ASSERT_EQ(hours.size(), 23u);
    EXPECT_EQ(hours.front(), "255 129 " + At(-22 * 3600) + " ");
    EXPECT_EQ(hours.back(), "255 129 " + At(0) + " ");
}

// The clock was two hours late; the server ends before the new time is believed.
TEST_F(ServerClockTest, GapIsWhereTheArchiveEnds) {
    const std::string toml =
        "[[access]]\nwrite = \"0\"\n[[variable]]\nname = \"X\"\nat = 2\n"
        "[[variable]]\nname = \"Y\"\nat = 2\n";
    Start(toml);
    Modify(LogIn(), value::KindCurrent, "Y", 0, value::CVal(1));
    Tick();
    Jump(7200);
    Tick();
    Modify(LogIn(), value::KindCurrent, "X", 0, value::CVal(2));
    Tick();
    StartLater(toml);
    Tick();
    EXPECT_THAT(All(LogIn(), value::KindArchive, "X"),
                ElementsAre("171 0 " + At(7202) + " 2.00", "255 1 " + At(7204) + " ",
                            "171 0 " + At(7503) + " 2.00"));
    EXPECT_THAT(All(LogIn(), value::KindArchive, "Y"),
                ElementsAre("171 0 " + At(0) + " 1.00", "255 1 " + At(7204) + " ",
                            "171 0 " + At(7503) + " 1.00"));
}

// The clock was ahead when the server ended, and is right when it begins.
TEST_F(ServerClockTest, GapBeginsWhereTheTimeWasConfirmed) {
    const std::string toml = "[[access]]\nwrite = \"0\"\n[[variable]]\nname = \"X\"\nat = 2\n";
    Start(toml);
    Modify(LogIn(), value::KindCurrent, "X", 0, value::CVal(1));
    Tick();
    Jump(kFar);
    Tick();
    StartLater(toml, -kFar);
    Tick();
    EXPECT_THAT(All(LogIn(), value::KindArchive, "X"),
                ElementsAre("171 0 " + At(0) + " 1.00", "255 1 " + At(3) + " ",
                            "171 0 " + At(302) + " 1.00"));
}

// Late by 60 days for a moment, in which the server ended.
TEST_F(ServerClockTest, GapSparesWhatHasBeenKnown) {
    const std::string toml = "[[access]]\nwrite = \"0\"\n[[variable]]\nname = \"X\"\nat = 34\n";
    Start(toml);
    ModifyArchive(LogIn(), "X", {support::Stamped(value::CVal(1), m_start - kFar - 100)});
    ModifyArchive(LogIn(), "X", {support::Stamped(value::CVal(2), m_start - 100)});
    Tick();
    Jump(-kFar);
    Tick();
    StartLater(toml, kFar);
    EXPECT_THAT(All(LogIn(), value::KindArchive, "X"),
                ElementsAre("171 0 " + At(-kFar - 100) + " 1.00", "171 0 " + At(-100) + " 2.00",
                            "255 1 " + At(-99) + " "));
}

TEST_F(ServerClockTest, AmountsOfSecondsPassedTwiceAreNotTakenForOne) {
    Start(
        "[[access]]\nwrite = \"0\"\n[[variable]]\nname = \"A\"\nat = 2\nreport = \"sum\"\n"
        "[[variable]]\nname = \"B\"\nat = 2\nreport = \"sum\"\n");
    TestClient& client = LogIn();
    Tick(3);
    Jump(-2);
    Modify(client, value::KindCurrent, "A", 0, value::CVal(4));
    Tick();
    Modify(client, value::KindCurrent, "A", 0, value::CVal(5));
    Modify(client, value::KindCurrent, "B", 0, value::CVal(6));
    Tick(2);
    EXPECT_THAT(All(client, value::KindArchive, "A"), ElementsAre("255 1 " + At(4) + " "));
    EXPECT_THAT(All(client, value::KindArchive, "B"), ElementsAre("171 0 " + At(4) + " 6.00"));
}

// A minute and more corrects a clock that was ahead.
TEST_F(ServerClockTest, ArchiveOfACorrectedClockTakesThePlaceOfTheOther) {
    Start("[[access]]\nwrite = \"0\"\n[[variable]]\nname = \"X\"\nat = 2\n");
    TestClient& client = LogIn();
    Tick(90);
    Modify(client, value::KindCurrent, "X", 0, value::CVal(1));
    Tick();
    Jump(-91);
    Modify(client, value::KindCurrent, "X", 0, value::CVal(2));
    Tick();
    EXPECT_THAT(All(client, value::KindArchive, "X"),
                ElementsAre("171 0 " + At(0) + " 2.00", "171 0 " + At(90) + " 1.00"));
}

TEST_F(ServerClockTest, SecondsPassedTwiceKeepTheirArchiveValues) {
    Start(
        "[archive]\nperiod = 1\n[[access]]\nwrite = \"0\"\n"
        "[[variable]]\nname = \"X\"\nat = 2\n[[variable]]\nname = \"S\"\nat = 4\n");
    TestClient& client = LogIn();
    const auto set = [&](int number) {
        Modify(client, value::KindCurrent, "X", 0, value::CVal(number));
        Modify(client, value::KindCurrent, "S", 0, value::CVal(number));
        Tick();
    };
    for (const int number : {1, 2, 3}) set(number);
    Jump(-2);
    for (const int number : {4, 5, 6}) set(number);
    EXPECT_THAT(All(client, value::KindArchive, "X"),
                ElementsAre("171 0 " + At(0) + " 1.00", "171 0 " + At(1) + " 2.00",
                            "171 0 " + At(2) + " 3.00", "171 0 " + At(4) + " 6.00"));
    EXPECT_THAT(All(client, value::KindArchive, "S"),
                ElementsAre("171 0 " + At(1) + " 1.00", "171 0 " + At(2) + " 2.00",
                            "171 0 " + At(3) + " 3.00", "171 0 " + At(4) + " 6.00"));
    EXPECT_THAT(m_log.Take(), IsEmpty());
}

TEST_F(ServerClockTest, SecondsPassedTwiceOverARestartKeepTheirArchiveValues) {
    Start("[[access]]\nwrite = \"0\"\n[[variable]]\nname = \"X\"\nat = 2\n");
    Modify(LogIn(), value::KindCurrent, "X", 0, value::CVal(1));
    Tick(2);
    Modify(LogIn(), value::KindCurrent, "X", 0, value::CVal(2));
    Tick();
    End();
    Jump(-2);
    Restart();
    Tick();
    Modify(LogIn(), value::KindCurrent, "X", 0, value::CVal(3));
    Tick(2);
    EXPECT_THAT(All(LogIn(), value::KindArchive, "X"),
                ElementsAre("171 0 " + At(0) + " 1.00", "171 0 " + At(2) + " 2.00",
                            "171 0 " + At(4) + " 3.00"));
}

TEST_F(ServerClockTest, CounterGoesByElapsedTimeAtAJump) {
    Start("[[variable]]\nname = \"C\"\nsignal = \"counter rate=1\"\n");
    TestClient& client = LogIn();
    Subscribe(client, {"C"});
    Tick(3);
    Jump(kFar);
    Tick();
    Updates(client);
    Tick();
    EXPECT_THAT(Updates(client), ElementsAre("1: 171 0 " + At(kFar + 5) + " 4.00"));
}

TEST_F(ServerClockTest, WaitOfALoginGoesByElapsedTime) {
    Start("[[variable]]\nname = \"X\"\n");
    TestClient& client = Connect("10.1.2.3");
    for (int failure = 0; failure < 3; ++failure) TryLogin(client, "adam", "x");
    Jump(-kFar);
    vantrel::LoginRequest guess;
    guess.user = "adam";
    guess.password = "x";
    client.Say(guess);
    m_server->Tick();
    EXPECT_FALSE(m_server->GetLogins().IsChecking());
    m_clock.Advance(2000);
    m_server->Tick();
    EXPECT_TRUE(m_server->GetLogins().IsChecking());
    m_clock.Advance(27000);
    Jump(kFar);
    m_server->Tick();
    EXPECT_EQ(client.closed, 0u);
}

}  // namespace
}  // namespace kalvex::server
