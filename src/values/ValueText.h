// Conversions between numbers and their texts, independent of any locale.
#pragma once

#include <cstdint>
#include <string>
#include <string_view>

#include "values/Value.h"

namespace kalvex {

// True when the whole text, blanks around it trimmed, is a decimal number (sign, point and exponent
// allowed; no hexadecimal, no inf, no nan). `out` is set only then.
bool ConvertString2Double(std::string_view text, double* out);

// The longest numeric beginning after leading blanks; false when no digit stands there (out is 0).
// A text without point and exponent is read as an integer directly, saturating at the bounds.
bool ReadNumberPrefix(std::string_view text, CVal& out);

// Fixed notation with the shortest digits that read back as the same double, at least two decimals;
// from 1e15 up and below 1e-5 in magnitude the shortest scientific form.
std::string FormatDouble(double value);

// Saturating reads of a value at 150, 171 and 190. What cannot be read gives 0 or an empty text.
std::int32_t ValueToInt(const CVal& value);
double ValueToDouble(const CVal& value);
std::string ValueToText(const CVal& value);

// Changes the value as the operator's dialog does: "*", "$", a leading "#", a quoted text or a
// number. An empty text leaves it as it was.
void ApplyOperatorText(CVal& value, std::string_view text);

// The text with which that dialog opens: empty while the value is unknown.
std::string OperatorText(const CVal& value);

}  // namespace kalvex
