// What the messages of a module tell of a script's run. Plain data; lines count from 0.
#pragma once

#include <optional>

#include "programs/kalvexctl/Table.h"

namespace kalvex::kalvexctl {

enum class RunWord { Unknown, Idle, Running, Stopped };

struct ScriptState {
    RunWord word = RunWord::Unknown;
    std::optional<int> line = {};
};

// The bits of the state word that a module sends.
RunWord WordOf(unsigned stateWord);

// "running", in its colour.
Cell StateCell(RunWord word);
// From 1; "-" where it is not known or there is none.
Cell LineCell(const ScriptState& state);

}  // namespace kalvex::kalvexctl
