// What comes late, or is corrected, at a server with clients.
#include "server_fixture.h"
#include "value/LocalTimeText.h"

namespace kalvex::server {
namespace {

using testing::ElementsAre;
using testing::IsEmpty;

class LateReportsTest : public ServerTest {
  protected:
    LateReportsTest() {
        m_start = value::MakeLocalTime({2024, 3, 10, 12});
        m_clock.Advance((m_start - m_hour) * 1000);
    }

    // Hours and the day before are computed already.
    void Begin() {
        Start(
            "[reports]\nautomatic = [\"hour\", \"day\"]\n[[access]]\nwrite = \"0\"\n"
            "[[variable]]\nname = \"X\"\nat = 32\nrt = 14\nreport = \"sum\"\n");
        AddUser("adam", "tajne", 50);
        m_client = &LogIn("adam", "tajne");
        Subscribe(*m_client, {"X"});
        ModifyArchive(*m_client, "X", {support::Stamped(value::CVal(10.0), m_hour + 60)});
        for (const value::ValueKind kind : {value::KindHour, value::KindDay}) {
            const std::int64_t time = kind == value::KindHour ? m_hour : m_day;
            Order(*m_client, vantrel::PeriodAction::Load, kind, "X", time);
        }
        Tick(3);
        m_client->messages.clear();
        m_log.Take();
    }

    std::vector<std::string> Changes() {
        std::vector<std::string> lines;
        for (const vantrel::ReportChange& change : m_client->Take<vantrel::ReportChange>()) {
            lines.push_back(std::string(value::WordOfKind(change.kind)) + " " +
                            value::FormatLocalTime(change.time));
        }
        return lines;
    }

    std::string Report(value::ValueKind kind, std::int64_t time) {
        const std::vector<std::string> rows = Read(*m_client, kind, "X", time, time);
        return rows.at(0).substr(rows.at(0).rfind(' ') + 1);
    }

    std::int64_t m_hour = value::MakeLocalTime({2024, 3, 10, 7});
    std::int64_t m_day = value::MakeLocalTime({2024, 3, 9});
    std::int64_t m_late = value::MakeLocalTime({2024, 3, 9, 20});
    TestClient* m_client = nullptr;
};

TEST_F(LateReportsTest, AreComputedAnewWithinSecondsAndToldOnce) {
    Begin();
    ModifyArchive(*m_client, "X",
                  {support::Stamped(value::CVal(1.0), m_hour + 120),
                   support::Stamped(value::CVal(2.0), m_hour + 180)});
    EXPECT_EQ(Report(value::KindHour, m_hour), "10.00");
    Tick(2);
    EXPECT_EQ(Report(value::KindHour, m_hour), "13.00");
    Tick(2);
    EXPECT_THAT(Changes(), ElementsAre("HREP 2024-03-10 07:00:00"));
    EXPECT_THAT(m_log.Take(), IsEmpty());
}

TEST_F(LateReportsTest, CorrectedHourIsCountedInItsDay) {
    Begin();
    EXPECT_EQ(Modify(*m_client, value::KindHour, "X", m_late, value::CVal(5.0)), 0);
    Tick(3);
    EXPECT_EQ(Report(value::KindDay, m_day), "5.00");
    EXPECT_THAT(Changes(), ElementsAre("HREP 2024-03-09 20:00:00", "DREP 2024-03-09 00:00:00"));
}

TEST_F(LateReportsTest, HourThatIsComputedOnOrderIsCountedInItsDay) {
    Begin();
    ModifyArchive(*m_client, "X", {support::Stamped(value::CVal(5.0), m_late + 1)});
    Order(*m_client, vantrel::PeriodAction::Calculate, value::KindHour, "X", m_late);
    Tick(3);
    EXPECT_EQ(Report(value::KindDay, m_day), "5.00");
}

TEST_F(LateReportsTest, ReportOfAPersonStaysAndIsLogged) {
    Begin();
    Modify(*m_client, value::KindHour, "X", m_hour, value::CVal(70.0));
    Modify(*m_client, value::KindHour, "X", m_hour + 3600, value::CVal(80.0));
    Tick(3);
    Changes();
    ModifyArchive(*m_client, "X",
                  {support::Stamped(value::CVal(1.0), m_hour + 120),
                   support::Stamped(value::CVal(2.0), m_hour + 3700)});
    Tick(3);
    EXPECT_EQ(Report(value::KindHour, m_hour), "70.00");
    EXPECT_THAT(Changes(), IsEmpty());
    EXPECT_THAT(m_log.Take(),
                ElementsAre("1 Późne dane, raport użytkownika pozostaje: zmienna X, HREP od "
                            "2024-03-10 07:00:00, razem 2"));
}

TEST_F(LateReportsTest, HourThatIsUnderWayIsLeftToItsEnd) {
    Begin();
    ModifyArchive(*m_client, "X", {support::Stamped(value::CVal(1.0), m_start + 1)});
    Order(*m_client, vantrel::PeriodAction::Load, value::KindHour, "X", m_start);
    Tick(3);
    Changes();
    ModifyArchive(*m_client, "X", {support::Stamped(value::CVal(1.0), m_start + 2)});
    Tick(3);
    EXPECT_THAT(Changes(), IsEmpty());
    EXPECT_EQ(Report(value::KindHour, m_start), "1.00");
}

TEST_F(LateReportsTest, HourWhoseArchiveIsGoneStays) {
    Begin();
    const std::int64_t old = m_hour - 10 * 86400;
    ModifyArchive(*m_client, "X", {support::Stamped(value::CVal(9.0), old + 1)});
    Order(*m_client, vantrel::PeriodAction::Load, value::KindHour, "X", old);
    EXPECT_EQ(Report(value::KindHour, old), "9.00");
    m_toml.insert(0, "[archive]\nkeep-days = 5\n");
    Restart();
    m_client = &LogIn("adam", "tajne");
    Tick(2);
    ModifyArchive(*m_client, "X", {support::Stamped(value::CVal(1.0), old + 2)});
    Tick(3);
    EXPECT_EQ(Report(value::KindHour, old), "9.00");
}

TEST_F(LateReportsTest, AreComputedAfterARestart) {
    Begin();
    ModifyArchive(*m_client, "X", {support::Stamped(value::CVal(1.0), m_hour + 120)});
    Restart();
    m_client = &LogIn("adam", "tajne");
    Tick(2);
    EXPECT_EQ(Report(value::KindHour, m_hour), "11.00");
}

}  // namespace
}  // namespace kalvex::server
