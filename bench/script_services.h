// What the scripts of a benchmark live on: a virtual clock, a silent log, a folder of its own. No
// data sources, unless the benchmark adds them.
#pragma once

#include "engine/DocumentServices.h"
#include "language/Functions.h"
#include "language/Statements.h"
#include "platform/Questions.h"
#include "support/fixed_user.h"
#include "support/log_recorder.h"
#include "support/scratch_folder.h"

namespace kalvex::bench {

struct ScriptServices {
    ScriptServices() = default;
    ScriptServices(const ScriptServices&) = delete;  // its parts point to each other
    ScriptServices& operator=(const ScriptServices&) = delete;

    support::ScratchFolder folder;
    platform::VirtualClock clock{1710050400};
    support::SilentLog log;
    platform::Translator translator;
    support::FixedUser users;
    platform::Paths paths{folder.Path()};
    platform::NoAnswers questions;
    engine::DocumentServices services{{clock, log, translator, users, paths, language::Functions()},
                                      language::Statements(),
                                      questions};
};

}  // namespace kalvex::bench
