// How often the rows of the language have run, and with what outcome. The tables pass each call on
// to the language's own. For one thread.
#pragma once

#include <array>
#include <cstdint>
#include <map>
#include <string>
#include <string_view>

#include "differential/World.h"

namespace kalvex::differential {

struct OutcomeCounts {
    std::uint64_t finished = 0;  // of a function: it gave a value, or goes on as a formula
    std::uint64_t stayed = 0;
    std::uint64_t failed = 0;
};

struct Coverage {
    std::map<std::string_view, OutcomeCounts> statements;
    std::map<std::string_view, OutcomeCounts> functions;
    std::array<std::uint64_t, 64> errors{};  // failed lines by the code in the error slot
};

// The coverage of the process.
Coverage& Covered();
// The language with handlers that count there.
const Tables& CountedLanguage();

}  // namespace kalvex::differential
