#include "value/ValueText.h"

#include <algorithm>
#include <charconv>
#include <clocale>
#include <cmath>
#include <cstddef>
#include <cstdlib>
#include <iterator>
#include <limits>
#include <optional>
#include <system_error>

#include "text/Characters.h"
#include "value/Status.h"

namespace kalvex::value {

namespace {

constexpr double kLeastScientific = 1e15;
constexpr double kLeastFixed = 1e-5;

constexpr bool IsBlank(char c) {
    return c == ' ' || (c >= '\t' && c <= '\r');
}

std::string_view WithoutLeadingBlanks(std::string_view text) {
    const auto first = std::find_if_not(text.begin(), text.end(), IsBlank);
    return text.substr(static_cast<std::size_t>(first - text.begin()));
}

// A number found at the beginning of a text.
struct NumberText {
    bool negative;
    bool integral;            // neither point nor exponent
    std::string_view digits;  // what follows the sign
    std::string_view rest;    // what follows the number
};

std::size_t CountDigits(std::string_view text, std::size_t from) {
    const auto begin = text.begin() + static_cast<std::ptrdiff_t>(from);
    return static_cast<std::size_t>(std::find_if_not(begin, text.end(), text::IsDigit) - begin);
}

// The length of an exponent at this place of the text; 0 when no digit belongs to it.
std::size_t ExponentLength(std::string_view text, std::size_t at) {
    if (at >= text.size() || (text[at] != 'e' && text[at] != 'E')) return 0;
    std::size_t length = 1;
    if (at + 1 < text.size() && (text[at + 1] == '+' || text[at + 1] == '-')) ++length;
    const std::size_t digits = CountDigits(text, at + length);
    return digits == 0 ? 0 : length + digits;
}

std::optional<NumberText> FindNumber(std::string_view text) {
    text = WithoutLeadingBlanks(text);
    const bool sign = !text.empty() && (text.front() == '-' || text.front() == '+');
    const bool negative = sign && text.front() == '-';
    if (sign) text.remove_prefix(1);
    const std::size_t whole = CountDigits(text, 0);
    std::size_t length = whole;
    if (length < text.size() && text[length] == '.') length += 1 + CountDigits(text, length + 1);
    const bool digitFound = whole > 0 || length > 1;
    if (!digitFound) return std::nullopt;
    length += ExponentLength(text, length);
    return NumberText{negative, length == whole, text.substr(0, length), text.substr(length)};
}

// The power of ten of the first digit other than 0, exponent included and held within a range that
// no text leaves by its length.
std::int64_t Magnitude(std::string_view digits) {
    constexpr std::int64_t kExponentLimit = std::int64_t{1} << 60;
    const std::size_t mark = std::min(digits.find_first_of("eE"), digits.size());
    const std::size_t point = std::min(digits.find('.'), mark);
    const auto first = static_cast<std::int64_t>(digits.find_first_not_of("0."));
    const std::int64_t place = static_cast<std::int64_t>(point) - first;
    if (mark == digits.size()) return place;
    const bool negative = digits[mark + 1] == '-';
    const bool sign = negative || digits[mark + 1] == '+';
    const char* begin = digits.data() + mark + (sign ? 2 : 1);
    std::int64_t exponent = kExponentLimit;
    std::from_chars(begin, digits.data() + digits.size(), exponent);
    exponent = std::min(exponent, kExponentLimit);
    return place + (negative ? -exponent : exponent);
}

double ReadReal(const NumberText& number) {
    const std::string_view digits = number.digits;
    double value = 0;
    const auto result = std::from_chars(digits.data(), digits.data() + digits.size(), value);
    if (result.ec == std::errc::result_out_of_range) {
        value = Magnitude(digits) > 0 ? std::numeric_limits<double>::infinity() : 0.0;
    }
    return number.negative ? -value : value;
}

bool ReadInteger(const NumberText& number, std::int64_t& out) {
    const std::string_view digits = number.digits;
    std::uint64_t magnitude = 0;
    const auto result = std::from_chars(digits.data(), digits.data() + digits.size(), magnitude);
    const std::uint64_t limit = (std::uint64_t{1} << 63) - (number.negative ? 0 : 1);
    if (result.ec != std::errc() || magnitude > limit) return false;
    out = static_cast<std::int64_t>(number.negative ? 0 - magnitude : magnitude);
    return true;
}

bool ReadNumber(const std::optional<NumberText>& number, CVal& out) {
    std::int64_t integer = 0;
    if (!number || (number->integral && ReadInteger(*number, integer))) {
        out = CVal(integer);
    } else {
        out = CVal(ReadReal(*number));
    }
    return number.has_value();
}

bool IsWhole(const std::optional<NumberText>& number) {
    return number && WithoutLeadingBlanks(number->rest).empty();
}

// The number at the beginning, 0 without one; where it ends.
double ReadOperatorNumber(const std::string& text, std::size_t& length) {
    static const locale_t classic = newlocale(LC_ALL_MASK, "C", nullptr);
    char* end = nullptr;
    const auto number = static_cast<double>(strtold_l(text.c_str(), &end, classic));
    length = static_cast<std::size_t>(end - text.c_str());
    return number;
}

bool IsQuoted(std::string_view text) {
    return text.size() >= 2 && text.front() == '"' && text.back() == '"';
}

}  // namespace

bool ConvertString2Double(std::string_view text, double* out) {
    const std::optional<NumberText> number = FindNumber(text);
    if (!IsWhole(number)) return false;
    *out = ReadReal(*number);
    return true;
}

bool ReadNumberPrefix(std::string_view text, CVal& out) {
    return ReadNumber(FindNumber(text), out);
}

bool ReadWholeNumber(std::string_view text, CVal& out) {
    std::optional<NumberText> number = FindNumber(text);
    if (!IsWhole(number)) number.reset();
    return ReadNumber(number, out);
}

std::string FormatDouble(double value) {
    if (std::isnan(value)) return "nan";
    if (std::isinf(value)) return value < 0 ? "-inf" : "inf";
    if (value == 0) return "0.00";
    const double magnitude = std::fabs(value);
    const bool scientific = magnitude >= kLeastScientific || magnitude < kLeastFixed;
    const auto format = scientific ? std::chars_format::scientific : std::chars_format::fixed;
    char buffer[48];
    char* const end = std::to_chars(std::begin(buffer), std::end(buffer), value, format).ptr;
    std::string text(buffer, end);
    if (scientific) return text;
    const std::size_t point = text.find('.');
    if (point == std::string::npos) return text + ".00";
    if (point + 2 == text.size()) text += '0';
    return text;
}

std::string ValueToText(const CVal& value) {
    if (value.IsText()) return std::string(value.Text());
    if (value.GetType() == ValueType::Double) return FormatDouble(value.Real());
    if (!ValueType::IsInteger(value.GetType())) return {};
    char buffer[24];
    char* const end = std::to_chars(std::begin(buffer), std::end(buffer), value.Integer()).ptr;
    return std::string(buffer, end);
}

void ApplyOperatorText(CVal& value, std::string_view text) {
    if (text.empty()) return;
    std::uint16_t status = 0;
    if (text == "*") status = Status::Unknown;
    if (text == "$") status = Status::Unknown | Status::SetByUser | Status::HardLock;
    if (text.front() == '#') {
        status = Status::SetByUser | Status::SoftLock;
        text.remove_prefix(1);
    }
    if (IsQuoted(text)) {
        value = CVal(text.substr(1, text.size() - 2));
    } else {
        std::size_t length = 0;
        value = CVal(ReadOperatorNumber(std::string(text), length));
    }
    value.SetStatus(status);
}

bool IsOperatorText(std::string_view text) {
    if (text.empty() || text == "*" || text == "$") return true;
    if (text.front() == '#') text.remove_prefix(1);
    std::size_t length = 0;
    ReadOperatorNumber(std::string(text), length);
    return IsQuoted(text) || length > 0;
}

std::string OperatorText(const CVal& value) {
    if (value.GetStatus() & Status::Unknown) return {};
    return ValueToText(value);
}

}  // namespace kalvex::value
