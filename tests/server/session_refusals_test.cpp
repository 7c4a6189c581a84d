// What the log has of orders that are not carried out, and what their client is answered.
#include "operator_fixture.h"
#include "value/Status.h"

namespace kalvex::server {
namespace {

using testing::ElementsAre;
using testing::IsEmpty;

class SessionRefusalsTest : public OperatorTest {};

TEST_F(SessionRefusalsTest, RefusedWriteIsLoggedWithVariableOrderUserAndReason) {
    TestClient& client = LogIn();
    m_log.Take();
    for (const std::string name : {"Z1.P", "Z1.P", "Z1.N", "Tajne.X", "Brak"}) {
        Modify(client, value::KindCurrent, name, 0, value::CVal(1));
    }
    Modify(client, value::KindHour, "Z1.P", m_start, value::CVal(1));
    ModifyArchive(client, "Z1.T", {});
    EXPECT_THAT(
        m_log.Take(),
        ElementsAre(
            "1 " + m_nobody + "zapis CURDATA, zmienna Z1.P (brak prawa do zapisu)",
            "1 " + m_nobody + "zapis CURDATA, zmienna Z1.N (brak prawa do zapisu)",
            "1 " + m_nobody + "zapis CURDATA, zmienna Tajne.X (brak prawa do odczytu i zapisu)",
            "1 " + m_nobody + "zapis CURDATA, zmienna Brak (nie ma takiej zmiennej)",
            "1 " + m_nobody + "zapis HREP, zmienna Z1.P (brak prawa do zapisu)",
            "1 " + m_nobody +
                "zapis ARCH, zmienna Z1.T (brak prawa do zapisu, nie przyjęto "
                "żadnej z wartości: 0)"));
    Modify(client, value::KindCurrent, "Z1.P", 0, value::CVal(2));
    Tick(3599);
    EXPECT_THAT(m_log.Take(), IsEmpty());
    Tick();
    EXPECT_THAT(m_log.Take(),
                ElementsAre("1 " + m_nobody +
                            "zapis CURDATA, zmienna Z1.P (brak prawa do zapisu), jeszcze razy: 2"));
    Modify(client, value::KindCurrent, "Z1.P", 0, value::CVal(3));
    client.End(vantrel::ReasonClientEnded);
    EXPECT_THAT(m_log.Take(),
                ElementsAre("1 " + m_nobody +
                            "zapis CURDATA, zmienna Z1.P (brak prawa do zapisu), jeszcze razy: 1"));
}

TEST_F(SessionRefusalsTest, RefusalsOfVeryManyNamesAreOnlyCounted) {
    TestClient& client = Operator();
    for (int index = 0; index < 1002; ++index) {
        Modify(client, value::KindCurrent, "N" + std::to_string(index), 0, value::CVal(1));
    }
    const std::vector<std::string> lines = m_log.Take();
    ASSERT_EQ(lines.size(), 1001u);
    EXPECT_EQ(lines[999], "1 " + m_adam + "zapis CURDATA, zmienna N999 (nie ma takiej zmiennej)");
    EXPECT_EQ(lines[1000], "1 Klient Kalvex_stacja, użytkownik adam: dalsze odmowy");
}

TEST_F(SessionRefusalsTest, NameThatWouldBreakALineIsMended) {
    TestClient& client = Operator();
    Modify(client, value::KindCurrent, "A\n2024", 0, value::CVal(1));
    EXPECT_THAT(
        m_log.Take(),
        ElementsAre("1 " + m_adam + "zapis CURDATA, zmienna A\\n2024 (nie ma takiej zmiennej)"));
}

TEST_F(SessionRefusalsTest, RefusedListIsLoggedWithTheFirstValueThatIsBad) {
    TestClient& client = Operator();
    ModifyArchive(client, "Z1.P",
                  {support::Stamped(value::CVal(1), 100), support::Stamped(value::CVal(11), 101),
                   support::Stamped(value::CVal(3), 102)});
    ModifyArchive(client, "Z1.P", {support::Stamped(value::CVal(2), -1)});
    ModifyArchive(client, "Z1.S", {support::Stamped(value::CVal(1), 100)});
    EXPECT_THAT(
        m_log.Take(),
        ElementsAre("1 " + m_adam +
                        "zapis ARCH, zmienna Z1.P (niepoprawna wartość nr 2, nie przyjęto żadnej "
                        "z wartości: 3)",
                    "1 " + m_adam +
                        "zapis ARCH, zmienna Z1.P (czas spoza zakresu nr 1, nie przyjęto żadnej "
                        "z wartości: 1)",
                    "1 " + m_adam +
                        "zapis ARCH, zmienna Z1.S (zmienna nie ma archiwum, nie przyjęto żadnej "
                        "z wartości: 1)"));
}

TEST_F(SessionRefusalsTest, OrderWithANumberIsAnswered) {
    TestClient& client = Operator();
    const auto order = [&](vantrel::PeriodAction action, value::ValueKind kind,
                           std::string_view name) {
        const vantrel::RequestId id = ++m_lastRequest;
        client.Say(vantrel::PeriodRequest{action, kind, std::string(name), m_start, id});
        Settle();
        const vantrel::ModifyResults results = client.Take<vantrel::ModifyResults>().at(0);
        EXPECT_EQ(results.entries.at(0).id, id);
        return results.entries.at(0).result;
    };
    EXPECT_EQ(order(vantrel::PeriodAction::Init, value::KindHour, "Z1.P"), vantrel::ResultOk);
    EXPECT_EQ(order(vantrel::PeriodAction::Update, value::KindArchive, "Z1.P"), vantrel::ResultOk);
    EXPECT_EQ(order(vantrel::PeriodAction::Init, value::KindHour, "Brak"), vantrel::ResultNothing);
    EXPECT_EQ(order(vantrel::PeriodAction::Init, value::KindDay, "Z1.N"),
              vantrel::ResultBadRequest);
    Order(client, vantrel::PeriodAction::Init, value::KindDay, "Z1.P", m_start);
    Order(client, vantrel::PeriodAction::Init, value::KindDay, "Z1.N", m_start);
    EXPECT_THAT(client.messages, IsEmpty());
}

TEST_F(SessionRefusalsTest, RefusedOrderIsLoggedWithItsReason) {
    TestClient& client = Operator();
    Order(client, vantrel::PeriodAction::Load, value::KindDay, "Z1.N", m_start);
    Order(client, vantrel::PeriodAction::Load, value::KindHour, "Brak", m_start);
    Order(client, vantrel::PeriodAction::Load, value::KindHour, "Z1.N", -1);
    Order(client, vantrel::PeriodAction::Load, value::KindArchive, "Z1.N", m_start);
    Order(client, vantrel::PeriodAction::Update, value::KindHour, "Z1.N", m_start);
    EXPECT_THAT(
        m_log.Take(),
        ElementsAre("1 " + m_adam + "pobranie DREP, zmienna Z1.N (zmienna nie ma takiego raportu)",
                    "1 " + m_adam + "pobranie HREP, zmienna Brak (nie ma takiej zmiennej)",
                    "1 " + m_adam + "pobranie HREP, zmienna Z1.N (czas spoza zakresu)",
                    "1 " + m_adam + "pobranie ARCH, zmienna Z1.N (nieznany rodzaj danych)",
                    "1 " + m_adam + "uzupełnienie HREP, zmienna Z1.N (nieznany rodzaj danych)"));
    EXPECT_THAT(Read(client, value::KindHour, "Z1.N", m_start, m_start), ElementsAre("result 1"));
}

}  // namespace
}  // namespace kalvex::server
