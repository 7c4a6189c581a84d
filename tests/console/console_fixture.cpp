#include "console_fixture.h"

#include <algorithm>

namespace kalvex::console {

namespace {

std::string Shown(const value::CVal& value) {
    std::string text = text::ToUtf8(value::ValueToText(value));
    std::ranges::replace(text, '\t', '|');
    return text;
}

std::string Typed(std::string_view text) {
    std::string bytes = text::FromUtf8(text);
    std::ranges::replace(bytes, '|', '\t');
    return bytes;
}

}  // namespace

ConsoleTest::ConsoleTest() {
    std::string error;
    EXPECT_TRUE(m_users.Open(folder.Path("users.sqlite"), error)) << error;
    platform::UserRecord user;
    user.name = "JAN";
    user.level = 50;
    EXPECT_TRUE(m_users.Add(user, "haslo", error)) << error;
    user.name = "EWA";
    user.level = 49;
    EXPECT_TRUE(m_users.Add(user, "haslo", error)) << error;
    StartModule();
}

ConsoleTest::~ConsoleTest() {
    for (const auto& client : m_clients) client->session.reset();
    StopModule();
}

void ConsoleTest::StartModule() {
    m_console = std::make_unique<ModuleConsole>(static_cast<ConsoleHost&>(*this));
    services.console = m_console.get();
    m_server = std::make_unique<CKalvexServerConnectionManager>(
        ConsoleServices{.clock = clock,
                        .log = log,
                        .translator = translator,
                        .loop = m_loop,
                        .users = m_users,
                        .console = *m_console,
                        .host = *this,
                        .lastMessages =
                            [this](std::size_t count) {
                                const std::size_t first =
                                    m_lastMessages.size() - std::min(count, m_lastMessages.size());
                                return std::vector<vantrel::LogMessage>(
                                    m_lastMessages.begin() + static_cast<std::ptrdiff_t>(first),
                                    m_lastMessages.end());
                            },
                        .controlRight = [this] { return m_controlRight; },
                        .passwordCost = platform::PasswordCost::Least,
                        .mostClients = 4});
}

void ConsoleTest::StopModule() {
    while (!documents.empty()) CloseScript(*documents.front());
    m_server.reset();
    m_console.reset();
}

engine::CKalvexDoc& ConsoleTest::Open(std::string_view text, const std::string& name) {
    engine::CKalvexDoc& document = ScriptWorld::Open(text, name);
    document.SetView(&m_models[&document]);
    m_console->OnOpened(document, false);
    return document;
}

void ConsoleTest::CloseAtModule(engine::CKalvexDoc& document) {
    m_console->OnClosing(document);
    CloseScript(document);
}

TestClient& ConsoleTest::Connect(std::string address) {
    m_clients.push_back(std::make_unique<TestClient>(*m_server, std::move(address)));
    return *m_clients.back();
}

vantrel::LoginResult ConsoleTest::TryLogin(TestClient& client, std::string user,
                                           std::string password, std::uint16_t moduleType) {
    vantrel::LoginRequest request;
    request.moduleType = moduleType;
    request.clientName = "Konsola_RC";
    request.user = std::move(user);
    request.password = std::move(password);
    client.Say(std::move(request));
    while (client.messages.empty()) m_loop.WaitAndRun();
    return client.Take<vantrel::LoginResult>().at(0);
}

TestClient& ConsoleTest::LogIn(std::string user, std::string address) {
    TestClient& client = Connect(std::move(address));
    const std::string password = user == platform::kNobody ? "" : "haslo";
    EXPECT_EQ(TryLogin(client, std::move(user), password).code, 0);
    log.Take();
    return client;
}

std::vector<std::string> ConsoleTest::Subscribe(TestClient& client, std::vector<std::string> names,
                                                bool last) {
    vantrel::SubscribeRequest request;
    for (std::string& name : names) {
        request.added.push_back({++m_lastHandle, name});
        m_names[&client][m_lastHandle] = std::move(name);
    }
    request.last = last;
    client.Say(std::move(request));
    return Heard(client);
}

std::vector<std::string> ConsoleTest::Heard(TestClient& client) {
    std::vector<std::string> lines;
    for (const vantrel::ServerMessage& message : client.messages) {
        if (const auto* values = std::get_if<vantrel::ValueUpdates>(&message)) {
            for (const auto& [handle, value] : values->entries) {
                lines.push_back(m_names[&client][handle] + ": " + Shown(value));
            }
        }
        if (const auto* errors = std::get_if<vantrel::AccessErrors>(&message)) {
            for (const auto& [handle, code] : errors->entries) {
                lines.push_back(m_names[&client][handle] + ": ! " + std::to_string(code));
            }
        }
    }
    client.Take<vantrel::ValueUpdates>();
    client.Take<vantrel::AccessErrors>();
    return lines;
}

std::uint16_t ConsoleTest::Write(TestClient& client, std::string_view variable,
                                 const value::CVal& value, value::ValueKind kind) {
    client.Say(vantrel::ModifyRequests{{{++m_lastRequest, kind, std::string(variable), 0, value}}});
    const std::vector<vantrel::ModifyResults> results = client.Take<vantrel::ModifyResults>();
    EXPECT_EQ(results.size(), 1u);
    EXPECT_EQ(results.at(0).entries.at(0).id, m_lastRequest);
    return results.at(0).entries.at(0).result;
}

std::vector<std::string> ConsoleTest::Say(TestClient& client, std::string_view variable,
                                          std::string_view text) {
    EXPECT_EQ(Write(client, variable, value::CVal(Typed(text))), vantrel::ResultOk);
    return Heard(client);
}

std::vector<std::string> ConsoleTest::SayLine(TestClient& client, std::string_view variable,
                                              int number) {
    EXPECT_EQ(Write(client, variable, value::CVal(number)), vantrel::ResultOk);
    return Heard(client);
}

// ---- the module

engine::CKalvexDoc* ConsoleTest::FindScript(std::string_view path) {
    for (const auto& document : documents) {
        if (document->GetPathName() == paths.GetFullPath(path)) return document.get();
    }
    return nullptr;
}

engine::CKalvexDoc* ConsoleTest::OpenScript(std::string_view path) {
    auto document = std::make_unique<engine::CKalvexDoc>(services);
    std::string error;
    if (!document->Open(path, error)) return nullptr;
    document->SetView(&m_models[document.get()]);
    ticks.Add(*document);
    return documents.emplace_back(std::move(document)).get();
}

void ConsoleTest::CloseScript(engine::CKalvexDoc& document) {
    const engine::CKalvexDoc* const closed = &document;
    ticks.Remove(document);
    std::erase_if(documents, [&](const auto& open) { return open.get() == closed; });
    m_models.erase(closed);
}

std::vector<engine::CKalvexDoc*> ConsoleTest::Scripts() {
    std::vector<engine::CKalvexDoc*> scripts;
    for (const auto& document : documents) scripts.push_back(document.get());
    return scripts;
}

workbench::DocumentModel& ConsoleTest::ModelOf(const engine::CKalvexDoc& document) {
    return m_models.at(&document);
}

void ConsoleTest::SetLogLevel(int newLevel) {
    m_level = newLevel;
    m_console->PublishLevel(newLevel);
}

}  // namespace kalvex::console
