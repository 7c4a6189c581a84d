// Runs a scenario both ways side by side.
#pragma once

#include <cstdint>
#include <memory>
#include <string>
#include <vector>

#include "differential/Comparison.h"
#include "differential/Digest.h"
#include "differential/Scenario.h"
#include "differential/World.h"

namespace kalvex::differential {

struct Verdict {
    std::string difference;    // empty: both ways are the same
    int tick = 0;              // at which it was seen, from 1
    std::uint64_t lines = 0;   // that ran in one of the worlds
    std::uint64_t digest = 0;  // of the world that reads each line anew
};

class Lockstep {
  public:
    // `counted` is the language of the world that reads each line anew.
    Lockstep(const support::ScratchFolder& folder, const Scenario& scenario, const Tables& counted);

    Verdict Run();

  private:
    // How long a script has stood on its line.
    struct Rest {
        int line = -1;
        int ticks = 0;
        int times = 0;  // it has been helped on
    };

    void PutFiles();
    void ApplyEvents(int tick);
    void Apply(const Event& event);
    void RunTick();
    bool RunStepwise();
    void HelpOn(std::size_t script);
    void SkipIdleTicks(int most);
    bool HasGrown(const engine::CKalvexDoc& document) const;

    const support::ScratchFolder& m_folder;
    const Scenario& m_scenario;
    std::vector<std::string> m_files;
    World m_kept;
    World m_read;
    Comparison m_comparison;
    Digest m_digest;
    std::vector<Rest> m_rests;
    std::size_t m_nextEvent = 0;
    std::string m_difference;
};

// The same for a scenario by itself.
Verdict RunBothWays(const support::ScratchFolder& folder, const Scenario& scenario,
                    const Tables& counted);

// A smaller scenario that differs as well: lines, events, ticks and whatever else is not needed are
// gone.
Scenario Minimise(const support::ScratchFolder& folder, Scenario scenario, const Tables& counted);

}  // namespace kalvex::differential
