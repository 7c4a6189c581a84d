// The command line of a program that holds a module: options of its own, which begin with "--" and
// stand in a table, and those of the module.
#pragma once

#include <fmt/format.h>

#include <algorithm>
#include <filesystem>
#include <iterator>
#include <optional>
#include <span>
#include <string>
#include <string_view>
#include <vector>

#include "programs/CommandForm.h"
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

struct ShortName {
    std::string_view shortName;
    std::string_view name;
};
inline constexpr ShortName kShortNames[] = {{"-h", kHelpOption}, {"-V", kVersionOption}};

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
    const char* hint;     // what is said of a word that the program does not know
    bool opensScripts;    // that stand on its command line
};

// What is said of the first of the module's arguments that nobody knows; empty where there is none.
// `options` are the names of the program's own.
std::string TellStranger(const ProgramTexts& program, std::span<const std::string_view> options,
                         const std::vector<std::string>& arguments);

template <class Options>
std::string FormatHelp(const ProgramTexts& program, std::span<const OptionRow<Options>> rows) {
    std::string help = program.usage;
    for (const OptionRow<Options>& row : rows) {
        std::string form = row.name;
        const auto* shorter = std::ranges::find(kShortNames, form, &ShortName::name);
        if (shorter != std::end(kShortNames)) form = fmt::format("{},{}", shorter->shortName, form);
        if (row.value != nullptr) form += fmt::format(" {}", row.value);
        help += fmt::format("  {:<26}{}\n", form, row.help);
    }
    return help + program.remarks;
}

// For completion, which does not know the options of a module.
template <class Options>
CommandForm DescribeOptions(const ProgramTexts& program, std::span<const OptionRow<Options>> rows) {
    CommandForm form{.name = program.name};
    for (const OptionRow<Options>& row : rows) {
        const auto* shorter = std::ranges::find(kShortNames, row.name, &ShortName::name);
        const bool hasShort = shorter != std::end(kShortNames);
        form.options.push_back({row.name, std::string(hasShort ? shorter->shortName : ""),
                                MakeValueForm(row.value == nullptr ? "" : row.value), row.help});
    }
    return form;
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
        std::string name = arguments[i].substr(0, arguments[i].find('='));
        const bool given = arguments[i].size() > name.size();
        const auto* full = std::ranges::find(kShortNames, name, &ShortName::shortName);
        if (full != std::end(kShortNames)) name = full->name;
        const auto row = std::ranges::find(rows, name, &OptionRow<Options>::name);
        if (row == rows.end()) {
            line.options.arguments.push_back(arguments[i]);
            continue;
        }
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
    std::vector<std::string_view> names;
    for (const OptionRow<Options>& row : rows) names.push_back(row.name);
    std::string stranger = TellStranger(program, names, line.options.arguments);
    if (!stranger.empty()) return end(ExitRefused, std::move(stranger));
    MakeAbsolute(line.options, currentDir);
    return line;
}

}  // namespace kalvex::programs
