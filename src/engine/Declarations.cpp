// Declarations and assignment: LOCAL, REMOTE, POINTER, LIST, SET, COPY, SETPTR, CREATE_VAR_LIST.
#include "engine/ScriptDocument.h"
#include "engine/StatementFamilies.h"
#include "operands/OperandEvaluator.h"
#include "text/LineScanner.h"
#include "text/PatternMatch.h"
#include "value/ValueText.h"

namespace kalvex::engine {

namespace {

// The current type of the variable is what numeric literals on the right side become.
bool EvaluateFor(CKalvexDoc& document, operands::CVariable& variable, std::string_view& text,
                 value::CVal& out) {
    return operands::EvaluateRest(document, text, out,
                                  variable.GetValueType(value::KindCurrent, 1));
}

}  // namespace

bool CKalvexDoc::NameMayBeDeclared(std::string_view name) {
    return operands::BaseName(name).size() == name.size() ||
           StopOnError(operands::ErrorDotInName, name);
}

bool CKalvexDoc::CreateVariable(std::string_view name, operands::VariableKind kind) {
    if (!NameMayBeDeclared(name)) return false;
    if (Variables().Find(name) != nullptr) return true;
    std::unique_ptr<operands::CVariable> variable;
    if (kind == operands::VariablePointer) {
        variable = std::make_unique<operands::CVariablePointer>(name, *this);
    } else if (kind == operands::VariableList) {
        variable = std::make_unique<operands::CVariableList>(name);
    } else {
        variable = std::make_unique<operands::CVariableLocal>(name);
    }
    Variables().Append(std::move(variable));
    return true;
}

bool CKalvexDoc::CreateRemoteVariable(std::string_view name, std::string_view target) {
    if (!NameMayBeDeclared(name)) return false;
    if (Variables().Find(name) != nullptr) return true;
    const std::size_t at = target.find('@');
    if (at == std::string_view::npos) return StopOnError(operands::ErrorBadVariableName, target);
    if (Services().sources == nullptr) return false;
    operands::CVariable& variable = Variables().Append(
        Services().sources->CreateRemote(*this, name, target.substr(0, at), target.substr(at + 1)));
    if (m_bIgnoreUnknown) variable.SetIgnoreUnknown(true);
    return true;
}

LineOutcome ExecuteLocal(StatementCall& call) {
    CKalvexDoc& document = call.document;
    const std::string_view name = text::NextToken(call.rest);
    const std::string_view sign = text::NextToken(call.rest);
    if (!document.CreateVariable(name, operands::VariableLocal)) return LineOutcome::Failed;
    if (sign.empty() || sign == ";") return LineOutcome::Finished;
    if (sign != "=") return document.Fail(operands::ErrorNoAssignment);
    operands::CVariable& variable = *document.Variables().Find(name);
    const std::string_view text = text::TrimBlanks(call.rest);
    value::CVal value;
    if (!EvaluateFor(document, variable, call.rest, value)) {
        return document.Fail(operands::ErrorExpression, text);
    }
    variable.SetValue(value, value::GetValueKind(name));
    return LineOutcome::Finished;
}

LineOutcome ExecuteRemote(StatementCall& call) {
    const std::string_view name = text::NextToken(call.rest);
    const std::string_view target = text::NextToken(call.rest);
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
    return FinishedIf(
        call.document.CreateVariable(text::NextToken(call.rest), operands::VariablePointer));
}

LineOutcome ExecuteList(StatementCall& call) {
    return FinishedIf(
        call.document.CreateVariable(text::NextToken(call.rest), operands::VariableList));
}

LineOutcome ExecuteSet(StatementCall& call) {
    CKalvexDoc& document = call.document;
    std::string_view name = text::NextToken(call.rest);
    if (text::NextToken(call.rest) != "=") return document.Fail(operands::ErrorNoAssignment);
    const std::size_t stamp = name.find(operands::kTimestamp, 1);
    const bool setsTime = stamp != std::string_view::npos;
    if (setsTime) name = name.substr(0, stamp);
    operands::CVariable* variable = document.FindNamed(name);
    if (variable == nullptr) return LineOutcome::Failed;
    value::CVal value;
    if (!EvaluateFor(document, *variable, call.rest, value)) return LineOutcome::Failed;
    if (setsTime) {
        variable->SetTime(value::ValueToInt(value), value::GetValueKind(name));
    } else {
        variable->SetValue(value, value::GetValueKind(name));
    }
    return LineOutcome::Finished;
}

LineOutcome ExecuteCopy(StatementCall& call) {
    CKalvexDoc& document = call.document;
    const std::string_view source = text::NextToken(call.rest);
    const std::string_view target = text::NextToken(call.rest);
    if (source.empty() || target.empty()) {
        return document.Fail(operands::ErrorUndefinedVariable);
    }
    operands::CVariable* from = document.FindNamed(source);
    if (from == nullptr) return LineOutcome::Failed;
    operands::CVariable* to = document.FindNamed(target);
    if (to == nullptr) return LineOutcome::Failed;
    to->CopyFrom(from, value::GetValueKind(source));
    return LineOutcome::Finished;
}

LineOutcome ExecuteSetPtr(StatementCall& call) {
    CKalvexDoc& document = call.document;
    const std::string_view name = text::NextToken(call.rest);
    if (text::NextToken(call.rest) != "=") return document.Fail(operands::ErrorNoAssignment);
    operands::CVariable* variable = operands::FindVariable(document, name);
    if (variable == nullptr || variable->GetKind() != operands::VariablePointer) {
        return document.FailForced(operands::ErrorUndefinedVariable, name);
    }
    const std::string_view text = text::TrimBlanks(call.rest);
    value::CVal target;
    if (!operands::EvaluateRest(document, call.rest, target, value::ValueType::Text)) {
        return document.Fail(operands::ErrorExpression, text);
    }
    static_cast<operands::CVariablePointer*>(variable)->SetTargetName(value::ValueToText(target));
    return LineOutcome::Finished;
}

LineOutcome ExecuteCreateVarList(StatementCall& call) {
    CKalvexDoc& document = call.document;
    const std::string_view name = text::NextToken(call.rest);
    const std::string_view token = text::NextToken(call.rest);
    operands::CVariable* list = operands::FindVariable(document, name);
    if (list == nullptr || list->GetKind() != operands::VariableList) {
        return document.FailForced(operands::ErrorUndefinedVariable, name);
    }
    value::CVal pattern;
    if (!operands::EvaluateOperand(document, token, pattern, value::ValueType::Text, true)) {
        const bool wild = token.find_first_of("*?") != std::string_view::npos;
        if (!wild || document.Variables().Find(operands::BaseName(token)) != nullptr) {
            return document.Fail(operands::ErrorOther, token);
        }
        pattern = value::CVal(token);
    }
    const std::string text = value::ValueToText(pattern);
    for (const std::unique_ptr<operands::CVariable>& variable : document.Variables()) {
        const operands::VariableKind kind = variable->GetKind();
        if (kind == operands::VariablePointer || kind == operands::VariableList) continue;
        const std::string& candidate = variable->GetName();
        if (text::CompareWithPattern(candidate, text, text::PatternOption::VariableNames)) {
            static_cast<operands::CVariableList*>(list)->Add(
                value::CVal(std::string_view(candidate)));
        }
    }
    return LineOutcome::Finished;
}

}  // namespace kalvex::engine
