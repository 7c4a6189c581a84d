#include "text/TextFormat.h"

#include <optional>
#include <vector>

namespace kalvex::text {

namespace {

struct Place {
    std::size_t length;    // of its text in the pattern
    std::size_t argument;  // from 1; 0: the next one
};

bool IsDigit(char c) {
    return c >= '0' && c <= '9';
}

// The place that begins with the text's first character, a "%".
std::optional<Place> ReadPlace(std::string_view text) {
    constexpr std::string_view kEnds = "sdu";
    Place place{1, 0};
    if (text.size() > 3 && IsDigit(text[1]) && text[2] == '$') {
        place = {3, static_cast<std::size_t>(text[1] - '0')};
        if (place.argument == 0) return std::nullopt;
    }
    if (place.length >= text.size() || kEnds.find(text[place.length]) == std::string_view::npos) {
        return std::nullopt;
    }
    ++place.length;
    return place;
}

std::string Format(std::string_view pattern, std::span<const std::string_view> arguments) {
    std::string text;
    std::size_t next = 1;
    while (!pattern.empty()) {
        const std::optional<Place> place =
            pattern.front() == '%' ? ReadPlace(pattern) : std::nullopt;
        if (place) {
            const std::size_t argument = place->argument == 0 ? next++ : place->argument;
            if (argument <= arguments.size()) text += arguments[argument - 1];
        } else {
            text += pattern.front();
        }
        pattern.remove_prefix(place ? place->length : 1);
    }
    return text;
}

}  // namespace

std::string FormatText(std::string_view pattern,
                       std::initializer_list<std::string_view> arguments) {
    return Format(pattern, {arguments.begin(), arguments.size()});
}

std::string FormatText(std::string_view pattern, std::span<const std::string> arguments) {
    return Format(pattern, std::vector<std::string_view>(arguments.begin(), arguments.end()));
}

}  // namespace kalvex::text
