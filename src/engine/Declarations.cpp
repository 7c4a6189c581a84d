// Declarations and assignment: LOCAL, REMOTE, POINTER, LIST, SET, COPY, SETPTR, CREATE_VAR_LIST.
#include "engine/ScriptDocument.h"
#include "engine/StatementFamilies.h"
#include "operands/OperandEvaluator.h"
#include "text/LineScanner.h"
#include "text/PatternMatch.h"
#include "value/ValueText.h"

namespace kalvex {

namespace {

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

LineOutcome ExecuteLocal(StatementCall& call) {
    CKalvexDoc& document = call.document;
    const std::string_view name = NextToken(call.rest);
    const std::string_view sign = NextToken(call.rest);
    if (!document.CreateVariable(name, VariableLocal)) return LineOutcome::Failed;
    if (sign.empty() || sign == ";") return LineOutcome::Finished;
    if (sign != "=") return document.Fail(ErrorNoAssignment);
    CVariable& variable = *document.Variables().Find(name);
    const std::string_view text = TrimBlanks(call.rest);
    CVal value;
    if (!EvaluateFor(document, variable, call.rest, value)) {
        return document.Fail(ErrorExpression, text);
    }
    variable.SetValue(value, GetValueKind(name));
    return LineOutcome::Finished;
}

LineOutcome ExecuteRemote(StatementCall& call) {
    const std::string_view name = NextToken(call.rest);
    const std::string_view target = NextToken(call.rest);
    const std::size_t quote = target.find('"');
    if (quote == std::string_view::npos) {
        return FinishedIf(call.document.CreateRemoteVariable(name, target));
    }
    const std::size_t last = target.rfind('"');
    if (last == quote) return LineOutcome::Failed;
    std::string unquoted(target.substr(0, quote));
    unquoted += target.substr(quote + 1, last - quote - 1);
    return FinishedIf(call.document.CreateRemoteVariable(name, unquoted));
}

LineOutcome ExecutePointer(StatementCall& call) {
    return FinishedIf(call.document.CreateVariable(NextToken(call.rest), VariablePointer));
}

LineOutcome ExecuteList(StatementCall& call) {
    return FinishedIf(call.document.CreateVariable(NextToken(call.rest), VariableList));
}

LineOutcome ExecuteSet(StatementCall& call) {
    CKalvexDoc& document = call.document;
    std::string_view name = NextToken(call.rest);
    if (NextToken(call.rest) != "=") return document.Fail(ErrorNoAssignment);
    const std::size_t stamp = name.find(kTimestamp);
    const bool setsTime = stamp != std::string_view::npos && stamp > 0;
    if (setsTime) name = name.substr(0, stamp);
    CVariable* variable = document.FindNamed(name);
    if (variable == nullptr) return LineOutcome::Failed;
    CVal value;
    if (!EvaluateFor(document, *variable, call.rest, value)) return LineOutcome::Failed;
    if (setsTime) {
        variable->SetTime(ValueToInt(value), GetValueKind(name));
    } else {
        variable->SetValue(value, GetValueKind(name));
    }
    return LineOutcome::Finished;
}

LineOutcome ExecuteCopy(StatementCall& call) {
    CKalvexDoc& document = call.document;
    const std::string_view source = NextToken(call.rest);
    const std::string_view target = NextToken(call.rest);
    if (source.empty() || target.empty()) {
        return document.Fail(ErrorUndefinedVariable);
    }
    CVariable* from = document.FindNamed(source);
    if (from == nullptr) return LineOutcome::Failed;
    CVariable* to = document.FindNamed(target);
    if (to == nullptr) return LineOutcome::Failed;
    to->CopyFrom(from, GetValueKind(source));
    return LineOutcome::Finished;
}

LineOutcome ExecuteSetPtr(StatementCall& call) {
    CKalvexDoc& document = call.document;
    const std::string_view name = NextToken(call.rest);
    if (NextToken(call.rest) != "=") return document.Fail(ErrorNoAssignment);
    CVariable* variable = FindVariable(document, name);
    if (variable == nullptr || variable->GetKind() != VariablePointer) {
        return document.FailForced(ErrorUndefinedVariable, name);
    }
    const std::string_view text = TrimBlanks(call.rest);
    CVal target;
    if (!EvaluateRest(document, call.rest, target, ValueType::Text)) {
        return document.Fail(ErrorExpression, text);
    }
    static_cast<CVariablePointer*>(variable)->SetTargetName(ValueToText(target));
    return LineOutcome::Finished;
}

LineOutcome ExecuteCreateVarList(StatementCall& call) {
    CKalvexDoc& document = call.document;
    const std::string_view name = NextToken(call.rest);
    const std::string_view token = NextToken(call.rest);
    CVariable* list = FindVariable(document, name);
    if (list == nullptr || list->GetKind() != VariableList) {
        return document.FailForced(ErrorUndefinedVariable, name);
    }
    CVal pattern;
    if (!EvaluateOperand(document, token, pattern, ValueType::Text, true)) {
        const bool wild = token.find_first_of("*?") != std::string_view::npos;
        if (!wild || document.Variables().Find(BaseName(token)) != nullptr) {
            return document.Fail(ErrorOther, token);
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
    return LineOutcome::Finished;
}

}  // namespace kalvex
