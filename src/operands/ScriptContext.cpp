#include "operands/ScriptContext.h"

namespace kalvex::operands {

void CScriptContext::SetError(int code, std::string_view text, bool force) {
    const int standing = m_error.m_nErrorCode;
    if (!force && standing != ErrorNone && standing != ErrorOther) return;
    m_error.m_nErrorCode = code;
    m_error.m_strErrorText = text;
}

Failure CScriptContext::Fail(int code, std::string_view text) {
    SetError(code, text, false);
    return {};
}

Failure CScriptContext::FailForced(int code, std::string_view text) {
    SetError(code, text, true);
    return {};
}

CVariable* CScriptContext::FindNamed(std::string_view name) {
    CVariable* const variable = FindVariable(*this, name);
    if (variable == nullptr) return FailForced(ErrorUndefinedVariable, name);
    return variable;
}

CVariableList* CScriptContext::FindList(std::string_view name) {
    CVariable* const variable = FindNamed(name);
    if (variable == nullptr) return nullptr;
    if (variable->GetKind() != VariableList) return FailForced(ErrorWrongKind, name);
    return static_cast<CVariableList*>(variable);
}

void CScriptContext::ClearParts() {
    for (const std::unique_ptr<CDocumentPart>& part : m_arrParts) {
        if (part) part->ClearRunState();
    }
}

void CScriptContext::DestroyParts() {
    for (std::unique_ptr<CDocumentPart>& part : m_arrParts) part.reset();
}

}  // namespace kalvex::operands
