#include "programs/CompletionText.h"

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

}  // namespace kalvex::programs
