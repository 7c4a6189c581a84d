#include "operands/TimeFormat.h"

#include <iomanip>
#include <locale>
#include <sstream>
#include <string_view>

#include "operands/TimeParts.h"

namespace kalvex::operands {

namespace {

constexpr int kLeastYear = 1000 - 1900;
constexpr int kMostYear = 9999 - 1900;

// The week of a day may belong to the year before or after it.
constexpr int kYearsBeside[] = {0, -1, 1};

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

std::optional<std::tm> ReadTime(std::string_view text, std::string_view format) {
    const std::optional<TimeParts> parts = ReadTimeParts(text, format);
    if (!parts) return std::nullopt;
    const std::string known = KnownConversions(format);
    for (const int years : kYearsBeside) {
        std::tm fields = FieldsOfParts(*parts, years);
        const bool inBounds =
            fields.tm_mday >= 1 && fields.tm_year >= kLeastYear && fields.tm_year <= kMostYear;
        if (!inBounds || Write(fields, known) != text) continue;
        fields.tm_zone = nullptr;
        return fields;
    }
    return std::nullopt;
}

}  // namespace kalvex::operands
