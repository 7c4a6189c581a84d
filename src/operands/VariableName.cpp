#include "operands/VariableName.h"

namespace kalvex::operands {

void VariableName::LookUpAnew(ScriptContext& script) {
    const VariableTable& variables = script.Variables();
    m_generation = variables.Generation();
    m_found = variables.Find(Base());
    const bool isLocal = m_found != nullptr && m_found->GetKind() == VariableLocal;
    m_held = isLocal && script.Services().keepForms
                 ? static_cast<CVariableLocal*>(m_found)->At(m_kind)
                 : nullptr;
}

CVariable* VariableName::FindNamed(ScriptContext& script) {
    CVariable* const variable = Find(script);
    if (variable == nullptr) return script.FailForced(ErrorUndefinedVariable, Text());
    return variable;
}

CVariableList* VariableName::FindList(ScriptContext& script) {
    CVariable* const variable = FindNamed(script);
    if (variable == nullptr) return nullptr;
    if (variable->GetKind() != VariableList) return script.FailForced(ErrorWrongKind, Text());
    return static_cast<CVariableList*>(variable);
}

}  // namespace kalvex::operands
