#include <fmt/format.h>

#include "programs/CompletionText.h"

namespace kalvex::programs {

namespace {

// What _arguments does for the value.
std::string ActionFor(const ValueForm& value, std::string_view function) {
    switch (value.offer) {
        case Offer::Nothing:
        case Offer::Number:
            return " ";
        case Offer::File:
            if (value.detail.empty()) return "_files";
            return fmt::format("_files -g \"{}\"", PatternOfEnding(value.detail));
        case Offer::Folder:
            return "_files -/";
        case Offer::Words:
            return fmt::format("({})", value.detail);
        case Offer::Told:
            return fmt::format("_{}_{}", function, value.detail);
    }
    return {};
}

using Specs = std::vector<std::string>;  // words of an array, without their quotes

std::string Lines(std::string_view margin, const Specs& specs) {
    std::string lines;
    for (const std::string& spec : specs) lines += fmt::format("{}'{}'\n", margin, spec);
    return lines;
}

class ZshFunctions {
  public:
    explicit ZshFunctions(std::string_view program) : m_program(FunctionName(program)) {}

    // Of the command and of those below it, which add its options to their own.
    void Add(const std::string& function, const CommandForm& command, bool isBelow) {
        Specs options;
        for (const OptionForm& option : command.options) AddOption(options, option);
        // For the program's own functions all that stands before the cursor, while `words` is what
        // belongs to a command.
        const std::string_view before =
            isBelow ? "" : "    local -a before=(\"${(@)words[1,CURRENT - 1]}\")\n";
        m_text += fmt::format(
            "_{}() {{\n{}"
            "    local curcontext=$curcontext state line\n"
            "    local -A opt_args\n"
            "    local -a taken=(\n{}{}    )\n"
            "    _arguments -C -S $taken",
            function, before, Lines("        ", options), isBelow ? "        $taken\n" : "");
        // Behind the command options are that one's to read.
        Specs arguments = {"(-)1:command:->command", "(-)*::argument:->argument"};
        if (command.commands.empty()) arguments = ArgumentsOf(command);
        for (const std::string& spec : arguments) m_text += fmt::format(" '{}'", spec);
        if (!command.commands.empty()) AddChoice(function, command);
        m_text += "\n}\n\n";
        for (const CommandForm& below : command.commands) {
            Add(function + "_" + FunctionName(below.name), below, true);
        }
    }

    const std::string& Text() const { return m_text; }

  private:
    void AddOption(Specs& specs, const OptionForm& option) const {
        const ValueForm& value = option.value;
        std::string what;
        if (!value.name.empty()) {
            what = fmt::format(":{}:{}", ZshText(value.name), ActionFor(value, m_program));
            // fish and bash take such a value to be there too where there is something to offer.
            if (value.mayLack && value.offer == Offer::Number) what = ":" + what;
        }
        const bool isPair = !option.shortName.empty();
        const std::string before = option.repeats ? "*"
                                   : isPair ? fmt::format("({} {})", option.shortName, option.name)
                                            : "";
        const std::string behind = fmt::format("[{}]{}", ZshText(option.help), what);
        const bool hasValue = !what.empty();
        if (isPair) specs.push_back(before + option.shortName + (hasValue ? "+" : "") + behind);
        specs.push_back(before + option.name + (hasValue ? "=" : "") + behind);
    }

    Specs ArgumentsOf(const CommandForm& command) const {
        Specs specs;
        for (std::size_t i = 0; i < command.arguments.size(); ++i) {
            const ValueForm& value = command.arguments[i];
            const bool isRest = command.lastRepeats && i + 1 == command.arguments.size();
            specs.push_back(fmt::format("{}:{}{}:{}", isRest ? "*" : std::to_string(i + 1),
                                        value.mayLack ? ":" : "", ZshText(value.name),
                                        ActionFor(value, m_program)));
        }
        return specs;
    }

    void AddChoice(const std::string& function, const CommandForm& command) {
        Specs names;
        std::string calls;
        for (const CommandForm& below : command.commands) {
            names.push_back(below.name + ":" + ZshText(below.help));
            calls += fmt::format("                {}) _{}_{} ;;\n", below.name, function,
                                 FunctionName(below.name));
        }
        m_text += fmt::format(
            " && return\n"
            "    case $state in\n"
            "        command)\n"
            "            local -a commands=(\n{}            )\n"
            "            _describe command commands\n"
            "            ;;\n"
            "        argument)\n"
            "            case $line[1] in\n{}            esac\n"
            "            ;;\n"
            "    esac",
            Lines("                ", names), calls);
    }

    std::string m_program;
    std::string m_text;
};

}  // namespace

std::string FillZsh(const CommandForm& program, std::string script) {
    ZshFunctions functions(program.name);
    functions.Add(FunctionName(program.name), program, false);
    FillPlace(script, "@FUNCTIONS@\n", functions.Text());
    return script;
}

}  // namespace kalvex::programs
