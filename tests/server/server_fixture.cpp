#include "server_fixture.h"

namespace kalvex::server {

std::string DumpRow(const value::CVal& value) {
    std::string text;
    value.GetValData(value::ValueType::Text, text);
    return std::to_string(value.GetType()) + " " + std::to_string(value.GetStatus()) + " " +
           std::to_string(value.GetTime()) + " " + text::ToUtf8(text);
}

void ServerTest::Start(std::string_view toml) {
    m_toml = toml;
    End();
    Configure(m_toml);
    m_server = std::make_unique<Server>(m_clock, m_log, m_translator, m_loop,
                                        platform::PasswordCost::Least, m_storeSettings);
    std::vector<std::string> errors;
    ASSERT_TRUE(m_server->Start(m_folder.Path("plant.toml"), errors))
        << testing::PrintToString(errors);
    m_log.Take();
}

void ServerTest::End() {
    m_clients.clear();
    if (m_server) m_server->Stop();
    m_server.reset();
}

void ServerTest::Settle() {
    do {
        m_server->GetStore().Flush();
    } while (m_loop.Run());
}

void ServerTest::Tick() {
    m_clock.Advance(1000);
    m_server->Tick();
    Settle();
}

void ServerTest::Tick(std::int64_t seconds) {
    for (std::int64_t second = 0; second < seconds; ++second) Tick();
}

TestClient& ServerTest::Connect(std::string address) {
    m_clients.push_back(std::make_unique<TestClient>(*m_server, std::move(address)));
    return *m_clients.back();
}

void ServerTest::Say(TestClient& client, std::string user, std::string password) {
    vantrel::LoginRequest request;
    request.moduleType = 23;
    request.clientName = "Kalvex_stacja";
    request.user = std::move(user);
    request.password = std::move(password);
    client.Say(std::move(request));
}

vantrel::LoginResult ServerTest::TryLogin(TestClient& client, std::string user,
                                          std::string password) {
    Say(client, std::move(user), std::move(password));
    while (client.messages.empty()) m_loop.WaitAndRun();
    return client.Take<vantrel::LoginResult>().at(0);
}

TestClient& ServerTest::LogIn(std::string user, std::string password, std::string address) {
    TestClient& client = Connect(std::move(address));
    EXPECT_EQ(TryLogin(client, std::move(user), std::move(password)).code, 0);
    m_log.Take();
    return client;
}

void ServerTest::Subscribe(TestClient& client, std::vector<std::string> names) {
    vantrel::SubscribeRequest request;
    vantrel::VariableHandle handle = 0;
    for (std::string& name : names) request.added.push_back({++handle, std::move(name)});
    request.flags = vantrel::SubscribeFlag::ReportChanges | vantrel::SubscribeFlag::LogMessages;
    client.Say(std::move(request));
    client.messages.clear();
}

std::vector<std::string> ServerTest::Updates(TestClient& client) {
    std::vector<std::string> lines;
    for (const vantrel::ValueUpdates& updates : client.Take<vantrel::ValueUpdates>()) {
        for (const vantrel::ValueUpdates::Entry& entry : updates.entries) {
            lines.push_back(std::to_string(entry.handle) + ": " + DumpRow(entry.value));
        }
    }
    return lines;
}

std::uint16_t ServerTest::Modify(TestClient& client, value::ValueKind kind,
                                 std::string_view variable, std::int64_t time, value::CVal value) {
    const vantrel::RequestId id = ++m_lastRequest;
    client.Say(
        vantrel::ModifyRequests{{{id, kind, std::string(variable), time, std::move(value)}}});
    Settle();
    const std::vector<vantrel::ModifyResults> results = client.Take<vantrel::ModifyResults>();
    EXPECT_EQ(results.size(), 1u);
    EXPECT_EQ(results.at(0).entries.size(), 1u);
    EXPECT_EQ(results.at(0).entries.at(0).id, id);
    return results.at(0).entries.at(0).result;
}

std::uint16_t ServerTest::ModifyArchive(TestClient& client, std::string_view variable,
                                        std::vector<value::CVal> values) {
    const vantrel::RequestId id = ++m_lastRequest;
    vantrel::ArchiveModifyRequest request{id, std::string(variable), 0, 0, std::move(values)};
    if (!request.values.empty()) {
        request.from = request.values.front().GetTime();
        request.to = request.values.back().GetTime();
    }
    client.Say(std::move(request));
    Settle();
    const std::vector<vantrel::ModifyResults> results = client.Take<vantrel::ModifyResults>();
    EXPECT_EQ(results.size(), 1u);
    EXPECT_EQ(results.at(0).entries.at(0).id, id);
    return results.at(0).entries.at(0).result;
}

void ServerTest::Order(TestClient& client, vantrel::PeriodAction action, value::ValueKind kind,
                       std::string_view variable, std::int64_t time) {
    client.Say(vantrel::PeriodRequest{action, kind, std::string(variable), time});
    Settle();
}

std::vector<std::string> ServerTest::Read(TestClient& client, value::ValueKind kind,
                                          std::string_view variable, std::int64_t from,
                                          std::int64_t to) {
    const vantrel::RequestId id = ++m_lastRequest;
    client.Say(vantrel::ReadRequests{{{id, kind, std::string(variable), from, to}}});
    Settle();
    std::vector<std::string> lines;
    std::vector<vantrel::ReadAnswer> answers = client.Take<vantrel::ReadAnswer>();
    EXPECT_FALSE(answers.empty());
    for (const vantrel::ReadAnswer& answer : answers) {
        EXPECT_EQ(answer.id, id);
        EXPECT_EQ(answer.last, &answer == &answers.back());
        if (answer.result != 0) lines.push_back("result " + std::to_string(answer.result));
        for (const value::CVal& value : answer.values) lines.push_back(DumpRow(value));
    }
    return lines;
}

void ServerTest::AddUser(std::string_view name, std::string_view password, int level,
                         std::vector<std::string> groups, std::vector<std::string> addresses) {
    platform::UserStore users(platform::PasswordCost::Least);
    std::string error;
    ASSERT_TRUE(users.Open(m_folder.Path("data/users.sqlite"), error)) << error;
    platform::UserRecord user;
    user.name = name;
    user.level = level;
    user.groups = std::move(groups);
    user.addresses = std::move(addresses);
    ASSERT_TRUE(users.Add(user, password, error)) << text::ToUtf8(error);
}

}  // namespace kalvex::server
