#include "workbench/qt/VariablesSource.h"

namespace kalvex::window {

VariablesSource ModuleVariables(engine::CKalvexDoc& document) {
    return {
        .refresh =
            [&](workbench::VariablesTable& table) { return table.Refresh(document.Variables()); },
        .read =
            [&](const std::string& name) {
                return workbench::ReadByHand(document.Variables(), name);
            },
        .write =
            [&](const std::string& name, const value::CVal& value) {
                const bool written = workbench::WriteByHand(document.Variables(), name, value);
                document.OnValueSet();
                return written;
            },
    };
}

VariablesSource ClientVariables(console::ClientConsole& console, const engine::CKalvexDoc& document,
                                const workbench::VariableRows& rows) {
    return {
        .refresh = [&](workbench::VariablesTable& table) { return table.Refresh(rows); },
        .read = [](const std::string&) { return value::CVal(); },
        .write =
            [&](const std::string& name, const value::CVal& value) {
                return console.SetVariable(document, name, value);
            },
        .ask = [&](const std::string& name) { console.AskForVariable(document, name); },
        .askAll = [&] { console.AskForVariables(document); },
    };
}

}  // namespace kalvex::window
