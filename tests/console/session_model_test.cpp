// The session of a script in random orders of what may happen to a module and two consoles. After
// each of them, when all has been told, the sides must agree as far as the protocol has them agree:
// it does not where a line breaks, since the module then takes back the sessions of those that
// live, too, and tells nobody.
#include <algorithm>
#include <array>
#include <random>

#include "consoles_fixture.h"

namespace kalvex::console {
namespace {

constexpr int kSteps = 60;
constexpr int kOfARun = engine::StateRunning | engine::StatePaused | engine::StateStep;

class SessionModelTest : public ConsolesTest, public testing::WithParamInterface<unsigned> {
  protected:
    // What is known of a console beside what it shows.
    struct Side {
        TestConsole* console = nullptr;
        std::string identity;
        bool asked = false;     // since it held
        bool held = false;      // after the step before
        bool shared = false;    // the other one has held it, too, since it got it
        bool doubtful = false;  // a line has broken since it got the session, or while it did
    };

    SessionModelTest() {
        Open("LOCAL X = 5\nLOCAL Y = 6\nLOCAL Z = 7\n");
        m_sides[0].identity = "A_RC";
        m_sides[1].identity = "B_RC";
        for (Side& side : m_sides) side.console = &AddConsole(side.identity);
    }

    bool Chance() { return Below(2) == 0; }
    unsigned Below(unsigned bound) { return static_cast<unsigned>(m_random() % bound); }
    Side& Some() { return m_sides[Below(2)]; }
    Side& Other(const Side& side) { return &side == m_sides.data() ? m_sides[1] : m_sides[0]; }
    static engine::CKalvexDoc& Copy(const Side& side) { return *side.console->Find("a.kx"); }
    static bool Holds(const Side& side) { return Copy(side).State().m_bControlAllowed; }
    static bool IsUp(const Side& side) { return side.console->console->IsConnected(); }
    bool ModuleHolds() { return FindScript("a.kx")->State().m_bControlAllowed; }

    // ---- what may happen

    void Ask(Side& side) {
        if (Holds(side)) return;
        side.console->questions.answer = Chance();
        side.console->console->AskForSession(Copy(side));
        side.asked = true;
    }
    void AskBoth() {
        for (Side& side : m_sides) Ask(side);
    }
    void BreakNow(Side& side) {
        if (!IsUp(side)) return;
        side.console->network.Break("Kalvex", vantrel::ReasonLost);
        m_broke = true;
        m_orphaned = false;
    }
    void AskAndBreak(Side& asking, Side& broken) {
        if (Chance()) asking.console->network.Deliver();
        Ask(asking);
        if (Chance()) asking.console->network.Deliver();
        BreakNow(broken);
    }
    void Return(Side& side) {
        if (!IsUp(side)) Reconnect(*side.console);
    }
    // An orderly end leaves the session with somebody who cannot answer.
    void EndAndReturn(Side& side) {
        Return(side);
        if (Holds(side) && !ModuleHolds()) m_orphaned = true;
        End(*side.console);
        side = {.console = &AddConsole(side.identity), .identity = side.identity};
    }
    void GiveBack(Side& side) {
        if (!Holds(side) || !IsUp(side)) return;
        Copy(side).AllowControl(false);
        Copy(side).SetReadOnly(true);
        side.console->client->ModifyCurrentByName(
            "Kalvex", "a.kx",
            value::CVal(NamesText(MessageCode::PassSession, side.identity, m_identity)));
    }
    // Those that the state of the copy allows.
    void Command(Side& side) {
        engine::CKalvexDoc& copy = Copy(side);
        const engine::RunState& state = copy.State();
        if (state.m_bRunning) return Chance() ? copy.Stop() : copy.Reset();
        if (state.m_bPaused && Chance()) return Chance() ? copy.Step() : copy.Reset();
        copy.Start();
    }
    void Restart() {
        StopForConsoles();
        m_broke = true;
        m_orphaned = false;
        for (const Side& side : m_sides) EXPECT_FALSE(Holds(side)) << side.identity;
        StartForConsoles();
        EXPECT_TRUE(ModuleHolds());
    }

    void Step() {
        m_broke = false;
        Side& side = Some();
        switch (Below(12)) {
            case 0:
            case 1:
            case 2:
                return Ask(side);
            case 3:
                return AskBoth();
            case 4:
                return AskAndBreak(side, side);
            case 5:
                return AskAndBreak(side, Other(side));
            case 6:
                return BreakNow(side);
            case 7:
                return Return(side);
            case 8:
                return EndAndReturn(side);
            case 9:
                return GiveBack(side);
            case 10:
                return Below(4) == 0 ? Restart() : Return(side);
            case 11:
                return Command(side);
        }
    }

    // ---- what holds then

    void CheckSide(Side& side) {
        SCOPED_TRACE(side.identity + " " + side.console->State("a.kx"));
        const bool holds = Holds(side);
        if (holds && !side.held) {
            EXPECT_TRUE(side.asked) << "a session that was not asked for";
            side.asked = false;
            side.doubtful = false;
        }
        if (holds && m_broke) side.doubtful = true;
        if (!holds && side.held && side.doubtful && IsUp(side)) m_spread = true;
        side.held = holds;
        EXPECT_TRUE(holds || Copy(side).IsReadOnly());
        EXPECT_TRUE(IsUp(side) || !holds) << "a session without a connection";
        // Of two who command one script each shows what the other has done, but as a reader does.
        side.shared = holds && (side.shared || Holds(Other(side)));
        if (holds && !side.shared) {
            EXPECT_EQ(Copy(side).IsReadOnly(), (Copy(side).GetStateWord() & kOfARun) != 0);
        }
    }

    void Check() {
        if (m_broke) m_spread = false;
        for (Side& side : m_sides) CheckSide(side);
        int sure = ModuleHolds() ? 1 : 0;
        int doubtful = 0;
        for (const Side& side : m_sides) {
            if (Holds(side)) ++(side.doubtful ? doubtful : sure);
        }
        if (sure + doubtful <= 1) m_spread = false;
        EXPECT_TRUE(sure <= 1 || m_spread) << "a session of two";
        EXPECT_TRUE(sure + doubtful > 0 || m_orphaned) << "a session of nobody";
        EXPECT_TRUE(ModuleHolds() || FindScript("a.kx")->IsReadOnly());
    }

    std::mt19937 m_random{GetParam()};
    std::array<Side, 2> m_sides;
    bool m_broke = false;     // a line, within this step
    bool m_spread = false;    // what was given is a session that its giver need not have had
    bool m_orphaned = false;  // the holder has ended in an orderly way
};

TEST_P(SessionModelTest, SidesAgree) {
    Check();
    for (int step = 0; step < kSteps && !HasFailure(); ++step) {
        SCOPED_TRACE("step " + std::to_string(step));
        Step();
        if (Chance()) Tick(50);
        Settle();
        Check();
    }
}

INSTANTIATE_TEST_SUITE_P(Seeds, SessionModelTest, testing::Range(1u, 41u));

}  // namespace
}  // namespace kalvex::console
