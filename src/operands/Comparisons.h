// The comparisons of the language, the same in formulas and in the conditions that are none.
#pragma once

#include <algorithm>
#include <array>
#include <string_view>

#include "value/Value.h"

namespace kalvex {

struct Comparison {
    char letter;  // in a formula while it is compiled
    std::string_view text;
    int (CVal::*compare)(const CVal& right) const;
};

inline constexpr std::array kComparisons = {
    Comparison{'D', "!=", (&CVal::operator!=)}, Comparison{'E', "==", (&CVal::operator==)},
    Comparison{'L', "<=", (&CVal::operator<=)}, Comparison{'G', ">=", (&CVal::operator>=)},
    Comparison{'<', "<", (&CVal::operator<)},   Comparison{'>', ">", (&CVal::operator>)},
};

// Null when the text is none.
constexpr const Comparison* FindComparison(std::string_view text) {
    const auto row = std::ranges::find(kComparisons, text, &Comparison::text);
    return row == kComparisons.end() ? nullptr : row;
}

}  // namespace kalvex
