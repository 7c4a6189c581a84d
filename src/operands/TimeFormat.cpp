#include "operands/TimeFormat.h"

#include <iomanip>
#include <locale>
#include <sstream>
#include <string_view>

namespace kalvex::operands {

namespace {

struct FieldBounds {
    int std::tm::*field;
    int least;
    int most;
};

// A year has four digits.
constexpr FieldBounds kBounds[] = {
    {&std::tm::tm_min, 0, 59},  {&std::tm::tm_sec, 0, 59}, {&std::tm::tm_hour, 0, 24},
    {&std::tm::tm_mday, 1, 31}, {&std::tm::tm_mon, 0, 11}, {&std::tm::tm_year, -900, 8099},
};

constexpr std::string_view kConversions = "aAbBcCdDeFgGhHIjmMnprRStTuUVwWxXyYzZ%";

// The format with every percent sign doubled that begins no conversion.
std::string KnownConversions(std::string_view format) {
    std::string known;
    for (std::size_t i = 0; i < format.size(); ++i) {
        known += format[i];
        if (format[i] != '%') continue;
        const bool modified = format.substr(i + 1).find_first_of("EO") == 0;
        const std::size_t letter = i + (modified ? 2 : 1);
        if (letter < format.size() && kConversions.find(format[letter]) != std::string_view::npos) {
            known += format.substr(i + 1, letter - i);
            i = letter;
        } else {
            known += '%';
        }
    }
    return known;
}

std::string Write(const std::tm& fields, const std::string& knownFormat) {
    std::ostringstream stream;
    stream.imbue(std::locale::classic());
    stream << std::put_time(&fields, knownFormat.c_str());
    return stream.str();
}

}  // namespace

std::string FormatTime(const std::tm& fields, std::string_view format) {
    return Write(fields, KnownConversions(format));
}

std::optional<std::tm> ReadTime(const std::string& text, std::string_view format) {
    const std::string known = KnownConversions(format);
    std::istringstream stream(text);
    stream.imbue(std::locale::classic());
    std::tm fields{};
    stream >> std::get_time(&fields, known.c_str());
    if (stream.fail()) return std::nullopt;
    for (const FieldBounds& bounds : kBounds) {
        const int value = fields.*bounds.field;
        if (value < bounds.least || value > bounds.most) return std::nullopt;
    }
    if (Write(fields, known) != text) return std::nullopt;
    return fields;
}

}  // namespace kalvex::operands
