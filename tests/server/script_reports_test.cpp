// Scripts and their reports at a real data server, within one process.
#include "script_fixture.h"

namespace kalvex::server {
namespace {

using testing::ElementsAre;
using testing::IsEmpty;

// What is named R... may be read by everybody and written by nobody, what is named T... is secret.
constexpr const char* kPlant = R"(
[reports]
day-start = 6
[[access]]
variables = "R*"
write = "100"
[[access]]
variables = "T*"
read = "100"
write = "100"
[[access]]
write = "0"
[[variable]]
name = "X"
at = 32
rt = 30
max = 1000
value = 5
[[variable]]
name = "R"
at = 32
rt = 30
value = 6
[[variable]]
name = "T"
rt = 30
value = 7
[[variables]]
file = "many.csv"
)";

class ScriptReportsTest : public ScriptsAtServer {
  protected:
    static constexpr int kMany = 1500;

    ScriptReportsTest() {
        std::string many = "name,rt\n";
        for (int i = 0; i < kMany; ++i) many += "M" + std::to_string(i) + ",4\n";
        m_folder.Put("many.csv", many);
        StartServer(kPlant);
    }
};

// The archive holds 10 from 5:30 and 20 from 6:30, so the hour 6 has the mean of 15.
constexpr const char* kArchive =
    "REMOTE x srv@X\nLIST L\nLOCAL t1 = MAKE_TIME 2024 3 10 5 30\n"
    "LOCAL t2 = MAKE_TIME 2024 3 10 6 30\nADD L 10\nADD L 20\nMOVE_FIRST L\n"
    "SET L.TIMESTAMP = t1\nMOVE_NEXT L\nSET L.TIMESTAMP = t2\nMPUT x ARCH L\n";

TEST_F(ScriptReportsTest, ReportIsMadeLoadedAndCalculated) {
    engine::CKalvexDoc& document = Finish(
        std::string(kArchive) +
        "INIT x HREP 2024 3 10 6\nGET x HREP 2024 3 10 6\n:a\nIF NOT READY x.HREP GOTO a\n"
        "LOCAL slowo = 0\nIF REP_INITED x.HREP THEN\nSET slowo = 1\nENDIF\n"
        "INIT_LOAD x HREP 2024 3 10 6\nGET x HREP 2024 3 10 6\n:b\nIF NOT READY x.HREP GOTO b\n"
        "IF REP_LOADED x.HREP THEN\nSET slowo = slowo + 2\nENDIF\n"
        "IF REP_INITED x.HREP THEN\nSET slowo = slowo + 4\nENDIF\nLOCAL srednia = x.HREP\n"
        "PUT x HREP 2024 3 10 6 99.5\nINIT_LOAD x HREP 2024 3 10 6\n"
        "GET x HREP 2024 3 10 6\n:c\nIF NOT READY x.HREP GOTO c\nLOCAL reczna = x.HREP\n"
        "LOCAL czyja = STATUS x.HREP SET_BY_USER\n"
        "INIT_CALC x HREP 2024 3 10 6\nGET x HREP 2024 3 10 6\n:d\nIF NOT READY x.HREP GOTO d\n"
        "LOCAL znowu = x.HREP\nLOCAL niczyja = STATUS x.HREP SET_BY_USER");
    EXPECT_EQ(Value(document, "slowo"), "171:7.00");
    EXPECT_EQ(Value(document, "srednia"), "171:15.00");
    EXPECT_EQ(Value(document, "reczna"), "171:99.50");
    EXPECT_EQ(Value(document, "znowu"), "171:15.00");
    EXPECT_EQ(Value(document, "czyja"), "120:1");
    EXPECT_EQ(Value(document, "niczyja"), "120:0");
    EXPECT_THAT(Errors(), IsEmpty());
}

// Day and month take what stands below them: one hour of 24, one day of 31.
TEST_F(ScriptReportsTest, DayComesFromHoursAndMonthFromDays) {
    engine::CKalvexDoc& document = Finish(
        std::string(kArchive) +
        "PUT x HREP 2024 3 9 6 30\nPUT x HREP 2024 3 9 7 50\nINIT_LOAD x DREP 2024 3 9\n"
        "INIT_LOAD x MREP 2024 3\nGET x DREP 2024 3 9\nGET x MREP 2024 3\n"
        ":a\nIF NOT READY x.DREP | NOT READY x.MREP GOTO a\nLOCAL d = x.DREP\nLOCAL m = x.MREP\n"
        "LOCAL niepelny = 0\nIF STATUS x.MREP CALCULATE_ERROR THEN\nSET niepelny = 1\nENDIF");
    EXPECT_EQ(Value(document, "d"), "171:40.00");
    EXPECT_EQ(Value(document, "m"), "171:40.00");
    EXPECT_EQ(Value(document, "niepelny"), "171:1.00");
}

TEST_F(ScriptReportsTest, RefusedWritesAreLoggedInTheTermsOfTheScript) {
    Finish(
        "REMOTE r srv@R\nLIST L\nLOCAL t = MAKE_TIME 2024 3 9 6\nLOCAL u = t + 3600\n"
        "FILL_IN_LIST L 5 0 t u HREP\nPUT r HREP 2024 3 9 6 5\nPUT r DREP 2024 3 9 5\n"
        "PUT r MREP 2024 3 5\nPUT r SREP 2024 5 5\nMPUT r HREP L\nMPUT r ARCH L\nSET r = 5\n"
        "INIT_LOAD r HREP 2024 3 9 6\nSLEEP 1");
    EXPECT_THAT(
        Errors(),
        ElementsAre("main.kx - Błąd modyfikacji raportu godzinowego (srv@R)",
                    "main.kx - Błąd modyfikacji raportu dobowego (srv@R)",
                    "main.kx - Błąd modyfikacji raportu miesięcznego (srv@R)",
                    "main.kx - Błąd modyfikacji raportu okresowego (srv@R)",
                    "main.kx - Błąd modyfikacji raportu godzinowego (srv@R)",
                    "main.kx - Błąd modyfikacji raportu godzinowego (srv@R)",
                    "main.kx - Błąd modyfikacji danych archiwalnych - brak dostępu, nie przyjęto "
                    "żadnej wartości (srv@R)",
                    "main.kx - Odrzucono zapis wartości 5.00 (brak dostępu) (srv@R)",
                    "main.kx - Błąd polecenia: pobranie HREP - brak dostępu (srv@R)"));
}

TEST_F(ScriptReportsTest, VariablesThatAreNotThereOrSecretAreLogged) {
    engine::CKalvexDoc& document = Finish(
        "REMOTE x srv@X\nREMOTE t srv@T\nREMOTE brak srv@Brak\nLOCAL y = x\n"
        "GET t HREP 2024 3 10 6\nGET brak HREP 2024 3 10 6\nGET x HREP 2024 3 10 6\n"
        ":a\nIF NOT READY t.HREP | NOT READY brak.HREP | NOT READY x.HREP GOTO a\n"
        "PUT t HREP 2024 3 10 6 1\nPUT brak DREP 2024 3 10 1\nSLEEP 1");
    const auto state = [&](const char* name) {
        return document.Variables().Find(name)->GetSourceRecord()->GetRequestState(value::KindHour);
    };
    EXPECT_EQ(state("t"), sources::RequestFailed);
    EXPECT_EQ(state("brak"), sources::RequestFailed);
    EXPECT_EQ(state("x"), sources::RequestFailed);
    EXPECT_THAT(Errors(), ElementsAre("main.kx - Brak zmiennej w źródle (srv@T)",
                                      "main.kx - Brak zmiennej w źródle (srv@Brak)",
                                      "main.kx - Błąd modyfikacji raportu godzinowego (srv@T)",
                                      "main.kx - Błąd modyfikacji raportu dobowego (srv@Brak)"));
}

TEST_F(ScriptReportsTest, ReportThatIsNotThereHoldsTheLineThatReadsIt) {
    engine::CKalvexDoc& document = Begin(
        "REMOTE x srv@X\nLOCAL y = x\nGET x HREP 2024 3 10 6\n:a\nIF NOT READY x.HREP GOTO a\n"
        "SET y = x.HREP");
    Second();
    EXPECT_EQ(Error(document), "15 x.HREP");
    EXPECT_EQ(document.State().m_nCurrentLine, 5);
    EXPECT_THAT(Errors(), ElementsAre("main.kx : Linia 6 - Błąd pobrania wartości zdalnej zmiennej "
                                      ": x.HREP"));
}

// The value that stands takes the place of the one that was refused.
TEST_F(ScriptReportsTest, ValueOutsideItsBoundsIsRefused) {
    engine::CKalvexDoc& document = Finish(
        "REMOTE x srv@X\nLOCAL y = x\nSET x = 2000\nLOCAL zaraz = x\nSLEEP 1\nSET x = 900\n"
        "SLEEP 1\nLOCAL potem = x");
    EXPECT_EQ(Value(document, "zaraz"), "171:2000.00");
    EXPECT_EQ(Value(document, "potem"), "171:900.00");
    EXPECT_THAT(Errors(), ElementsAre("main.kx - Odrzucono zapis wartości 2000.00 (niepoprawna "
                                      "wartość) (srv@X)"));
}

TEST_F(ScriptReportsTest, SetOfHoursGoesAndComesBackWithoutItsBounds) {
    engine::CKalvexDoc& document = Finish(
        "REMOTE x srv@X\nLIST L\nLIST K\nLOCAL t = MAKE_TIME 2024 3 8 6\nLOCAL u = t + 356400\n"
        "FILL_IN_LIST L 5 0 t u HREP\nMPUT x HREP L\nMGET x HREP FROM t TO u\n:a\n"
        "IF NOT READY x.HREP GOTO a\nMGET x GETDATA K\nLOCAL n = L.COUNT\nLOCAL m = K.COUNT\n"
        "MOVE_FIRST K\nLOCAL s = 0\nIF STATUS K SET_BY_USER & STATUS K SUPERVISORY THEN\n"
        "SET s = 1\nENDIF\nMOVE_FIRST L\nMOVE_NEXT L\n"
        "LOCAL pierwsza = K.TIMESTAMP - L.TIMESTAMP");
    EXPECT_EQ(Value(document, "n"), "150:100");
    EXPECT_EQ(Value(document, "m"), "150:98");
    EXPECT_EQ(Value(document, "s"), "171:1.00");
    EXPECT_EQ(Value(document, "pierwsza"), "160:0");
}

// More reads than a server takes from one client at a time.
TEST_F(ScriptReportsTest, VeryManyVariablesAreReadAtOnce) {
    std::string text;
    for (int i = 0; i < kMany; ++i) {
        const std::string n = std::to_string(i);
        text += "REMOTE m" + n + " srv@M" + n + "\n";
    }
    for (int i = 0; i < kMany; ++i) {
        text += "PUT m" + std::to_string(i) + " DREP 2024 3 9 " + std::to_string(i) + "\n";
    }
    for (int i = 0; i < kMany; ++i) text += "GET m" + std::to_string(i) + " DREP 2024 3 9\n";
    engine::CKalvexDoc& document = Begin(text);
    while (!HasEnded(document)) Tick(1);
    Carry();
    for (int i = 0; i < kMany; ++i) {
        const std::string name = "m" + std::to_string(i);
        sources::CInterfaceObj& link = *document.Variables().Find(name)->GetSourceRecord();
        ASSERT_EQ(link.GetRequestState(value::KindDay), sources::RequestReady) << name;
        ASSERT_EQ(Value(document, name, value::KindDay), "171:" + std::to_string(i) + ".00")
            << name;
    }
}

// The script writes a day at each change of a day, its own writes among them.
TEST_F(ScriptReportsTest, RecalculationByNotificationsComesToRest) {
    engine::CKalvexDoc& document = Begin(
        "REMOTE x srv@X\nREMOTE m srv@M0\nLOCAL ile = 0\nLOCAL czas\nENABLE_NOTIFY DREP srv\n"
        ":petla\nSET czas = NOTIFY DREP srv\nIF czas == 0 GOTO petla\nSET ile = ile + 1\n"
        "GET x DREP czas\n:a\nIF NOT READY x.DREP GOTO a\nLOCAL wynik\nSET wynik = x.DREP * 2\n"
        "PUT m DREP czas wynik\nGOTO petla");
    Second();
    engine::CKalvexDoc& writer =
        Open("REMOTE x srv@X\nLOCAL y = x\nPUT x DREP 2024 3 9 21", "drugi.kx");
    writer.Start();
    writer.SetPriority(1);
    for (int second = 0; second < 10; ++second) Second();
    EXPECT_EQ(Value(document, "ile"), "171:2.00");
    EXPECT_EQ(Value(document, "wynik"), "171:42.00");
    EXPECT_EQ(document.LastError().m_nErrorCode, 0);
}

TEST_F(ScriptReportsTest, BreakFailsTheRequestAndTheScriptGoesOnAfterwards) {
    engine::CKalvexDoc& document = Begin(
        "REMOTE x srv@X\nLOCAL y = x\nPUT x HREP 2024 3 10 6 3.5\nSLEEP 1\n:od_nowa\n"
        "GET x HREP 2024 3 10 6\n:a\nIF NOT READY x.HREP GOTO a\n"
        "LOCAL znany = STATUS x.HREP UNKNOWN\nIF znany != 0 GOTO od_nowa\nSET y = x.HREP");
    while (document.State().m_nCurrentLine < 5) Second(1);
    m_network.Break("srv", vantrel::ReasonLost);
    for (int second = 0; second < 20 && !HasEnded(document); ++second) Second();
    EXPECT_TRUE(HasEnded(document));
    EXPECT_EQ(Value(document, "y"), "171:3.50");
    EXPECT_THAT(Errors(), ElementsAre("Połączenie z srv zerwane (utrata połączenia)"));
}

}  // namespace
}  // namespace kalvex::server
