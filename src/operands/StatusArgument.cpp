#include "operands/StatusArgument.h"

#include "operands/OperandEvaluator.h"
#include "value/ValueText.h"

namespace kalvex::operands {

namespace {

std::uint16_t Changed(std::uint16_t word, std::uint16_t bits, StatusAction action) {
    if (action == StatusAction::Set) return bits;
    if (action == StatusAction::Add) return static_cast<std::uint16_t>(word | bits);
    return static_cast<std::uint16_t>(word & ~bits);
}

}  // namespace

bool ParseStatusArgument(ScriptContext& script, std::string_view text, std::uint16_t* word,
                         StatusAction action) {
    value::CVal value;
    std::optional<std::uint16_t> bits;
    if (!EvaluateOperand(script, text, value, value::ValueType::Int, false)) {
        const std::size_t start = text.find_first_not_of(' ');
        bits =
            start == std::string_view::npos ? std::nullopt : value::StatusBit(text.substr(start));
    } else if (value.IsText()) {
        bits = value::StatusBit(value.Text());
    } else {
        bits = static_cast<std::uint16_t>(value::ValueToInt(value));
    }
    if (bits) *word = Changed(*word, *bits, action);
    return bits.has_value();
}

}  // namespace kalvex::operands
