// Keyword functions: the first word of an expression, as in SET A = STRING_LEFT B 3.
#pragma once

#include <array>
#include <cstdint>
#include <memory>
#include <span>
#include <string>
#include <string_view>
#include <unordered_map>

#include "operands/Operand.h"
#include "value/Value.h"

namespace kalvex::operands {

// What a function makes of the texts of its arguments, for the next call on the same line.
class FunctionForm {
  public:
    virtual ~FunctionForm() = default;
};

struct FunctionCall {
    ScriptContext& script;
    std::string_view keyword;
    std::array<Operand, 3>& arguments;  // the three tokens behind it, empty where missing
    std::string_view rest;              // the text behind the keyword and the three tokens
    std::string_view full;              // the whole text of the expression, keyword included
    int wanted;                         // type code that the caller would like to have
    value::CVal& out;
    std::unique_ptr<FunctionForm>& form;  // made by the handler, if any
    std::string formula;  // for FunctionContinues: the text that is evaluated as a formula
};

enum class FunctionResult {
    Failed,     // the expression fails; a reason, if any, is in the error slot
    Done,       // `out` is set
    Continues,  // `formula` takes the place of the whole text and is evaluated as a formula
};

using FunctionHandler = FunctionResult (*)(FunctionCall&);

struct FunctionRow {
    std::string_view keyword;
    FunctionHandler handler;
    std::string_view usage;  // argument lists as the manual shows them, one a line, UTF-8
    std::string_view help;   // Polish, UTF-8
};

// All keyword functions, found by exact spelling. Built once from rows that outlive it.
class FunctionTable {
  public:
    explicit FunctionTable(std::span<const FunctionRow> rows);
    const FunctionRow* Find(std::string_view keyword) const;
    std::span<const FunctionRow> Rows() const { return m_rows; }

  private:
    std::span<const FunctionRow> m_rows;
    std::unordered_map<std::string_view, const FunctionRow*> m_byKeyword;
    // By first character, a bit for each length that occurs: most words are no keyword and are told
    // by these alone.
    std::array<std::uint64_t, 256> m_lengths{};
};

// The text of the whole expression behind its keyword, for functions that read their own arguments.
std::string_view TextBehindKeyword(const FunctionCall& call);

}  // namespace kalvex::operands
