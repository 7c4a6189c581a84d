// Scripts and what happens to them tick by tick: all that a run depends on.
#pragma once

#include <cstdint>
#include <string>
#include <vector>

namespace kalvex::differential {

enum class EventKind : int {
    Start,
    Stop,
    Step,
    Reset,
    Minimise,    // or restores
    Breakpoint,  // sets or takes away the one on the line `number`
    SetValue,    // `text`, as an operator enters it, into the variable `number` by order
    EditLine,    // the line `number` becomes `text`
    InsertLine,  // `text` goes in behind the line `number`
    ChangeFile,  // `text` becomes a line more at the end of the file
    Jump,        // to the line `number`
    IdleTicks,   // those that have nothing to do are skipped, `number` at most
    Count,
};

// Lines, variables and scripts that are not there are counted round.
struct Event {
    int tick = 0;  // before its lines run
    EventKind kind = EventKind::Start;
    int script = 0;
    int number = 0;
    std::string text;
};

// Texts are Windows-1250, lines end with LF.
struct Scenario {
    std::vector<std::string> scripts;          // run in this order in each tick
    std::string included;                      // the file that scripts may include, `dolaczony.kx`
    bool sources = false;                      // there is a plant
    std::vector<std::int64_t> tickLengths{1};  // ms, in turn; below 0 the clock is set back
    std::vector<Event> events;                 // in order of tick
    int ticks = 300;
    int patience = 3;        // ticks for which a script may stand before it is helped on
    bool started = true;     // else its lines run one by one as steps, from a text not started
    bool stepwise = false;   // both are compared after each step of a script, not after each tick
    bool watched = false;    // the scripts have a view
    bool published = false;  // and a console that wants their lines
};

// The file name of a script by its number.
std::string FileName(std::size_t script);

// The scenario for a person to read, in UTF-8.
std::string Describe(const Scenario& scenario);

}  // namespace kalvex::differential
