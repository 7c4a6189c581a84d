#include "operands/OperandEvaluator.h"

#include <algorithm>
#include <array>

#include "operands/FormulaParser.h"
#include "operands/KeywordFunction.h"
#include "operands/Keywords.h"
#include "operands/ListAggregates.h"
#include "operands/Schedule.h"
#include "operands/TimeProperties.h"
#include "text/CodePage.h"
#include "text/LineScanner.h"
#include "value/ValueText.h"

namespace kalvex::operands {

namespace {

template <std::string (CVariable::*Getter)()>
value::CVal TextOf(CVariable& variable) {
    return value::CVal((variable.*Getter)());
}

template <int (CVariable::*Getter)()>
value::CVal NumberOf(CVariable& variable) {
    return value::CVal((variable.*Getter)() != 0 ? 1 : 0);
}

value::CVal NameOf(CVariable& variable) {
    return value::CVal(std::string_view(variable.GetName()));
}

struct VariableProperty {
    VariablePropertyRow row;
    value::CVal (*read)(CVariable& variable);
};

constexpr VariableProperty kVariableProperties[] = {
    {{".NAME", "Nazwa zmiennej"}, NameOf},
    {{".DESCRIPTION", "Opis zmiennej"}, TextOf<&CVariable::GetDescription>},
    {{".DESCNAME", "Nazwa pełna zmiennej"}, TextOf<&CVariable::GetDescName>},
    {{".UNIT", "Jednostka zmiennej"}, TextOf<&CVariable::GetUnit>},
    {{".DISPFORMAT", "Format wyświetlania zmiennej"}, TextOf<&CVariable::GetDispFormat>},
    {{".MINVAL", "Minimum zakresu wartości"}, TextOf<&CVariable::GetMinVal>},
    {{".MAXVAL", "Maksimum zakresu wartości"}, TextOf<&CVariable::GetMaxVal>},
    {{".ISARCH", "Czy zmienna jest achiwizowana"}, NumberOf<&CVariable::IsArchived>},
    {{".ISHREP", "Czy zmienna posiada raport godzinowy"}, NumberOf<&CVariable::HasHourReport>},
    {{".ISDREP", "Czy zmienna posiada raport dobowy"}, NumberOf<&CVariable::HasDayReport>},
    {{".ISMREP", "Czy zmienna posiada raport miesięczny"}, NumberOf<&CVariable::HasMonthReport>},
    {{".ISSREP", "Czy zmienna posiada raport okresowy"}, NumberOf<&CVariable::HasSpanReport>},
};

constexpr std::string_view kBaseName = ".BASENAME";

void ReadCount(ScriptContext&, const CVariableList& list, value::CVal& out) {
    out = value::CVal(CountItems(list, {}));
}

void ReadPosition(ScriptContext&, const CVariableList& list, value::CVal& out) {
    out = value::CVal(list.GetIterator());
}

void ReadPositionValid(ScriptContext&, const CVariableList& list, value::CVal& out) {
    out = value::CVal(list.IsIteratorValid() ? 1 : 0);
}

constexpr ElementFilter kKnownElements{value::Status::Unknown, 0, value::kLargestTime};

void ReadSum(ScriptContext& script, const CVariableList& list, value::CVal& out) {
    SumItems(list, out, kKnownElements, script.Services().clock.Now());
}

void ReadMinimum(ScriptContext&, const CVariableList& list, value::CVal& out) {
    MinItem(list, out, kKnownElements);
}

void ReadMaximum(ScriptContext&, const CVariableList& list, value::CVal& out) {
    MaxItem(list, out, kKnownElements);
}

void ReadAverage(ScriptContext& script, const CVariableList& list, value::CVal& out) {
    AverageItems(list, out, kKnownElements, script.Services().clock.Now());
}

struct ListProperty {
    std::string_view name;
    void (*read)(ScriptContext& script, const CVariableList& list, value::CVal& out);
};

constexpr ListProperty kListProperties[] = {
    {".COUNT", ReadCount},     {".POS", ReadPosition},    {".CHECKPOS", ReadPositionValid},
    {".SUM", ReadSum},         {".MINIMUM", ReadMinimum}, {".MAXIMUM", ReadMaximum},
    {".AVERAGE", ReadAverage},
};

// A plain substring search; what stands at position 0 is a name.
bool Mentions(std::string_view text, std::string_view name) {
    return text.find(name, 1) != std::string_view::npos;
}

// Every property begins with a dot and a capital letter; a text without that pair needs no search.
bool MayMentionProperty(std::string_view text) {
    for (std::size_t dot = text.find('.', 1);
         dot != std::string_view::npos && dot + 1 < text.size(); dot = text.find('.', dot + 1)) {
        if (text[dot + 1] >= 'A' && text[dot + 1] <= 'Z') return true;
    }
    return false;
}

std::string_view CutAtLastDot(std::string_view text) {
    return text.substr(0, text.rfind('.'));
}

bool EvaluateVariableProperty(ScriptContext& script, std::string_view text, value::CVal& out,
                              bool report) {
    const std::string_view base = BaseName(text);
    CVariable* variable = FindVariable(script, base);
    if (variable == nullptr) {
        if (report) script.SetError(ErrorWrongKind, base, false);
        return false;
    }
    for (const VariableProperty& property : kVariableProperties) {
        if (property.row.name == text.substr(base.size())) {
            out = property.read(*variable);
            return true;
        }
    }
    return false;
}

bool EvaluateBaseName(ScriptContext& script, std::string_view text, value::CVal& out, bool report) {
    const std::string_view name = CutAtLastDot(text);
    CVariable* variable = FindVariable(script, name);
    if (variable == nullptr) return false;
    if (variable->GetKind() != VariablePointer) {
        if (report) script.SetError(ErrorWrongKind, name, false);
        return false;
    }
    const auto& pointer = static_cast<const CVariablePointer&>(*variable);
    out = value::CVal(std::string_view(pointer.GetTargetName()));
    return true;
}

bool EvaluateListProperty(ScriptContext& script, std::string_view text,
                          const ListProperty& property, value::CVal& out, bool report) {
    const std::string_view name = CutAtLastDot(text);
    CVariable* variable = FindVariable(script, name);
    if (variable == nullptr || variable->GetKind() != VariableList) {
        const ScriptError code = variable == nullptr ? ErrorBadVariableName : ErrorWrongKind;
        if (report) script.SetError(code, name, false);
        return false;
    }
    property.read(script, static_cast<const CVariableList&>(*variable), out);
    return true;
}

bool EvaluateTimestamp(ScriptContext& script, std::string_view text, value::CVal& out,
                       bool report) {
    const std::string_view name = CutAtLastDot(text);
    std::int64_t time = 0;
    if (!GetVariableTime(script, name, &time)) {
        if (report) script.SetError(ErrorRemoteValue, name, false);
        return false;
    }
    out = value::CVal(time);
    return true;
}

bool EvaluateTime(ScriptContext& script, std::string_view text, value::CVal& out) {
    const std::string_view base = BaseName(text);
    std::int64_t time = 0;
    if (base == Keyword::Time) {
        time = script.Services().clock.Now();
    } else {
        value::CVal value;
        if (!EvaluateOperand(script, base, value, value::ValueType::Int64, true)) return false;
        value.GetValData(value::ValueType::Int64, &time);
    }
    if (base.size() == text.size()) {
        out = value::CVal(time);
        return true;
    }
    const TimeProperty* property = FindTimeProperty(text.substr(base.size()));
    if (property == nullptr) return false;
    const std::int64_t result = property->compute(time);
    out = property->kind == TimePropertyKind::Time ? value::CVal(result)
                                                   : value::CVal(static_cast<int>(result));
    return true;
}

enum class Attempt { NotMine, Failed, Succeeded };

Attempt Outcome(bool succeeded) {
    return succeeded ? Attempt::Succeeded : Attempt::Failed;
}

// Everything that a dot can select, in the order in which it is looked for.
Attempt EvaluateProperty(ScriptContext& script, std::string_view text, value::CVal& out,
                         bool report) {
    for (const VariableProperty& property : kVariableProperties) {
        if (Mentions(text, property.row.name)) {
            return Outcome(EvaluateVariableProperty(script, text, out, report));
        }
    }
    if (Mentions(text, kBaseName)) return Outcome(EvaluateBaseName(script, text, out, report));
    for (const ListProperty& property : kListProperties) {
        if (Mentions(text, property.name)) {
            return Outcome(EvaluateListProperty(script, text, property, out, report));
        }
    }
    if (Mentions(text, kTimestamp)) return Outcome(EvaluateTimestamp(script, text, out, report));
    if (MentionsTimeProperty(text)) return Outcome(EvaluateTime(script, text, out));
    return Attempt::NotMine;
}

bool IsTimeWord(std::string_view text) {
    return text.starts_with(Keyword::Time) &&
           (text.size() == Keyword::Time.size() || text[Keyword::Time.size()] == '.');
}

bool EvaluateVariable(ScriptContext& script, std::string_view text, value::CVal& out, bool report) {
    CVariable* variable = FindVariable(script, text);
    if (variable == nullptr) return false;
    const int result = variable->GetValue(out, value::GetValueKind(text), 0);
    if (result == ReadValue) return true;
    const bool unavailable = result == ReadUnavailable && report;
    script.SetError(unavailable ? ErrorRemoteValue : ErrorWaiting, text, false);
    return false;
}

bool EvaluateFormula(ScriptContext& script, std::string_view text, value::CVal& out) {
    FormulaParser parser(script);
    std::string postfix;
    return parser.CompileFormula(text, postfix) && parser.EvaluatePostfix(out, postfix);
}

bool EndsExpression(std::string_view token) {
    if (token.size() == 1) return token[0] == ';';
    static_assert(Keyword::Then.size() == Keyword::Goto.size());
    return token.size() == Keyword::Then.size() &&
           (text::EqualNoCase(token, Keyword::Then) || text::EqualNoCase(token, Keyword::Goto));
}

}  // namespace

std::span<const VariablePropertyRow> VariableProperties() {
    static const auto rows = [] {
        std::array<VariablePropertyRow, std::size(kVariableProperties)> copy;
        std::ranges::transform(kVariableProperties, copy.begin(), &VariableProperty::row);
        return copy;
    }();
    return rows;
}

bool EvaluateOperand(ScriptContext& script, std::string_view text, value::CVal& out, int wanted,
                     bool report) {
    text = text::TrimBlanks(text);
    if (text.starts_with('@') && IsScheduleWord(text)) {
        out = value::CVal(text);
        return true;
    }
    if (MayMentionProperty(text)) {
        const Attempt attempt = EvaluateProperty(script, text, out, report);
        if (attempt != Attempt::NotMine) return attempt == Attempt::Succeeded;
    }
    if (IsTimeWord(text)) return EvaluateTime(script, text, out);
    double number = 0;
    if (value::ConvertString2Double(text, &number)) {
        out = value::ValueType::IsInteger(wanted) ? value::CVal(text) : value::CVal(number);
        return out.Cast(wanted);
    }
    if (text.size() > 2 && text.front() == '"' && text.back() == '"') {
        out = value::CVal(text.substr(1, text.size() - 2));
        return true;
    }
    return EvaluateVariable(script, text, out, report);
}

bool EvaluateExpression(ScriptContext& script, std::string_view& text, value::CVal& out,
                        int wanted) {
    const std::string_view full = text;
    const std::string_view keyword = text::NextToken(text);
    std::array<std::string_view, 3> arguments;
    for (std::string_view& argument : arguments) argument = text::NextToken(text);
    if (const FunctionRow* row = script.Services().functions.Find(keyword)) {
        FunctionCall call{script, keyword, arguments, text, full, wanted, out, {}};
        const FunctionResult result = row->handler(call);
        if (result != FunctionResult::Continues) return result == FunctionResult::Done;
        return EvaluateFormula(script, call.formula, out);
    }
    if (arguments[0].empty() && EvaluateOperand(script, keyword, out, wanted, true)) return true;
    return EvaluateFormula(script, full, out);
}

bool EvaluateRest(ScriptContext& script, std::string_view& text, value::CVal& out, int wanted) {
    std::string joined;
    std::string_view token = text::NextToken(text);
    const char* start = token.data();
    std::size_t length = 0;
    bool contiguous = true;  // the tokens stand in the line as they would be joined
    while (!token.empty() && !EndsExpression(token)) {
        if (length > 0 && contiguous && token.data() != start + length + 1) {
            joined.assign(start, length);
            contiguous = false;
        }
        if (!contiguous) {
            joined += ' ';
            joined += token;
        } else {
            length = static_cast<std::size_t>(token.data() + token.size() - start);
        }
        token = text::NextToken(text);
    }
    std::string_view expression = contiguous ? std::string_view(start, length) : joined;
    text = {};
    return EvaluateExpression(script, expression, out, wanted);
}

}  // namespace kalvex::operands
