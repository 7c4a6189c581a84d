#include "programs/CompletionText.h"

#include <fmt/format.h>

#include <algorithm>
#include <iostream>
#include <iterator>

namespace kalvex::programs {

void FillPlace(std::string& script, std::string_view place, const std::string& text) {
    const std::size_t begin = script.find(place);
    if (begin != std::string::npos) script.replace(begin, place.size(), text);
}

void AddWord(std::string& list, std::string_view word) {
    if (!list.empty()) list += ' ';
    list += word;
}

std::string ZshText(std::string_view text) {
    std::string quoted;
    for (const char c : text) {
        if (c == ':' || c == '[' || c == ']') quoted += '\\';
        quoted += c;
        if (c == '\'') quoted += "\\''";
    }
    return quoted;
}

std::string FishText(std::string_view text) {
    std::string quoted;
    for (const char c : text) {
        if (c == '\\' || c == '\'') quoted += '\\';
        quoted += c;
    }
    return quoted;
}

std::string FishOption(std::string_view program, std::string_view name, std::string_view shortName,
                       std::string_view further, std::string_view help) {
    std::string line = fmt::format("complete -c {} -l {}", program, name.substr(2));
    if (!shortName.empty()) line += fmt::format(" -s {}", shortName.substr(1));
    return line + fmt::format("{} -d '{}'\n", further, FishText(help));
}

int FillCompletion(int argc, char** argv, std::span<const Shell> shells) {
    if (argc != 2) return 2;
    const auto shell = std::ranges::find(shells, std::string_view(argv[1]), &Shell::name);
    if (shell == shells.end()) return 2;
    std::cout << shell->fill({std::istreambuf_iterator<char>(std::cin), {}});
    return 0;
}

}  // namespace kalvex::programs
