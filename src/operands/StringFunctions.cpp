// Making texts: conversion from and to numbers, case, joining, cutting, trimming. Positions count
// bytes, which are characters in Windows-1250, from 0.
#include <algorithm>

#include "operands/FunctionArguments.h"
#include "operands/FunctionFamilies.h"
#include "operands/NumberFormat.h"
#include "operands/OperandEvaluator.h"
#include "text/CodePage.h"
#include "text/Trim.h"
#include "value/Bounds.h"
#include "value/ValueText.h"

namespace kalvex::operands {

namespace {

constexpr std::string_view kDefaultFormat = "%.2f";

FunctionResult Give(FunctionCall& call, std::string text) {
    call.out = value::CVal(std::move(text));
    return FunctionResult::Done;
}

template <class Function>
FunctionResult OfText(FunctionCall& call, Function function) {
    const TextArgument text(call, 0);
    return text ? Give(call, function(*text)) : FunctionResult::Failed;
}

template <class Function>
FunctionResult OfTwoTexts(FunctionCall& call, Function function) {
    const TextArgument first(call, 0);
    if (!first) return FunctionResult::Failed;
    const TextArgument second(call, 1);
    if (!second) return FunctionResult::Failed;
    return Give(call, std::string(function(*first, *second)));
}

// A negative count counts as 0.
std::size_t Count(int count) {
    return static_cast<std::size_t>(std::max(count, 0));
}

template <class Function>
FunctionResult OfTextAndCount(FunctionCall& call, Function function) {
    const TextArgument text(call, 0);
    if (!text) return FunctionResult::Failed;
    const std::optional<int> count = NumberArgument(call, 1);
    if (!count) return FunctionResult::Failed;
    return Give(call, std::string(function(*text, std::min(Count(*count), text->size()))));
}

std::string_view SpanIncluding(std::string_view text, std::string_view set) {
    return text.substr(0, text.find_first_not_of(set));
}

std::string_view SpanExcluding(std::string_view text, std::string_view set) {
    return text.substr(0, text.find_first_of(set));
}

std::string Append(std::string_view first, std::string_view second) {
    value::CheckTextSize(first.size() + second.size());
    std::string joined;
    joined.reserve(first.size() + second.size());
    return joined.append(first).append(second);
}

}  // namespace

FunctionResult ToStringFunction(FunctionCall& call) {
    value::CVal value;
    if (!EvaluateOperand(call.script, call.arguments[0], value, value::ValueType::Text, true)) {
        return FunctionResult::Failed;
    }
    if (call.arguments[0].Text().find('"') != std::string_view::npos) {
        return Give(call, value::ValueToText(value));
    }
    std::string format(kDefaultFormat);
    if (!call.arguments[1].empty()) {
        const TextArgument given(call, 1);
        if (!given) return FunctionResult::Failed;
        format = *given;
    }
    return Give(call, FormatNumber(value, format));
}

FunctionResult ToFloat(FunctionCall& call) {
    value::CVal value;
    if (!EvaluateOperand(call.script, call.arguments[0], value, value::ValueType::Double, true)) {
        return FunctionResult::Failed;
    }
    call.out = value::CVal(value::ValueToDouble(value));
    return FunctionResult::Done;
}

FunctionResult ToInt(FunctionCall& call) {
    const std::optional<int> number = NumberArgument(call, 0);
    if (!number) return FunctionResult::Failed;
    call.out = value::CVal(*number);
    return FunctionResult::Done;
}

FunctionResult StringLen(FunctionCall& call) {
    const TextArgument text(call, 0);
    if (!text) return FunctionResult::Failed;
    call.out = value::CVal(static_cast<int>(text->size()));
    return FunctionResult::Done;
}

FunctionResult StringMakeLower(FunctionCall& call) {
    return OfText(call, [](std::string_view text) { return text::ToLower(text); });
}

FunctionResult StringMakeUpper(FunctionCall& call) {
    return OfText(call, [](std::string_view text) { return text::ToUpper(text); });
}

FunctionResult StringMakeReverse(FunctionCall& call) {
    return OfText(call,
                  [](std::string_view text) { return std::string(text.rbegin(), text.rend()); });
}

FunctionResult StringAppend(FunctionCall& call) {
    return OfTwoTexts(call, Append);
}

FunctionResult StringSpanIncluding(FunctionCall& call) {
    return OfTwoTexts(call, SpanIncluding);
}

FunctionResult StringSpanExcluding(FunctionCall& call) {
    return OfTwoTexts(call, SpanExcluding);
}

FunctionResult StringTrim(FunctionCall& call) {
    return OfTwoTexts(call, text::Trim);
}

FunctionResult StringTrimLeft(FunctionCall& call) {
    return OfTwoTexts(call, text::TrimLeft);
}

FunctionResult StringTrimRight(FunctionCall& call) {
    return OfTwoTexts(call, text::TrimRight);
}

FunctionResult StringLeft(FunctionCall& call) {
    return OfTextAndCount(
        call, [](std::string_view text, std::size_t count) { return text.substr(0, count); });
}

FunctionResult StringRight(FunctionCall& call) {
    return OfTextAndCount(call, [](std::string_view text, std::size_t count) {
        return text.substr(text.size() - count);
    });
}

FunctionResult StringMid(FunctionCall& call) {
    const TextArgument text(call, 0);
    if (!text) return FunctionResult::Failed;
    const std::optional<int> position = NumberArgument(call, 1);
    if (!position) return FunctionResult::Failed;
    const std::optional<int> count = NumberArgument(call, 2);
    if (!count) return FunctionResult::Failed;
    const std::size_t start = std::min(Count(*position), text->size());
    return Give(call, std::string(text->substr(start, Count(*count))));
}

}  // namespace kalvex::operands
