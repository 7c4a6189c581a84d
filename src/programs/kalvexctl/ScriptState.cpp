#include "programs/kalvexctl/ScriptState.h"

#include <algorithm>
#include <string>
#include <string_view>

#include "engine/ScriptDocument.h"

namespace kalvex::kalvexctl {

namespace {

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
    const std::string_view name = engine::StateName(static_cast<int>(stateWord));
    return std::ranges::find(kWords, name,
                             [](const WordRow& row) { return std::string_view(row.text); })
        ->word;
}

Cell StateCell(RunWord word) {
    return {RowOf(word).text, RowOf(word).colour};
}

Cell LineCell(const ScriptState& state) {
    const bool isKnown = state.line && *state.line >= 0 && state.word != RunWord::Idle;
    return {isKnown ? std::to_string(*state.line + 1) : "-"};
}

}  // namespace kalvex::kalvexctl
