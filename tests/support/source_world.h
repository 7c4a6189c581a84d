// A world for scripts with data servers: a simulated plant under a virtual clock, in the time of
// Warsaw, and an account of what the scripts ask of it.
#pragma once

#include <cstdint>
#include <memory>
#include <string>
#include <string_view>
#include <vector>

#include "sources/ClientInterface.h"
#include "sources/InterfaceObj.h"
#include "support/script_world.h"
#include "support/zone_scope.h"
#include "vantrel/plant/SimulatedPlant.h"
#include "vantrel/plant/TickJournal.h"

namespace kalvex::support {

class SourceWorld : public ScriptWorld {
  protected:
    SourceWorld();
    ~SourceWorld() override { documents.clear(); }

    // The plant, with this as the content of its source "srv"; ' stands for ". Before any script.
    void Plant(std::string_view content);

    // A script at PRIORITY 1, so that a tick runs ten of its lines, started and not ticked.
    engine::CKalvexDoc& Start(std::string_view text, const std::string& name = "main.kx");
    // The same, ticked.
    engine::CKalvexDoc& Run(std::string_view text, int ticks = 50);
    // A tick of the plant and then of the scripts.
    void Tick(int count);

    static sources::CInterfaceObj& Link(engine::CKalvexDoc& document, std::string_view name);
    // The variable's value of the kind as "text/status", whether a script could read it or not.
    static std::string Stored(engine::CKalvexDoc& document, std::string_view name,
                              value::ValueKind kind = value::KindCurrent);
    sources::CInterfaceClientConnection& Connection(std::string_view source = "srv");

    // The calls to "srv" since the last time whose operation holds this text, each with its
    // variable, its times as local readings and its value as "text/status".
    std::vector<std::string> Calls(std::string_view part);

    // Log lines at or below the level since the last time, without those of a script's start.
    std::vector<std::string> NewLog(int level = platform::LogErrors);

    static std::int64_t Local(std::string_view text);

    ZoneScope zone{"Europe/Warsaw"};
    std::unique_ptr<vantrel::SimulatedPlant> plant;
    vantrel::TickJournal journal;
    std::unique_ptr<sources::CClientInterface> client;
    std::int64_t tick = 0;

  private:
    std::size_t m_callsSeen = 0;
    std::size_t m_linesSeen = 0;
};

}  // namespace kalvex::support
