// What consoles change is recorded with who did it.
#include <functional>

#include "audit/AuditFiles.h"
#include "console_fixture.h"
#include "text/CodePage.h"

namespace kalvex::console {
namespace {

using testing::ElementsAre;
using testing::IsEmpty;

constexpr const char* kScript = "LOCAL X = 5\nLOCAL Y = 6\nLOCAL Z = 7\n";

class ConsoleAuditTest : public ConsoleTest {
  protected:
    ConsoleAuditTest() {
        m_trail.SetFile(folder.Path("Kalvex.audit"), 1'000'000);
        m_console->SetTrail(&m_trail);
        m_document = &Open(kScript);
        m_document->SetPriority(1);
        m_client = &LogIn();
        Subscribe(*m_client, {"a.kx", "VL:a.kx"});
    }

    // "action script name old->new" of the records since the last call; what is not there is "-".
    std::vector<std::string> Recorded() {
        std::vector<std::string> lines;
        std::size_t number = 0;
        audit::ReadAudit(audit::AuditFiles(m_trail.GetName()), 0, {},
                         [&](const audit::AuditEntry& entry) {
                             if (number++ >= m_seen) lines.push_back(LineOf(entry.record));
                             return true;
                         });
        m_seen = number;
        return lines;
    }

    std::vector<std::string> After(std::string_view variable, std::string_view text) {
        Say(*m_client, variable, text);
        return Recorded();
    }

    static std::string LineOf(const audit::AuditRecord& record) {
        const auto shown = [](const std::string& text) { return text.empty() ? "-" : text; };
        m_who = record.user + "|" + record.address + "|" + record.client;
        return std::string(audit::AuditWord(record.action)) + " " + shown(record.script) + " " +
               shown(record.name) + " " + text::ToUtf8(record.oldValue.value_or("-")) + "->" +
               text::ToUtf8(record.newValue.value_or("-"));
    }

