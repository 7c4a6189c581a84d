#include "operands/Operand.h"

#include <algorithm>
#include <array>

#include "operands/Keywords.h"
#include "operands/ListAggregates.h"
#include "operands/PropertyNames.h"
#include "operands/Schedule.h"
#include "operands/TimeProperties.h"
#include "text/LineScanner.h"
#include "value/ValueText.h"

namespace kalvex::operands {

struct VariableProperty {
    VariablePropertyRow row;
    value::CVal (*read)(CVariable& variable);
};

struct ListProperty {
    std::string_view name;
    void (*read)(ScriptContext& script, const CVariableList& list, value::CVal& out);
};

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

bool IsTimeWord(std::string_view text) {
    return text.starts_with(Keyword::Time) &&
           (text.size() == Keyword::Time.size() || text[Keyword::Time.size()] == '.');
}

}  // namespace

struct Operand::Property final : Details {
    std::unique_ptr<Operand> base;  // what a time property is asked of
    const ListProperty* ofList = nullptr;
    const TimeProperty* ofTime = nullptr;
};

struct Operand::Number final : Details {
    double number = 0;
    std::int64_t integer = 0;  // the number as the integer type that was wanted last
    int integerType = 0;
};

// How the value of an operand is had, by what it is.
struct Operand::Readers {
    static bool ScheduleWord(Operand& operand, ScriptContext&, value::CVal& out, int, bool) {
        out = value::CVal(operand.m_text);
        return true;
    }

    static bool OfVariable(Operand& operand, ScriptContext& script, value::CVal& out, int,
                           bool report) {
        CVariable* const variable = operand.m_name.Find(script);
        if (variable == nullptr) {
            if (report) script.SetError(ErrorWrongKind, operand.m_name.Text(), false);
            return false;
        }
        const std::string_view name = operand.m_text.substr(operand.m_name.Text().size());
        for (const operands::VariableProperty& property : kVariableProperties) {
            if (property.row.name == name) {
                out = property.read(*variable);
                return true;
            }
        }
        return false;
    }

    static bool BaseName(Operand& operand, ScriptContext& script, value::CVal& out, int,
                         bool report) {
        CVariable* const variable = operand.m_name.Find(script);
        if (variable == nullptr) return false;
        if (variable->GetKind() != VariablePointer) {
            if (report) script.SetError(ErrorWrongKind, operand.m_name.Text(), false);
            return false;
        }
        const auto& pointer = static_cast<const CVariablePointer&>(*variable);
        out = value::CVal(std::string_view(pointer.GetTargetName()));
        return true;
    }

    static bool OfList(Operand& operand, ScriptContext& script, value::CVal& out, int,
                       bool report) {
        CVariable* const variable = operand.m_name.Find(script);
        if (variable == nullptr || variable->GetKind() != VariableList) {
            const ScriptError code = variable == nullptr ? ErrorBadVariableName : ErrorWrongKind;
            if (report) script.SetError(code, operand.m_name.Text(), false);
            return false;
        }
        operand.Known<Property>().ofList->read(script, static_cast<const CVariableList&>(*variable),
                                               out);
        return true;
    }

    static bool Timestamp(Operand& operand, ScriptContext& script, value::CVal& out, int,
                          bool report) {
        std::int64_t time = 0;
        if (!GetVariableTime(script, operand.m_name.Text(), &time)) {
            if (report) script.SetError(ErrorRemoteValue, operand.m_name.Text(), false);
            return false;
        }
        out = value::CVal(time);
        return true;
    }

    static bool Time(Operand& operand, ScriptContext& script, value::CVal& out, int, bool) {
        const auto& known = operand.Known<Property>();
        std::int64_t time = 0;
        if (known.base == nullptr) {
            time = script.Services().clock.Now();
        } else {
            value::CVal value;
            if (!known.base->Evaluate(script, value, value::ValueType::Int64, true)) return false;
            value.GetValData(value::ValueType::Int64, &time);
        }
        if (operand.m_name.Base().size() == operand.m_text.size()) {
            out = value::CVal(time);
            return true;
        }
        const TimeProperty* const property = known.ofTime;
        if (property == nullptr) return false;
        const std::int64_t result = property->compute(time);
        out = property->kind == TimePropertyKind::Time ? value::CVal(result)
                                                       : value::CVal(static_cast<int>(result));
        return true;
    }

    static bool NumberLiteral(Operand& operand, ScriptContext&, value::CVal& out, int wanted,
                              bool) {
        auto& known = operand.Known<Number>();
        if (!value::ValueType::IsInteger(wanted)) {
            out = value::CVal(known.number);
            return out.Cast(wanted);
        }
        if (known.integerType != wanted) {
            value::CVal integer(operand.m_text);
            if (!integer.Cast(wanted)) return false;
            known.integer = integer.Integer();
            known.integerType = wanted;
        }
        out = value::CVal(known.integer);
        return out.Cast(wanted);
    }

