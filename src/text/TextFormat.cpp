#include "text/TextFormat.h"

namespace kalvex {

std::string FormatText(std::string_view pattern,
                       std::initializer_list<std::string_view> arguments) {
    constexpr std::string_view kPlaces = "sdu";
    std::string text;
    const auto* argument = arguments.begin();
    for (std::size_t i = 0; i < pattern.size(); ++i) {
        const bool place = pattern[i] == '%' && i + 1 < pattern.size() &&
                           kPlaces.find(pattern[i + 1]) != std::string_view::npos;
        if (!place) {
            text += pattern[i];
            continue;
        }
        ++i;
        if (argument != arguments.end()) text += *argument++;
    }
    return text;
}

}  // namespace kalvex
