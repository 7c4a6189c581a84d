#include "host/LogText.h"

namespace kalvex {

std::string FillIn(std::string_view text, std::span<const std::string> values) {
    constexpr std::size_t kPlaceLength = 2;
    std::string result;
    for (const std::string& value : values) {
        const std::size_t place = text.find('%');
        result += text.substr(0, place);
        result += value;
        text.remove_prefix(place + kPlaceLength);
    }
    result += text;
    return result;
}

std::string FillIn(std::string_view text, std::initializer_list<std::string> values) {
    return FillIn(text, std::span(values.begin(), values.size()));
}

}  // namespace kalvex
