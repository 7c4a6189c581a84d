// The comparisons of the language, the same in formulas and in the conditions that are none.
#pragma once

#include <algorithm>
#include <array>
#include <string_view>

#include "operands/ValueOperation.h"

namespace kalvex::operands {

struct Comparison {
    char letter;  // in a formula while it is compiled
    std::string_view text;
    ValueOperation operation;
};

inline constexpr std::array kComparisons = {
    Comparison{'D', "!=", ValueOperation::NotEqual},
    Comparison{'E', "==", ValueOperation::Equal},
    Comparison{'L', "<=", ValueOperation::LessOrEqual},
    Comparison{'G', ">=", ValueOperation::GreaterOrEqual},
    Comparison{'<', "<", ValueOperation::Less},
    Comparison{'>', ">", ValueOperation::Greater},
};

// Null when the text is none.
constexpr const Comparison* FindComparison(std::string_view text) {
    const auto row = std::ranges::find(kComparisons, text, &Comparison::text);
    return row == kComparisons.end() ? nullptr : row;
}

}  // namespace kalvex::operands
