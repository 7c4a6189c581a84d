// Values as tests make them and show them.
#pragma once

#include <cstdint>
#include <string>

#include "value/Value.h"
#include "value/ValueText.h"

namespace kalvex::support {

value::CVal Stamped(value::CVal value, std::int64_t time, std::uint16_t status = 0);

// Type and content, as in "150:7"; the content in its own code page.
std::string Dump(const value::CVal& value);
// Content and status, as in "7/4"; UTF-8.
std::string Describe(const value::CVal& value);
// All there is to a value, as in "150:7/4@1000": type, content, status, time.
std::string DescribeWhole(const value::CVal& value);

}  // namespace kalvex::support
