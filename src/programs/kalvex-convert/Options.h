// The command line of kalvex-convert.
#pragma once

#include <optional>
#include <string>
#include <string_view>
#include <vector>

#include "text/Encoding.h"

namespace kalvex::convert {

inline constexpr std::string_view kStandardStream = "-";

struct ConvertOptions {
    text::Conversion conversion = {};
    std::string output = {};  // empty: what is read is replaced
    bool check = false;
    std::vector<std::string> files = {};  // as given; at least one
};

struct ConvertLine {
    ConvertOptions options = {};
    std::optional<int> exitStatus = {};  // set when there is nothing to do but to print
    std::string message = {};            // what to print then, line end included
};

// `arguments` without the name of the program.
ConvertLine ParseConvertLine(const std::vector<std::string>& arguments);

// For completion.
struct OptionInfo {
    std::string_view name;                // "--to"
    std::string_view shortName;           // "-t"
    std::string_view value;               // "ENCODING", or empty
    std::vector<std::string_view> words;  // that the value can be; none: a file
    const char* help;
};
std::vector<OptionInfo> OptionInfos();

}  // namespace kalvex::convert
