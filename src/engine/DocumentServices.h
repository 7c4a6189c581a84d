// The world of a document. Nothing here is owned; everything outlives the documents.
#pragma once

#include <cstdint>

#include "engine/ConsoleLink.h"
#include "engine/LineWatch.h"
#include "engine/ScriptSources.h"
#include "engine/Statement.h"
#include "operands/ScriptContext.h"
#include "platform/Questions.h"

namespace kalvex::engine {

// What all scripts of the process have done so far.
struct RunCounts {
    std::uint64_t lines = 0;   // run, each try of a line that stays
    std::uint64_t errors = 0;  // of them those that failed
    std::uint64_t waits = 0;   // of them those that waited for data
    std::uint64_t slow = 0;    // of them those that a LineWatch tells
};

struct DocumentServices : operands::ValueServices {
    const StatementTable& statements;
    platform::Questions& questions;
    ScriptSources* sources = nullptr;  // none in a process without data sources
    ConsoleLink* console = nullptr;    // none without a remote console
    bool consoleClient = false;        // this process mirrors a module and never interprets
    RunCounts* counts = nullptr;       // none where nobody counts
    LineWatch* lineWatch = nullptr;    // none without a real clock
};

}  // namespace kalvex::engine
