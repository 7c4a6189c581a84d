// The data of a run: what the documents bind their remote variables to, and what the result says of
// it. Main thread.
#pragma once

#include <cstdint>
#include <memory>
#include <nlohmann/json_fwd.hpp>
#include <string>

#include "engine/ScriptSources.h"
#include "programs/kalvex-run/Options.h"

namespace kalvex {

class CRunSources {
  public:
    virtual ~CRunSources() = default;

    virtual CScriptSources& ForScripts() = 0;

    // Before the tick's actions and before its first line.
    virtual void BeginTick(std::int64_t tick) = 0;

    // The members of "sources", by source name.
    virtual nlohmann::ordered_json Result() const = 0;

    // What a remote variable's record has beside name, kind and slots.
    virtual void AddRemoteFields(const CInterfaceObj& link,
                                 nlohmann::ordered_json& record) const = 0;
};

// The sources that the options ask for; null where they ask for none. With a null also comes the
// reason in `fault` when they cannot be had.
std::unique_ptr<CRunSources> MakeRunSources(const RunOptions& options, std::string& fault);

}  // namespace kalvex
