// Declarations and assignment: LOCAL, REMOTE, POINTER, LIST, SET, COPY, SETPTR, CREATE_VAR_LIST.
#include "engine/ScriptDocument.h"
#include "engine/StatementFamilies.h"
#include "operands/OperandEvaluator.h"
#include "text/LineScanner.h"
#include "text/PatternMatch.h"
#include "value/ValueText.h"

namespace kalvex {

namespace {

bool Fail(CKalvexDoc& document, ScriptError code, std::string_view text, bool force) {
    document.SetError(code, text, force);
    return false;
}

// The current type of the variable is what numeric literals on the right side become.
bool EvaluateFor(CKalvexDoc& document, CVariable& variable, std::string_view& text, CVal& out) {
    return EvaluateRest(document, text, out, variable.GetValueType(KindCurrent, 1));
}

}  // namespace

bool CKalvexDoc::NameMayBeDeclared(std::string_view name) {
    return name.find('.', 1) == std::string_view::npos || StopOnError(ErrorDotInName, name);
}

bool CKalvexDoc::CreateVariable(std::string_view name, VariableKind kind) {
    if (!NameMayBeDeclared(name)) return false;
    if (Variables().Find(name) != nullptr) return true;
    std::unique_ptr<CVariable> variable;
    if (kind == VariablePointer) {
        variable = std::make_unique<CVariablePointer>(name, *this);
    } else if (kind == VariableList) {
        variable = std::make_unique<CVariableList>(name);
    } else {
        variable = std::make_unique<CVariableLocal>(name);
    }
    Variables().Append(std::move(variable));
    return true;
}

bool CKalvexDoc::CreateRemoteVariable(std::string_view name, std::string_view target) {
    if (!NameMayBeDeclared(name)) return false;
    if (Variables().Find(name) != nullptr) return true;
    const std::size_t at = target.find('@');
    if (at == std::string_view::npos) return StopOnError(ErrorBadVariableName, target);
    if (Services().sources == nullptr) return false;
    CVariable& variable = Variables().Append(
        Services().sources->CreateRemote(*this, name, target.substr(0, at), target.substr(at + 1)));
    if (m_bIgnoreUnknown) variable.SetIgnoreUnknown(true);
    return true;
}

bool ExecuteLocal(StatementCall& call) {
    CKalvexDoc& document = call.document;
    const std::string_view name = NextToken(call.rest);
    const std::string_view sign = NextToken(call.rest);
    if (!document.CreateVariable(name, VariableLocal)) return false;
    if (sign.empty() || sign == ";") return true;
    if (sign != "=") return Fail(document, ErrorNoAssignment, {}, false);
    CVariable& variable = *document.Variables().Find(name);
    const std::string_view text = TrimBlanks(call.rest);
    CVal value;
    if (!EvaluateFor(document, variable, call.rest, value)) {
        return Fail(document, ErrorExpression, text, false);
    }
    variable.SetValue(value, GetValueKind(name));
    return true;
}

bool ExecuteRemote(StatementCall& call) {
    const std::string_view name = NextToken(call.rest);
    const std::string_view target = NextToken(call.rest);
    const std::size_t quote = target.find('"');
    if (quote == std::string_view::npos) return call.document.CreateRemoteVariable(name, target);
    const std::size_t last = target.rfind('"');
    if (last == quote) return false;
    std::string unquoted(target.substr(0, quote));
    unquoted += target.substr(quote + 1, last - quote - 1);
    return call.document.CreateRemoteVariable(name, unquoted);
}

bool ExecutePointer(StatementCall& call) {
    return call.document.CreateVariable(NextToken(call.rest), VariablePointer);
}

bool ExecuteList(StatementCall& call) {
    return call.document.CreateVariable(NextToken(call.rest), VariableList);
}

bool ExecuteSet(StatementCall& call) {
    CKalvexDoc& document = call.document;
    std::string_view name = NextToken(call.rest);
    if (NextToken(call.rest) != "=") return Fail(document, ErrorNoAssignment, {}, false);
    const std::size_t stamp = name.find(kTimestamp);
    const bool setsTime = stamp != std::string_view::npos && stamp > 0;
    if (setsTime) name = name.substr(0, stamp);
    CVariable* variable = FindVariable(document, name);
    if (variable == nullptr) return Fail(document, ErrorUndefinedVariable, name, true);
    CVal value;
    if (!EvaluateFor(document, *variable, call.rest, value)) return false;
    if (setsTime) {
        variable->SetTime(ValueToInt(value), GetValueKind(name));
    } else {
        variable->SetValue(value, GetValueKind(name));
    }
    return true;
}

bool ExecuteCopy(StatementCall& call) {
    CKalvexDoc& document = call.document;
    const std::string_view source = NextToken(call.rest);
    const std::string_view target = NextToken(call.rest);
    if (source.empty() || target.empty()) {
        return Fail(document, ErrorUndefinedVariable, {}, false);
    }
    CVariable* from = FindVariable(document, source);
    if (from == nullptr) return Fail(document, ErrorUndefinedVariable, source, true);
    CVariable* to = FindVariable(document, target);
    if (to == nullptr) return Fail(document, ErrorUndefinedVariable, target, true);
    to->CopyFrom(from, GetValueKind(source));
    return true;
}

bool ExecuteSetPtr(StatementCall& call) {
    CKalvexDoc& document = call.document;
    const std::string_view name = NextToken(call.rest);
    if (NextToken(call.rest) != "=") return Fail(document, ErrorNoAssignment, {}, false);
    CVariable* variable = FindVariable(document, name);
    if (variable == nullptr || variable->GetKind() != VariablePointer) {
        return Fail(document, ErrorUndefinedVariable, name, true);
    }
    const std::string_view text = TrimBlanks(call.rest);
    CVal target;
    if (!EvaluateRest(document, call.rest, target, ValueType::Text)) {
        return Fail(document, ErrorExpression, text, false);
    }
    static_cast<CVariablePointer*>(variable)->SetTargetName(ValueToText(target));
    return true;
}

bool ExecuteCreateVarList(StatementCall& call) {
    CKalvexDoc& document = call.document;
    const std::string_view name = NextToken(call.rest);
    const std::string_view token = NextToken(call.rest);
    CVariable* list = FindVariable(document, name);
    if (list == nullptr || list->GetKind() != VariableList) {
        return Fail(document, ErrorUndefinedVariable, name, true);
    }
    CVal pattern;
    if (!EvaluateOperand(document, token, pattern, ValueType::Text, true)) {
        const bool wild = token.find_first_of("*?") != std::string_view::npos;
        if (!wild || document.Variables().Find(BaseName(token)) != nullptr) {
            return Fail(document, ErrorOther, token, false);
        }
        pattern = CVal(token);
    }
    const std::string text = ValueToText(pattern);
    for (const std::unique_ptr<CVariable>& variable : document.Variables()) {
        const VariableKind kind = variable->GetKind();
        if (kind == VariablePointer || kind == VariableList) continue;
        const std::string& candidate = variable->GetName();
        if (CompareWithPattern(candidate, text, PatternOption::VariableNames)) {
            static_cast<CVariableList*>(list)->Add(CVal(std::string_view(candidate)));
        }
    }
    return true;
}

}  // namespace kalvex
