// What a program starts before its module and stops behind it: its users, its way to data servers,
// and that of consoles to it. Main thread.
#pragma once

#include <memory>
#include <string>

#include "app/AppWorld.h"
#include "platform/LogSink.h"
#include "platform/UserStore.h"
#include "supervision/SupervisionServer.h"
#include "vantrel/network/NetworkClient.h"
#include "vantrel/network/NetworkServer.h"

namespace kalvex::programs {

// Opens the users' file that the common profile of the machine names. Where it names none, nobody
// can be logged in.
class UserLibrary final : public app::AppLibrary {
  public:
    UserLibrary(const platform::Profile& profile, const platform::Translator& translator)
        : m_profile(profile), m_translator(translator) {}

    const platform::UserStore& Store() const { return m_store; }
    // The file that the common profile names, an engine text; empty where it names none.
    std::string GetFile() const;

    bool Start(std::string& error) override;
    void Stop() override {}

  private:
    const platform::Profile& m_profile;
    const platform::Translator& m_translator;
    platform::UserStore m_store;
};

class NetworkLibrary final : public app::AppLibrary, public app::AppTransports {
  public:
    NetworkLibrary(const platform::Profile& profile, app::AppLoop& loop,
                   const platform::Translator& translator)
        : m_profile(profile), m_loop(loop), m_translator(translator) {}

    // Before the start; outlives the library's work.
    void SetLog(platform::LogSink& log) { m_log = &log; }

    bool Start(std::string& error) override;
    void Stop() override;
    vantrel::TransportFactory& Factory() override { return *m_client; }

  private:
    const platform::Profile& m_profile;
    app::AppLoop& m_loop;
    const platform::Translator& m_translator;
    platform::LogSink* m_log = nullptr;
    std::unique_ptr<vantrel::NetworkClient> m_client;
};

class ConsoleDoor final : public app::AppConsoleDoor {
  public:
    ConsoleDoor(app::AppLoop& loop, const platform::Translator& translator)
        : m_loop(loop), m_translator(translator) {}

    // Before the start; outlives the work.
    void SetLog(platform::LogSink& log) { m_log = &log; }

    bool Open(vantrel::SessionAcceptor& acceptor, app::Supervised& module,
              const app::ConsoleConfiguration& configuration, const std::string& name,
              std::string& error) override;
    void Check() override {
        if (m_network) m_network->Check();
    }
    void Close() override {
        m_network.reset();
        m_supervision.reset();
    }

  private:
    app::AppLoop& m_loop;
    const platform::Translator& m_translator;
    platform::LogSink* m_log = nullptr;
    std::unique_ptr<supervision::SupervisionServer> m_supervision;
    std::unique_ptr<vantrel::NetworkServer> m_network;  // null where nothing is to listen
};

}  // namespace kalvex::programs
