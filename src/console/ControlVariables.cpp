#include "console/ControlVariables.h"

#include <algorithm>

namespace kalvex::console {

std::string_view PrefixOf(ControlKind kind) {
    for (const ScriptVariable& row : kScriptVariables) {
        if (row.kind == kind) return row.prefix;
    }
    return {};
}

std::array<std::string, 3> ControlNames(std::string_view path) {
    std::array<std::string, 3> names;
    std::ranges::transform(kScriptVariables, names.begin(), [path](const ScriptVariable& row) {
        return std::string(row.prefix).append(path);
    });
    return names;
}

std::string_view CVarRCCtrl::GetScript() const {
    return std::string_view(GetName()).substr(PrefixOf(m_kind).size());
}

void CVarRCCtrl::SetValue(value::CVal value) {
    CVarVal::SetValue(std::move(value));
    m_handler(*this);
}

ControlVariables::ControlVariables(CVarRCCtrl::Handler handler)
    : m_handler(std::move(handler)),
      m_logLevel(ControlKind::LogLevel, kLogLevelVariable, m_handler),
      m_documentInfo(ControlKind::DocumentInfo, kDocumentInfoVariable, m_handler) {}

ControlVariables::Variables& ControlVariables::VariablesOf(ControlKind kind) {
    return m_ofScripts[static_cast<std::size_t>(kind) -
                       static_cast<std::size_t>(ControlKind::Command)];
}

void ControlVariables::CreateForScript(std::string_view path) {
    for (const auto& [kind, prefix] : kScriptVariables) {
        VariablesOf(kind).emplace(
            path, std::make_unique<CVarRCCtrl>(kind, std::string(prefix).append(path), m_handler));
    }
}

void ControlVariables::RemoveOfScript(std::string_view path) {
    for (const ScriptVariable& row : kScriptVariables) {
        Variables& variables = VariablesOf(row.kind);
        const auto [first, last] = variables.equal_range(path);
        variables.erase(first, last);
    }
}

CVarRCCtrl* ControlVariables::FindControlVariable(std::string_view name) {
    for (CVarRCCtrl* variable : {&m_logLevel, &m_documentInfo}) {
        if (variable->GetName() == name) return variable;
    }
    for (const ScriptVariable& row : kScriptVariables) {
        if (!name.starts_with(row.prefix)) continue;
        if (CVarRCCtrl* variable = Find(row.kind, name.substr(row.prefix.size()))) return variable;
    }
    return nullptr;
}

CVarRCCtrl* ControlVariables::Find(ControlKind kind, std::string_view path) {
    const Variables& variables = VariablesOf(kind);
    const auto found = variables.lower_bound(path);
    return found == variables.end() || found->first != path ? nullptr : found->second.get();
}

}  // namespace kalvex::console
