#include "programs/kalvexctl/Completion.h"

#include <fmt/format.h>

#include <string_view>

#include "programs/kalvexctl/Options.h"

namespace kalvex::kalvexctl {

namespace {

void Fill(std::string& script, std::string_view place, const std::string& text) {
    const std::size_t begin = script.find(place);
    if (begin != std::string::npos) script.replace(begin, place.size(), text);
}

void Add(std::string& list, std::string_view word) {
    if (!list.empty()) list += ' ';
    list += word;
}

// For single quotes, with what has a meaning of its own in a description quoted.
std::string ZshText(std::string_view text) {
    std::string quoted;
    for (const char c : text) {
        if (c == ':' || c == '[' || c == ']') quoted += '\\';
        quoted += c;
        if (c == '\'') quoted += "\\''";
    }
    return quoted;
}

}  // namespace

std::string BashCompletion(std::string script) {
    std::string commands;
    std::string own;
    std::string places;
    for (const CommandRow& row : CommandRows()) {
        std::string options;
        std::string arguments;
        for (const std::string_view option : row.options) Add(options, option);
        for (const Argument argument : row.arguments) Add(arguments, UsageOf(argument));
        Add(commands, row.name);
        Add(own, fmt::format("[{}]=\"{}\"", row.name, options));
        Add(places, fmt::format("[{}]=\"{}\"", row.name, arguments));
    }
    std::string general;
    std::string valued;
    for (const OptionInfo& option : OptionInfos()) {
        if (option.isGeneral) Add(general, option.name);
        // A value that may be left out is one's own to complete.
        if (option.value.empty() || option.mayLackValue) continue;
        Add(valued, option.name);
        if (!option.shortName.empty()) Add(valued, option.shortName);
    }
    Fill(script, "@COMMANDS@", commands);
    Fill(script, "@OPTIONS@", general);
    Fill(script, "@OWN@", own);
    Fill(script, "@PLACES@", places);
    Fill(script, "@VALUED@", valued);
    return script;
}

std::string ZshCompletion(std::string script) {
    std::string commands;
    for (const CommandRow& row : CommandRows()) {
        commands += fmt::format("        '{}:{}'\n", row.name, ZshText(row.help));
    }
    std::string options;
    for (const OptionInfo& option : OptionInfos()) {
        const bool isFile = option.value == "FILE" || option.value == "FOLDER";
        const std::string value =
            option.value.empty() || option.mayLackValue
                ? ""
                : fmt::format(":{}:{}", ZshText(option.value), isFile ? "_files" : "");
        for (const std::string_view name : {option.name, option.shortName}) {
            if (name.empty()) continue;
            options += fmt::format("        '{}[{}]{}' \\\n", name, ZshText(option.help), value);
        }
    }
    Fill(script, "@COMMANDS@", commands);
    Fill(script, "@OPTIONS@", options);
    return script;
}

}  // namespace kalvex::kalvexctl
