// A data server and a module with scripts, within one process.
#pragma once

#include <gmock/gmock.h>

#include <memory>
#include <string>
#include <string_view>
#include <vector>

#include "server/Server.h"
#include "sources/ClientInterface.h"
#include "support/in_process.h"
#include "support/scratch_folder.h"
#include "support/script_world.h"
#include "support/zone_scope.h"

namespace kalvex::server {

// The clock stands at 2024-03-10 07:00:00 in Warsaw.
class ScriptsAtServer : public support::ScriptWorld {
  protected:
    void StartServer(std::string_view toml) {
        m_server = std::make_unique<Server>(clock, m_serverLog, translator, m_loop,
                                            platform::PasswordCost::Least);
        std::vector<std::string> errors;
        EXPECT_TRUE(m_server->Start(m_folder.Put("plant.toml", toml), errors))
            << testing::PrintToString(errors);
        m_network.AddServer("srv", *m_server);
        m_client = std::make_unique<sources::CClientInterface>(
            sources::SourceServices{log, translator, users, m_network});
        services.sources = m_client.get();
    }
    ~ScriptsAtServer() override {
        documents.clear();
        m_client.reset();
        m_network.RemoveServer("srv");
        Carry();
        m_server->Stop();
    }

    void Carry() {
        do {
            m_network.Deliver();
            m_server->GetStore().Flush();
        } while (m_loop.Run());
    }

    // A second of the server's, with several ticks of the scripts.
    void Second(int scriptTicks = 20) {
        clock.Advance(1000);
        m_server->Tick();
        m_client->SourceList().CheckConnections();
        for (int i = 0; i < scriptTicks; ++i) {
            Carry();
            Tick(1);
        }
    }

    engine::CKalvexDoc& Begin(std::string_view text, const std::string& name = "main.kx") {
        engine::CKalvexDoc& document = Open(text, name);
        document.Start();
        document.SetPriority(1);
        return document;
    }

    static bool HasEnded(const engine::CKalvexDoc& document) {
        return document.State().m_nCurrentLine >= document.GetLineCount();
    }

    // The script is to come to its end within some seconds.
    engine::CKalvexDoc& Finish(std::string_view text) {
        engine::CKalvexDoc& document = Begin(text);
        for (int second = 0; second < 20 && !HasEnded(document); ++second) Second();
        EXPECT_TRUE(HasEnded(document))
            << document.State().m_nCurrentLine << ": " << Error(document);
        return document;
    }

    std::vector<std::string> Errors() {
        std::vector<std::string> lines = Log(platform::LogErrors);
        std::erase_if(lines, [](const std::string& line) { return line.ends_with(" skryptu "); });
        return lines;
    }

    support::ZoneScope m_zone{"Europe/Warsaw"};
    support::ScratchFolder m_folder;
    support::LogRecorder m_serverLog;
    platform::PostedWork m_loop;
    std::unique_ptr<Server> m_server;
    support::InProcessNetwork m_network;
    std::unique_ptr<sources::CClientInterface> m_client;
};

}  // namespace kalvex::server
