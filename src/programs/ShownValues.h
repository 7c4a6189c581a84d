// Values as the programs show them, in tables and in JSON. UTF-8. Any thread.
#pragma once

#include <cstdint>
#include <nlohmann/json.hpp>
#include <string>
#include <string_view>

#include "value/Value.h"

namespace kalvex::programs {

// An engine text without control characters, which would break a table.
std::string ShownText(std::string_view text);

// The words of scripts with blanks between them, then what has no word as a number.
std::string ShownStatus(std::uint16_t status);

// A text in quotes; "-" for no content.
std::string ShownContent(const value::CVal& value);

// Null for no content and for what JSON has no number for.
nlohmann::ordered_json JsonContent(const value::CVal& value);

}  // namespace kalvex::programs
