#include "operands/ListFunctions.h"

#include <algorithm>
#include <iterator>
#include <utility>

#include "operands/FunctionFamilies.h"
#include "operands/Keywords.h"
#include "operands/ListAggregates.h"
#include "operands/OperandEvaluator.h"
#include "operands/StatusArgument.h"
#include "operands/TimeText.h"
#include "text/LineScanner.h"
#include "value/Bounds.h"
#include "value/LocalTime.h"

namespace kalvex::operands {

namespace {

// A local or remote variable, or a pointer to a remote one.
CVariable* FindResult(ScriptContext& script, std::string_view name) {
    CVariable* variable = script.FindNamed(name);
    if (variable == nullptr) return nullptr;
    const VariableKind kind = variable->GetKind();
    if (kind == VariableLocal || kind == VariableRemote) return variable;
    if (kind == VariablePointer &&
        static_cast<CVariablePointer*>(variable)->GetTargetKind() == VariableRemote) {
        return variable;
    }
    return script.FailForced(ErrorWrongKind, name);
}

// "FROM <time>" or "TO <time>" at the front of the text.
bool TakeBound(ScriptContext& script, std::string_view word, std::string_view& text,
               std::int64_t& bound) {
    text = text::TrimBlanks(text);
    const std::string_view clause = text;
    const std::string_view token = text::NextToken(text);
    if (token.empty()) return script.FailForced(ErrorArguments, word);
    if (token != word) return script.FailForced(ErrorUnknownKeyword, token);
    return ParseDateFields(script, text, bound) || script.FailForced(ErrorText, clause);
}

CalcResult ReadFilter(ScriptContext& script, std::string_view mask, std::string_view text,
                      ElementFilter& filter) {
    if (mask.empty()) return CalcResult::Done;
    if (!ParseStatusArgument(script, mask, &filter.ignoreMask, StatusAction::Set)) {
        script.SetError(ErrorArguments, mask, true);
        return CalcResult::Error;
    }
    if (text::TrimBlanks(text).empty()) return CalcResult::Done;
    if (!TakeBound(script, Keyword::From, text, filter.from) ||
        !TakeBound(script, Keyword::To, text, filter.to)) {
        return CalcResult::Error;
    }
    return filter.from > filter.to ? CalcResult::RangeReversed : CalcResult::Done;
}

bool Count(const CVariableList& list, value::CVal& result, const ElementFilter& filter,
           std::int64_t) {
    result = value::CVal(CountItems(list, filter));
    return true;
}

bool Minimum(const CVariableList& list, value::CVal& result, const ElementFilter& filter,
             std::int64_t) {
    return MinItem(list, result, filter);
}

bool Maximum(const CVariableList& list, value::CVal& result, const ElementFilter& filter,
             std::int64_t) {
    return MaxItem(list, result, filter);
}

struct Aggregate {
    std::string_view ending;
    std::size_t longerThan;  // the length of list and function together
    bool (*compute)(const CVariableList& list, value::CVal& result, const ElementFilter& filter,
                    std::int64_t now);
};

constexpr Aggregate kAggregates[] = {
    {".COUNT", 6, Count},     {".SUM", 6, SumItems},         {".MINIMUM", 8, Minimum},
    {".MAXIMUM", 8, Maximum}, {".AVERAGE", 8, AverageItems},
};

const Aggregate* FindAggregate(std::string_view token) {
    const auto row = std::ranges::find_if(kAggregates, [token](const Aggregate& aggregate) {
        return token.size() > aggregate.longerThan && token.ends_with(aggregate.ending);
    });
    return row == std::end(kAggregates) ? nullptr : row;
}

std::int64_t NextHour(std::int64_t time) {
    return time + value::kSecondsPerHour;
}

struct FillStep {
    std::string_view word;
    std::int64_t (*first)(std::int64_t time);
    std::int64_t (*next)(std::int64_t time);
};

constexpr FillStep kFillSteps[] = {
    {"HREP", value::GetFirstLocalHourTime, NextHour},
    {"DREP", value::GetFirstLocalDayTime, value::GetNextLocalDayTime},
    {"MREP", value::GetFirstLocalMonthTime, value::GetNextLocalMonthTime},
};

std::size_t CountSteps(const FillStep& step, std::int64_t start, std::int64_t end) {
    std::size_t count = 0;
    for (std::int64_t time = start; time <= end && count <= value::kMostElements; ++count) {
        time = step.next(time);
    }
    return count;
}

}  // namespace

CalcResult CalcInList(ScriptContext& script, std::string_view text) {
    const std::string_view source = text::NextToken(text);
    const std::string_view target = text::NextToken(text);
    const std::string_view mask = text::NextToken(text);
    ElementFilter filter;
    const CalcResult read = ReadFilter(script, mask, text, filter);
    const CVariableList* list = script.FindList(BaseName(source));
    CVariable* result = FindResult(script, BaseName(target));
    if (list == nullptr || result == nullptr) return CalcResult::Error;
    if (read != CalcResult::Done) return read;
    const Aggregate* aggregate = FindAggregate(source);
    value::CVal value;
    CalcResult code = CalcResult::Done;
    if (aggregate == nullptr) {
        script.SetError(ErrorArguments, source, true);
        code = CalcResult::Error;
    } else if (!aggregate->compute(*list, value, filter, script.Services().clock.Now())) {
        code = CalcResult::NothingComputed;
    }
    result->SetValue(value, value::GetValueKind(target));
    return code;
}

bool FillInList(ScriptContext& script, std::string_view text) {
    CVariableList* list = script.FindList(BaseName(text::NextToken(text)));
    if (list == nullptr) return false;
    const std::string_view valueToken = text::NextToken(text);
    value::CVal value;
    const int wanted = list->GetValueType(value::KindCurrent, 1);
    if (!EvaluateOperand(script, valueToken, value, wanted, true)) {
        return script.FailForced(ErrorArguments, valueToken);
    }
    const std::string_view statusToken = text::NextToken(text);
    std::uint16_t status = 0;
    if (!ParseStatusArgument(script, statusToken, &status, StatusAction::Set)) {
        return script.FailForced(ErrorArguments, statusToken);
    }
    std::string_view startToken = text::NextToken(text);
    const std::string_view endToken = text::NextToken(text);
    std::string_view endText = endToken;
    std::int64_t start = 0;
    std::int64_t end = 0;
    if (!ParseDateFields(script, startToken, start) || !ParseDateFields(script, endText, end)) {
        return script.FailForced(ErrorArguments, endToken);
    }
    const std::string_view stepToken = text::NextToken(text);
    const auto step = std::ranges::find(kFillSteps, stepToken, &FillStep::word);
    if (step == std::end(kFillSteps)) return script.FailForced(ErrorArguments, stepToken);
    value.SetStatus(status);
    start = step->first(start);
    end = step->first(end);
    // No step is shorter than an hour, and a list that stays within its bound need not be asked.
    const std::int64_t most = (end - start) / value::kSecondsPerHour + 1;
    if (std::cmp_greater(most, value::kMostElements - list->Elements().size())) {
        value::CheckListRoom(list->Elements().size(), CountSteps(*step, start, end));
    }
    for (std::int64_t time = start; time <= end; time = step->next(time)) {
        value.SetTime(time);
        list->Add(value);
    }
    return true;
}

FunctionResult CalcInListFunction(FunctionCall& call) {
    const CalcResult code = CalcInList(call.script, TextBehindKeyword(call));
    if (code == CalcResult::Error) return FunctionResult::Failed;
    call.out = value::CVal(static_cast<int>(code));
    return FunctionResult::Done;
}

FunctionResult FillInListFunction(FunctionCall& call) {
    if (!FillInList(call.script, TextBehindKeyword(call))) return FunctionResult::Failed;
    call.out = value::CVal(1);
    return FunctionResult::Done;
}

}  // namespace kalvex::operands
