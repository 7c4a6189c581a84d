// A word of a command that a person is told to type.
#pragma once

#include <string>
#include <string_view>

namespace kalvex::text {

// As the shell has to be given it; UTF-8 both ways. One that needs no quotes has none.
std::string ShellWord(std::string_view word);

}  // namespace kalvex::text
