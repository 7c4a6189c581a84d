#include "operands/FormulaOperators.h"

#include <algorithm>
#include <array>
#include <cmath>
#include <cstdint>
#include <utility>

#include "operands/Comparisons.h"
#include "value/ValueText.h"

namespace kalvex::operands {

namespace {

bool CombineTwo(FormulaStack& stack, const FormulaOperator& row) {
    const value::CVal right = stack.Pop();
    Combine(row.operation, stack.Top(), right);
    return true;
}

template <class Operation>
bool OnIntegers(FormulaStack& stack, Operation operation) {
    const int right = value::ValueToInt(stack.Pop());
    const int left = value::ValueToInt(stack.Pop());
    stack.Push(value::CVal(operation(left, right)));
    return true;
}

template <double (*Function)(double)>
bool OnDouble(FormulaStack& stack, const FormulaOperator&) {
    stack.Push(value::CVal(Function(value::ValueToDouble(stack.Pop()))));
    return true;
}

bool Power(FormulaStack& stack, const FormulaOperator&) {
    const value::CVal exponent = stack.Pop();
    const value::CVal base = stack.Pop();
    stack.Push(value::pow(base, exponent));
    return true;
}

bool Negate(FormulaStack& stack, const FormulaOperator&) {
    stack.Push(stack.Pop() * value::CVal(-1));
    return true;
}

bool SquareValue(FormulaStack& stack, const FormulaOperator&) {
    const value::CVal value = stack.Pop();
    stack.Push(value * value);
    return true;
}

bool Remainder(FormulaStack& stack, const FormulaOperator&) {
    const int right = value::ValueToInt(stack.Pop());
    const int left = value::ValueToInt(stack.Pop());
    if (right == 0) return false;
    stack.Push(value::CVal(right == -1 ? 0 : left % right));
    return true;
}

bool BitAnd(FormulaStack& stack, const FormulaOperator&) {
    return OnIntegers(stack, [](int a, int b) { return a & b; });
}

bool BitOr(FormulaStack& stack, const FormulaOperator&) {
    return OnIntegers(stack, [](int a, int b) { return a | b; });
}

bool BitXor(FormulaStack& stack, const FormulaOperator&) {
    return OnIntegers(stack, [](int a, int b) { return a ^ b; });
}

bool LogicalAnd(FormulaStack& stack, const FormulaOperator&) {
    return OnIntegers(stack, [](int a, int b) { return a != 0 && b != 0 ? 1 : 0; });
}

bool LogicalOr(FormulaStack& stack, const FormulaOperator&) {
    return OnIntegers(stack, [](int a, int b) { return a != 0 || b != 0 ? 1 : 0; });
}

bool LogicalNot(FormulaStack& stack, const FormulaOperator&) {
    stack.Push(value::CVal((stack.Pop() != value::CVal(0)) != 0 ? 0 : 1));
    return true;
}

bool Complement(FormulaStack& stack, const FormulaOperator&) {
    stack.Push(~stack.Pop());
    return true;
}

bool FactorialOfTop(FormulaStack& stack, const FormulaOperator&) {
    const int n = value::ValueToInt(stack.Pop());
    std::uint32_t product = 1;
    // From 34! on the product has lost all of its 32 bits.
    for (int i = 2; i <= n && product != 0; ++i) product *= static_cast<std::uint32_t>(i);
    stack.Push(value::CVal(static_cast<std::int32_t>(product)));
    return true;
}

bool TruncateTop(FormulaStack& stack, const FormulaOperator&) {
    stack.Push(value::CVal(value::ValueToInt(stack.Pop())));
    return true;
}

bool RoundTop(FormulaStack& stack, const FormulaOperator&) {
    const int digits = value::ValueToInt(stack.Pop());
    stack.Push(value::CVal(RoundToDigits(value::ValueToDouble(stack.Pop()), digits)));
    return true;
}

// "TG" has no entry in the last column: a token of two letters is read as a variable.
constexpr std::array kOtherOperators = {
    FormulaOperator{FormulaLetter::Or, "||", 1, false, LogicalOr},
    FormulaOperator{FormulaLetter::And, "&&", 2, false, LogicalAnd},
    FormulaOperator{'|', "|", 4, false, BitOr},
    FormulaOperator{'^', "^", 5, false, BitXor},
    FormulaOperator{'&', "&", 6, false, BitAnd},
    FormulaOperator{'+', "+", 7, false, CombineTwo, ValueOperation::Add},
    FormulaOperator{'-', "-", 7, false, CombineTwo, ValueOperation::Subtract},
    FormulaOperator{'*', "*", 8, false, CombineTwo, ValueOperation::Multiply},
    FormulaOperator{'/', "/", 8, false, CombineTwo, ValueOperation::Divide},
    FormulaOperator{'%', "%", 8, false, Remainder},
    FormulaOperator{'#', "#", kBindsFirst, false, Power},
    FormulaOperator{FormulaLetter::UnaryMinus, "P", kBindsFirst, false, Negate},
    FormulaOperator{'!', "!", 0, false, FactorialOfTop},
    FormulaOperator{'~', "~", 0, false, Complement},
    FormulaOperator{'N', "NOT", kBindsFirst, true, LogicalNot},
    FormulaOperator{'S', "SIN", kBindsFirst, true, OnDouble<std::sin>},
    FormulaOperator{'C', "COS", kBindsFirst, true, OnDouble<std::cos>},
    FormulaOperator{'U', "TG", kBindsFirst, true, nullptr},
    FormulaOperator{'V', "CTG", kBindsFirst, true, OnDouble<Cotangent>},
    FormulaOperator{'W', "ARCSIN", kBindsFirst, true, OnDouble<std::asin>},
    FormulaOperator{'X', "ARCCOS", kBindsFirst, true, OnDouble<std::acos>},
    FormulaOperator{'Y', "ARCTG", kBindsFirst, true, OnDouble<std::atan>},
    FormulaOperator{'Z', "ARCCTG", kBindsFirst, true, OnDouble<ArcCotangent>},
    FormulaOperator{'T', "SQRT", kBindsFirst, true, OnDouble<std::sqrt>},
    FormulaOperator{'Q', "SQR", kBindsFirst, true, SquareValue},
    FormulaOperator{'I', "INT", kBindsFirst, true, TruncateTop},
    FormulaOperator{'R', "ROUND", kBindsFirst, true, RoundTop},
    FormulaOperator{'F', "FACTORIAL", kBindsFirst, true, FactorialOfTop},
};

template <std::size_t... Index>
constexpr auto WithComparisons(std::index_sequence<Index...>) {
    std::array<FormulaOperator, sizeof...(Index) + kOtherOperators.size()> rows = {
        FormulaOperator{kComparisons[Index].letter, kComparisons[Index].text, 3, false, CombineTwo,
                        kComparisons[Index].operation}...};
    std::ranges::copy(kOtherOperators, rows.begin() + sizeof...(Index));
    return rows;
}

constexpr std::array kOperators = WithComparisons(std::make_index_sequence<kComparisons.size()>());

constexpr unsigned char kNoRow = 255;

// Row of each letter; kNoRow for a character that is no operator's letter.
constexpr auto kRowByLetter = [] {
    std::array<unsigned char, 256> rows{};
    rows.fill(kNoRow);
    for (std::size_t i = 0; i < kOperators.size(); ++i) {
        rows[static_cast<unsigned char>(kOperators[i].letter)] = static_cast<unsigned char>(i);
    }
    return rows;
}();

template <class Test>
const FormulaOperator* FindOperator(std::string_view text, Test test) {
    for (const FormulaOperator& row : kOperators) {
        if (row.text.front() == text.front() && row.text == text && test(row)) return &row;
    }
    return nullptr;
}

}  // namespace

std::span<const FormulaOperator> FormulaOperators() {
    return kOperators;
}

const FormulaOperator* FindOperatorByLetter(char letter) {
    const unsigned char row = kRowByLetter[static_cast<unsigned char>(letter)];
    return row == kNoRow ? nullptr : &kOperators[row];
}

const FormulaOperator* FindFunctionByName(std::string_view name) {
    return FindOperator(name, [](const FormulaOperator& row) { return row.function; });
}

const FormulaOperator* FindOperatorByText(std::string_view text) {
    if (text.size() == 1) {
        const FormulaOperator* row = FindOperatorByLetter(text.front());
        return row != nullptr && row->text == text ? row : nullptr;
    }
    return FindOperator(text, [](const FormulaOperator& row) { return row.apply != nullptr; });
}

double RoundToDigits(double x, int digits) {
    double whole = 0;
    double fraction = std::modf(x, &whole);
    std::uint32_t scale = 1;
    // From 32 digits on the scale has lost all of its 32 bits.
    for (int i = 0; i < std::min(digits, 32); ++i) scale *= 10;
    fraction *= scale;
    const double below = std::floor(fraction);
    fraction = fraction - below < 0.5 ? below : std::ceil(fraction);
    return fraction / scale + whole;
}

double Cotangent(double x) {
    return 1.0 / std::tan(x);
}

double ArcCotangent(double x) {
    return 1.5707963267948966 - std::atan(x);
}

}  // namespace kalvex::operands
