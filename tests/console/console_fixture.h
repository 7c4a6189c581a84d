// A module with its console server, and consoles whose transport is in the hands of the test. Texts
// in and out are UTF-8; tabs of messages show as "|".
#pragma once

#include <gmock/gmock.h>

#include <map>
#include <memory>
#include <string>
#include <string_view>
#include <vector>

#include "console/ServerConnectionManager.h"
#include "platform/UserStore.h"
#include "support/script_world.h"
#include "support/test_client.h"
#include "support/waiting_loop.h"
#include "support/zone_scope.h"
#include "vantrel/Codes.h"
#include "workbench/model/DocumentModel.h"

namespace kalvex::console {

using support::TestClient;

class ConsoleTest : public support::ScriptWorld, protected ConsoleHost {
  protected:
    ConsoleTest();
    ~ConsoleTest() override;

    // The module begins to work, and ends with nothing left of it but its files; its consoles have
    // gone by then.
    void StartModule();
    void StopModule();
    // A script of the module, as one that starts by itself is opened.
    engine::CKalvexDoc& Open(std::string_view text, const std::string& name = "a.kx");
    void CloseAtModule(engine::CKalvexDoc& document);

    TestClient& Connect(std::string address = {});
    vantrel::LoginResult TryLogin(TestClient& client, std::string user, std::string password,
                                  std::uint16_t moduleType = 23);
    // A console of somebody who may control scripts, or of the user.
    TestClient& LogIn(std::string user = "JAN", std::string address = {});
    // Subscribes, and answers what comes.
    std::vector<std::string> Subscribe(TestClient& client, std::vector<std::string> names,
                                       bool last = true);
    // "name: text" of all values since the last call, "name: ! code" for an access error.
    std::vector<std::string> Heard(TestClient& client);
    // What the client is answered to the write; values that come stay.
    std::uint16_t Write(TestClient& client, std::string_view variable, const value::CVal& value,
                        value::ValueKind kind = value::KindCurrent);
    // Writes a message, and answers all values that it brings.
    std::vector<std::string> Say(TestClient& client, std::string_view variable,
                                 std::string_view text);
    std::vector<std::string> SayLine(TestClient& client, std::string_view variable, int number);

    engine::CKalvexDoc* FindScript(std::string_view path) override;
    engine::CKalvexDoc* OpenScript(std::string_view path) override;
    void CloseScript(engine::CKalvexDoc& document) override;
    std::vector<engine::CKalvexDoc*> Scripts() override;
    workbench::DocumentModel& ModelOf(const engine::CKalvexDoc& document) override;
    workbench::ScriptMarkers& MarkersOf(const engine::CKalvexDoc& document) {
        return ModelOf(document).Markers();
    }
    void SetLogLevel(int newLevel) override;
    const std::string& GetClientIdentity() const override { return m_identity; }

    support::ZoneScope m_zone{"Europe/Warsaw"};
    const std::string m_identity = "Kalvex_stacja";
    std::map<const engine::CKalvexDoc*, workbench::DocumentModel> m_models;
    support::WaitingLoop m_loop;
    platform::UserStore m_users{platform::PasswordCost::Least};
    std::string m_controlRight = "50";
    int m_level = 1;
    std::vector<vantrel::LogMessage> m_lastMessages;
    std::unique_ptr<ModuleConsole> m_console;
    std::unique_ptr<CKalvexServerConnectionManager> m_server;
    std::vector<std::unique_ptr<TestClient>> m_clients;
    std::map<const TestClient*, std::map<vantrel::VariableHandle, std::string>> m_names;
    vantrel::VariableHandle m_lastHandle = 0;
    vantrel::RequestId m_lastRequest = 0;
};

}  // namespace kalvex::console
