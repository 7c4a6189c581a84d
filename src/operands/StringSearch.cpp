// Comparing and searching texts: the functions whose result goes on as the start of a formula.
#include <algorithm>

#include "operands/FunctionArguments.h"
#include "operands/FunctionFamilies.h"
#include "operands/OperandEvaluator.h"
#include "text/CodePage.h"
#include "text/LineScanner.h"

namespace kalvex::operands {

namespace {

int Order(std::string_view a, std::string_view b) {
    return std::clamp(a.compare(b), -1, 1);
}

int Position(std::size_t found) {
    return found == std::string::npos ? -1 : static_cast<int>(found);
}

int Compare(std::string_view a, std::string_view b) {
    return Order(a, b);
}

int CompareNoCase(std::string_view a, std::string_view b) {
    return Order(text::ToUpper(a), text::ToUpper(b));
}

int FindOneOf(std::string_view text, std::string_view set) {
    return Position(text.find_first_of(set));
}

int ReverseFind(std::string_view text, std::string_view wanted) {
    return wanted.empty() ? 0 : Position(text.rfind(wanted.front()));
}

// The result takes the place of the function and its tokens, and what is left of the line follows
// it. An expression whose first text is empty counts as a single word all the same: it is read as
// an operand first, and the error of that stays behind.
FunctionResult ContinueWith(FunctionCall& call, int result, std::string_view firstText) {
    if (firstText.empty() &&
        EvaluateOperand(call.script, call.keyword, call.out, call.wanted, true)) {
        return FunctionResult::Done;
    }
    if (call.script.Services().keepForms && text::TrimBlanks(call.rest).empty()) {
        call.out = value::CVal(static_cast<double>(result));  // as the formula of one number
        return FunctionResult::Done;
    }
    call.formula = std::to_string(result) + ' ';
    call.formula += call.rest;
    return FunctionResult::Continues;
}

FunctionResult OfTwoTexts(FunctionCall& call, int (*function)(std::string_view, std::string_view)) {
    const TextArgument first(call, 0);
    if (!first) return FunctionResult::Failed;
    const TextArgument second(call, 1);
    if (!second) return FunctionResult::Failed;
    return ContinueWith(call, function(*first, *second), *first);
}

}  // namespace

FunctionResult StringCompare(FunctionCall& call) {
    return OfTwoTexts(call, Compare);
}

FunctionResult StringCompareNoCase(FunctionCall& call) {
    return OfTwoTexts(call, CompareNoCase);
}

FunctionResult StringFindOneOf(FunctionCall& call) {
    return OfTwoTexts(call, FindOneOf);
}

FunctionResult StringReverseFind(FunctionCall& call) {
    return OfTwoTexts(call, ReverseFind);
}

FunctionResult StringFind(FunctionCall& call) {
    const TextArgument text(call, 0);
    if (!text) return FunctionResult::Failed;
    const TextArgument wanted(call, 1);
    if (!wanted) return FunctionResult::Failed;
    const std::optional<int> start = NumberArgument(call, 2);
    if (!start) return FunctionResult::Failed;
    const bool inside = *start >= 0;
    const int found = inside ? Position(text->find(*wanted, static_cast<std::size_t>(*start))) : -1;
    return ContinueWith(call, found, *text);
}

}  // namespace kalvex::operands
