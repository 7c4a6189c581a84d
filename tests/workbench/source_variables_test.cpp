// What is kept of a source's variables.
#include "workbench/model/SourceVariables.h"

#include <gmock/gmock.h>
#include <gtest/gtest.h>

#include "support/hand_server.h"

namespace kalvex::workbench {
namespace {

using testing::ElementsAre;
using testing::IsEmpty;
using Answer = SourceVariables::Answer;

class HandSources final : public vantrel::CSourceList {
  public:
    explicit HandSources(support::InProcessNetwork& network) : m_network(network) {}

  protected:
    std::unique_ptr<vantrel::CClientConnection> CreateConnection(std::string_view name) override {
        if (name == "nie") return nullptr;
        auto connection = std::make_unique<support::HeardConnection>();
        connection->Create(23, name, "Kalvex", m_network, nullptr);
        return connection;
    }

  private:
    support::InProcessNetwork& m_network;
};

class SourceVariablesTest : public testing::Test {
  protected:
    SourceVariablesTest() {
        m_first.definitions = {{"A", {}}, {"B", {}}};
        m_second.definitions = {{"C", {}}};
        m_network.AddServer("srv", m_first);
        m_network.AddServer("drugi", m_second);
    }

    Answer Ask(const char* source) {
        return m_variables.Ask(source, [this](const vantrel::CObjInfoList* list) {
            m_done += list == nullptr ? "nothing " : list->front().GetName() + " ";
        });
    }
    std::vector<std::string> Names() const {
        std::vector<std::string> names;
        for (const vantrel::CVarDefInfo& info : m_variables.List()) names.push_back(info.GetName());
        return names;
    }
    int Lists(const support::HandServer& server) const {
        return static_cast<int>(std::ranges::count(server.heard, "list "));
    }

    support::InProcessNetwork m_network;
    support::HandServer m_first;
    support::HandServer m_second;
    HandSources m_sources{m_network};
    SourceVariables m_variables{m_sources};
    std::string m_done;
};

TEST_F(SourceVariablesTest, WithoutANameNobodyIsAsked) {
    m_variables.MarkReload();
    EXPECT_EQ(Ask(""), Answer::NoName);
    EXPECT_EQ(m_done, "");
    EXPECT_TRUE(m_variables.IsReloadMarked());
}

TEST_F(SourceVariablesTest, ConnectionIsMadeAndTheListLoaded) {
    EXPECT_EQ(m_sources.Get("srv"), nullptr);
    EXPECT_EQ(Ask("srv"), Answer::Asked);
    EXPECT_NE(m_sources.Get("srv"), nullptr);
    EXPECT_EQ(m_done, "A ");
    EXPECT_THAT(Names(), ElementsAre("A", "B"));
    EXPECT_EQ(m_variables.GetSource(), "srv");
}

TEST_F(SourceVariablesTest, SecondQuestionIsServedFromWhatIsKeptUntilAReloadIsMarked) {
    Ask("srv");
    m_first.definitions.pop_back();
    EXPECT_EQ(Ask("srv"), Answer::Ready);
    EXPECT_THAT(Names(), ElementsAre("A", "B"));
    EXPECT_EQ(Lists(m_first), 1);
    EXPECT_FALSE(m_variables.IsReloadMarked());
    m_variables.MarkReload();
    EXPECT_TRUE(m_variables.IsReloadMarked());
    EXPECT_EQ(Ask("srv"), Answer::Asked);
    EXPECT_FALSE(m_variables.IsReloadMarked());
    EXPECT_THAT(Names(), ElementsAre("A"));
    EXPECT_EQ(Lists(m_first), 2);
}

TEST_F(SourceVariablesTest, OnlyOneSourceIsKept) {
    Ask("srv");
    EXPECT_EQ(Ask("drugi"), Answer::Asked);
    EXPECT_THAT(Names(), ElementsAre("C"));
    EXPECT_EQ(Ask("srv"), Answer::Asked);
    EXPECT_THAT(Names(), ElementsAre("A", "B"));
    EXPECT_EQ(Lists(m_first), 2);
}

TEST_F(SourceVariablesTest, FailureLeavesNothingAndIsTriedAgain) {
    Ask("drugi");
    m_first.lists = false;
    EXPECT_EQ(Ask("srv"), Answer::Asked);
    EXPECT_EQ(m_done, "C nothing ");
    EXPECT_THAT(Names(), IsEmpty());
    EXPECT_EQ(m_variables.GetSource(), "");
    m_first.lists = true;
    EXPECT_EQ(Ask("srv"), Answer::Asked);
    EXPECT_THAT(Names(), ElementsAre("A", "B"));
}

TEST_F(SourceVariablesTest, SourceThatCannotBeReachedHasNoVariables) {
    Ask("drugi");
    EXPECT_EQ(Ask("nie"), Answer::Asked);
    EXPECT_EQ(m_done, "C nothing ");
    EXPECT_THAT(Names(), IsEmpty());
    EXPECT_EQ(m_variables.GetSource(), "");
}

TEST_F(SourceVariablesTest, AnswerMayComeLater) {
    Ask("drugi");
    m_done.clear();
    m_first.answersList = false;
    EXPECT_EQ(Ask("srv"), Answer::Asked);
    EXPECT_EQ(m_done, "");
    EXPECT_THAT(Names(), IsEmpty());
    m_first.listAnswer(m_first.definitions);
    EXPECT_EQ(m_done, "A ");
    EXPECT_THAT(Names(), ElementsAre("A", "B"));
    EXPECT_EQ(Ask("srv"), Answer::Ready);
    EXPECT_EQ(m_done, "A ");
}

TEST_F(SourceVariablesTest, AnswerToAnOlderQuestionIsToldButNotKept) {
    m_first.answersList = false;
    Ask("srv");
    Ask("drugi");
    EXPECT_EQ(m_done, "C ");
    m_first.listAnswer(m_first.definitions);
    EXPECT_EQ(m_done, "C A ");
    EXPECT_THAT(Names(), ElementsAre("C"));
    EXPECT_EQ(m_variables.GetSource(), "drugi");
    EXPECT_EQ(Ask("drugi"), Answer::Ready);
}

TEST_F(SourceVariablesTest, RefusalOfAnOlderQuestionLeavesWhatIsKept) {
    m_first.answersList = false;
    Ask("srv");
    Ask("drugi");
    m_first.listAnswer(std::nullopt);
    EXPECT_EQ(m_done, "C nothing ");
    EXPECT_THAT(Names(), ElementsAre("C"));
}

TEST_F(SourceVariablesTest, AnswerMayComeWhenNobodyKeepsItAnyMore) {
    m_first.answersList = false;
    std::string done;
    {
        SourceVariables variables(m_sources);
        variables.Ask("srv", [&](const vantrel::CObjInfoList*) { done = "done"; });
    }
    m_first.listAnswer(m_first.definitions);
    EXPECT_EQ(done, "");
}

}  // namespace
}  // namespace kalvex::workbench
