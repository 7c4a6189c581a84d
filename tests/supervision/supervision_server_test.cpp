#include "supervision/SupervisionServer.h"

#include <gmock/gmock.h>

#include <cstdio>
#include <cstdlib>
#include <filesystem>
#include <fstream>

#include "audit/AuditFiles.h"
#include "supervision/AuditReader.h"
#include "support/one_thread.h"
#include "support/scratch_folder.h"
#include "support/waiting_loop.h"

namespace kalvex::supervision {
namespace {

using testing::ElementsAre;
using testing::IsEmpty;

class HandModule final : public app::Supervised {
  public:
    void Admit(vantrel::LoginRequest login, const std::string& address, std::weak_ptr<const void>,
               std::function<void(const app::Admission&)> done) override {
        asked = login.user + "|" + std::string(login.password.View()) + "|" + login.clientName +
                "|" + address;
        if (waits) {
            waiting = std::move(done);
        } else {
            done(admission);
        }
    }
    app::ModuleStatus GetStatus() override {
        ++looks;
        return status;
    }
    std::optional<std::vector<int>> GetBreakpoints(std::string_view script) override {
        if (script != "a.kx") return {};
        return std::vector<int>{2, 7};
    }
    std::optional<engine::ScriptStanding> GetStanding(std::string_view script) override {
        if (script != "a.kx") return {};
        engine::ScriptStanding standing;
        standing.line = 4;
        return standing;
    }
    std::vector<std::string> GetAuditFiles() override { return files; }

    std::string asked;
    app::Admission admission{app::Admission::Admitted};
    bool waits = false;
    std::function<void(const app::Admission&)> waiting;
    int looks = 0;  // at the status
    app::ModuleStatus status{"Kalvex", "Kalvex_stacja", 1, {}};
    std::vector<std::string> files;
};

class HandLink final : public vantrel::FurtherLink {
  public:
    void Send(std::string parcel) override { parcels.push_back(std::move(parcel)); }
    void Finish(vantrel::StreamEnd how, std::string text) override {
        end = how;
        detail = std::move(text);
    }
    std::size_t Backlog() const override { return backlog; }
    const std::string& PeerAddress() const override { return address; }

    std::vector<std::string> parcels;
    std::optional<vantrel::StreamEnd> end;
    std::string detail;
    std::size_t backlog = 0;
    std::string address = "10.1.2.3";
};

class SupervisionServerTest : public testing::Test {
  protected:
    SupervisionServerTest() {
        AddScript("a.kx");
        AddScript("b.kx");
    }

    void AddScript(const std::string& path) {
        m_module.status.scripts.emplace_back();
        m_module.status.scripts.back().path = path;
    }

    void Ask(Method method, const Question& question = {}) {
        m_link = HandLink();
        m_call.reset();
        m_call = m_server.Accept(static_cast<std::size_t>(method), m_link);
        m_call->OnParcel(Pack(question));
    }

    // A second later.
    void Check() {
        m_loop.Run();
        m_call->Check();
    }

    // "module: scripts, -closed." of what has come since the last call; "." when it is complete.
    std::vector<std::string> Told() {
        std::vector<std::string> lines;
        for (const std::string& parcel : std::exchange(m_link.parcels, {})) {
            StatusPiece piece;
            EXPECT_TRUE(Unpack(parcel, piece));
            std::string line = piece.status.module + std::to_string(piece.status.logLevel) + ":";
            for (const auto& script : piece.status.scripts) {
                line += " " + script.path + std::to_string(script.stateWord);
            }
            for (const std::string& path : piece.closed) line += " -" + path;
            lines.push_back(line + (piece.complete ? "." : ""));
        }
        return lines;
    }

    // A trail of so many starts of a.kx, a second apart.
    void WriteTrail(int entries, const std::string& text = {}) {
        const std::string path = m_folder.Path("x.audit.log");
        std::ofstream file(path, std::ios::app);
        for (int i = 0; i < entries; ++i) {
            file << audit::AuditLine({i,
                                      {.action = audit::AuditAction::Start,
                                       .script = i % 2 == 0 ? "a.kx" : "b.kx",
                                       .name = text}});
        }
        m_module.files = {path};
    }

