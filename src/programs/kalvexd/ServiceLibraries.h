// What a service starts before its module and stops behind it: its users, and its way to data
// servers. Main thread.
#pragma once

#include <memory>
#include <string>

#include "app/AppWorld.h"
#include "platform/LogSink.h"
#include "platform/UserStore.h"
#include "vantrel/network/NetworkClient.h"

namespace kalvex {

// Opens the users' file that the common profile of the machine names. Where it names none, nobody
// can be logged in.
class CUserLibrary final : public AppLibrary {
  public:
    CUserLibrary(const Profile& profile, const Translator& translator)
        : m_profile(profile), m_translator(translator) {}

    const UserStore& Store() const { return m_store; }

    bool Start(std::string& error) override;
    void Stop() override {}

  private:
    const Profile& m_profile;
    const Translator& m_translator;
    UserStore m_store;
};

class CNetworkLibrary final : public AppLibrary, public AppTransports {
  public:
    CNetworkLibrary(const Profile& profile, AppLoop& loop, const Translator& translator)
        : m_profile(profile), m_loop(loop), m_translator(translator) {}

    // Before the start; outlives the library's work.
    void SetLog(LogSink& log) { m_pLog = &log; }

    bool Start(std::string& error) override;
    void Stop() override;
    TransportFactory& Factory() override { return *m_pClient; }

  private:
    const Profile& m_profile;
    AppLoop& m_loop;
    const Translator& m_translator;
    LogSink* m_pLog = nullptr;
    std::unique_ptr<NetworkClient> m_pClient;
};

}  // namespace kalvex
