// A real client connection at the server, within one process.
#include "server_fixture.h"
#include "support/in_process.h"
#include "value/ArchiveValueList.h"
#include "value/ValueText.h"
#include "vantrel/ClientConnection.h"

namespace kalvex::server {
namespace {

using testing::ElementsAre;

class Connection final : public vantrel::CClientConnection {
  public:
    std::vector<std::string> events;

  protected:
    void OnServerAccess(bool denied, std::string_view text) override {
        events.push_back((denied ? "denied " : "let in") + text::ToUtf8(text));
    }
    void OnDisconnect(std::uint32_t reason) override {
        vantrel::CClientConnection::OnDisconnect(reason);
        events.push_back("disconnected " + std::to_string(reason));
    }
    void OnVariableList() override { events.push_back("definitions"); }
    void OnDataArrived() override { events.push_back("data"); }
    void OnVarAccessError(const vantrel::RequestRecord& record) override {
        events.push_back("no access to " + record.variable + ": " + std::to_string(record.result));
    }
    void OnCurrentDataModifyAck(const vantrel::RequestRecord& record) override {
        events.push_back(record.variable + " set to " + value::ValueToText(record.value));
    }
    void OnCurrentDataModifyError(const vantrel::RequestRecord& record) override {
        events.push_back(record.variable + " refused: " + std::to_string(record.result));
    }
    void OnReportModifyError(value::ValueKind kind, const vantrel::RequestRecord& record) override {
        events.push_back(record.variable + " report " + std::to_string(kind) +
                         " refused: " + std::to_string(record.result));
    }
    void OnReportChange(value::ValueKind kind, std::int64_t time) override {
        events.push_back("change " + std::to_string(kind) + " " + std::to_string(time));
    }
};

class Window final : public vantrel::AnswerWindow {
  public:
    void OnAnswer(value::ValueKind kind, vantrel::RequestRecord record) override {
        std::string line = std::to_string(kind) + ": " + std::to_string(record.result);
        if (record.result == 0 && record.list == nullptr)
            line += " " + value::ValueToText(record.value);
        answers.push_back(line);
    }
    std::vector<std::string> answers;
};

class ClientTest : public ServerTest {
  protected:
    void Connect() {
        Start(
            "[[access]]\nvariables = \"R*\"\nwrite = \"100\"\n[[access]]\nwrite = \"0\"\n"
            "[[variable]]\nname = \"X\"\nun = \"MPa\"\nvalue = 5\nat = 32\nrt = 2\n"
            "[[variable]]\nname = \"R\"\nrt = 2\n");
        m_network.AddServer("srv", *m_server);
        m_client.SetLoginData("NOBODY", "");
        ASSERT_TRUE(m_client.Create(23, "srv", "Kalvex", m_network, nullptr));
        Carry();
    }
    ~ClientTest() override {
        m_network.RemoveServer("srv");
        Carry();
    }

    void Carry() {
        do {
            m_network.Deliver();
            m_server->GetStore().Flush();
        } while (m_loop.Run());
    }

