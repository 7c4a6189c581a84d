// How a call of kalvexctl ends: statuses and texts, one table of both.
#pragma once

#include <initializer_list>
#include <optional>
#include <string>
#include <string_view>

#include "platform/Translator.h"
#include "programs/ExitStatus.h"

namespace kalvex::kalvexctl {

// Beside those of programs/ExitStatus.h, of which the limit is another one here.
enum ControlExit : int {
    ExitNoConnection = 3,
    ExitNoLogin = 4,
    ExitNoSession = 5,
    ExitNoScript = 6,
    ExitSignal = 128,  // with the number of the signal
};

enum class Fault {
    NoAnswer,       // script, command
    NotStarted,     // script
    NotInStepMode,  // script
    NotRunning,     // script
    StillRuns,      // script
    NoVariable,     // script, variable
    NoFile,         // file, the system's words
    NotWritten,     // why
    NotOffered,     // module
    AuditFault,     // which file, and why
    AuditUnread,    // how many lines
    NoConnection,   // module, reason
    Broken,         // module, reason
    LoginRefused,   // module, user, reason
    NoRight,        // module
    OpenToOthers,   // file
    NoLoginFile,    // file, the system's words
    NoTerminal,
    SessionHeld,     // script, holder
    SessionDead,     // script
    SessionTaken,    // script, new holder
    ScriptNotOpen,   // module, script
    ScriptNotFound,  // module, script
};

// `text` is UTF-8 in whole lines without the last line's end, empty when there is nothing to say.
struct Ending {
    int status = programs::ExitDone;
    std::string text = {};

    bool operator==(const Ending&) const = default;
};

// Nothing: go on.
using MaybeEnding = std::optional<Ending>;

// The values are engine texts.
Ending MakeEnding(Fault fault, std::initializer_list<std::string_view> values,
                  const platform::Translator& translator);

// Of wrong usage, in English.
Ending MakeUsageEnding(std::string text);

}  // namespace kalvex::kalvexctl
