// Archive values and reports as rows of text: what `export` writes and `import` reads. Any thread.
#pragma once

#include <cstdint>
#include <nlohmann/json.hpp>
#include <string>
#include <string_view>

#include "value/Status.h"
#include "value/Value.h"

namespace kalvex::sorvaned {

// The columns of a CSV file, in their order.
inline constexpr const char* kColumns[] = {"variable", "kind", "time", "value", "status"};

// Of a value with its time. The name is an engine text; the row is UTF-8 with its line end.
struct StoredRow {
    std::string_view variable;
    value::ValueKind kind = value::KindNone;
    const value::CVal& value;
};

std::string TabLine(const StoredRow& row);
std::string CsvLine(const StoredRow& row);
std::string CsvHead();
std::string JsonLine(const StoredRow& row);

}  // namespace kalvex::sorvaned
