#include <fmt/format.h>

#include "programs/CompletionText.h"

namespace kalvex::programs {

namespace {

// What is offered for the value, as further words of a line of `complete`.
std::string OfferOf(const ValueForm& value, std::string_view function) {
    switch (value.offer) {
        case Offer::Nothing:
        case Offer::Number:
            return {};
        case Offer::File:
            if (value.detail.empty()) return " -F";
            return fmt::format(" -k -a '(__fish_complete_suffix {})'", value.detail);
        case Offer::Folder:
            return " -a '(__fish_complete_directories)'";
        case Offer::Words:
            return fmt::format(" -a '{}'", value.detail);
        case Offer::Told:
            return fmt::format(" -a '(__{}_{})'", function, value.detail);
    }
    return {};
}

class FishLines {
  public:
    explicit FishLines(const CommandForm& program)
        : m_program(program.name), m_function(FunctionName(program.name)) {
        AddCommand(program.name, program);
    }

    const std::string& Text() const { return m_text; }
    // Names of options by what the word behind them is.
    const std::string& Valued() const { return m_valued; }
    const std::string& MaybeValued() const { return m_maybeValued; }
    // Of commands below the program, in single quotes.
    const std::string& Paths() const { return m_paths; }

  private:
    void AddCommand(const std::string& path, const CommandForm& command) {
        for (const OptionForm& option : command.options) AddOption(path, option);
        for (std::size_t i = 0; i < command.arguments.size(); ++i) {
            const bool isRest = command.lastRepeats && i + 1 == command.arguments.size();
            const std::string offer = OfferOf(command.arguments[i], m_function);
            if (offer.empty()) continue;
            AddLine(fmt::format("__{}_at \"{}\" {}{}", m_function, path, i, isRest ? " more" : ""),
                    offer);
        }
        for (const CommandForm& below : command.commands) {
            const std::string belowPath = path + " " + below.name;
            AddWord(m_paths, "'" + belowPath + "'");
            AddLine(fmt::format("__{}_at \"{}\" 0", m_function, path),
                    fmt::format(" -a {} -d '{}'", below.name, FishText(below.help)));
            AddCommand(belowPath, below);
        }
    }

    void AddOption(const std::string& path, const OptionForm& option) {
        const ValueForm& value = option.value;
        std::string further;
        // fish knows no value that may lack: it is taken to be there where there is something to
        // offer.
        const bool isFlag = value.name.empty() || (value.mayLack && value.offer == Offer::Number);
        if (!isFlag) further = value.offer == Offer::File && value.detail.empty() ? " -r" : " -x";
        if (!isFlag) further += OfferOf(value, m_function);
        std::string& names = isFlag ? m_maybeValued : m_valued;
        for (const std::string& name : {option.name, option.shortName}) {
            if (!name.empty() && !value.name.empty()) AddWord(names, name);
        }
        std::string line = " -l " + option.name.substr(2);
        if (!option.shortName.empty()) line += " -s " + option.shortName.substr(1);
        line += fmt::format("{} -d '{}'", further, FishText(option.help));
        AddLine(path == m_program ? "" : fmt::format("__{}_below \"{}\"", m_function, path), line);
    }

    void AddLine(const std::string& condition, std::string_view further) {
        const std::string when = condition.empty() ? "" : fmt::format(" -n '{}'", condition);
        m_text += fmt::format("complete -c {}{}{}\n", m_program, when, further);
    }

    std::string m_program;
    std::string m_function;
    std::string m_text;
    std::string m_valued;
    std::string m_maybeValued;
    std::string m_paths;
};

}  // namespace

std::string FillFish(const CommandForm& program, std::string script) {
    const FishLines lines(program);
    FillPlace(script, "@LINES@\n", lines.Text());
    FillPlace(script, "@VALUED@", lines.Valued());
    FillPlace(script, "@MAYBE@", lines.MaybeValued());
    FillPlace(script, "@PATHS@", lines.Paths());
    return script;
}

}  // namespace kalvex::programs
