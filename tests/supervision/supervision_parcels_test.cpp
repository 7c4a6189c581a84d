#include "supervision/SupervisionParcels.h"

#include <gmock/gmock.h>

#include "kalvex.pb.h"
#include "text/CodePage.h"

namespace kalvex::supervision {
namespace {

using testing::ElementsAre;
using testing::IsEmpty;
namespace pb = ::kalvex::v1;

engine::ScriptStanding FullStanding() {
    engine::ScriptStanding standing;
    standing.line = 7;
    standing.text = text::FromUtf8("SET A = Gaz@Ciśnienie");
    standing.state = engine::StandingState::Waiting;
    standing.since = 1;
    standing.stopped = 2;
    standing.until = 3;
    standing.missing = {{"A.HREP",
                         value::KindHour,
                         {"Gaz", text::FromUtf8("Ciśnienie"), engine::DataState::Down, "powód"}}};
    standing.error.code = 15;
    standing.error.times = 42;
    standing.message = text::FromUtf8("Błąd");
    standing.lastFinished = 4;
    standing.release = engine::Release::Connection;
    return standing;
}

void ExpectSame(const engine::ScriptStanding& a, const engine::ScriptStanding& b) {
    EXPECT_EQ(a.line, b.line);
    EXPECT_EQ(a.text, b.text);
    EXPECT_EQ(a.state, b.state);
    EXPECT_EQ(a.since, b.since);
    EXPECT_EQ(a.stopped, b.stopped);
    EXPECT_EQ(a.until, b.until);
    ASSERT_EQ(a.missing.size(), b.missing.size());
    for (std::size_t i = 0; i < a.missing.size(); ++i) {
        EXPECT_EQ(a.missing[i].name, b.missing[i].name);
        EXPECT_EQ(a.missing[i].kind, b.missing[i].kind);
        EXPECT_EQ(a.missing[i].condition.source, b.missing[i].condition.source);
        EXPECT_EQ(a.missing[i].condition.variable, b.missing[i].condition.variable);
        EXPECT_EQ(a.missing[i].condition.state, b.missing[i].condition.state);
        EXPECT_EQ(a.missing[i].condition.reason, b.missing[i].condition.reason);
    }
    EXPECT_EQ(a.error.code, b.error.code);
    EXPECT_EQ(a.error.times, b.error.times);
    EXPECT_EQ(a.message, b.message);
    EXPECT_EQ(a.lastFinished, b.lastFinished);
    EXPECT_EQ(a.release, b.release);
}

TEST(SupervisionParcelsTest, QuestionComesThroughWhole) {
    const Question asked{"JAN", text::FromUtf8("zażółć"), "Konsola", "a.kx", -5};
    Question taken;
    ASSERT_TRUE(Unpack(Pack(asked), taken));
    EXPECT_EQ(taken.user, "JAN");
    EXPECT_EQ(taken.password, text::FromUtf8("zażółć"));
    EXPECT_EQ(taken.clientName, "Konsola");
    EXPECT_EQ(taken.script, "a.kx");
    EXPECT_EQ(taken.since, -5);
    EXPECT_FALSE(Unpack("\xff\xff", taken));
}

TEST(SupervisionParcelsTest, StandingComesThroughWhole) {
    engine::ScriptStanding taken;
    ASSERT_TRUE(Unpack(Pack(FullStanding()), taken));
    ExpectSame(taken, FullStanding());
    EXPECT_FALSE(Unpack("\xff\xff", taken));
}

TEST(SupervisionParcelsTest, WordsOfEnumerationsComeThroughOneByOne) {
    engine::ScriptStanding standing;
    engine::ScriptStanding taken;
    for (int state = 0; state <= static_cast<int>(engine::StandingState::Finished); ++state) {
        standing.state = static_cast<engine::StandingState>(state);
        ASSERT_TRUE(Unpack(Pack(standing), taken));
        EXPECT_EQ(taken.state, standing.state);
    }
    for (int release = 0; release <= static_cast<int>(engine::Release::Subscribe); ++release) {
        standing.release = static_cast<engine::Release>(release);
        ASSERT_TRUE(Unpack(Pack(standing), taken));
        EXPECT_EQ(taken.release, standing.release);
    }
    standing.missing.resize(1);
    for (int state = 0; state <= static_cast<int>(engine::DataState::NoReport); ++state) {
        standing.missing[0].condition.state = static_cast<engine::DataState>(state);
        ASSERT_TRUE(Unpack(Pack(standing), taken));
        EXPECT_EQ(taken.missing.at(0).condition.state, standing.missing[0].condition.state);
    }
}

TEST(SupervisionParcelsTest, WordsOfANewerModuleSayLeast) {
    for (const int value : {0, 99, -1}) {
        pb::Standing out;
        out.set_state(static_cast<pb::Standing::State>(value));
        out.set_release(static_cast<pb::Standing::Release>(value));
        out.add_missing()->set_state(static_cast<pb::MissingValue::State>(value));
        out.mutable_missing(0)->set_kind(value);
        engine::ScriptStanding taken;
        ASSERT_TRUE(Unpack(out.SerializeAsString(), taken));
        EXPECT_EQ(taken.state, engine::StandingState::Running);
        EXPECT_EQ(taken.release, engine::Release::None);
        EXPECT_EQ(taken.missing.at(0).condition.state, engine::DataState::Unknown);
        EXPECT_EQ(taken.missing.at(0).kind, value::KindCurrent);
    }
}

TEST(SupervisionParcelsTest, StatusComesThroughWhole) {
    StatusPiece piece;
    piece.status = {"Kalvex", "Kalvex_stacja", 2, {}};
    piece.status.scripts.resize(2);
    app::ScriptStatus& script = piece.status.scripts[0];
    script.path = text::FromUtf8("kotłownia.kx");
    script.stateWord = 9;
    script.line = 0;
    script.report = engine::ScriptReport{5, 1, 3, text::FromUtf8("Błąd"), true};
    script.standing = FullStanding();
    script.sessionGiven = true;
    piece.closed = {text::FromUtf8("ż.kx"), "b.kx"};
    piece.complete = true;
    const std::vector<std::string> parcels = Pack(piece);
    ASSERT_EQ(parcels.size(), 1U);
    StatusPiece taken;
    ASSERT_TRUE(Unpack(parcels[0], taken));
    EXPECT_EQ(taken.status.module, "Kalvex");
    EXPECT_EQ(taken.status.identity, "Kalvex_stacja");
    EXPECT_EQ(taken.status.logLevel, 2);
    EXPECT_EQ(taken.closed, piece.closed);
    EXPECT_TRUE(taken.complete);
    ASSERT_EQ(taken.status.scripts.size(), 2U);
    const app::ScriptStatus& same = taken.status.scripts[0];
    EXPECT_EQ(same.path, script.path);
    EXPECT_EQ(same.stateWord, 9);
    EXPECT_EQ(same.line, 0);
    ASSERT_TRUE(same.report);
    EXPECT_EQ(same.report->time, 5);
    EXPECT_EQ(same.report->level, 1);
    EXPECT_EQ(same.report->line, 3);
    EXPECT_EQ(same.report->text, text::FromUtf8("Błąd"));
    EXPECT_TRUE(same.report->waiting);
    ExpectSame(same.standing, FullStanding());
    EXPECT_TRUE(same.sessionGiven);
    EXPECT_FALSE(taken.status.scripts[1].line);
    EXPECT_FALSE(taken.status.scripts[1].report);
    EXPECT_FALSE(taken.status.scripts[1].sessionGiven);
    EXPECT_FALSE(Unpack("\xff\xff", taken));
}

TEST(SupervisionParcelsTest, LongStatusGoesInPiecesThatEachNameTheModule) {
    StatusPiece piece;
    piece.status.module = "Kalvex";
    piece.status.scripts.resize(100);
    for (app::ScriptStatus& script : piece.status.scripts) {
        script.standing.text = std::string(kLongestText, 'x');
    }
    piece.complete = true;
    piece.closed = {"a.kx"};
    std::size_t scripts = 0;
    const std::vector<std::string> parcels = Pack(piece);
    EXPECT_GT(parcels.size(), 1U);
    for (const std::string& parcel : parcels) {
        StatusPiece taken;
        ASSERT_TRUE(Unpack(parcel, taken));
        EXPECT_LT(parcel.size(), 512U << 10);
        EXPECT_EQ(taken.status.module, "Kalvex");
        const bool last = &parcel == &parcels.back();
        EXPECT_EQ(taken.complete, last);
        EXPECT_EQ(taken.closed.size(), last ? 1U : 0U);
        scripts += taken.status.scripts.size();
    }
    EXPECT_EQ(scripts, 100U);
}

TEST(SupervisionParcelsTest, TextThatIsTooLongIsCut) {
    engine::ScriptStanding standing;
    standing.text = std::string(kLongestText + 1, 'x');
    engine::ScriptStanding taken;
    ASSERT_TRUE(Unpack(Pack(standing), taken));
    EXPECT_EQ(taken.text, std::string(kLongestText, 'x') + "...");
}

TEST(SupervisionParcelsTest, BreakpointsComeThrough) {
    std::vector<int> taken{9};
    ASSERT_TRUE(Unpack(Pack(std::vector<int>{0, 3, 17}), taken));
    EXPECT_THAT(taken, ElementsAre(0, 3, 17));
    ASSERT_TRUE(Unpack(Pack(std::vector<int>{}), taken));
    EXPECT_THAT(taken, IsEmpty());
    EXPECT_FALSE(Unpack("\xff\xff", taken));
}

TEST(SupervisionParcelsTest, AuditComesThroughWhole) {
    AuditPiece piece;
    piece.entries.push_back({7,
                             {audit::AuditAction::Value, "a.kx", text::FromUtf8("ŻANETA"),
                              "10.1.2.3", "Konsola_RC", "X", "5.00", std::string()}});
    piece.entries.push_back({8, {.action = audit::AuditAction::SessionsTakenBack}});
    piece.unreadable = 3;
    piece.faults = {"/x (brak)"};
    AuditPiece taken;
    ASSERT_TRUE(Unpack(Pack(piece), taken));
    EXPECT_EQ(taken.entries, piece.entries);
    EXPECT_EQ(taken.unreadable, 3U);
    EXPECT_EQ(taken.faults, piece.faults);
    EXPECT_FALSE(Unpack("\xff\xff", taken));
}

TEST(SupervisionParcelsTest, TextThatIsNoneIsToldToNobody) {
    Question taken;
    testing::internal::CaptureStderr();
    EXPECT_FALSE(Unpack("\x12\x01\xff", taken));
    EXPECT_EQ(testing::internal::GetCapturedStderr(), "");
}

TEST(SupervisionParcelsTest, ActionOfANewerModuleIsPassedOver) {
    pb::Audit out;
    out.add_entries()->set_action("nowa");
    out.add_entries()->set_action("start");
    AuditPiece taken;
    ASSERT_TRUE(Unpack(out.SerializeAsString(), taken));
    ASSERT_EQ(taken.entries.size(), 1U);
    EXPECT_EQ(taken.entries[0].record.action, audit::AuditAction::Start);
}

}  // namespace
}  // namespace kalvex::supervision
