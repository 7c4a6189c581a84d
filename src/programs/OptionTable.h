// The command line of a program that holds a module: options of its own, which begin with "--" and
// stand in a table, and those of the module.
#pragma once

#include <fmt/format.h>

#include <algorithm>
#include <filesystem>
#include <optional>
#include <span>
#include <string>
#include <string_view>
#include <vector>

#include "programs/ExitStatus.h"

namespace kalvex::programs {

// What every such program has; its own options go behind.
struct ModuleOptions {
    std::string workingDir = {};              // absolute
    std::string logDir = {};                  // absolute
    std::vector<std::string> arguments = {};  // of the module
};

template <class Options>
struct OptionRow {
    const char* name;
    const char* value;  // as the help shows it; null for an option without one
    const char* help;
    void (*take)(Options& options, const std::string& value);  // null: the program ends with it
};

inline constexpr std::string_view kHelpOption = "--help";
inline constexpr std::string_view kVersionOption = "--version";

template <class Options>
struct OptionLine {
    Options options = {};
    std::optional<int> exitStatus = {};  // the process ends at once, with this
    std::string message = {};
};

struct ProgramTexts {
    const char* name;
    const char* usage;    // what stands above the options
    const char* remarks;  // what stands below them
};

template <class Options>
std::string FormatHelp(const ProgramTexts& program, std::span<const OptionRow<Options>> rows) {
    std::string help = program.usage;
    for (const OptionRow<Options>& row : rows) {
        const std::string form =
            row.value == nullptr ? row.name : fmt::format("{} {}", row.name, row.value);
        help += fmt::format("  {:<26}{}\n", form, row.help);
    }
    return help + program.remarks;
}

// `currentDir` is what relative folders are relative to; absolute.
void MakeAbsolute(ModuleOptions& options, const std::string& currentDir);

template <class Options>
OptionLine<Options> ParseOptions(const ProgramTexts& program,
                                 std::span<const OptionRow<Options>> rows,
                                 const std::vector<std::string>& arguments,
                                 const std::string& currentDir) {
    const auto end = [](int status, std::string message) {
        return OptionLine<Options>{{}, status, std::move(message)};
    };
    OptionLine<Options> line;
    for (std::size_t i = 0; i < arguments.size(); ++i) {
        const std::string name = arguments[i].substr(0, arguments[i].find('='));
        const auto row = std::ranges::find(rows, name, &OptionRow<Options>::name);
        if (row == rows.end()) {
            line.options.arguments.push_back(arguments[i]);
            continue;
        }
        const bool given = arguments[i].size() > name.size();
        if (row->value == nullptr && given) {
            return end(ExitRefused, fmt::format("{}: {} takes no value\n", program.name, name));
        }
        if (name == kHelpOption) return end(ExitDone, FormatHelp(program, rows));
        if (name == kVersionOption) {
            return end(ExitDone, fmt::format("{} {}\n", program.name, KALVEX_VERSION));
        }
        std::string value = given ? arguments[i].substr(name.size() + 1) : std::string();
        if (row->value != nullptr && !given && i + 1 < arguments.size()) value = arguments[++i];
        if (row->value != nullptr && value.empty()) {
            return end(ExitRefused, fmt::format("{}: {} needs a value\n", program.name, name));
        }
        row->take(line.options, value);
    }
    MakeAbsolute(line.options, currentDir);
    return line;
}

}  // namespace kalvex::programs
