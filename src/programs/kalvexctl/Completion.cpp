#include "programs/kalvexctl/Completion.h"

#include <fmt/format.h>

#include <algorithm>
#include <string_view>

#include "programs/CompletionText.h"
#include "programs/kalvexctl/Options.h"

namespace kalvex::kalvexctl {

namespace {

// The words that are followed by a value; one that may be left out is one's own to complete.
std::string ValuedOptions() {
    std::string valued;
    for (const OptionInfo& option : OptionInfos()) {
        if (option.value.empty() || option.mayLackValue) continue;
        programs::AddWord(valued, option.name);
        if (!option.shortName.empty()) programs::AddWord(valued, option.shortName);
    }
    return valued;
}

}  // namespace

std::string BashCompletion(std::string script) {
    std::string commands;
    std::string own;
    std::string places;
    for (const CommandRow& row : CommandRows()) {
        std::string options;
        std::string arguments;
        for (const std::string_view option : row.options) programs::AddWord(options, option);
        for (const Argument argument : row.arguments)
            programs::AddWord(arguments, UsageOf(argument));
        programs::AddWord(commands, row.name);
        programs::AddWord(own, fmt::format("[{}]=\"{}\"", row.name, options));
        programs::AddWord(places, fmt::format("[{}]=\"{}\"", row.name, arguments));
    }
    std::string general;
    for (const OptionInfo& option : OptionInfos()) {
        if (option.isGeneral) programs::AddWord(general, option.name);
    }
    programs::FillPlace(script, "@COMMANDS@", commands);
    programs::FillPlace(script, "@OPTIONS@", general);
    programs::FillPlace(script, "@OWN@", own);
    programs::FillPlace(script, "@PLACES@", places);
    programs::FillPlace(script, "@VALUED@", ValuedOptions());
    return script;
}

std::string ZshCompletion(std::string script) {
    std::string commands;
    for (const CommandRow& row : CommandRows()) {
        commands += fmt::format("        '{}:{}'\n", row.name, programs::ZshText(row.help));
    }
    std::string options;
    for (const OptionInfo& option : OptionInfos()) {
        const bool isFile = option.value == "FILE" || option.value == "FOLDER";
        const std::string value =
            option.value.empty() || option.mayLackValue
                ? ""
                : fmt::format(":{}:{}", programs::ZshText(option.value), isFile ? "_files" : "");
        for (const std::string_view name : {option.name, option.shortName}) {
            if (name.empty()) continue;
            options +=
                fmt::format("        '{}[{}]{}' \\\n", name, programs::ZshText(option.help), value);
        }
    }
    programs::FillPlace(script, "@COMMANDS@", commands);
    programs::FillPlace(script, "@OPTIONS@", options);
    return script;
}

std::string FishCompletion(std::string script) {
    std::string commands;
    for (const CommandRow& row : CommandRows()) {
        commands +=
            fmt::format("complete -c kalvexctl -n __kalvexctl_needs_command -a {} -d '{}'\n",
                        row.name, programs::FishText(row.help));
    }
    std::string options;
    for (const OptionInfo& option : OptionInfos()) {
        const bool isFile = option.value == "FILE" || option.value == "FOLDER";
        std::string further;
        if (!option.value.empty() && !option.mayLackValue) further = isFile ? " -r -F" : " -x";
        std::string owners;
        for (const CommandRow& row : CommandRows()) {
            if (std::ranges::count(row.options, option.name) > 0) {
                programs::AddWord(owners, row.name);
            }
        }
        if (!option.isGeneral) {
            further += fmt::format(" -n '__fish_seen_subcommand_from {}'", owners);
        }
        options +=
            programs::FishOption("kalvexctl", option.name, option.shortName, further, option.help);
    }
    std::string scripted;
    for (const CommandRow& row : CommandRows()) {
        if (!row.arguments.empty() && row.arguments.front() == Argument::Script) {
            programs::AddWord(scripted, row.name);
        }
    }
    programs::FillPlace(script, "@COMMANDS@", commands);
    programs::FillPlace(script, "@OPTIONS@", options);
    programs::FillPlace(script, "@SCRIPTED@", scripted);
    programs::FillPlace(script, "@VALUED@", ValuedOptions());
    return script;
}

}  // namespace kalvex::kalvexctl
