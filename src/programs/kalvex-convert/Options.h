// The command line of kalvex-convert.
#pragma once

#include <optional>
#include <string>
#include <string_view>
#include <vector>

#include "programs/CommandForm.h"
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
programs::CommandForm DescribeCommandLine();

}  // namespace kalvex::convert
