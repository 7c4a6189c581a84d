#include "workbench/model/LogReference.h"

#include <algorithm>
#include <cstdlib>
#include <limits>
#include <string>

namespace kalvex::workbench {

namespace {

constexpr std::size_t kStampLength = 21;
constexpr std::string_view kSeparator = " : ";

std::optional<int> ReadLineNumber(std::string_view text) {
    const std::string number(text);
    const long line = std::strtol(number.c_str(), nullptr, 10);
    if (line <= 0) return std::nullopt;
    return static_cast<int>(std::min<long>(line, std::numeric_limits<int>::max())) - 1;
}

}  // namespace

LogReference FindScript(std::string_view lineText, std::size_t selectedRows,
                        std::string_view lineMark) {
    const std::size_t separator = lineText.find(kSeparator);
    const bool found = separator != std::string_view::npos && separator > kStampLength;
    if (selectedRows != 1 || !found) return {};
    LogReference reference;
    reference.path = lineText.substr(kStampLength, separator - kStampLength);
    const std::size_t line = lineText.find(lineMark);
    if (line != std::string_view::npos) {
        reference.line = ReadLineNumber(lineText.substr(line + lineMark.size()));
    }
    return reference;
}

}  // namespace kalvex::workbench
