// Conversions between numbers and their texts, independent of any locale.
#pragma once

#include <cstdint>
#include <string>
#include <string_view>

#include "value/Value.h"

namespace kalvex::value {

// A number is decimal: an optional sign, digits with at most one point before, among or behind
// them, an optional exponent. Blanks are the space and the control characters from 9 to 13. Beyond
// the range of a double lie the infinities and 0.

// True when the whole text, blanks around it trimmed, is a number. `out` is set only then.
bool ConvertString2Double(std::string_view text, double* out);

// The longest number at the beginning after leading blanks, false when no digit stands there (out
// is then the integer 0). Without point and exponent it is a 64-bit integer as long as it fits
// there, else a double.
bool ReadNumberPrefix(std::string_view text, CVal& out);

// The same, but true only when nothing except blanks follows the number.
bool ReadWholeNumber(std::string_view text, CVal& out);

// Fixed notation with the shortest digits that read back as the same double, at least two decimals;
// from 1e15 up and below 1e-5 in magnitude the shortest scientific form.
std::string FormatDouble(double value);

// GetValData at 150, 171 and 190, whatever its result.
inline std::int32_t ValueToInt(const CVal& value) {
    std::int32_t number = 0;
    value.GetValData(ValueType::Int, &number);
    return number;
}
inline double ValueToDouble(const CVal& value) {
    double number = 0;
    value.GetValData(ValueType::Double, &number);
    return number;
}
std::string ValueToText(const CVal& value);

// Changes the value as the operator's dialog does. "*" alone makes it unknown, "$" alone unknown,
// set by the user and locked; a leading "#" is taken off and makes it set by the user and
// soft-locked. What lies between double quotes becomes a text, all else the number that strtold
// finds at its beginning, 0 if there is none: here alone hexadecimal, "inf" and "nan" are numbers.
// The value is made anew, with no other status and with time 0. An empty text leaves it as it was.
void ApplyOperatorText(CVal& value, std::string_view text);
// Whether the text is one of these forms, or empty: it is not read as 0 for want of a number.
bool IsOperatorText(std::string_view text);

// The text with which that dialog opens: empty while the value is unknown.
std::string OperatorText(const CVal& value);

}  // namespace kalvex::value
