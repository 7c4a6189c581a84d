// A world in which the scripts of a scenario run one of the two ways: clock, log, view, console and
// data servers of its own, and files that are shared with the other world.
#pragma once

#include <cstdint>
#include <memory>
#include <set>
#include <string>
#include <utility>
#include <vector>

#include "differential/Scenario.h"
#include "engine/ScriptDocument.h"
#include "engine/Tick.h"
#include "platform/Paths.h"
#include "sources/ClientInterface.h"
#include "support/fixed_user.h"
#include "support/scratch_folder.h"
#include "vantrel/plant/SimulatedPlant.h"
#include "vantrel/plant/TickJournal.h"

namespace kalvex::differential {

// The language as a world reads it.
struct Tables {
    const engine::StatementTable& statements;
    const operands::FunctionTable& functions;
};

enum class Way {
    KeepForms,  // what follows from a line's text is worked out once
    ReadAnew,   // the reference
};

class RawLog final : public platform::LogSink {
  public:
    void Log(std::string_view text, int level) override { lines.emplace_back(level, text); }

    std::vector<std::pair<int, std::string>> lines;
};

// What a view shows.
class SeenView final : public engine::ScriptView {
  public:
    void SelectLine(int line) override { selected = line; }
    void SetLineMarker(int line, bool set) override {
        if (set) {
            markers.insert(line);
        } else {
            markers.erase(line);
        }
    }
    void SetReadOnly(bool flag) override { readOnly = flag; }
    void RefreshTitle() override { ++titles; }
    void ClearAllMarkers() override { markers.clear(); }
    void RefreshVariables() override { ++refreshes; }
    bool HasBreakpoint(int line) const override { return breakpoints.contains(line); }
    bool HasBreakpoints() const override { return !breakpoints.empty(); }

    int selected = -1;
    bool readOnly = false;
    int titles = 0;
    int refreshes = 0;
    std::set<int> markers;
    std::set<int> breakpoints;
};

class HeardConsole final : public engine::ConsoleLink {
  public:
    void SendCommand(std::string_view, engine::ConsoleCommand) override {}
    void SendLine(std::string_view key, int line) override {
        messages.push_back(std::string(key) + " line " + std::to_string(line));
    }
    void SendState(std::string_view key, engine::ConsoleStateMessage message, int stateWord,
                   int line) override {
        messages.push_back(std::string(key) + " state " +
                           std::to_string(static_cast<int>(message)) + ' ' +
                           std::to_string(stateWord) + ' ' + std::to_string(line));
    }

    std::vector<std::string> messages;
};

class World {
  public:
    // The scripts' files are in the folder.
    World(const support::ScratchFolder& folder, const Scenario& scenario, Way way,
          const Tables& tables);
    ~World();
    World(const World&) = delete;
    World& operator=(const World&) = delete;

    void StartScripts();
    // Time goes on, and what is due at the servers happens.
    void BeginTick(std::int64_t milliseconds);
    void Apply(const Event& event);

    std::vector<std::unique_ptr<engine::CKalvexDoc>> documents;
    std::vector<SeenView> views;
    engine::TickRunner ticks;
    platform::VirtualClock clock{1710050390};  // 2024-03-10 06:59:50 in Warsaw
    RawLog log;
    HeardConsole console;
    engine::RunCounts counts;
    vantrel::TickJournal journal;
    std::unique_ptr<sources::CClientInterface> client;  // none without sources

  private:
    void EditText(engine::CKalvexDoc& document, const Event& event);
    void SetValue(engine::CKalvexDoc& document, const Event& event) const;

    platform::Translator m_translator;
    support::FixedUser m_users;
    platform::Paths m_paths;
    platform::NoAnswers m_questions;
    std::unique_ptr<vantrel::SimulatedPlant> m_plant;
    engine::DocumentServices m_services;
    std::int64_t m_tick = 0;
};

}  // namespace kalvex::differential
