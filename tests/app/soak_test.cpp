// Weeks of plant time under a virtual clock: what scripts take they give back.
#include <gtest/gtest.h>

#include "app/Health.h"
#include "app/HealthText.h"
#include "platform/posix/FileStore.h"
#include "sources/ClientInterface.h"
#include "support/allocation_count.h"
#include "support/scratch_file.h"
#include "support/script_world.h"
#include "support/zone_scope.h"
#include "vantrel/plant/SimulatedPlant.h"

namespace kalvex::app {
namespace {

constexpr std::int64_t kTick = 10;  // seconds of plant time
constexpr std::int64_t kDay = 86400 / kTick;
#ifdef __SANITIZE_ADDRESS__
constexpr std::int64_t kWeek = kDay;  // the sanitizers take their time
#else
constexpr std::int64_t kWeek = 7 * kDay;
#endif

// Texts are not always of the same length; what piles up would be far more.
constexpr std::int64_t kPlay = 1024;  // bytes

constexpr const char* kPlant = R"({"sources": {"srv": {"variables": {
    "TEMPERATURA": {"current": [{"atTick": 0, "value": 3.5}]},
    "ZADANA": {"current": [{"atTick": 0, "value": 60.5}]},
    "OPIS": {"current": [{"atTick": 0, "value": "start"}]},
    "GAZ": {"hour": [{"time": "2024-03-10 06:00:00", "value": 100.25, "status": 128},
                     {"time": "2024-03-10 07:00:00", "value": 104.5, "status": 128},
                     {"time": "2024-03-10 08:00:00", "value": 99.75, "status": 128}]}}}}})";

// Reads, computes, writes, waits.
constexpr const char* kController = R"(
PRIORITY 1
REMOTE TEMPERATURA srv@TEMPERATURA
REMOTE ZADANA srv@ZADANA
REMOTE OPIS srv@OPIS
LOCAL NOWA
LOCAL TEKST
:obieg
LOCK
SET NOWA = 70 - 1.5 * TEMPERATURA + SIN(TIME.HOUR / 4)
UNLOCK
IF NOWA > 65 || NOWA < 40 THEN
  SET NOWA = 65
ELSE
  SET NOWA = ROUND NOWA 1
ENDIF
SET ZADANA = NOWA
SET TEKST = TO_STRING NOWA "%8.2f"
SET TEKST = STRING_APPEND "Temperatura zadana kotła numer jeden: " TEKST
SET OPIS = TEKST
SLEEP 10.00
GOTO obieg
)";

// Reports by time and as a set, and a report that is written.
constexpr const char* kReports = R"(
PRIORITY 1
REMOTE GAZ srv@GAZ
LIST GODZINY
LOCAL SUMA
WAITFOR 0.00
GET GAZ HREP 2024 3 10 7
:czekaj
IF NOT READY GAZ.HREP GOTO czekaj
SET SUMA = GAZ.HREP
MGET GAZ HREP FROM 2024 3 10 5 TO 2024 3 10 9
:czekaj_na_zbior
IF NOT READY GAZ.HREP GOTO czekaj_na_zbior
MGET GAZ GETDATA GODZINY
CALC_IN_LIST GODZINY.SUM SUMA
PUT GAZ HREP 2024 3 10 8 SUMA
SLEEP 20
)";

// Texts, lists, procedures, a data file.
constexpr const char* kTexts = R"(
PRIORITY 1
LIST POLA
LOCAL WIERSZ
LOCAL ŚREDNIA
LOCAL ILE = 0
LOCAL KIEDY
PROCEDURE rozłóż(tekst, lista)
BEGIN
REMOVE_ALL lista
SPLIT tekst ; lista
END
:obieg
SET WIERSZ = STRING_APPEND "811.25;799.50;805.00;812.75;" "790.25;801.00;0;12.5"
CALL rozłóż(WIERSZ, POLA)
SET WIERSZ = JOIN POLA " | "
SET WIERSZ = STRING_MAKE_LOWER WIERSZ
SET ILE = ILE + 1
SET KIEDY = TIME
SET KIEDY.TIMESTAMP = TIME
SET KIEDY = FORMATED_TIMESTAMP KIEDY "%Y-%m-%d %H:%M:%S"
WRITE_FILE "stan.txt" "OBIEG" -A ILE KIEDY
READ_FILE "stan.txt" "OBIEG" -A ILE
SLEEP 30.00
GOTO obieg
)";