    static bool StringLiteral(Operand& operand, ScriptContext&, value::CVal& out, int, bool) {
        out = operand.Known<Literal>().text;
        return true;
    }

    static bool Variable(Operand& operand, ScriptContext& script, value::CVal& out, int,
                         bool report) {
        CVariable* const variable = operand.m_name.Find(script);
        if (variable == nullptr) return false;
        const int result = variable->GetValue(out, operand.m_name.Kind(), 0);
        if (result == ReadValue) return true;
        const bool unavailable = result == ReadUnavailable && report;
        script.SetError(unavailable ? ErrorRemoteValue : ErrorWaiting, operand.m_text, false);
        return false;
    }

    // Null where no property is mentioned: everything that a dot can select, in the order in which
    // it is looked for.
    static Reader FindProperty(Operand& operand) {
        const std::string_view text = operand.m_text;
        for (const operands::VariableProperty& property : kVariableProperties) {
            if (!Mentions(text, property.row.name)) continue;
            operand.m_name = VariableName(operands::BaseName(text));
            return OfVariable;
        }
        if (Mentions(text, kBaseName)) {
            operand.m_name = VariableName(CutAtLastDot(text));
            return BaseName;
        }
        for (const ListProperty& property : kListProperties) {
            if (!Mentions(text, property.name)) continue;
            operand.m_name = VariableName(CutAtLastDot(text));
            operand.NewDetails<Property>().ofList = &property;
            return OfList;
        }
        if (Mentions(text, kTimestamp)) {
            operand.m_name = VariableName(CutAtLastDot(text));
            return Timestamp;
        }
        return MentionsTimeProperty(text) ? PrepareTime(operand) : nullptr;
    }

    static Reader PrepareTime(Operand& operand) {
        operand.m_name = VariableName(operand.m_text);
        const std::string_view base = operand.m_name.Base();
        auto& known = operand.NewDetails<Property>();
        known.ofTime = FindTimeProperty(operand.m_text.substr(base.size()));
        if (base != Keyword::Time) known.base = std::make_unique<Operand>(base);
        return Time;
    }
};

// The fixed order of the tests defines the language.
Operand::Reader Operand::Classify() {
    m_text = text::TrimBlanks(m_text);
    if (m_text.starts_with('@') && IsScheduleWord(m_text)) return Readers::ScheduleWord;
    if (MayMentionProperty(m_text)) {
        if (const Reader reader = Readers::FindProperty(*this)) return reader;
    }
    if (IsTimeWord(m_text)) return Readers::PrepareTime(*this);
    if (double number = 0; value::ConvertString2Double(m_text, &number)) {
        NewDetails<Number>().number = number;
        return Readers::NumberLiteral;
    }
    if (m_text.size() > 2 && m_text.front() == '"' && m_text.back() == '"') {
        NewDetails<Literal>().text = value::CVal(m_text.substr(1, m_text.size() - 2));
        m_isText = true;
        return Readers::StringLiteral;
    }
    m_name = VariableName(m_text);
    m_isVariable = true;
    return Readers::Variable;
}

bool Operand::ClassifyAndRead(Operand& operand, ScriptContext& script, value::CVal& out, int wanted,
                              bool report) {
    operand.m_read = operand.Classify();
    return operand.m_read(operand, script, out, wanted, report);
}

const value::CVal* Operand::LookFurther(ScriptContext& script, value::CVal& scratch, int wanted) {
    if (m_isVariable) {
        CVariable* const variable = m_name.Find(script);
        if (variable == nullptr) return nullptr;
        if (const value::CVal* value = variable->PeekValue(m_name.Kind())) return value;
    } else if (m_isText) {
        return HeldText();
    }
    return Evaluate(script, scratch, wanted, true) ? &scratch : nullptr;
}

std::span<const VariablePropertyRow> VariableProperties() {
    static const auto rows = [] {
        std::array<VariablePropertyRow, std::size(kVariableProperties)> copy;
        std::ranges::transform(kVariableProperties, copy.begin(), &VariableProperty::row);
        return copy;
    }();
    return rows;
}

std::vector<std::string_view> VariablePropertyNames() {
    std::vector<std::string_view> names;
    for (const VariableProperty& property : kVariableProperties) names.push_back(property.row.name);
    names.push_back(kTimestamp);
    return names;
}

std::vector<std::string_view> ListPropertyNames() {
    std::vector<std::string_view> names = {kBaseName};
    for (const ListProperty& property : kListProperties) names.push_back(property.name);
    return names;
}

}  // namespace kalvex::operands
