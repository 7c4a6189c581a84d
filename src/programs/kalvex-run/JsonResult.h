// The result of a run as JSON. All texts in it are UTF-8.
#pragma once

#include <nlohmann/json_fwd.hpp>
#include <string>

#include "operands/Variable.h"
#include "programs/kalvex-run/Runner.h"
#include "value/Value.h"

namespace kalvex::run {

// One object and a line end. `lines` adds the text of each script.
std::string JsonResult(const Runner& runner, bool lines);

// type, status, time, value, text
nlohmann::ordered_json CellJson(const value::CVal& value);

// What a variable is and holds.
nlohmann::ordered_json VariableJson(operands::CVariable& variable);

}  // namespace kalvex::run
