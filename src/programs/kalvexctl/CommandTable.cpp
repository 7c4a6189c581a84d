// The commands: what each takes, what it needs, what it is for.
#include <array>

#include "programs/kalvexctl/Commands.h"

namespace kalvex::kalvexctl {

namespace {

constexpr std::array kScript{Argument::Script};
constexpr std::array kSet{Argument::Script, Argument::Variable, Argument::Text};
constexpr std::array kBreak{Argument::Script, Argument::Line};
constexpr std::array kUnbreak{Argument::Script, Argument::MaybeLine};
constexpr std::array kPath{Argument::Path};
constexpr std::array kLevel{Argument::MaybeLevel};

using Names = std::string_view;
constexpr std::array<Names, 2> kStatusOptions{"--all", "--json"};
constexpr std::array<Names, 1> kShowOptions{"--context"};
constexpr std::array<Names, 2> kVarsOptions{"--watch", "--json"};
constexpr std::array<Names, 1> kJson{"--json"};
constexpr std::array<Names, 3> kAuditOptions{"--since", "--script", "--json"};
constexpr std::array<Names, 1> kForce{"--force"};
constexpr std::array<Names, 3> kLogOptions{"--lines", "--follow", "--level"};

constexpr CommandRow kRows[] = {
    {"list", {}, {}, Needs::Login, "The open scripts", List},
    {.name = "status",
     .arguments = {},
     .options = kStatusOptions,
     .needs = Needs::Right,
     .help = "What each script does: state, line, newest report",
     .run = Status,
     .isOrder = true,
     .takesModules = true},
    {"show", kScript, kShowOptions, Needs::Right, "The text around the current line", Show, true},
    {"vars", kScript, kVarsOptions, Needs::Right, "The variables", Vars, true},
    {"set",
     kSet,
     {},
     Needs::Right,
     "Give a variable a value: 12.5, \"text\", #12.5, *, $",
     Set,
     true},
    {"start", kScript, {}, Needs::Session, "Start the script, or let it go on", Start, true},
    {"stop", kScript, {}, Needs::Session, "Stop it at its line", Stop, true},
    {"step", kScript, {}, Needs::Session, "Run one line of a script that is stopped", Step, true},
    {"reset", kScript, {}, Needs::Session, "End its run", Reset, true},
    {"break", kBreak, {}, Needs::Session, "Set a breakpoint", Break, true},
    {"unbreak", kUnbreak, {}, Needs::Session, "Remove a breakpoint, or all of them", Unbreak, true},
    {"breaks", kScript, {}, Needs::Right, "The breakpoints", Breaks, true},
    {"why", kScript, kJson, Needs::Right, "What the script stands on", Why},
    {"audit", {}, kAuditOptions, Needs::Right, "Who changed what, and when", Audit},
    {"reload", kScript, {}, Needs::Session, "Start it anew on the text that is on disk", Reload},
    {"take", kScript, kForce, Needs::Session,
     "Keep its session, and take orders from the standard input", Take},
    {"release",
     kScript,
     {},
     Needs::Right,
     "Get a session back that a client has left behind",
     Release,
     true},
    {"open", kPath, {}, Needs::Right, "Have the module open a script", Open},
    {"close", kScript, kForce, Needs::Session, "Have it close a script", Close},
    {"log", {}, kLogOptions, Needs::Right, "The last lines of the module's log", Log},
    {"level", kLevel, {}, Needs::Login, "Show the level of the log, or set it (1, 2, 3)", Level},
};

}  // namespace

std::span<const CommandRow> CommandRows() {
    return kRows;
}

}  // namespace kalvex::kalvexctl
