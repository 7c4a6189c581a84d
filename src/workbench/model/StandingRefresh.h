// When the texts about what a script stands on are made anew: not with every tick, but at once when
// the script comes to stand otherwise, and now and then for what goes on outside it. Main thread;
// times are milliseconds of a clock that goes at an even pace.
#pragma once

#include <cstdint>
#include <optional>

#include "engine/ScriptDocument.h"

namespace kalvex::workbench {

class StandingRefresh {
  public:
    static constexpr std::int64_t kNextLine = 250;  // between texts while lines come and go
    static constexpr std::int64_t kOutside = 1000;  // sources, counts, times

    // Whether the texts are to be made now; costs a few comparisons. Null is no script.
    bool IsDue(const engine::CKalvexDoc* document, std::int64_t now);
    // They are due the next time in any case, as after the pane has been hidden.
    void Forget() { m_shown.reset(); }

  private:
    // What is looked at of a script.
    struct Look {
        const engine::CKalvexDoc* document = nullptr;
        int stateWord = 0;
        int line = 0;
        std::int64_t since = 0;
        std::optional<engine::LineOutcome> outcome;
        int error = 0;
        std::int64_t sleepUntil = 0;

        bool operator==(const Look&) const = default;
    };

    static Look LookAt(const engine::CKalvexDoc* document);

    std::optional<Look> m_shown;
    std::int64_t m_last = 0;
};

}  // namespace kalvex::workbench
