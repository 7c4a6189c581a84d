// What the operators and comparisons of the language that take two values, whatever they hold, do
// to them.
#pragma once

#include "value/Value.h"

namespace kalvex::operands {

enum class ValueOperation : unsigned char {
    None,
    Add,
    Subtract,
    Multiply,
    Divide,
    NotEqual,
    Equal,
    LessOrEqual,
    GreaterOrEqual,
    Less,
    Greater,
};

// 0 or 1; 0 for what is no comparison.
template <class Value>
int Compare(ValueOperation comparison, const Value& left, const Value& right) {
    switch (comparison) {
        case ValueOperation::NotEqual:
            return left != right;
        case ValueOperation::Equal:
            return left == right;
        case ValueOperation::LessOrEqual:
            return left <= right;
        case ValueOperation::GreaterOrEqual:
            return left >= right;
        case ValueOperation::Less:
            return left < right;
        case ValueOperation::Greater:
            return left > right;
        default:
            return 0;
    }
}

constexpr bool IsComparison(ValueOperation operation) {
    return operation >= ValueOperation::NotEqual;
}

// The left side becomes the result, that of a comparison an int. The sides are values, or doubles
// where values would hold nothing else.
template <class Value>
void Combine(ValueOperation operation, Value& left, const Value& right) {
    switch (operation) {
        case ValueOperation::Add:
            left += right;
            break;
        case ValueOperation::Subtract:
            left -= right;
            break;
        case ValueOperation::Multiply:
            left *= right;
            break;
        case ValueOperation::Divide:
            left /= right;
            break;
        default:
            left = Value(Compare(operation, left, right));
            break;
    }
}

}  // namespace kalvex::operands
