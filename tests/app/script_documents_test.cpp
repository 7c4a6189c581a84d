#include "app/ScriptDocuments.h"

#include <gmock/gmock.h>

#include "app_fakes.h"

namespace kalvex::app {
namespace {

using testing::ElementsAre;
using testing::IsEmpty;

class ScriptDocumentsTest : public AppTest, private DocumentsListener {
  protected:
    void Begin() {
        PutScript("a.kx", "LOCAL A\n");
        ASSERT_TRUE(Start({"/NOLOGIN"}));
        App().Documents().SetListener(this);
    }
    ~ScriptDocumentsTest() override {
        if (m_app) App().Documents().SetListener(nullptr);
    }
    engine::CKalvexDoc& Open() {
        std::string error;
        return *App().Documents().Open("a.kx", error);
    }

    std::vector<std::string> m_heard;

  private:
    void OnScriptOpened(engine::CKalvexDoc& document) override {
        m_heard.push_back("opened " + document.GetDocKey());
        EXPECT_TRUE(App().Documents().IsOpen(document));
    }
    void OnScriptClosing(engine::CKalvexDoc& document) override {
        m_heard.push_back("closing " + document.GetDocKey());
        EXPECT_TRUE(App().Documents().IsOpen(document));
        App().Documents().ModelOf(document);
    }
};

TEST_F(ScriptDocumentsTest, ListenerHearsOfEachScriptOnce) {
    Begin();
    engine::CKalvexDoc& script = Open();
    EXPECT_EQ(&Open(), &script);
    std::string error;
    EXPECT_EQ(App().Documents().Open("brak.kx", error), nullptr);
    EXPECT_EQ(error, "No such file or directory");
    App().Documents().OpenNew();
    App().Documents().Close(script);
    EXPECT_THAT(m_heard, ElementsAre("opened a.kx", "opened ", "closing a.kx"));
}

TEST_F(ScriptDocumentsTest, NewScriptHasNoFile) {
    Begin();
    const engine::CKalvexDoc& script = App().Documents().OpenNew();
    EXPECT_EQ(script.GetPathName(), "");
    EXPECT_EQ(script.GetDocKey(), "");
    EXPECT_FALSE(script.IsModified());
    EXPECT_EQ(App().Documents().Find("a.kx"), nullptr);
}

TEST_F(ScriptDocumentsTest, ScriptThatIsClosedWhileHeldIsThereUntilItIsNot) {
    Begin();
    engine::CKalvexDoc& script = Open();
    ASSERT_TRUE(script.Start());
    App().Documents().Hold();
    App().Documents().Hold();
    App().Documents().Close(script);
    EXPECT_THAT(App().Documents().All(), IsEmpty());
    EXPECT_FALSE(App().Documents().IsOpen(script));
    EXPECT_EQ(script.GetStateWord(), 0);
    App().Documents().Release();
    EXPECT_EQ(script.GetDocKey(), "a.kx");
    App().Documents().Release();
    EXPECT_NE(&Open(), nullptr);
}

TEST_F(ScriptDocumentsTest, ScriptIsGivenAFileAndLosesIt) {
    Begin();
    engine::CKalvexDoc& script = App().Documents().OpenNew();
    App().Documents().SetFile(script, "pod/b.kx");
    EXPECT_EQ(script.GetPathName(), m_folder.Path("pod/b.kx"));
    EXPECT_EQ(script.GetDocKey(), "pod/b.kx");
    EXPECT_EQ(App().Documents().Find("pod/b.kx"), &script);
    App().Documents().SetFile(script, "");
    EXPECT_EQ(App().Documents().Find("pod/b.kx"), nullptr);
    EXPECT_EQ(script.GetPathName(), "");
    EXPECT_EQ(script.GetDocKey(), "");
}

TEST_F(ScriptDocumentsTest, OfTwoScriptsOfOnePathTheOneOpenedFirstIsFound) {
    Begin();
    engine::CKalvexDoc& first = App().Documents().OpenNew();
    engine::CKalvexDoc& second = Open();
    App().Documents().SetFile(first, "a.kx");
    EXPECT_EQ(App().Documents().Find("a.kx"), &first);
    App().Documents().Close(first);
    EXPECT_EQ(App().Documents().Find("a.kx"), &second);
    App().Documents().Close(second);
    EXPECT_EQ(App().Documents().Find("a.kx"), nullptr);
}

}  // namespace
}  // namespace kalvex::app
