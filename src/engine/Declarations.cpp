// Declarations and assignment: LOCAL, REMOTE, POINTER, LIST, SET, COPY, SETPTR, CREATE_VAR_LIST.
#include <optional>
#include <utility>

#include "engine/ScriptDocument.h"
#include "engine/StatementFamilies.h"
#include "operands/Expression.h"
#include "operands/FunctionArguments.h"
#include "operands/FunctionFamilies.h"
#include "operands/OperandEvaluator.h"
#include "operands/VariableName.h"
#include "text/LineScanner.h"
#include "text/PatternMatch.h"
#include "value/Bounds.h"
#include "value/ValueText.h"

namespace kalvex::engine {

namespace {

// The current type of the variable is what numeric literals on the right side become.
const value::CVal* LookFor(CKalvexDoc& document, operands::CVariable& variable,
                           operands::Expression& expression, value::CVal& scratch) {
    return expression.Look(document, scratch, variable.GetValueType(value::KindCurrent, 1));
}

// <name> [= <expression>]
struct AssignmentForm final : StatementForm {
    enum class Sign : unsigned char { None, Equals, Other };

    explicit AssignmentForm(std::string_view text)
        : name(text::NextToken(text)),
          sign(ReadSign(text::NextToken(text))),
          expression(operands::Expression::OfRest(text)) {}

    static Sign ReadSign(std::string_view token) {
        if (token.empty() || token == ";") return Sign::None;
        return token == "=" ? Sign::Equals : Sign::Other;
    }
    // What stands behind the sign, in the line of the form.
    static std::string_view TextOf(std::string_view line) {
        text::NextToken(line);
        text::NextToken(line);
        return text::TrimBlanks(line);
    }

    operands::VariableName name;
    Sign sign;
    operands::Expression expression;
};

// <name>[.TIMESTAMP] = <expression>
struct SetForm final : StatementForm {
    explicit SetForm(std::string_view text) : SetForm(text::NextToken(text), text) {}

    void Fetch() const override {
        name.Fetch();
        expression.Fetch();
    }

    // The value is what the variable holds with something appended to it.
    bool Appends(CKalvexDoc& document) {
        if (!m_growth) {
            operands::Expression::Call* const call = expression.FindCall(document);
            m_growth = call != nullptr && call->function->handler == operands::StringAppend &&
                       call->arguments[0].Text() == name.Text() && call->arguments[0].IsVariable();
        }
        return *m_growth;
    }

    operands::VariableName name;
    bool setsTime;
    bool assigns;
    bool setsValue;
    operands::Expression expression;

  private:
    std::optional<bool> m_growth;

    // What stands behind the target.
    SetForm(std::string_view target, std::string_view& rest)
        : name(target.substr(0, target.find(operands::kTimestamp, 1))),
          setsTime(name.Text().size() != target.size()),
          assigns(text::NextToken(rest) == "="),
          setsValue(assigns && !setsTime),
          expression(operands::Expression::OfRest(rest)) {}
};

// What SetValue does for a local variable, by any expression. Stands apart, as SetAny does, since
// most need none of it. A text that is built piece by piece costs what is appended.
[[gnu::noinline]] LineOutcome SetHeld(CKalvexDoc& document, SetForm& form, value::CVal& held) {
    if (const value::CVal* const text = form.expression.HeldText()) {
        held = *text;
        return LineOutcome::Finished;
    }
    if (held.IsText() && form.Appends(document)) {
        operands::Expression::Call& call = *form.expression.FindCall(document);
        const operands::TextArgument tail(document, call.arguments[1]);
        return FinishedIf(tail && held.AppendText(*tail));
    }
    const int wanted = form.name.Kind() == value::KindCurrent
                           ? held.GetType()
                           : form.name.Find(document)->GetValueType(value::KindCurrent, 1);
    value::CVal scratch;
    const value::CVal* const value = form.expression.Look(document, scratch, wanted);
    if (value == nullptr) return LineOutcome::Failed;
    if (value == &scratch) {
        held = std::move(scratch);
    } else {
        held = *value;
    }
    return LineOutcome::Finished;
}

[[gnu::noinline]] void SetComparison(value::CVal& held, double result) {
    held = value::CVal(static_cast<int>(result));
}

[[gnu::noinline]] LineOutcome SetAny(CKalvexDoc& document, SetForm& form) {
    if (!form.assigns) return document.Fail(operands::ErrorNoAssignment);
    operands::CVariable* variable = form.name.FindNamed(document);
    if (variable == nullptr) return LineOutcome::Failed;
    value::CVal scratch;
    const value::CVal* const value = LookFor(document, *variable, form.expression, scratch);
    if (value == nullptr) return LineOutcome::Failed;
    if (form.setsTime) {
        variable->SetTime(value::ValueToInt(*value), form.name.Kind());
    } else {
        variable->SetValue(*value, form.name.Kind());
    }
    return LineOutcome::Finished;
}

struct TwoNamesForm final : StatementForm {
    explicit TwoNamesForm(std::string_view text)
        : first(text::NextToken(text)), second(text::NextToken(text)) {}

