// A document of a console, which shows the run of its module.
#include <gmock/gmock.h>

#include <filesystem>

#include "support/script_world.h"

namespace kalvex::engine {
namespace {

using testing::ElementsAre;
using testing::IsEmpty;

class HeardView final : public ScriptView {
  public:
    void SelectLine(int line) override { Add("select " + std::to_string(line)); }
    void SetLineMarker(int line, bool set) override {
        Add((set ? "mark " : "unmark ") + std::to_string(line));
    }
    void SetReadOnly(bool readOnly) override { Add(readOnly ? "read-only" : "editable"); }
    void RefreshTitle() override { Add("title"); }
    void ClearAllMarkers() override { Add("no marks"); }
    void RefreshVariables() override { Add("variables"); }
    bool HasBreakpoint(int) const override { return true; }

    std::vector<std::string> Take() { return std::exchange(m_calls, {}); }

  private:
    void Add(std::string call) { m_calls.push_back(std::move(call)); }

    std::vector<std::string> m_calls;
};

class HeardLink final : public ConsoleLink {
  public:
    void SendCommand(std::string_view, ConsoleCommand) override {}
    void SendLine(std::string_view, int) override {}
    void SendState(std::string_view, ConsoleStateMessage, int, int) override {}
    void OnSaved(CKalvexDoc& document) override { saved.push_back(document.GetDocKey()); }

    std::vector<std::string> saved;
};

class MirroredDocumentTest : public support::ScriptWorld {
  protected:
    MirroredDocumentTest() {
        services.consoleClient = true;
        services.console = &m_link;
        m_document = &Open("LOCAL A\nLOCAL B\n");
        m_document->SetView(&m_view);
    }
    ~MirroredDocumentTest() override { documents.clear(); }

    HeardLink m_link;
    HeardView m_view;
    CKalvexDoc* m_document = nullptr;
};

TEST_F(MirroredDocumentTest, StateIsThatOfTheModuleButForTheWindow) {
    m_document->MirrorState(StateRunning | StateMinimised);
    EXPECT_EQ(m_document->GetStateWord(), StateRunning);
    EXPECT_THAT(m_view.Take(), ElementsAre("title"));
    m_document->SetMinimised(true);
    m_document->MirrorState(StatePaused | StateStep);
    EXPECT_EQ(m_document->GetStateWord(), StatePaused | StateStep | StateMinimised);
    m_document->MirrorState(0);
    EXPECT_EQ(m_document->GetStateWord(), StateMinimised);
}

TEST_F(MirroredDocumentTest, LineIsSelectedAndMarkedWhileTheScriptStands) {
    m_document->MirrorState(StateRunning);
    m_view.Take();
    m_document->MirrorLine(1);
    EXPECT_THAT(m_view.Take(), ElementsAre("select 1"));
    EXPECT_EQ(m_document->State().m_nMarkedLine, -1);
    for (const int state : {StatePaused, StateStep}) {
        m_document->MirrorState(state);
        m_view.Take();
        m_document->MirrorLine(state);
        EXPECT_THAT(m_view.Take(), ElementsAre("select " + std::to_string(state),
                                               "mark " + std::to_string(state)));
        EXPECT_EQ(m_document->State().m_nMarkedLine, state);
        EXPECT_EQ(m_document->State().m_nCurrentLine, state);
    }
    m_document->MirrorLine(-5);
    EXPECT_THAT(m_view.Take(), ElementsAre("select -1"));
    EXPECT_EQ(m_document->State().m_nCurrentLine, int{StateStep});
    m_document->SetMinimised(true);
    m_document->MirrorLine(1);
    EXPECT_THAT(m_view.Take(), IsEmpty());
    EXPECT_EQ(m_document->State().m_nCurrentLine, 1);
    m_document->SetView(nullptr);
    m_document->SetMinimised(false);
    m_document->MirrorLine(0);
    EXPECT_EQ(m_document->State().m_nCurrentLine, 0);
}

TEST_F(MirroredDocumentTest, LineIsCleared) {
    m_document->MirrorState(StatePaused);
    m_document->MirrorLine(1);
    m_view.Take();
    m_document->ClearLine();
    EXPECT_THAT(m_view.Take(), ElementsAre("unmark 1", "select -1"));
    EXPECT_EQ(m_document->State().m_nMarkedLine, -1);
}

TEST_F(MirroredDocumentTest, TextIsPreparedAsForARunAndRestoredAtItsEnd) {
    WriteFile("inc.kx", "LOCAL I\n");
    WriteFile("main.kx", "INCLUDE inc.kx\n");
    m_document->SetModified(true);
    m_document->PrepareRun();
    EXPECT_TRUE(m_document->State().m_bIncludesExpanded);
    EXPECT_FALSE(m_document->IsModified());
    EXPECT_EQ(m_document->GetLine(1), "LOCAL I");
    m_document->PrepareRun();
    EXPECT_EQ(m_document->GetLine(1), "LOCAL I");
    m_document->MirrorState(StatePaused);
    m_document->MirrorLine(1);
    m_document->AllowControl(false);
    m_view.Take();
    m_document->EndRun();
    EXPECT_EQ(m_document->GetStateWord(), 0);
    EXPECT_EQ(m_document->State().m_nCurrentLine, 0);
    EXPECT_TRUE(m_document->IsReadOnly());
    EXPECT_EQ(m_document->Text().GetLine(0), "INCLUDE inc.kx");
    EXPECT_THAT(m_view.Take(),
                ElementsAre("unmark 1", "select -1", "variables", "read-only", "title"));
    EXPECT_THAT(Log(), IsEmpty());
    m_document->AllowControl(true);
    m_document->EndRun();
    EXPECT_FALSE(m_document->IsReadOnly());
}

TEST_F(MirroredDocumentTest, ConsoleHearsOfASavedText) {
    std::string error;
    EXPECT_TRUE(m_document->Save(error));
    EXPECT_TRUE(m_document->SaveOrLog());
    EXPECT_THAT(m_link.saved, ElementsAre("main.kx", "main.kx"));
    std::filesystem::remove(folder.Path("main.kx"));
    std::filesystem::create_directory(folder.Path("main.kx"));
    EXPECT_FALSE(m_document->SaveOrLog());
    EXPECT_EQ(m_link.saved.size(), 2u);
    EXPECT_EQ(Log().size(), 1u);
}

}  // namespace
}  // namespace kalvex::engine
