// The words and forms of which generated scripts are made, in UTF-8.
//
// In a form "%" and a letter stand for what the grammar makes of it:
//   N number variable   C counter            T text variable      D time variable
//   L list              P pointer            R remote variable    U a name that may be anything
//   V variable, perhaps with the suffix of a kind
//   n number operand    i small number       t text operand       o any operand
//   d time              x expression         f formula            c condition
//   y text function     z any function       s status             e schedule entry
//   b label             p procedure          a arguments of a call
//   k kind of report    w span of time       g number format      h time format
//   q name of a variable in quotes           m server variable
#pragma once

#include <span>
#include <string_view>

namespace kalvex::differential {

struct Form {
    int weight;
    std::string_view text;
};

std::span<const Form> StatementForms();
std::span<const Form> SourceForms();        // statements for scripts that have data servers
std::span<const Form> TextFunctionForms();  // keyword functions that give texts
std::span<const Form> FunctionForms();      // all other keyword functions
std::span<const Form> ConditionForms();
std::span<const Form> OperandForms();
std::span<const Form> TextOperandForms();

std::span<const std::string_view> PlainNames();  // of number variables
std::span<const std::string_view> OddNames();    // that look like something else
std::span<const std::string_view> OddLabels();
std::span<const std::string_view> Parameters();
std::span<const std::string_view> Suffixes();
std::span<const std::string_view> NumberLiterals();
std::span<const std::string_view> SmallNumbers();
std::span<const std::string_view> TextLiterals();
std::span<const std::string_view> Operators();
std::span<const std::string_view> FormulaFunctions();
std::span<const std::string_view> Comparisons();
std::span<const std::string_view> TimeWords();
std::span<const std::string_view> Statuses();
std::span<const std::string_view> ScheduleEntries();
std::span<const std::string_view> Kinds();
std::span<const std::string_view> Spans();
std::span<const std::string_view> NumberFormats();
std::span<const std::string_view> TimeFormats();
std::span<const std::string_view> ServerVariables();
std::span<const std::string_view> JunkWords();
std::span<const std::string_view> OperatorTexts();  // as an operator enters values

}  // namespace kalvex::differential
