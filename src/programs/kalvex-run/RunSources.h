// The data of a run: what the documents bind their remote variables to, and what the result says of
// it. Main thread.
#pragma once

#include <cstdint>
#include <memory>
#include <nlohmann/json_fwd.hpp>
#include <string>

#include "platform/Clock.h"
#include "platform/LogSink.h"
#include "platform/Translator.h"
#include "platform/Users.h"
#include "programs/kalvex-run/Options.h"
#include "programs/kalvex-run/RunCarriers.h"
#include "programs/kalvex-run/RunProfile.h"
#include "sources/ClientInterface.h"
#include "vantrel/plant/TickJournal.h"

namespace kalvex::run {

class RunSources {
  public:
    // All that is referred to outlives them. Requests are in the result only where account is kept
    // of them, which takes memory for each.
    RunSources(std::unique_ptr<RunCarrier> carrier, bool accounted, const RunProfile& profile,
               platform::LogSink& log, const platform::Translator& translator,
               const platform::Users& users);

    engine::ScriptSources& ForScripts() { return m_client; }

    // Before the tick's actions and before its first line.
    void BeginTick(std::int64_t tick);

    // The members of "sources", by source name: those that the carrier knows of, then any other
    // that a script has named.
    nlohmann::ordered_json Result() const;

  private:
    nlohmann::ordered_json SourceJson(const vantrel::CClientConnection* connection) const;

    std::unique_ptr<RunCarrier> m_carrier;
    vantrel::TickJournal m_journal;
    sources::CClientInterface m_client;
};

// What a remote variable's record has beside name, kind and slots.
void AddRemoteFields(sources::CInterfaceObj& link, nlohmann::ordered_json& record);

// The sources that the options ask for: those of the plant, or of the network where there is a
// profile but no plant, or else some that never connect. Null with the reason in `fault` when they
// cannot be had.
std::unique_ptr<RunSources> MakeRunSources(const RunOptions& options, const RunProfile& profile,
                                           const platform::Clock& clock, platform::LogSink& log,
                                           const platform::Translator& translator,
                                           const platform::Users& users, std::string& fault);

}  // namespace kalvex::run
