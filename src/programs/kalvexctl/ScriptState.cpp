#include "programs/kalvexctl/ScriptState.h"

#include <algorithm>
#include <string>

namespace kalvex::kalvexctl {

namespace {

constexpr unsigned kRunning = 1;
constexpr unsigned kStopped = 2;
constexpr unsigned kStepPending = 4;

struct WordRow {
    RunWord word;
    const char* text;
    Colour colour;
};

constexpr WordRow kWords[] = {
    {RunWord::Unknown, "unknown", Colour::Red},
    {RunWord::Idle, "idle", Colour::Grey},
    {RunWord::Running, "running", Colour::Green},
    {RunWord::Stopped, "stopped", Colour::Yellow},
};

const WordRow& RowOf(RunWord word) {
    return *std::ranges::find(kWords, word, &WordRow::word);
}

}  // namespace

RunWord WordOf(unsigned stateWord) {
    if ((stateWord & kRunning) != 0) return RunWord::Running;
    return (stateWord & (kStopped | kStepPending)) != 0 ? RunWord::Stopped : RunWord::Idle;
}

Cell StateCell(RunWord word) {
    return {RowOf(word).text, RowOf(word).colour};
}

Cell LineCell(const ScriptState& state) {
    const bool isKnown = state.line && *state.line >= 0 && state.word != RunWord::Idle;
    return {isKnown ? std::to_string(*state.line + 1) : "-"};
}

}  // namespace kalvex::kalvexctl
