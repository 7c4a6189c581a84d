#include <fmt/format.h>

#include "programs/CompletionText.h"

namespace kalvex::programs {

namespace {

// "maybe words lf crlf"; nothing for what takes no value.
std::string KindOf(const ValueForm& value) {
    if (value.name.empty()) return {};
    std::string kind = value.mayLack ? "maybe " : "";
    switch (value.offer) {
        case Offer::Nothing:
            return kind + "text";
        case Offer::Number:
            return kind + "number";
        case Offer::File:
            return kind + "file" +
                   (value.detail.empty() ? "" : " " + PatternOfEnding(value.detail));
        case Offer::Folder:
            return kind + "folder";
        case Offer::Words:
            return kind + "words " + value.detail;
        case Offer::Told:
            return kind + "told " + value.detail;
    }
    return kind;
}

// Rows of the arrays of the script, by the path of a command, such as "sorvaned user add".
struct Rows {
    std::string commands;
    std::string options;
    std::string arguments;
    std::string values;
};

void AddRow(std::string& rows, std::string_view key, std::string_view text) {
    rows += fmt::format("        [\"{}\"]=\"{}\"\n", key, text);
}

void AddCommand(Rows& rows, const std::string& path, const CommandForm& command) {
    std::string options;
    for (const OptionForm& option : command.options) {
        AddWord(options, option.name);
        for (const std::string& name : {option.name, option.shortName}) {
            const bool isKnown = rows.values.find("[\"" + name + "\"]") != std::string::npos;
            if (name.empty() || isKnown || option.value.name.empty()) continue;
            AddRow(rows.values, name, KindOf(option.value));
        }
    }
    if (!options.empty()) AddRow(rows.options, path, options);
    for (std::size_t i = 0; i < command.arguments.size(); ++i) {
        const std::string kind = KindOf(command.arguments[i]);
        AddRow(rows.arguments, fmt::format("{} {}", path, i), kind);
        const bool isLast = i + 1 == command.arguments.size();
        if (isLast && command.lastRepeats) AddRow(rows.arguments, path + " more", kind);
    }
    std::string commands;
    for (const CommandForm& below : command.commands) {
        AddWord(commands, below.name);
        AddCommand(rows, path + " " + below.name, below);
    }
    if (!commands.empty()) AddRow(rows.commands, path, commands);
}

}  // namespace

std::string FillBash(const CommandForm& program, std::string script) {
    Rows rows;
    AddCommand(rows, program.name, program);
    FillPlace(script, "@COMMANDS@", rows.commands);
    FillPlace(script, "@OPTIONS@", rows.options);
    FillPlace(script, "@ARGUMENTS@", rows.arguments);
    FillPlace(script, "@VALUES@", rows.values);
    return script;
}

}  // namespace kalvex::programs
