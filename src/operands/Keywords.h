// The words within a line that code asks for by name. Those of which one of many is looked up stand
// in the tables of their families.
#pragma once

#include <string_view>

namespace kalvex::operands::Keyword {

// The words that give a script its structure: the searches for blocks, labels and procedures look
// for them, and the keyword table names its rows by them.
inline constexpr std::string_view If = "IF";
inline constexpr std::string_view Then = "THEN";
inline constexpr std::string_view Else = "ELSE";
inline constexpr std::string_view Endif = "ENDIF";
inline constexpr std::string_view Goto = "GOTO";
inline constexpr std::string_view Not = "NOT";
inline constexpr std::string_view Procedure = "PROCEDURE";
inline constexpr std::string_view Begin = "BEGIN";
inline constexpr std::string_view End = "END";
inline constexpr std::string_view Call = "CALL";
inline constexpr std::string_view Include = "INCLUDE";
inline constexpr std::string_view IncludeVar = "INCLUDE_VAR";

// The words that part the operands of a line.
inline constexpr std::string_view From = "FROM";
inline constexpr std::string_view To = "TO";
inline constexpr std::string_view GetData = "GETDATA";
inline constexpr std::string_view Start = "START";
inline constexpr std::string_view Stop = "STOP";
inline constexpr std::string_view Time = "TIME";

}  // namespace kalvex::operands::Keyword
