// The scripts by which shells complete the command lines of a program. UTF-8.
#pragma once

#include <string>
#include <string_view>

#include "programs/CommandForm.h"

namespace kalvex::programs {

// Behind a blank, unless it is the first.
void AddWord(std::string& list, std::string_view word);

// Puts the text in the place of each mention of `place`, such as @OPTIONS@.
void FillPlace(std::string& script, std::string_view place, std::string_view text);

// For single quotes of zsh and fish, with what has a meaning of its own in a description quoted.
std::string ZshText(std::string_view text);
std::string FishText(std::string_view text);

// What a shell calls the functions of a program, without the underscores before it.
std::string FunctionName(std::string_view program);

// The case of its letters does not count: "*.[kK][xX]" of ".kx".
std::string PatternOfEnding(std::string_view ending);

// `script` is that of the shell for any program, with its places filled in for this one.
std::string FillBash(const CommandForm& program, std::string script);
std::string FillZsh(const CommandForm& program, std::string script);
std::string FillFish(const CommandForm& program, std::string script);

// The whole of a program of the build, PROGRAM SHELL SCRIPT [OWN]: prints the script, filled in;
// the file OWN is what this program alone has for this shell. The exit status.
int WriteCompletion(const CommandForm& program, int argc, char** argv);

}  // namespace kalvex::programs
