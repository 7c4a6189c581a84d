// A console with documents of its own, and what it shows and sends. Texts are UTF-8; tabs of
// messages show as "|".
#pragma once

#include <map>
#include <memory>
#include <string>
#include <string_view>
#include <vector>

#include "console/ClientConsole.h"
#include "engine/ScriptDocument.h"
#include "support/fixed_user.h"
#include "support/in_process.h"
#include "support/log_recorder.h"
#include "support/script_world.h"

namespace kalvex::console {

// Somebody with a password.
class ConsoleUser final : public platform::Users {
  public:
    explicit ConsoleUser(std::string name) : m_name(std::move(name)) {}

    std::string GetActiveUserName() const override { return m_name; }
    std::string GetActiveUserDescription() const override { return {}; }
    std::string GetAccountName() const override { return {}; }
    bool ActiveUserInfo(std::string& name, std::string& password) const override {
        name = m_name;
        password = "haslo";
        return true;
    }

  private:
    const std::string m_name;
};

class TestConsole final : private ClientHost, private vantrel::RequestJournal {
  public:
    // The folder is that of the scripts as this console reaches them.
    TestConsole(platform::Clock& clock, const std::string& folder, std::string identity,
                std::string user);
    ~TestConsole() override { Stop(); }

    // Lets go of its documents and of the module.
    void Stop();

    engine::CKalvexDoc* Find(std::string_view path) { return FindScript(path); }
    workbench::DocumentModel& Model(std::string_view path) { return ModelOf(*Find(path)); }
    // "state word/line", then R for read-only and C for control; "-" when it is not open.
    std::string State(std::string_view path);
    std::vector<int> Breakpoints(std::string_view path);
    std::vector<int> MarkedLines(std::string_view path);
    // What was written since the last time, "name: text" each.
    std::vector<std::string> Sent();
    // How often subscriptions were brought into line since the last time.
    int Subscribed();
    // What was shown since the last time.
    std::vector<std::string> Shown();
    // As the person does it.
    void Edit(std::string_view path, std::string_view text);
    void Close(std::string_view path);

    support::InProcessNetwork network;
    platform::PostedWork loop;
    support::LogRecorder log;
    support::AnsweredQuestions questions;
    platform::Translator translator;
    platform::Paths paths;
    ConsoleUser users;
    int level = 65535;
    std::unique_ptr<sources::CClientInterface> client;
    engine::DocumentServices services;
    std::map<const engine::CKalvexDoc*, workbench::DocumentModel> models;
    std::vector<std::unique_ptr<engine::CKalvexDoc>> documents;
    std::unique_ptr<ClientConsole> console;

  private:
    engine::CKalvexDoc* FindScript(std::string_view path) override;
    engine::CKalvexDoc* OpenScript(std::string_view path) override;
    void CloseScript(engine::CKalvexDoc& document) override;
    std::vector<engine::CKalvexDoc*> Scripts() override;
    workbench::DocumentModel& ModelOf(const engine::CKalvexDoc& document) override {
        return models.at(&document);
    }
    void MinimiseFrame(engine::CKalvexDoc& document) override;
    void ShowVariables(engine::CKalvexDoc& document, int row) override;
    void ShowMessage(std::string_view text) override;
    void UpdateTitle() override;
    void ClearLog() override { m_shown.push_back("clear"); }
    void LogFromModule(std::string_view text, std::int64_t time, int lineLevel) override;
    void TakeLogLevel(int newLevel) override { level = newLevel; }
    const std::string& GetClientIdentity() const override { return m_identity; }

    void Record(const vantrel::CClientConnection& connection, vantrel::JournalEntry entry) override;

    const std::string m_identity;
    std::vector<std::string> m_sent;
    int m_subscribed = 0;
    std::vector<std::string> m_shown;
};

}  // namespace kalvex::console