    support::InProcessNetwork m_network;
    Connection m_client;
    Window m_window;
};

TEST_F(ClientTest, SeesVariablesAndWritesThem) {
    Connect();
    vantrel::CVarVal& x = m_client.RegisterVariable("X");
    m_client.RegisterVariable("Brak");
    m_client.Subscribe();
    Carry();
    EXPECT_THAT(m_client.events,
                ElementsAre("let in", "no access to Brak: 0", "definitions", "data"));
    EXPECT_EQ(DumpRow(x.Value()), "171 0 " + std::to_string(m_start) + " 5.00");
    EXPECT_EQ(m_client.GetVarDefInfo("X")->GetText("un"), "MPa");

    m_client.events.clear();
    m_client.AddCurrentDataModifyRequest("X", value::CVal(6));
    m_client.AddCurrentDataModifyRequest("R", value::CVal(6));
    m_client.MakeCurrentDataModifyRequest();
    Carry();
    EXPECT_THAT(m_client.events, ElementsAre("R refused: 2", "data", "X set to 6"));
    EXPECT_EQ(DumpRow(x.Value()), "171 0 " + std::to_string(m_start) + " 6.00");
}

TEST_F(ClientTest, ReadsAndWritesReportsAndHearsOfThem) {
    Connect();
    m_client.RegisterVariable("X");
    m_client.Subscribe();
    m_client.AddReportModifyRequest(value::KindHour, "X", m_start, value::CVal(7));
    m_client.AddReportModifyRequest(value::KindHour, "R", m_start, value::CVal(7));
    m_client.MakeDataRequest(value::KindHour);
    Carry();
    m_client.events.erase(m_client.events.begin(), m_client.events.begin() + 3);
    EXPECT_THAT(m_client.events, ElementsAre("R report 2 refused: 2"));
    m_client.events.clear();

    m_client.AddDataRequest(value::KindHour, "X", m_start, m_start, nullptr, m_window);
    m_client.AddDataRequest(value::KindHour, "X", m_start + 3600, m_start + 3600, nullptr,
                            m_window);
    m_client.MakeDataRequest(value::KindHour);
    Carry();
    EXPECT_THAT(m_window.answers, ElementsAre("2: 0 7", "2: 1"));
    m_clock.Advance(1000);
    m_server->Tick();
    Carry();
    EXPECT_THAT(m_client.events, ElementsAre("change 2 " + std::to_string(m_start)));
}

TEST_F(ClientTest, ReadsALongArchive) {
    Connect();
    value::CArchiveValueList written;
    for (int time = 1; time <= 50000; ++time)
        written.Add(support::Stamped(value::CVal(time), time));
    m_client.AddArchiveModifyRequest("X", written, value::TIMEW{1}, value::TIMEW{50000});
    m_client.MakeArchiveModifyRequest();
    value::CArchiveValueList read;
    m_client.AddDataRequest(value::KindArchive, "X", 1, 49999, &read, m_window);
    m_client.MakeDataRequest(value::KindArchive);
    Carry();
    EXPECT_THAT(m_window.answers, ElementsAre("6: 0"));
    ASSERT_EQ(read.GetSize(), 49999u);
    for (std::size_t index = 0; index < read.GetSize(); ++index) {
        ASSERT_EQ(read.Get(index)->GetTime(), static_cast<std::int64_t>(index) + 1);
    }
}

TEST_F(ClientTest, BreakIsSurvivedByBothSides) {
    Connect();
    vantrel::CVarVal& x = m_client.RegisterVariable("X");
    m_client.Subscribe();
    Carry();
    m_network.Break("srv", vantrel::ReasonLost);
    Carry();
    m_client.events.clear();
    m_client.CheckConnection();
    Carry();
    EXPECT_THAT(m_client.events, ElementsAre("let in", "definitions", "data"));
    EXPECT_EQ(x.Value().GetStatus(), 0);
}

// The server has done it, and the answer goes astray.
TEST_F(ClientTest, WriteWhoseAnswerIsLostIsDoneOnce) {
    Connect();
    m_client.RegisterVariable("X");
    m_client.Subscribe();
    Carry();
    m_client.AddCurrentDataModifyRequest("X", value::CVal(6));
    m_client.MakeCurrentDataModifyRequest();
    m_network.Deliver();
    m_network.Break("srv", vantrel::ReasonLost);
    Carry();
    EXPECT_EQ(m_client.WritesWaiting(), 1u);
    TestClient& other = LogIn();
    EXPECT_EQ(Modify(other, value::KindCurrent, "X", 0, value::CVal(7)), vantrel::ResultOk);
    m_client.events.clear();
    m_client.CheckConnection();
    Carry();
    EXPECT_THAT(m_client.events, ElementsAre("let in", "definitions", "data", "X set to 6"));
    EXPECT_EQ(m_client.WritesWaiting(), 0u);
    Subscribe(other, {});
    other.Say(vantrel::SubscribeRequest{{{9, "X"}}, {}, 0, true});
    EXPECT_THAT(Updates(other), ElementsAre("9: 171 0 " + std::to_string(m_start) + " 7.00"));
}

TEST_F(ClientTest, HearsAfterABreakOfEachPeriodThatHasChanged) {
    Connect();
    m_client.RegisterVariable("X");
    m_client.Subscribe();
    Carry();
    m_network.Break("srv", vantrel::ReasonLost);
    Carry();
    TestClient& other = LogIn();
    std::vector<std::string> expected{"let in"};
    for (int hour = 0; hour < 4; ++hour) {
        Modify(other, value::KindHour, "X", m_start + hour * 3600, value::CVal(hour));
        m_clock.Advance(1000);
        m_server->Tick();
        expected.push_back("change 2 " + std::to_string(m_start + hour * 3600));
    }
    expected.insert(expected.end(), {"definitions", "data"});
    m_client.events.clear();
    m_client.CheckConnection();
    Carry();
    EXPECT_EQ(m_client.events, expected);
}

TEST_F(ClientTest, ListsTheVariables) {
    Connect();
    vantrel::CObjInfoList list;
    ASSERT_TRUE(m_client.LoadVarDefList(list));
    ASSERT_EQ(list.size(), 2u);
    EXPECT_EQ(list[0].GetName(), "X");
    EXPECT_EQ(list[1].GetName(), "R");
}

}  // namespace
}  // namespace kalvex::server
