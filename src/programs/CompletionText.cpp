#include "programs/CompletionText.h"

#include <algorithm>
#include <fstream>
#include <iostream>
#include <iterator>

namespace kalvex::programs {

namespace {

constexpr bool IsSmallLetter(char c) {
    return c >= 'a' && c <= 'z';
}

bool ReadAll(const char* path, std::string& text) {
    std::ifstream file(path, std::ios::binary);
    text.assign(std::istreambuf_iterator<char>(file), {});
    return file.is_open() && !file.bad();
}

struct Shell {
    std::string_view name;
    std::string (*fill)(const CommandForm& program, std::string script);
};

constexpr Shell kShells[] = {{"bash", FillBash}, {"zsh", FillZsh}, {"fish", FillFish}};

}  // namespace

void AddWord(std::string& list, std::string_view word) {
    if (!list.empty()) list += ' ';
    list += word;
}

void FillPlace(std::string& script, std::string_view place, std::string_view text) {
    std::size_t begin = script.find(place);
    while (begin != std::string::npos) {
        script.replace(begin, place.size(), text);
        begin = script.find(place, begin + text.size());
    }
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

std::string FunctionName(std::string_view program) {
    std::string name(program);
    std::ranges::replace_if(
        name, [](char c) { return c == '-' || c == ' '; }, '_');
    return name;
}

std::string PatternOfEnding(std::string_view ending) {
    std::string pattern = "*";
    for (const char c : ending) {
        if (!IsSmallLetter(c)) {
            pattern += c;
            continue;
        }
        pattern += {'[', c, static_cast<char>(c - 'a' + 'A'), ']'};
    }
    return pattern;
}

int WriteCompletion(const CommandForm& program, int argc, char** argv) {
    if (argc != 3 && argc != 4) return 2;
    const auto* const shell = std::ranges::find(kShells, std::string_view(argv[1]), &Shell::name);
    if (shell == std::end(kShells)) return 2;
    std::string script;
    std::string own;
    if (!ReadAll(argv[2], script) || (argc == 4 && !ReadAll(argv[3], own))) return 1;
    FillPlace(script, "@OWN@\n", own.empty() ? own : "\n" + own + "\n");
    FillPlace(script, "@PROGRAM@", program.name);
    FillPlace(script, "@FUNCTION@", FunctionName(program.name));
    std::cout << shell->fill(program, std::move(script)) << std::flush;
    return std::cout ? 0 : 1;
}

}  // namespace kalvex::programs
