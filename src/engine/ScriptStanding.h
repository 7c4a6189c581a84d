// What a script stands on: everything that tells why it does not go on, worked out from a document
// when somebody asks. Plain data; texts are engine texts, times seconds since 1970 GMT, 0 for none.
#pragma once

#include <cstdint>
#include <string>
#include <vector>

#include "engine/LineStanding.h"
#include "engine/ScriptDocument.h"
#include "engine/ScriptSources.h"
#include "value/Status.h"

namespace kalvex::engine {

enum class StandingState {
    Idle,       // not started
    Running,    // freely
    Waiting,    // for current data
    Sleeping,   // SLEEP
    Scheduled,  // WAITFOR
    Failing,    // tries its line again and again
    StoppedByCommand,
    StoppedAtBreakpoint,
    StoppedOnError,
    Finished,
};

// What would let it go on.
enum class Release {
    None,        // nothing holds it
    Time,        // `until` passes
    NextTry,     // what held it is over
    Retry,       // the line succeeds one day, which may take nobody's help
    Correction,  // of the script's text
    Start,       // the command
    Resume,      // start or step
    Restart,     // reset and start
    Address,     // the source gets an address that can be connected to, and the script is restarted
    Connection,  // the source is connected
    Login,       // the source lets the module's user in
    Variable,    // the source gets the variable
    Access,      // the source lets the module's user see the variable
    Value,       // the source sends a known value
    Answer,      // the source answers the request for the report
    Report,      // somebody puts a value there, or corrects the script to ask for it
    Subscribe,   // SUBSCRIBE START
};

// A value that the line could not read.
struct MissingValue {
    std::string name;  // as the script has it, with its suffix
    value::ValueKind kind = value::KindCurrent;
    DataCondition condition;
};

struct ScriptStanding {
    int line = 0;      // counts from 0; the number of lines when the script has passed the last one
    std::string text;  // of the script with its INCLUDE lines replaced, as it was written there
    StandingState state = StandingState::Idle;
    std::int64_t since = 0;    // when it came to stand on the line; 0 while it runs freely
    std::int64_t stopped = 0;  // when it was stopped, in the three states that say so
    std::int64_t until = 0;    // Sleeping, Scheduled
    // Waiting and failed reads: the value that the try ended with first, then those of further
    // remote variables of the line that have no value for it either.
    std::vector<MissingValue> missing;
    StandingError error;            // the last one on this line that is no wait; times 0 for none
    std::string message;            // of that error, as the log has it behind the line's number
    std::int64_t lastFinished = 0;  // when a line last finished, in this run
    Release release = Release::None;
};

// Changes nothing that a script could tell.
ScriptStanding GetStanding(CKalvexDoc& document);

}  // namespace kalvex::engine
