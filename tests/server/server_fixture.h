// A data server with clients whose transport is in the hands of the test.
#pragma once

#include <gmock/gmock.h>
#include <gtest/gtest.h>

#include <memory>
#include <string>
#include <string_view>
#include <utility>
#include <variant>
#include <vector>

#include "platform/Clock.h"
#include "server/Server.h"
#include "support/log_recorder.h"
#include "support/marking_translator.h"
#include "support/scratch_folder.h"
#include "support/test_client.h"
#include "support/value_dump.h"
#include "support/waiting_loop.h"
#include "support/zone_scope.h"
#include "text/CodePage.h"
#include "value/LocalTime.h"
#include "vantrel/Codes.h"

namespace kalvex::server {

// "type status time text", so that values compare and print as a whole.
std::string DumpRow(const value::CVal& value);

using support::TestClient;

class ServerTest : public testing::Test {
  protected:
    ServerTest() = default;
    ~ServerTest() override { End(); }

    // Starts a server with this configuration; one that was there is stopped.
    void Start(std::string_view toml);
    // Starts it again with what it left.
    void Restart() { Start(m_toml); }
    void Configure(std::string_view toml) { m_folder.Put("plant.toml", toml); }
    void End();

    // Lets everything come to an end that is under way.
    void Settle();
    // One second.
    void Tick();
    void Tick(std::int64_t seconds);

    TestClient& Connect(std::string address = {});
    // A client that is logged in, as nobody unless told.
    TestClient& LogIn(std::string user = {}, std::string password = {}, std::string address = {});
    // Asks to be let in.
    void Say(TestClient& client, std::string user, std::string password);
    vantrel::LoginResult TryLogin(TestClient& client, std::string user, std::string password);
    // Subscribes under the handles 1, 2, ... and forgets the answer.
    void Subscribe(TestClient& client, std::vector<std::string> names);
    // "handle: value" of all updates since the last call.
    std::vector<std::string> Updates(TestClient& client);

    std::uint16_t Modify(TestClient& client, value::ValueKind kind, std::string_view variable,
                         std::int64_t time, value::CVal value);
    std::uint16_t ModifyArchive(TestClient& client, std::string_view variable,
                                std::vector<value::CVal> values);
    void Order(TestClient& client, vantrel::PeriodAction action, value::ValueKind kind,
               std::string_view variable, std::int64_t time);
    // The dumps of the values, or "result N".
    std::vector<std::string> Read(TestClient& client, value::ValueKind kind,
                                  std::string_view variable, std::int64_t from, std::int64_t to);

    void AddUser(std::string_view name, std::string_view password, int level,
                 std::vector<std::string> groups = {}, std::vector<std::string> addresses = {});

    support::ZoneScope m_zone{"Europe/Warsaw"};
    support::ScratchFolder m_folder;
    std::int64_t m_start = value::MakeLocalTime({2024, 3, 10, 7});
    platform::VirtualClock m_clock{m_start};
    support::LogRecorder m_log;
    support::MarkingTranslator m_translator{false};
    support::WaitingLoop m_loop;
    std::string m_toml;
    std::optional<std::uint64_t> m_freeBytes = std::uint64_t{1} << 40;
    StoreSettings m_storeSettings{.freeBytes = [this](const std::string&) { return m_freeBytes; }};
    std::unique_ptr<Server> m_server;
    std::vector<std::unique_ptr<TestClient>> m_clients;
    vantrel::RequestId m_lastRequest = 0;
};

}  // namespace kalvex::server
