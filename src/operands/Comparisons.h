// The comparisons of the language, the same in formulas and in the conditions that are none.
#pragma once

#include <algorithm>
#include <array>
#include <string_view>

#include "value/Value.h"

namespace kalvex::operands {

struct Comparison {
    char letter;  // in a formula while it is compiled
    std::string_view text;
    int (value::CVal::*compare)(const value::CVal& right) const;
};

inline constexpr std::array kComparisons = {
    Comparison{'D', "!=", (&value::CVal::operator!=)},
    Comparison{'E', "==", (&value::CVal::operator==)},
    Comparison{'L', "<=", (&value::CVal::operator<=)},
    Comparison{'G', ">=", (&value::CVal::operator>=)},
    Comparison{'<', "<", (&value::CVal::operator<)},
    Comparison{'>', ">", (&value::CVal::operator>)},
};

// Null when the text is none.
constexpr const Comparison* FindComparison(std::string_view text) {
    const auto row = std::ranges::find(kComparisons, text, &Comparison::text);
    return row == kComparisons.end() ? nullptr : row;
}

}  // namespace kalvex::operands
