// What the scripts for the completion of shells are filled in with. UTF-8.
#pragma once

#include <span>
#include <string>
#include <string_view>

namespace kalvex::programs {

// Puts the text in the place of the first mention of `place`, such as @OPTIONS@, if there is one.
void FillPlace(std::string& script, std::string_view place, const std::string& text);

// Behind a blank, unless it is the first.
void AddWord(std::string& list, std::string_view word);

// For single quotes, with what has a meaning of its own in a description quoted.
std::string ZshText(std::string_view text);
std::string FishText(std::string_view text);

// A line of fish that tells of an option. `further` is more of it, such as what its value takes.
std::string FishOption(std::string_view program, std::string_view name, std::string_view shortName,
                       std::string_view further, std::string_view help);

struct Shell {
    std::string_view name;
    std::string (*fill)(std::string script);
};

// The whole of a program of the build: fills in the script of the shell that is named, from the
// standard input to the standard output. The exit status.
int FillCompletion(int argc, char** argv, std::span<const Shell> shells);

}  // namespace kalvex::programs
