// Whose variables a variables window shows: those of a script that runs here, or of a console's
// copy of one. Main thread.
#pragma once

#include <functional>
#include <optional>
#include <string>

#include "console/ClientConsole.h"
#include "engine/ScriptDocument.h"
#include "value/Value.h"
#include "workbench/model/VariableRows.h"
#include "workbench/qt/VariablesModel.h"

namespace kalvex::window {

struct VariablesSource {
    VariablesModel::Refresher refresh;
    // The value with which the dialog opens; nothing where there is nothing to be changed.
    std::function<std::optional<value::CVal>(const std::string& name)> read;
    // Gives the variable the value of the dialog; false when it cannot have it.
    std::function<bool(const std::string& name, const value::CVal& value)> write;
    // Asks the module for a variable, and for all; none in a module.
    std::function<void(const std::string& name)> ask = {};
    std::function<void()> askAll = {};
};

// What is handed in outlives the window that has the source.
VariablesSource ModuleVariables(engine::CKalvexDoc& document);
VariablesSource ClientVariables(console::ClientConsole& console, const engine::CKalvexDoc& document,
                                const workbench::VariableRows& rows);

}  // namespace kalvex::window
