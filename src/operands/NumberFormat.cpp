#include "operands/NumberFormat.h"

#include <algorithm>
#include <charconv>
#include <cmath>
#include <optional>

#include "text/CodePage.h"
#include "value/ValueText.h"

namespace kalvex::operands {

namespace {

constexpr std::string_view kDigits = "0123456789";
constexpr int kWidest = 1000;
constexpr std::size_t kDoubleDigits = 310;  // before the point, sign and point aside

struct Conversion {
    bool zeros = false;
    int width = 0;
    std::optional<int> precision;
    char letter = 'f';
    std::string tail;
};

// The digits at the front of the text, 0 for none.
std::optional<int> TakeNumber(std::string_view& text) {
    const std::size_t length = std::min(text.find_first_not_of(kDigits), text.size());
    int number = 0;
    const auto result = std::from_chars(text.data(), text.data() + length, number);
    if (length > 0 && (result.ec != std::errc() || number > kWidest)) return std::nullopt;
    text.remove_prefix(length);
    return number;
}

// What stands behind the conversion, percent signs single again.
std::optional<std::string> ReadTail(std::string_view text) {
    std::string tail;
    for (std::size_t i = 0; i < text.size(); ++i) {
        if (text[i] == '%' && (++i == text.size() || text[i] != '%')) return std::nullopt;
        tail += text[i];
    }
    return tail;
}

std::optional<Conversion> ReadConversion(std::string_view format) {
    Conversion conversion;
    format.remove_prefix(1);
    const std::size_t zeros = std::min(format.find_first_not_of('0'), format.size());
    conversion.zeros = zeros > 0;
    format.remove_prefix(zeros);
    const std::optional<int> width = TakeNumber(format);
    if (!width) return std::nullopt;
    conversion.width = *width;
    if (format.starts_with('.')) {
        format.remove_prefix(1);
        conversion.precision = TakeNumber(format);
        if (!conversion.precision) return std::nullopt;
    }
    if (format.starts_with('l')) format.remove_prefix(1);
    if (format.empty()) return std::nullopt;
    conversion.letter = format.front();
    std::optional<std::string> tail = ReadTail(format.substr(1));
    if (!tail) return std::nullopt;
    conversion.tail = std::move(*tail);
    return conversion;
}

// The number's text filled up to the width: zeros go behind the sign, blanks before it.
std::string Padded(std::string text, int width, bool zeros) {
    const auto wanted = static_cast<std::size_t>(width);
    if (text.size() >= wanted) return text;
    const std::size_t sign = zeros && text.starts_with('-') ? 1 : 0;
    text.insert(sign, wanted - text.size(), zeros ? '0' : ' ');
    return text;
}

std::string FormatInteger(int value, const Conversion& conversion) {
    std::string digits = std::to_string(std::abs(static_cast<long long>(value)));
    if (conversion.precision == 0 && value == 0) digits.clear();
    const auto least = static_cast<std::size_t>(conversion.precision.value_or(1));
    if (digits.size() < least) digits.insert(0, least - digits.size(), '0');
    if (value < 0) digits.insert(0, 1, '-');
    const bool zeros = conversion.zeros && !conversion.precision;
    return Padded(std::move(digits), conversion.width, zeros);
}

std::string FormatReal(double value, const Conversion& conversion) {
    const int precision = conversion.precision.value_or(6);
    std::string text(kDoubleDigits + 2 + static_cast<std::size_t>(precision), '\0');
    const auto end = std::to_chars(text.data(), text.data() + text.size(), value,
                                   std::chars_format::fixed, precision);
    text.resize(static_cast<std::size_t>(end.ptr - text.data()));
    if (conversion.letter == 'F') text = text::ToUpper(text);
    return Padded(std::move(text), conversion.width, conversion.zeros && std::isfinite(value));
}

}  // namespace

bool IsValidNumberFormat(std::string_view format) {
    const std::string lower = text::ToLower(format);
    if (lower.size() < 2 || lower.front() != '%') return false;
    if (lower.back() != 'f' && lower.back() != 'd') return false;
    std::string middle = lower.substr(1, lower.size() - 2);
    if (const std::size_t point = middle.find('.'); point != std::string::npos) {
        middle.erase(point, 1);
        if (middle.find('.') != std::string::npos) return false;
    }
    return middle.empty() || kDigits.find(middle.front()) != std::string_view::npos;
}

std::string FormatNumber(const value::CVal& value, std::string_view format) {
    if (IsValidNumberFormat(format)) {
        const bool integer = format.find('d') != std::string_view::npos;
        const std::string_view letters = integer ? "d" : "fF";
        const std::optional<Conversion> conversion = ReadConversion(format);
        if (conversion && letters.find(conversion->letter) != std::string_view::npos) {
            return (integer ? FormatInteger(value::ValueToInt(value), *conversion)
                            : FormatReal(value::ValueToDouble(value), *conversion)) +
                   conversion->tail;
        }
    }
    Conversion twoPlaces;
    twoPlaces.precision = 2;
    return FormatReal(value::ValueToDouble(value), twoPlaces);
}

}  // namespace kalvex::operands
