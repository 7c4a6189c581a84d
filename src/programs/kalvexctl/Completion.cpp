#include "programs/kalvexctl/Completion.h"

#include <fmt/format.h>

#include <string_view>

#include "programs/CompletionText.h"
#include "programs/kalvexctl/Options.h"

namespace kalvex::kalvexctl {

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
    std::string valued;
    for (const OptionInfo& option : OptionInfos()) {
        if (option.isGeneral) programs::AddWord(general, option.name);
        // A value that may be left out is one's own to complete.
        if (option.value.empty() || option.mayLackValue) continue;
        programs::AddWord(valued, option.name);
        if (!option.shortName.empty()) programs::AddWord(valued, option.shortName);
    }
    programs::FillPlace(script, "@COMMANDS@", commands);
    programs::FillPlace(script, "@OPTIONS@", general);
    programs::FillPlace(script, "@OWN@", own);
    programs::FillPlace(script, "@PLACES@", places);
    programs::FillPlace(script, "@VALUED@", valued);
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

}  // namespace kalvex::kalvexctl
