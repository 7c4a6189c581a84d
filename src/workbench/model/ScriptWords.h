// The words of the language as the editor knows them, each list once, from which colours,
// completion and help are made. Upper case ASCII. Any thread.
#pragma once

#include <span>
#include <string_view>

namespace kalvex::workbench {

using Words = std::span<const std::string_view>;

Words KeywordWords();   // what is offered where no name stands before the caret, in that order
Words FunctionWords();  // the functions of numbers, which are keywords too
Words MemberWords();    // what follows the dot behind a variable, without the kinds of values
Words TimeMembers();    // what follows "TIME."

// What is offered behind a variable by the statement that declares it.
Words RemoteMembers();
Words ListMembers();
Words PointerMembers();

}  // namespace kalvex::workbench
