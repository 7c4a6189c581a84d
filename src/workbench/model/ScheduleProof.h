// When a line with CHECK_EVENT_TIME, WAITFOR or SLEEP lets the script go on: its next times, worked
// out by what runs the statements themselves, and in words what is odd about them. Nothing that a
// script could tell is changed. Main thread; engine texts, times seconds since 1970 GMT.
#pragma once

#include <cstdint>
#include <string>
#include <vector>

#include "engine/ScriptDocument.h"

namespace kalvex::workbench {

inline constexpr std::size_t kFiringsShown = 50;
inline constexpr int kYearsSearched = 40;  // February 29 on a given day of the week comes again

struct ScheduleFiring {
    std::int64_t time = 0;
    bool fires = true;          // otherwise a change of the clocks on a day that has no time
    bool clocksChange = false;  // on that local day
    std::string date;           // "2024-03-31 03:00:00"
    std::string zone;           // "CEST"
    std::string day;            // "niedziela"
    std::string note;           // empty, or what is to be known of this time
};

struct ScheduleProof {
    std::vector<ScheduleFiring> firings;  // in order
    std::vector<std::string> remarks;     // sentences
    bool never = false;                   // the remarks say why
};

// Whether there is something to be shown of the line; cheap enough for a menu.
bool HasSchedule(const engine::CKalvexDoc& document, int line);

// Of a line of the document, from `start` on. Variables are read as they stand; a WAITFOR or SLEEP
// that is under way goes on from where it is.
ScheduleProof ProveSchedule(const engine::CKalvexDoc& document, int line, std::int64_t start);

}  // namespace kalvex::workbench