    // Takes the pieces of an audit as they come; the number of entries in each.
    std::vector<std::size_t> TakeAudit() {
        std::vector<std::size_t> sizes;
        while (!m_link.end) m_loop.WaitAndRun();
        for (const std::string& parcel : m_link.parcels) {
            EXPECT_TRUE(Unpack(parcel, m_audit));
            sizes.push_back(m_audit.entries.size());
        }
        return sizes;
    }

    support::ScratchFolder m_folder;
    support::WaitingLoop m_loop;
    HandModule m_module;
    SupervisionServer m_server{m_module, m_loop};
    HandLink m_link;
    AuditPiece m_audit;  // the last piece
    std::unique_ptr<vantrel::FurtherCall> m_call;
};

TEST_F(SupervisionServerTest, MethodsAreFoundByTheirNamesAndNoOthersAre) {
    for (std::size_t i = 0; i < kMethodNames.size(); ++i) {
        EXPECT_EQ(m_server.Find(kMethodNames.at(i)), i);
    }
    EXPECT_EQ(m_server.Find("/kalvex.v1.Supervision/Start"), std::nullopt);
    EXPECT_EQ(m_server.Find(""), std::nullopt);
}

TEST_F(SupervisionServerTest, LoginIsCheckedInEachCall) {
    for (int method = 0; method < static_cast<int>(kMethodNames.size()); ++method) {
        m_module.admission = {app::Admission::LoginRefused,
                              "b\xB3\xB9"
                              "d"};
        Ask(static_cast<Method>(method), {"JAN", "haslo", "Konsola"});
        EXPECT_EQ(m_module.asked, "JAN|haslo|Konsola|10.1.2.3");
        EXPECT_EQ(m_link.end, vantrel::StreamEnd::LoginRefused);
        EXPECT_EQ(m_link.detail, "błąd");
        m_module.admission = {app::Admission::NoRight, "nie"};
        Ask(static_cast<Method>(method));
        EXPECT_EQ(m_link.end, vantrel::StreamEnd::Refused);
        EXPECT_EQ(m_link.detail, "nie");
        EXPECT_THAT(m_link.parcels, IsEmpty());
    }
}

TEST_F(SupervisionServerTest, WhatIsNoQuestionIsNotAnswered) {
    m_call = m_server.Accept(0, m_link);
    m_call->OnParcel("\xff\xff");
    EXPECT_EQ(m_link.end, vantrel::StreamEnd::NotAQuestion);
    EXPECT_EQ(m_module.asked, "");
}

TEST_F(SupervisionServerTest, SecondQuestionOfACallIsPassedOver) {
    Ask(Method::GetStatus);
    m_module.asked.clear();
    m_call->OnParcel(Pack(Question{}));
    EXPECT_EQ(m_module.asked, "");
}

TEST_F(SupervisionServerTest, AdmissionThatComesWhenTheCallHasGoneIsForgotten) {
    m_module.waits = true;
    Ask(Method::GetStatus);
    m_call.reset();
    m_module.waiting({app::Admission::Admitted});
    EXPECT_THAT(m_link.parcels, IsEmpty());
    EXPECT_FALSE(m_link.end);
}

TEST_F(SupervisionServerTest, StatusIsToldOnce) {
    Ask(Method::GetStatus);
    EXPECT_THAT(Told(), ElementsAre("Kalvex1: a.kx0 b.kx0."));
    EXPECT_EQ(m_link.end, vantrel::StreamEnd::Orderly);
}

TEST_F(SupervisionServerTest, WatcherHearsEverythingAndThenWhatChanges) {
    Ask(Method::WatchStatus);
    EXPECT_THAT(Told(), ElementsAre("Kalvex1: a.kx0 b.kx0."));
    Check();
    EXPECT_THAT(Told(), IsEmpty());
    m_module.status.scripts[1].stateWord = 1;
    Check();
    EXPECT_THAT(Told(), ElementsAre("Kalvex1: b.kx1"));
    m_module.status.scripts.erase(m_module.status.scripts.begin());
    AddScript("c.kx");
    Check();
    EXPECT_THAT(Told(), ElementsAre("Kalvex1: c.kx0 -a.kx"));
    m_module.status.logLevel = 3;
    Check();
    EXPECT_THAT(Told(), ElementsAre("Kalvex3:"));
    Check();
    EXPECT_THAT(Told(), IsEmpty());
    EXPECT_FALSE(m_link.end);
}

TEST_F(SupervisionServerTest, WatcherHearsOfEachThingThatChangesInAScript) {
    Ask(Method::WatchStatus);
    app::ScriptStatus& script = m_module.status.scripts[0];
    const std::function<void()> changes[] = {
        [&] { script.line = 0; },
        [&] { script.report = engine::ScriptReport{}; },
        [&] { script.report->time = 1; },
        [&] { script.standing.error.times = 2; },
        [&] { script.sessionGiven = true; },
    };
    for (const auto& change : changes) {
        Told();
        change();
        Check();
        EXPECT_THAT(Told(), ElementsAre("Kalvex1: a.kx0"));
    }
}

TEST_F(SupervisionServerTest, WatcherThatIsSlowGetsTheNewestState) {
    Ask(Method::WatchStatus);
    Told();
    m_link.backlog = 1;
    for (const int word : {1, 2, 3}) {
        m_module.status.scripts[0].stateWord = word;
        Check();
    }
    EXPECT_THAT(Told(), IsEmpty());
    m_link.backlog = 0;
    Check();
    EXPECT_THAT(Told(), ElementsAre("Kalvex1: a.kx3"));
}

TEST_F(SupervisionServerTest, WatcherGetsASignOfLifeWhenThereIsNothingToTell) {
    Ask(Method::WatchStatus);
    Told();
    for (int second = 1; second < 10; ++second) Check();
    EXPECT_THAT(Told(), IsEmpty());
    Check();
    EXPECT_THAT(Told(), ElementsAre("Kalvex1:"));
    for (int second = 1; second < 10; ++second) Check();
    EXPECT_THAT(Told(), IsEmpty());
}

TEST_F(SupervisionServerTest, AllWhoLookAtOneTimeSeeTheSame) {
    std::vector<std::unique_ptr<HandLink>> links;
    std::vector<std::unique_ptr<vantrel::FurtherCall>> calls;
    for (int number = 0; number < 3; ++number) {
        links.push_back(std::make_unique<HandLink>());
        calls.push_back(
            m_server.Accept(static_cast<std::size_t>(Method::WatchStatus), *links.back()));
        calls.back()->OnParcel(Pack(Question{}));
    }
    EXPECT_EQ(m_module.looks, 1);
    m_loop.Run();
    for (const auto& call : calls) call->Check();
    EXPECT_EQ(m_module.looks, 2);
}

TEST_F(SupervisionServerTest, NobodyWatchesBeforeTheAdmission) {
    m_module.waits = true;
    Ask(Method::WatchStatus);
    for (int second = 0; second < 20; ++second) Check();
    EXPECT_THAT(Told(), IsEmpty());
}

TEST_F(SupervisionServerTest, BreakpointsAndStandingAreThoseOfAnOpenScript) {
    Ask(Method::GetBreakpoints, {.script = "a.kx"});
    std::vector<int> lines;
    ASSERT_TRUE(Unpack(m_link.parcels.at(0), lines));
    EXPECT_THAT(lines, ElementsAre(2, 7));
    EXPECT_EQ(m_link.end, vantrel::StreamEnd::Orderly);
    Ask(Method::GetStanding, {.script = "a.kx"});
    engine::ScriptStanding standing;
    ASSERT_TRUE(Unpack(m_link.parcels.at(0), standing));
    EXPECT_EQ(standing.line, 4);
    EXPECT_EQ(m_link.end, vantrel::StreamEnd::Orderly);
    for (const Method method : {Method::GetBreakpoints, Method::GetStanding}) {
        Ask(method, {.script = "nie.kx"});
        EXPECT_EQ(m_link.end, vantrel::StreamEnd::NotFound);
        EXPECT_THAT(m_link.parcels, IsEmpty());
    }
}

TEST_F(SupervisionServerTest, AuditGoesInPieces) {
    WriteTrail(2 * kEntriesOfAPiece + 3);
    Ask(Method::GetAudit);
    EXPECT_THAT(TakeAudit(), ElementsAre(kEntriesOfAPiece, kEntriesOfAPiece, 3));
    EXPECT_EQ(m_link.end, vantrel::StreamEnd::Orderly);
    EXPECT_EQ(m_audit.unreadable, 0U);
}

TEST_F(SupervisionServerTest, PieceOfLongTextsIsShorter) {
    WriteTrail(20, std::string(16000, 'x'));
    Ask(Method::GetAudit);
    EXPECT_THAT(TakeAudit(), ElementsAre(17, 3));
}

TEST_F(SupervisionServerTest, AuditKeepsToTheTimeAndTheScript) {
    WriteTrail(10);
    Ask(Method::GetAudit, {.script = "b.kx", .since = 5});
    EXPECT_THAT(TakeAudit(), ElementsAre(3));
    EXPECT_EQ(m_audit.entries.front().time, 5);
    EXPECT_EQ(m_audit.entries.front().record.script, "b.kx");
}

TEST_F(SupervisionServerTest, AuditTellsWhatCouldNotBeRead) {
    WriteTrail(1);
    std::ofstream(m_folder.Path("x.audit.log"), std::ios::app) << "{\"seconds\":99999,\n";
    m_module.files.insert(m_module.files.begin(), m_folder.Path(""));
    Ask(Method::GetAudit);
    EXPECT_THAT(TakeAudit(), ElementsAre(1));
    EXPECT_EQ(m_audit.unreadable, 1U);
    EXPECT_THAT(m_audit.faults, testing::SizeIs(1));
}

TEST_F(SupervisionServerTest, AuditWaitsForAClientThatIsSlow) {
    WriteTrail(2 * kEntriesOfAPiece);
    m_link.backlog = 1;
    m_call = m_server.Accept(static_cast<std::size_t>(Method::GetAudit), m_link);
    m_call->OnParcel(Pack(Question{}));
    while (m_link.parcels.empty()) m_loop.WaitAndRun();
    EXPECT_EQ(m_link.parcels.size(), 1U);
    m_link.backlog = 0;
    m_call->OnDrained();
    EXPECT_THAT(TakeAudit(), ElementsAre(kEntriesOfAPiece, kEntriesOfAPiece, 0));
}

TEST_F(SupervisionServerTest, OnlySoManyTrailsAreReadAtATime) {
    WriteTrail(1);
    std::vector<std::unique_ptr<HandLink>> links;
    std::vector<std::unique_ptr<vantrel::FurtherCall>> calls;
    const auto ask = [&] {
        links.push_back(std::make_unique<HandLink>());
        calls.push_back(m_server.Accept(static_cast<std::size_t>(Method::GetAudit), *links.back()));
        calls.back()->OnParcel(Pack(Question{}));
    };
    for (int i = 0; i <= kMostReaders; ++i) ask();
    EXPECT_EQ(links.back()->end, vantrel::StreamEnd::TooLarge);
    calls.pop_back();
    ask();
    EXPECT_EQ(links.back()->end, vantrel::StreamEnd::TooLarge);
    calls.erase(calls.begin());
    ask();
    EXPECT_FALSE(links.back()->end);
}

TEST_F(SupervisionServerTest, CallThatGoesInTheMiddleOfATrailEndsItsReading) {
    WriteTrail(5 * kEntriesOfAPiece);
    Ask(Method::GetAudit);
    while (m_link.parcels.empty()) m_loop.WaitAndRun();
    m_call.reset();
    const std::size_t parcels = m_link.parcels.size();
    m_loop.Run();
    EXPECT_EQ(m_link.parcels.size(), parcels);
    EXPECT_FALSE(m_link.end);
}

TEST(SupervisionServerAuditReaderTest, WithoutAThreadThereIsOnePieceWithAFault) {
    if (::geteuid() != 0) GTEST_SKIP() << "only root can be another account";
    const support::ScratchFolder folder;
    const auto read = [&folder] {
        if (!support::LeaveOneThread(folder.Path())) std::_Exit(2);
        platform::PostedWork loop;
        std::string heard;
        const AuditReader reader({folder.Put("audit.log", "")}, 0, "", loop,
                                 [&heard](const AuditPiece& piece, bool last) {
                                     for (const std::string& fault : piece.faults) heard += fault;
                                     if (last) heard += ", last";
                                 });
        loop.Run();
        std::fprintf(stderr, "%s", heard.c_str());
        std::_Exit(0);
    };
    EXPECT_EXIT(read(), testing::ExitedWithCode(0), "^Resource temporarily unavailable, last$");
}

}  // namespace
}  // namespace kalvex::supervision
