// What the tests of values are written with.
#pragma once

#include <cstdint>
#include <string>

#include "value/Value.h"
#include "value/ValueText.h"

namespace kalvex {

// Type and content in one text, as in "150:7".
inline std::string Dump(const CVal& value) {
    return std::to_string(value.GetType()) + ":" + ValueToText(value);
}

inline CVal Stamped(CVal value, std::uint16_t status, std::int64_t time) {
    value.SetStatus(status);
    value.SetTime(time);
    return value;
}

}  // namespace kalvex
