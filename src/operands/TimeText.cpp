#include "operands/TimeText.h"

#include <array>
#include <limits>
#include <span>
#include <string>

#include "operands/OperandEvaluator.h"
#include "text/Characters.h"
#include "text/LineScanner.h"
#include "value/LocalTime.h"
#include "value/ValueText.h"

namespace kalvex::operands {

namespace {

// A first number from here on is a time and not a year.
constexpr int kFirstTime = 3001;

struct DateField {
    int value::TimeFields::*field;
    int least;
    int most;
};

constexpr DateField kDateFields[] = {
    {&value::TimeFields::year, 1970, kFirstTime - 1},
    {&value::TimeFields::month, 1, 12},
    {&value::TimeFields::day, 1, 31},
    {&value::TimeFields::hour, 0, 23},
    {&value::TimeFields::minute, 0, 59},
    {&value::TimeFields::second, 0, 59},
};

// Takes the operand at the front of the text.
bool TakeNumber(ScriptContext& script, std::string_view& text, int& out) {
    std::string_view rest = text;
    value::CVal value;
    if (!EvaluateOperand(script, text::NextToken(rest), value, value::ValueType::Int, false))
        return false;
    out = value::ValueToInt(value);
    text = rest;
    return true;
}

struct SleepNotation {
    std::string_view separators;  // one number stands before each and one behind the last
    SleepForm form;
};

constexpr SleepNotation kSleepNotations[] = {
    {":.", SleepForm::HoursMinutesSeconds},
    {".", SleepForm::MinutesSeconds},
    {"", SleepForm::Seconds},
};

// The numbers fill the end of `fields`; what precedes them stays 0.
bool ScanSleepTime(std::string_view text, std::string_view separators, std::array<int, 3>& fields) {
    fields = {};
    const std::size_t first = fields.size() - separators.size() - 1;
    for (std::size_t i = first; i < fields.size(); ++i) {
        if (i > first) {
            if (!text.starts_with(separators[i - first - 1])) return false;
            text.remove_prefix(1);
        }
        if (!ScanInteger(text, fields[i])) return false;
    }
    return true;
}

}  // namespace

bool ParseDateFields(ScriptContext& script, std::string_view& text, std::int64_t& out) {
    value::TimeFields fields;
    if (!TakeNumber(script, text, fields.year)) return false;
    for (const DateField& row : std::span(kDateFields).subspan(1)) {
        if (text::TrimBlanks(text).empty() || !TakeNumber(script, text, fields.*row.field)) break;
    }
    if (fields.year >= kFirstTime) {
        out = fields.year;
        return true;
    }
    for (const DateField& row : kDateFields) {
        if (fields.*row.field < row.least || fields.*row.field > row.most) return false;
    }
    out = value::MakeLocalTime(fields);
    return true;
}

bool ScanInteger(std::string_view& text, int& out) {
    constexpr std::int64_t kMost = std::numeric_limits<int>::max();
    std::size_t at = text.find_first_not_of(" \t\n\v\f\r");
    if (at == std::string_view::npos) return false;
    const bool negative = text[at] == '-';
    if (negative || text[at] == '+') ++at;
    const std::size_t firstDigit = at;
    std::int64_t magnitude = 0;
    for (; at < text.size() && text::IsDigit(text[at]); ++at) {
        magnitude = std::min(magnitude * 10 + (text[at] - '0'), kMost + 1);
    }
    if (at == firstDigit) return false;
    out = static_cast<int>(negative ? -magnitude : std::min(magnitude, kMost));
    text.remove_prefix(at);
    return true;
}

bool ParseSleepTime(ScriptContext& script, std::string_view text, SleepTime& out) {
    std::string held;
    CVariable* variable = FindVariable(script, text);
    value::CVal value;
    if (variable != nullptr &&
        variable->GetValue(value, value::GetValueKind(text), 0) == ReadValue) {
        held = value::ValueToText(value);
        text = held;
    }
    for (const SleepNotation& notation : kSleepNotations) {
        std::array<int, 3> fields;
        if (!ScanSleepTime(text, notation.separators, fields)) continue;
        out = {fields[0], fields[1], fields[2], notation.form};
        return true;
    }
    return false;
}

}  // namespace kalvex::operands
