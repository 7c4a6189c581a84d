// Who has the session of a script.
#include "console_fixture.h"

namespace kalvex::console {
namespace {

using testing::ElementsAre;
using testing::IsEmpty;

class ConsoleSessionsTest : public ConsoleTest {
  protected:
    ConsoleSessionsTest() {
        m_document = &Open("LOCAL X = 5\nLOCAL Y = 6\n");
        m_first = &LogIn();
        m_second = &LogIn();
        for (TestClient* client : {m_first, m_second}) Subscribe(*client, {"a.kx", "VC:a.kx"});
    }

    engine::CKalvexDoc* m_document = nullptr;
    TestClient* m_first = nullptr;
    TestClient* m_second = nullptr;
};

TEST_F(ConsoleSessionsTest, ModuleHandsOverToWhoAsks) {
    MarkersOf(*m_document).SetBreakpoint(1, true);
    EXPECT_THAT(Say(*m_first, "a.kx", "0|A_RC|0"),
                ElementsAre("a.kx: 1|Kalvex_stacja|A_RC|0|0|1;", "a.kx: 0|A_RC|0"));
    EXPECT_THAT(Heard(*m_second),
                ElementsAre("a.kx: 1|Kalvex_stacja|A_RC|0|0|1;", "a.kx: 0|A_RC|0"));
    EXPECT_FALSE(m_document->State().m_bControlAllowed);
    EXPECT_TRUE(m_document->IsReadOnly());
    // Now the holder is a client, which answers for itself.
    EXPECT_THAT(Say(*m_second, "a.kx", "0|B_RC|0"), ElementsAre("a.kx: 0|B_RC|0"));
    Heard(*m_first);
    EXPECT_THAT(Say(*m_first, "a.kx", "21|A_RC|B_RC"), ElementsAre("a.kx: 21|A_RC|B_RC"));
    EXPECT_THAT(Say(*m_first, "a.kx", "1|A_RC|B_RC"), ElementsAre("a.kx: 1|A_RC|B_RC"));
    EXPECT_FALSE(m_document->State().m_bControlAllowed);
}

TEST_F(ConsoleSessionsTest, EndOfTheBreakpointsIsATab) {
    Say(*m_first, "a.kx", "2");
    Heard(*m_first);
    EXPECT_THAT(Say(*m_first, "a.kx", "0|A_RC|1"),
                ElementsAre("a.kx: 1|Kalvex_stacja|A_RC|1|0|", "a.kx: 0|A_RC|1"));
}

TEST_F(ConsoleSessionsTest, AskingOfNobodyAndOfTheModuleIsEchoedOnly) {
    EXPECT_THAT(Say(*m_first, "a.kx", "0"), ElementsAre("a.kx: 0"));
    EXPECT_THAT(Say(*m_first, "a.kx", "0|Kalvex_stacja|1"), ElementsAre("a.kx: 0|Kalvex_stacja|1"));
    EXPECT_TRUE(m_document->State().m_bControlAllowed);
}

TEST_F(ConsoleSessionsTest, TextThatWasTypedInIsLostWhenTheModuleHandsOver) {
    m_document->Text().SetText("LOCAL X = 99\n");
    m_document->SetModified(true);
    Say(*m_first, "a.kx", "0|A_RC|0");
    EXPECT_EQ(m_document->Text().GetLine(0), "LOCAL X = 5");
}

TEST_F(ConsoleSessionsTest, ModuleTakesASessionThatIsGivenToIt) {
    Say(*m_first, "a.kx", "0|A_RC|0");
    SayLine(*m_first, "VC:a.kx", -1);
    EXPECT_THAT(Say(*m_first, "a.kx", "1|A_RC|Kalvex_stacja"),
                ElementsAre("a.kx: 1|A_RC|Kalvex_stacja"));
    EXPECT_TRUE(m_document->State().m_bControlAllowed);
    EXPECT_FALSE(m_document->IsReadOnly());
    EXPECT_FALSE(m_document->State().m_bLineReportSend);
    // It does not ask any more.
    m_document->AllowControl(false);
    Say(*m_first, "a.kx", "1|A_RC|Kalvex_stacja");
    EXPECT_FALSE(m_document->State().m_bControlAllowed);
}

TEST_F(ConsoleSessionsTest, RunningScriptStaysReadOnlyWhenItComesBack) {
    Say(*m_first, "a.kx", "0|A_RC|0");
    Say(*m_first, "a.kx", "2");
    Say(*m_first, "a.kx", "1|A_RC|Kalvex_stacja");
    EXPECT_TRUE(m_document->State().m_bControlAllowed);
    EXPECT_TRUE(m_document->IsReadOnly());
}

TEST_F(ConsoleSessionsTest, SessionGivenByNobodyOrTheModuleIsEchoedOnly) {
    Say(*m_first, "a.kx", "0|A_RC|0");
    for (const char* text : {"1|Kalvex_stacja|Kalvex_stacja", "1"}) {
        const std::string echo = std::string("a.kx: ") + text;
        EXPECT_THAT(Say(*m_first, "a.kx", text), ElementsAre(echo));
        EXPECT_FALSE(m_document->State().m_bControlAllowed);
    }
}

TEST_F(ConsoleSessionsTest, SessionOfAScriptThatWasClosedOpensIt) {
    Say(*m_first, "RC_KalvexDocInfo", "~a.kx");
    ASSERT_EQ(FindScript("a.kx"), nullptr);
    EXPECT_THAT(Say(*m_first, "a.kx", "0|A_RC|0"),
                ElementsAre("a.kx: 1|Kalvex_stacja|A_RC|0|0|", "a.kx: 0|A_RC|0"));
    ASSERT_NE(FindScript("a.kx"), nullptr);
    EXPECT_FALSE(FindScript("a.kx")->State().m_bControlAllowed);
}

TEST_F(ConsoleSessionsTest, BreakOfAnyConnectionTakesAllSessionsBack) {
    engine::CKalvexDoc& other = Open("LOCAL X = 5\n", "b.kx");
    Say(*m_first, "a.kx", "0|A_RC|0");
    Say(*m_first, "b.kx", "0|A_RC|0");
    Say(*m_first, "b.kx", "2");
    Heard(*m_first);
    m_second->End(vantrel::ReasonLost);
    for (const engine::CKalvexDoc* document : {m_document, &other}) {
        EXPECT_TRUE(document->State().m_bControlAllowed);
    }
    EXPECT_FALSE(m_document->IsReadOnly());
    EXPECT_TRUE(other.IsReadOnly());
    EXPECT_THAT(Heard(*m_first), IsEmpty());
    EXPECT_EQ(log.Take().back(), "1 Połączenie z klientem Konsola_RC zerwane  (utrata połączenia)");
}

TEST_F(ConsoleSessionsTest, OrderlyEndLeavesTheSession) {
    Say(*m_first, "a.kx", "0|A_RC|0");
    log.Take();
    m_first->End(vantrel::ReasonClientEnded);
    EXPECT_FALSE(m_document->State().m_bControlAllowed);
    EXPECT_THAT(log.Take(), IsEmpty());
}

}  // namespace
}  // namespace kalvex::console