// Ends on an error, is reset and started again every day.
constexpr const char* kFaulty = R"(
PRIORITY 1
LOCAL A = 1
LIST B
ADD B "jeden"
REMOTE BRAK srv@BRAK
SET A = BRAK
)";

class SoakTest : public support::ScriptWorld {
  protected:
    SoakTest() {
        const support::ScratchFile file(kPlant);
        vantrel::PlantDefinition definition;
        std::string fault;
        EXPECT_TRUE(vantrel::ReadPlant(file.Path(), definition, fault)) << fault;
        m_plant = std::make_unique<vantrel::SimulatedPlant>(std::move(definition), clock);
        m_client = std::make_unique<sources::CClientInterface>(
            sources::SourceServices{m_log, translator, users, *m_plant});
        m_services.sources = m_client.get();
        m_services.counts = &m_health.Counts();
        m_services.files = &m_files;
    }
    ~SoakTest() override { m_scripts.clear(); }

    void Start(std::string_view text, const std::string& name) {
        WriteFile(name, text);
        engine::CKalvexDoc& script =
            *m_scripts.emplace_back(std::make_unique<engine::CKalvexDoc>(m_services));
        std::string error;
        ASSERT_TRUE(script.Open(name, error)) << error;
        ticks.Add(script);
        ASSERT_TRUE(script.Start());
    }

    void Pass(std::int64_t count) {
        for (const std::int64_t end = m_tick + count; m_tick < end;) {
            m_plant->AdvanceTo(++m_tick);
            m_client->SourceList().CheckConnections();
            ticks.RunTick();
            m_health.OnTick(m_tick * kTick * 1'000'000, m_tick % 977);
            clock.Advance(kTick * 1000);
            if (m_tick % kDay == 0) EndDay();
        }
    }

    void EndDay() {
        m_metrics = FormatHealthMetrics(m_health.GetFigures(m_tick * kTick * 1'000'000, ticks,
                                                            &m_client->SourceList(), m_appLog));
        for (const std::unique_ptr<engine::CKalvexDoc>& script : m_scripts) {
            if (ConditionOf(*script) != ScriptCondition::Error) continue;
            script->Reset();
            script->Start();
        }
    }

    support::ZoneScope m_zone{"Europe/Warsaw"};
    support::SilentLog m_log;
    platform::PosixFileStore m_files;
    engine::DocumentServices m_services{
        {clock, m_log, translator, users, paths, language::Functions()},
        language::Statements(),
        questions};
    CLog m_appLog{clock, translator};
    Health m_health{0};
    std::unique_ptr<vantrel::SimulatedPlant> m_plant;
    std::unique_ptr<sources::CClientInterface> m_client;
    std::vector<std::unique_ptr<engine::CKalvexDoc>> m_scripts;
    std::int64_t m_tick = 0;
    std::string m_metrics;
};

TEST_F(SoakTest, FourWeeksTakeNoMoreMemoryThanOne) {
    Start(kController, "regulator.kx");
    Start(kReports, "raporty.kx");
    Start(kTexts, "teksty.kx");
    Start(kFaulty, "wadliwy.kx");
    Pass(kWeek);
    const std::int64_t afterOne = support::HeldBytes();
    const std::uint64_t linesOfOne = m_health.Counts().lines;
    const std::uint64_t logOfOne = m_log.lines;
    Pass(3 * kWeek);
    EXPECT_LE(support::HeldBytes(), afterOne + kPlay);
    // All of it has been at work to the end.
    EXPECT_GT(m_health.Counts().lines, 3 * linesOfOne);
    EXPECT_GE(m_log.lines, logOfOne + 3 * kWeek / kDay);
    for (std::size_t i = 0; i < 3; ++i) {
        EXPECT_EQ(ConditionOf(*m_scripts[i]), ScriptCondition::Running) << i;
    }
}

// What the figure above would be if scripts kept what they take.
TEST_F(SoakTest, ListThatGrowsShows) {
    Start("PRIORITY 1\nLIST A\n:obieg\nADD A TIME\nSLEEP 30.00\nGOTO obieg", "rosnie.kx");
    Pass(kDay);
    const std::int64_t afterOne = support::HeldBytes();
    Pass(kDay);
    EXPECT_GT(support::HeldBytes(), afterOne + kPlay);
}

}  // namespace
}  // namespace kalvex::app