    operands::VariableName first;
    operands::VariableName second;
};

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

LineOutcome ExecuteLocal(CKalvexDoc& document, LineForm& line) {
    auto& form = line.Read<AssignmentForm>();
    if (!document.CreateVariable(form.name.Text(), operands::VariableLocal)) {
        return LineOutcome::Failed;
    }
    if (form.sign == AssignmentForm::Sign::None) return LineOutcome::Finished;
    if (form.sign != AssignmentForm::Sign::Equals) {
        return document.Fail(operands::ErrorNoAssignment);
    }
    operands::CVariable& variable = *form.name.Find(document);
    value::CVal scratch;
    const value::CVal* const value = LookFor(document, variable, form.expression, scratch);
    if (value == nullptr) {
        return document.Fail(operands::ErrorExpression, AssignmentForm::TextOf(line.Rest()));
    }
    variable.SetValue(*value, form.name.Kind());
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

LineOutcome ExecuteSet(CKalvexDoc& document, LineForm& line) {
    auto& form = line.Read<SetForm>();
    value::CVal* const held = form.setsValue ? form.name.Held(document) : nullptr;
    if (held == nullptr) return SetAny(document, form);
    double real = 0;
    if (!form.expression.FindReal(document, real)) return SetHeld(document, form, *held);
    if (form.expression.IsComparison()) {
        SetComparison(*held, real);
    } else {
        *held = real;
    }
    return LineOutcome::Finished;
}

LineOutcome ExecuteCopy(CKalvexDoc& document, LineForm& line) {
    auto& [source, target] = line.Read<TwoNamesForm>();
    if (source.Text().empty() || target.Text().empty()) {
        return document.Fail(operands::ErrorUndefinedVariable);
    }
    operands::CVariable* from = source.FindNamed(document);
    if (from == nullptr) return LineOutcome::Failed;
    operands::CVariable* to = target.FindNamed(document);
    if (to == nullptr) return LineOutcome::Failed;
    to->CopyFrom(from, source.Kind());
    return LineOutcome::Finished;
}

LineOutcome ExecuteSetPtr(CKalvexDoc& document, LineForm& line) {
    auto& form = line.Read<AssignmentForm>();
    if (form.sign != AssignmentForm::Sign::Equals) {
        return document.Fail(operands::ErrorNoAssignment);
    }
    operands::CVariable* variable = form.name.Find(document);
    if (variable == nullptr || variable->GetKind() != operands::VariablePointer) {
        return document.FailForced(operands::ErrorUndefinedVariable, form.name.Text());
    }
    value::CVal target;
    if (!form.expression.Evaluate(document, target, value::ValueType::Text)) {
        return document.Fail(operands::ErrorExpression, AssignmentForm::TextOf(line.Rest()));
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
            auto& names = static_cast<operands::CVariableList&>(*list);
            value::CheckListRoom(names.Elements().size(), 1);
            names.Add(value::CVal(std::string_view(candidate)));
        }
    }
    return LineOutcome::Finished;
}

}  // namespace kalvex::engine
