// The operators and functions of formulas: how they are written, how they bind, what they compute.
#pragma once

#include <span>
#include <string_view>

#include "operands/FormulaStack.h"
#include "operands/ValueOperation.h"

namespace kalvex::operands {

// While a formula is compiled each operator is one character, its letter. Comparisons.h has those
// of the comparisons.
struct FormulaOperator {
    char letter;
    std::string_view text;  // in the postfix
    int binding;            // higher binds tighter; kBindsFirst is always written out
    bool function;          // written as a word before "("
    // Null: the postfix text is not known as an operator. False when the operands do not allow it.
    bool (*apply)(FormulaStack& stack, const FormulaOperator& row);
    // What it does to two operands that are any values; none for an operator that wants others.
    ValueOperation operation = ValueOperation::None;
};

inline constexpr int kBindsFirst = 10;

namespace FormulaLetter {
inline constexpr char UnaryMinus = 'P';
inline constexpr char And = 'A';
inline constexpr char Or = 'O';
}  // namespace FormulaLetter

std::span<const FormulaOperator> FormulaOperators();
const FormulaOperator* FindOperatorByLetter(char letter);
const FormulaOperator* FindFunctionByName(std::string_view name);  // upper case
// An operator of the postfix text that can be applied.
const FormulaOperator* FindOperatorByText(std::string_view text);

// x with n digits behind the point; halves go up, also for negative numbers.
double RoundToDigits(double x, int digits);

double Cotangent(double x);
double ArcCotangent(double x);

}  // namespace kalvex::operands