    static inline std::string m_who;  // of the last record
    audit::AuditTrail m_trail{clock, translator, log};
    std::size_t m_seen = 0;
    engine::CKalvexDoc* m_document = nullptr;
    TestClient* m_client = nullptr;
};

TEST_F(ConsoleAuditTest, CommandsAreRecordedWithTheStateBeforeAndAfter) {
    EXPECT_THAT(After("a.kx", "2"), ElementsAre("start a.kx - idle->running"));
    EXPECT_THAT(After("a.kx", "4"), ElementsAre("stop a.kx - running->stopped"));
    EXPECT_THAT(After("a.kx", "8"), ElementsAre("step a.kx - stopped->stopped"));
    EXPECT_THAT(After("a.kx", "6"), ElementsAre("reset a.kx - stopped->idle"));
}

TEST_F(ConsoleAuditTest, RecordNamesUserAddressAndClient) {
    After("a.kx", "2");
    EXPECT_EQ(m_who, "JAN||Konsola_RC");
    m_client = &LogIn("JAN", "10.1.2.3");
    After("a.kx", "6");
    EXPECT_EQ(m_who, "JAN|10.1.2.3|Konsola_RC");
}

TEST_F(ConsoleAuditTest, StartThatFailsLeavesTheScriptIdle) {
    WriteFile("b.kx", "ENDIF\n");
    EXPECT_THAT(After("RC_KalvexDocInfo", "b.kx"), ElementsAre("open b.kx - -->-"));
    Subscribe(*m_client, {"b.kx"});
    EXPECT_THAT(After("b.kx", "2"), ElementsAre("start b.kx - idle->idle"));
}

TEST_F(ConsoleAuditTest, ValueIsRecordedWithTheOneBefore) {
    After("a.kx", "2");
    Tick(100);
    EXPECT_THAT(After("VL:a.kx", "17|X|12.5|171|0"), ElementsAre("value a.kx X 5.00->12.50"));
    EXPECT_THAT(After("VL:a.kx", "17|X|abc|190|1"), ElementsAre("value a.kx X 12.50->abc ( 1 )"));
    EXPECT_THAT(After("VL:a.kx", "17|NIE|1|171|0"), IsEmpty());
}

TEST_F(ConsoleAuditTest, BreakpointsAreRecordedByLinesThatPeopleCount) {
    EXPECT_THAT(After("a.kx", "10|2"), ElementsAre("breakpoint-set a.kx 3 -->-"));
    EXPECT_THAT(After("a.kx", "10|-2"), IsEmpty());
    EXPECT_THAT(After("a.kx", "12|2"), ElementsAre("breakpoint-removed a.kx 3 -->-"));
    After("a.kx", "10|0");
    After("a.kx", "10|2");
    EXPECT_THAT(After("a.kx", "15"), ElementsAre("breakpoints-removed a.kx - 1 3->-"));
}

TEST_F(ConsoleAuditTest, SessionIsRecordedAsItGoesFromSideToSide) {
    EXPECT_THAT(After("a.kx", "0|Jeden_RC|0"),
                ElementsAre("session-taken a.kx - Kalvex_stacja->Jeden_RC"));
    EXPECT_THAT(After("a.kx", "0|Dwa_RC|0"), IsEmpty());
    EXPECT_THAT(After("a.kx", "0|Dwa_RC|1"), ElementsAre("session-forced a.kx - -->Dwa_RC"));
    EXPECT_THAT(After("a.kx", "1|Jeden_RC|Dwa_RC"),
                ElementsAre("session-given a.kx - Jeden_RC->Dwa_RC"));
    EXPECT_THAT(After("a.kx", "1|Dwa_RC|Kalvex_stacja"),
                ElementsAre("session-given a.kx - Dwa_RC->Kalvex_stacja"));
    EXPECT_THAT(After("a.kx", "0|Kalvex_stacja|1"), IsEmpty());
}

TEST_F(ConsoleAuditTest, BreakThatTakesSessionsBackIsRecordedOnce) {
    WriteFile("b.kx", kScript);
    After("RC_KalvexDocInfo", "b.kx");
    After("a.kx", "0|Jeden_RC|0");
    After("b.kx", "0|Dwa_RC|0");
    m_client->End(vantrel::ReasonLost);
    EXPECT_THAT(Recorded(), ElementsAre("sessions-taken-back - - -->a.kx, b.kx"));
    EXPECT_EQ(m_who, "JAN||Konsola_RC");
    LogIn().End(vantrel::ReasonLost);
    EXPECT_THAT(Recorded(), IsEmpty());
}

TEST_F(ConsoleAuditTest, OpeningAndClosingAreRecordedWhenTheyHappen) {
    WriteFile("b.kx", kScript);
    EXPECT_THAT(After("RC_KalvexDocInfo", "b.kx"), ElementsAre("open b.kx - -->-"));
    EXPECT_THAT(After("RC_KalvexDocInfo", "b.kx"), IsEmpty());
    EXPECT_THAT(After("RC_KalvexDocInfo", "nie.kx"), IsEmpty());
    EXPECT_THAT(After("RC_KalvexDocInfo", "~b.kx"), ElementsAre("close b.kx - idle->-"));
    EXPECT_THAT(After("RC_KalvexDocInfo", "~b.kx"), IsEmpty());
}

TEST_F(ConsoleAuditTest, LevelIsRecordedWhenItChanges) {
    m_console->PublishLevel(1);
    SayLine(*m_client, "SYS_LogLevel", 3);
    EXPECT_THAT(Recorded(), ElementsAre("level - - 1->3"));
    SayLine(*m_client, "SYS_LogLevel", 3);
    EXPECT_THAT(Recorded(), IsEmpty());
}

TEST_F(ConsoleAuditTest, WhatIsNotDoneForWantOfARightIsNotRecorded) {
    m_controlRight = "200";
    EXPECT_EQ(Write(*m_client, "a.kx", value::CVal("2")), vantrel::ResultNothing);
    EXPECT_EQ(Write(*m_client, "SYS_LogLevel", value::CVal(3)), vantrel::ResultNoAccess);
    EXPECT_THAT(Recorded(), IsEmpty());
}

}  // namespace
}  // namespace kalvex::console
