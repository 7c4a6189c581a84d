#include "text/ShellWord.h"

#include <algorithm>

#include "text/Characters.h"

namespace kalvex::text {

namespace {

bool IsPlain(char c) {
    const bool letter = (c >= 'a' && c <= 'z') || (c >= 'A' && c <= 'Z') || (c & 0x80) != 0;
    return letter || IsDigit(c) || std::string_view("/._-+,@%:").find(c) != std::string_view::npos;
}

}  // namespace

std::string ShellWord(std::string_view word) {
    if (!word.empty() && std::ranges::all_of(word, IsPlain)) return std::string(word);
    std::string quoted = "'";
    for (const char c : word) {
        if (c == '\'') quoted += "'\\'";
        quoted += c;
    }
    return quoted + '\'';
}

}  // namespace kalvex::text
