#include "workbench/qt/VariablesSource.h"

#include <gmock/gmock.h>
#include <gtest/gtest.h>

#include <algorithm>

#include "support/in_process.h"
#include "support/script_world.h"
#include "text/CodePage.h"

namespace kalvex::window {
namespace {

using testing::ElementsAre;
using testing::IsEmpty;

class VariablesSourceTest : public support::ScriptWorld {
  protected:
    workbench::VariablesTable m_table;
};

TEST_F(VariablesSourceTest, ModuleShowsAndChangesTheVariablesOfItsScript) {
    engine::CKalvexDoc& document = Run("LOCAL X = 5\nLIST L\n");
    const VariablesSource source = ModuleVariables(document);
    EXPECT_EQ(source.refresh(m_table).newCount, 2);
    EXPECT_EQ(m_table.NameOf(1), "L");
    EXPECT_EQ(value::ValueToText(source.read("X").value()), "5.00");
    EXPECT_EQ(source.read("NIE"), std::nullopt);
    EXPECT_TRUE(source.write("X", value::CVal("sze\x9c\xe6")));
    EXPECT_EQ(Value(document, "X"), "190:sześć");
    EXPECT_FALSE(source.write("L", value::CVal(1)));
    EXPECT_FALSE(source.ask);
    EXPECT_FALSE(source.askAll);
    document.Reset();
    EXPECT_EQ(source.refresh(m_table).newCount, 0);
}

// A console that has a script open, and what it writes to its module.
class SilentConsole final : private console::ClientHost, private vantrel::RequestJournal {
  public:
    explicit SilentConsole(engine::CKalvexDoc& document) : m_document(document) {
        m_console.Open();
    }

    console::ClientConsole& Console() { return m_console; }
    std::vector<std::string> Sent() { return std::exchange(m_sent, {}); }

  private:
    engine::CKalvexDoc* FindScript(std::string_view) override { return &m_document; }
    engine::CKalvexDoc* OpenScript(std::string_view) override { return nullptr; }
    void CloseScript(engine::CKalvexDoc&) override {}
    std::vector<engine::CKalvexDoc*> Scripts() override { return {&m_document}; }
    workbench::DocumentModel& ModelOf(const engine::CKalvexDoc&) override { return m_model; }
    void MinimiseFrame(engine::CKalvexDoc&) override {}
    void ShowVariables(engine::CKalvexDoc&, int) override {}
    void ShowMessage(std::string_view) override {}
    void UpdateTitle() override {}
    void ClearLog() override {}
    void LogFromModule(std::string_view, std::int64_t, int) override {}
    void TakeLogLevel(int) override {}
    const std::string& GetClientIdentity() const override { return m_identity; }
    void Record(const vantrel::CClientConnection&, vantrel::JournalEntry entry) override {
        if (entry.operation != "AddCurrentDataModifyRequest") return;
        std::string text = value::ValueToText(*entry.value);
        std::ranges::replace(text, '\t', '|');
        m_sent.push_back(*entry.variable + ": " + text);
    }

    engine::CKalvexDoc& m_document;
    workbench::DocumentModel m_model;
    std::vector<std::string> m_sent;
    const std::string m_identity = "K_RC";
    support::LogRecorder m_log;
    support::FixedUser m_users;
    support::AnsweredQuestions m_questions;
    platform::Translator m_translator;
    platform::PostedWork m_loop;
    support::InProcessNetwork m_network;
    sources::CClientInterface m_sources{{m_log, m_translator, m_users, m_network, this}};
    console::ClientConsole m_console{
        {m_log, m_translator, m_questions, m_loop, m_sources, *this, "Kalvex"}};
};

TEST_F(VariablesSourceTest, ConsoleAsksAndOrdersItsModule) {
    engine::CKalvexDoc& document = Open("LOCAL X\nREMOTE R srv@V\n");
    SilentConsole console(document);
    workbench::VariableRows rows;
    rows.Rebuild(document.Text());
    const VariablesSource source = ClientVariables(console.Console(), document, rows);
    EXPECT_EQ(source.refresh(m_table).newCount, 2);
    rows.Update("R", ";7;");
    EXPECT_THAT(source.refresh(m_table).cells, ElementsAre(workbench::CellPlace{1, 2}));
    for (const char* name : {"X", "NIE"}) {
        const std::optional<value::CVal> value = source.read(name);
        ASSERT_TRUE(value.has_value());
        EXPECT_EQ(value->GetType(), value::ValueType::None);
    }
    EXPECT_THAT(console.Sent(), IsEmpty());
    source.ask("X");
    EXPECT_THAT(console.Sent(), ElementsAre("VL:main.kx: 18|X"));
    source.askAll();
    EXPECT_THAT(console.Sent(), ElementsAre("VL:main.kx: 20"));
    value::CVal value("a b");
    value.SetStatus(2080);
    EXPECT_TRUE(source.write("X", value));
    EXPECT_THAT(console.Sent(), ElementsAre("VL:main.kx: 17|X|a b|190|2080"));
    EXPECT_FALSE(source.write("X", value::CVal()));
    EXPECT_THAT(console.Sent(), IsEmpty());
}

}  // namespace
}  // namespace kalvex::window
