// Number formats of scripts, in the manner of printf. They are read here and never reach the C
// library, so that nothing in a script's text can do harm.
#pragma once

#include <string>
#include <string_view>

#include "value/Value.h"

namespace kalvex::operands {

// The first look at a format, in which case does not count: "%" at the start, "f" or "d" at the
// end, at most one point, and a digit first in what is left between them, if anything is.
bool IsValidNumberFormat(std::string_view format);

// The value as an integer when a small "d" stands in the format, else as a double. The format is
// "%", zeros for padding with zeros, width, point and precision, one of d, f, F (l may stand before
// it), then text in which "%%" is a percent sign. A format that is refused by the first look or
// means nothing, and one whose width or precision is beyond 1000, counts as "%.2f".
std::string FormatNumber(const value::CVal& value, std::string_view format);

}  // namespace kalvex::operands
