// The messages between a module and its consoles: texts of fields that are separated by tabs, with
// a number first. Each is the value of a variable that the module publishes; the variable's name
// says which script is meant. Engine texts; lines count from 0.
#pragma once

#include <initializer_list>
#include <string>
#include <string_view>
#include <vector>

#include "value/Value.h"

namespace kalvex::console {

// On the command variable of a script, but for the four of its variable list.
enum class MessageCode : int {
    None = -1,
    AskSession = 0,
    PassSession = 1,
    Start = 2,
    Started = 3,
    Stop = 4,
    Stopped = 5,
    Reset = 6,
    WasReset = 7,
    Step = 8,
    Stepped = 9,
    SetBreakpoint = 10,
    BreakpointSet = 11,
    RemoveBreakpoint = 12,
    BreakpointRemoved = 13,
    BreakpointsRemoved = 14,
    RemoveBreakpoints = 15,
    BreakpointReached = 16,
    SetVariable = 17,
    AskVariable = 18,
    VariableValues = 19,
    AskVariables = 20,
    SessionHeld = 21,
};

// ---- names of variables

inline constexpr std::string_view kLogLevelVariable = "SYS_LogLevel";
inline constexpr std::string_view kDocumentInfoVariable = "RC_KalvexDocInfo";
inline constexpr std::string_view kListPrefix = "VL:";  // before a script's path
inline constexpr std::string_view kLinePrefix = "VC:";
inline constexpr char kClosedPrefix = '~';  // before a path, as a value

// What a client writes to a line variable.
enum LineReports : int { LineReportsWanted = -1, LineReportsUnwanted = -2 };

// ---- texts

// Of what a client writes, or a module sends; empty for a number, which is no message.
inline std::string_view MessageText(const value::CVal& value) {
    return value.IsText() ? value.Text() : std::string_view();
}

// The fields of a message, empty ones left out; one that is not there is empty.
class MessageFields {
  public:
    explicit MessageFields(std::string_view text);  // which outlives it

    MessageCode Code() const;
    std::string_view Text(std::size_t index) const;
    // As atoi reads it: 0 for what is no number.
    int Number(std::size_t index) const;
    int NumberOr(std::size_t index, int empty) const;

  private:
    std::vector<std::string_view> m_fields;
};

// The code and these fields.
std::string JoinFields(MessageCode code, std::initializer_list<std::string_view> fields);

std::string CodeText(MessageCode code);
std::string LineText(MessageCode code, int line);
std::string StateText(MessageCode code, int stateWord, int line);
std::string NamesText(MessageCode code, std::string_view first, std::string_view second);
std::string AskSessionText(std::string_view identity, bool force);
// Of a module, which hands over state, line and breakpoints.
std::string PassSessionText(std::string_view holder, std::string_view newHolder, int stateWord,
                            int line, const std::vector<int>& breakpoints);

// "3;17;"
std::string BreakpointsText(const std::vector<int>& lines);
std::vector<int> ReadBreakpoints(std::string_view text);

}  // namespace kalvex::console
