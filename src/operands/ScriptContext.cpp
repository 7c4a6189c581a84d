#include "operands/ScriptContext.h"

namespace kalvex::operands {

Failure ScriptContext::Fail(int code, std::string_view text) {
    SetError(code, text, false);
    return {};
}

Failure ScriptContext::FailForced(int code, std::string_view text) {
    SetError(code, text, true);
    return {};
}

CVariable* ScriptContext::FindNamed(std::string_view name) {
    CVariable* const variable = FindVariable(*this, name);
    if (variable == nullptr) return FailForced(ErrorUndefinedVariable, name);
    return variable;
}

CVariableList* ScriptContext::FindList(std::string_view name) {
    CVariable* const variable = FindNamed(name);
    if (variable == nullptr) return nullptr;
    if (variable->GetKind() != VariableList) return FailForced(ErrorWrongKind, name);
    return static_cast<CVariableList*>(variable);
}

void ScriptContext::TellForeignText(const std::string& file, std::string_view content) {
    platform::ToldFiles nothing;
    platform::ToldFiles* const told = m_services.toldFiles;
    platform::TellForeignText(file, content, m_services.log, m_services.translator,
                              told != nullptr ? *told : nothing);
}

void ScriptContext::ClearParts() {
    for (const std::unique_ptr<DocumentPart>& part : m_parts) {
        if (part) part->ClearRunState();
    }
}

void ScriptContext::DestroyParts() {
    for (std::unique_ptr<DocumentPart>& part : m_parts) part.reset();
}

}  // namespace kalvex::operands
