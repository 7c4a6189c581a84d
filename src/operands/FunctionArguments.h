// The arguments of a keyword function read as operands. What does not evaluate leaves its error in
// the error slot, and the function fails with it.
#pragma once

#include <cstddef>
#include <optional>
#include <string>
#include <string_view>

#include "operands/KeywordFunction.h"

namespace kalvex::operands {

// An argument as a text, which is looked at where it stands if it is one: it lasts as long as this,
// and no longer than the variables stay as they are.
class TextArgument {
  public:
    TextArgument(const FunctionCall& call, std::size_t index)
        : TextArgument(call.script, call.arguments[index]) {}
    TextArgument(ScriptContext& script, Operand& operand);
    TextArgument(const TextArgument&) = delete;
    TextArgument& operator=(const TextArgument&) = delete;

    // It evaluates; only then it has a text.
    explicit operator bool() const { return m_evaluates; }
    std::string_view operator*() const { return m_text; }
    const std::string_view* operator->() const { return &m_text; }
    std::string ValueOr(std::string_view otherwise) const {
        return std::string(m_evaluates ? m_text : otherwise);
    }

  private:
    value::CVal m_scratch;
    std::string m_converted;
    std::string_view m_text;
    bool m_evaluates;
};

std::optional<int> NumberArgument(const FunctionCall& call, std::size_t index);

}  // namespace kalvex::operands
