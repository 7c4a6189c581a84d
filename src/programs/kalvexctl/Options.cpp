#include "programs/kalvexctl/Options.h"

#include <fmt/format.h>

#include <algorithm>
#include <cstdlib>
#include <iterator>
#include <utility>

#include "audit/Since.h"
#include "platform/NetworkAddress.h"
#include "programs/kalvexctl/Commands.h"
#include "text/Characters.h"
#include "text/CodePage.h"
#include "text/WholeNumber.h"

namespace kalvex::kalvexctl {

namespace {

constexpr int kDefaultWatch = 2;  // seconds
constexpr int kMostSeconds = 600;
constexpr int kMostWatch = 86400;
constexpr int kMostLines = 1'000'000;

// What an option's text becomes; the answer tells what is wrong with it.
struct Targets {
    ControlOptions& options;
    OrderArguments& arguments;
};
using Take = std::string (*)(Targets& targets, const std::string& text);

std::string WrongNumber(const std::string& text, int least, int most) {
    return fmt::format("\"{}\" is not a whole number from {} to {}", text, least, most);
}

std::string ReadNumber(const std::string& text, int least, int most, int& number) {
    const auto read = text::ReadWholeNumber<int>(text);
    if (!read || *read < least || *read > most) return WrongNumber(text, least, most);
    number = *read;
    return {};
}

template <int ControlOptions::*Member, int Least, int Most>
std::string TakeNumber(Targets& targets, const std::string& text) {
    return ReadNumber(text, Least, Most, targets.options.*Member);
}

template <int OrderArguments::*Member, int Least, int Most>
std::string TakeCount(Targets& targets, const std::string& text) {
    return ReadNumber(text, Least, Most, targets.arguments.*Member);
}

template <std::string ControlOptions::*Member>
std::string TakeText(Targets& targets, const std::string& text) {
    if (text.empty()) return "an empty text means nothing";
    targets.options.*Member = text;
    return {};
}

template <bool OrderArguments::*Member>
std::string TakeFlag(Targets& targets, const std::string&) {
    targets.arguments.*Member = true;
    return {};
}

std::string TakeModule(Targets& targets, const std::string& text) {
    if (text.empty()) return "an empty name is no module's";
    targets.options.modules.push_back(text::FromUtf8(text));
    return {};
}

std::string TakeAddress(Targets& targets, const std::string& text) {
    std::string host;
    std::uint16_t port = 0;
    if (!platform::ReadAddress(text, host, port)) {
        return fmt::format("\"{}\" is no address HOST:PORT", text);
    }
    targets.options.address = text;
    return {};
}

std::string TakePlainText(Targets& targets, const std::string&) {
    targets.options.plainText = true;
    return {};
}

std::string TakeUser(Targets& targets, const std::string& text) {
    if (text.empty()) return "an empty name is nobody's";
    targets.options.user = text::FromUtf8(text);
    return {};
}

std::string TakeWatch(Targets& targets, const std::string& text) {
    int seconds = kDefaultWatch;
    std::string fault = text.empty() ? "" : ReadNumber(text, 1, kMostWatch, seconds);
    targets.arguments.watch = seconds;
    return fault;
}

std::string TakeSince(Targets& targets, const std::string& text) {
    if (!audit::ParseSince(text, 0)) {
        return fmt::format("\"{}\" is no time such as 2024-03-10, \"2024-03-10 07:00\" or 2h",
                           text);
    }
    targets.arguments.since = text;
    return {};
}

std::string TakeAuditScript(Targets& targets, const std::string& text) {
    if (text.empty()) return "an empty path is no script's";
    targets.arguments.auditScript = text::FromUtf8(text);
    return {};
}

enum class Value { None, Needed, Possible };

struct OptionRow {
    std::string_view name;
    std::string_view shortName;
    Value form;
    std::string_view value;
    Take take;
    bool isGeneral;
    const char* help;
    bool repeats = false;
};

constexpr OptionRow kOptions[] = {
    {"--module", "-m", Value::Needed, "NAME", TakeModule, true, "The module (Kalvex)", true},
    {"--address", "", Value::Needed, "HOST:PORT", TakeAddress, true,
     "Dial this address instead of looking the module up"},
    {"--authority", "", Value::Needed, "FILE", TakeText<&ControlOptions::authority>, true,
     "Who signs the module's certificate (the system's authorities)"},
    {"--certificate", "", Value::Needed, "FILE", TakeText<&ControlOptions::certificate>, true,
     "One's own certificate, for a module that asks for it"},
    {"--key", "", Value::Needed, "FILE", TakeText<&ControlOptions::key>, true,
     "The key of that certificate"},
    {"--certificate-name", "", Value::Needed, "NAME", TakeText<&ControlOptions::certificateName>,
     true, "The name in the module's certificate (the host)"},
    {"--plain-text", "", Value::None, "", TakePlainText, true,
     "Do not encrypt, also beyond this machine"},
    {"--user", "-u", Value::Needed, "NAME", TakeUser, true,
     "Log in as this user; the password is asked for at the terminal"},
    {"--login", "", Value::Needed, "FILE", TakeText<&ControlOptions::loginFile>, true,
     "Two lines, user and password, in a file of mode 0600 ($KALVEXCTL_LOGIN)"},
    {"--dir", "", Value::Needed, "FOLDER", TakeText<&ControlOptions::dir>, true,
     "Where the paths of scripts begin on this machine (the current one)"},
    {"--timeout", "", Value::Needed, "S", TakeNumber<&ControlOptions::timeout, 1, kMostSeconds>,
     true, "For the connection and for each answer, 1 to 600 seconds (5)"},
    {"--wait", "", Value::Needed, "S", TakeNumber<&ControlOptions::wait, 0, kMostSeconds>, true,
     "For a session that another client holds, 0 to 600 seconds (2)"},
    {"--all", "", Value::None, "", TakeFlag<&OrderArguments::all>, false,
     "Every module of this machine and of the section Serwery"},
    {"--context", "", Value::Needed, "N", TakeCount<&OrderArguments::context, 0, kMostLines>, false,
     "Lines before and behind the current one (10)"},
    {"--follow", "", Value::None, "", TakeFlag<&OrderArguments::follow>, false,
     "Go on with the lines that come"},
    {"--force", "", Value::None, "", TakeFlag<&OrderArguments::force>, false,
     "Whoever has the session; whatever the script does"},
    {"--json", "", Value::None, "", TakeFlag<&OrderArguments::json>, false, "Print JSON"},
    {"--level", "", Value::Needed, "L", TakeCount<&OrderArguments::mostLevel, 0, 3>, false,
     "Only lines of levels up to L, 0 to 3 (3)"},
    {"--lines", "-n", Value::Needed, "N", TakeCount<&OrderArguments::count, 0, kMostLines>, false,
     "So many of the last lines (100)"},
    {"--script", "", Value::Needed, "SCRIPT", TakeAuditScript, false, "What concerns this script"},
    {"--since", "", Value::Needed, "TIME", TakeSince, false,
     "From this time on: 2024-03-10, \"2024-03-10 07:00\", 30m, 2h, 7d"},
    {"--watch", "", Value::Possible, "S", TakeWatch, false,
     "Ask anew every S (2) seconds until it is interrupted"},
};

// What ends the program, whatever else is asked for.
struct EndingRow {
    std::string_view name;
    std::string_view shortName;
    const char* help;
    std::string (*text)();
};

std::string Help();

std::string Version() {
    return "kalvexctl " KALVEX_VERSION "\n";
}

constexpr EndingRow kEndings[] = {
    {"--version", "-V", "Print the version and exit", Version},
    {"--help", "-h", "Print this and exit", Help},
};

struct ArgumentRow {
    Argument argument;
    std::string_view usage;
    bool needed;
};

constexpr ArgumentRow kArguments[] = {
    {Argument::Script, "SCRIPT", true},   {Argument::Path, "PATH", true},
    {Argument::Variable, "VAR", true},    {Argument::Text, "TEXT", true},
    {Argument::Line, "LINE", true},       {Argument::MaybeLine, "[LINE]", false},
    {Argument::MaybeLevel, "[N]", false},
};

const ArgumentRow& RowOf(Argument argument) {
    return *std::ranges::find(kArguments, argument, &ArgumentRow::argument);
}

const OptionRow& OptionNamed(std::string_view name) {
    return *std::ranges::find(kOptions, name, &OptionRow::name);
}

std::string TakeName(std::string& target, const std::string& text, std::string_view what) {
    if (text.empty()) return fmt::format("{} is empty", what);
    if (std::ranges::any_of(text, text::IsControl)) {
        return fmt::format("{} has a control character", what);
    }
    target = text::FromUtf8(text);
    return {};
}

std::string TakeValueText(OrderArguments& arguments, const std::string& text) {
    const bool isSoft = text.starts_with('#');
    const bool isEmpty = text.empty() || text.substr(isSoft ? 1 : 0) == "\"\"";
    if (isEmpty) return "TEXT is empty";
    if (text.find('\t') != std::string::npos) return "TEXT has a tab";
    arguments.text = text::FromUtf8(text);
    return {};
}

std::string TakeLine(OrderArguments& arguments, const std::string& text) {
    int line = 0;
    std::string fault = ReadNumber(text, 1, INT32_MAX, line);
    if (fault.empty()) arguments.line = line - 1;
    return fault;
}

std::string TakeArgument(Argument argument, const std::string& text, OrderArguments& arguments) {
    switch (argument) {
        case Argument::Script:
            return TakeName(arguments.script, text, "SCRIPT");
        case Argument::Path:
            if (text.starts_with('~')) return "PATH begins with ~";
            return TakeName(arguments.path, text, "PATH");
        case Argument::Variable:
            return TakeName(arguments.variable, text, "VAR");
        case Argument::Text:
            return TakeValueText(arguments, text);
        case Argument::Line:
        case Argument::MaybeLine:
            return TakeLine(arguments, text);
        case Argument::MaybeLevel: {
            int level = 0;
            std::string fault = ReadNumber(text, 1, 3, level);
            if (fault.empty()) arguments.level = level;
            return fault;
        }
    }
    return {};
}

std::string Form(const CommandRow& row) {
    std::string form(row.name);
    for (const Argument argument : row.arguments) form += fmt::format(" {}", RowOf(argument).usage);
    for (const std::string_view option : row.options) {
        const OptionRow& info = OptionNamed(option);
        const std::string_view name = info.shortName.empty() ? info.name : info.shortName;
        form += info.form == Value::None       ? fmt::format(" [{}]", name)
                : info.form == Value::Possible ? fmt::format(" [{} [{}]]", name, info.value)
                                               : fmt::format(" [{} {}]", name, info.value);
    }
    return form;
}

std::string Help() {
    std::string help =
        "Usage: kalvexctl [OPTIONS] COMMAND [ARGUMENTS]\n"
        "Watches and controls a running script module.\n\nCommands:\n";
    for (const CommandRow& row : CommandRows()) {
        help += fmt::format("  {}\n      {}\n", Form(row), row.help);
    }
    const auto add = [&help](bool isGeneral) {
        for (const OptionRow& row : kOptions) {
            if (row.isGeneral != isGeneral) continue;
            std::string form = row.shortName.empty()
                                   ? std::string(row.name)
                                   : fmt::format("{},{}", row.shortName, row.name);
            if (row.form == Value::Needed) form += fmt::format(" {}", row.value);
            if (row.form == Value::Possible) form += fmt::format(" [{}]", row.value);
            help += fmt::format("  {}\n      {}\n", form, row.help);
        }
    };
    help += "\nOptions of commands:\n";
    add(false);
    help += "\nOptions:\n";
    add(true);
    for (const EndingRow& row : kEndings) {
        help += fmt::format("  {},{}\n      {}\n", row.shortName, row.name, row.help);
    }
    return help +
           "\nExit status: 0 done; 1 the module did not do it; 2 wrong usage; 3 no connection;\n"
           "4 login refused, or right missing; 5 another client has the session;\n"
           "6 no such script; 128 and the number of the signal that ended it.\n";
}

bool IsNegativeNumber(const std::string& text) {
    char* end = nullptr;
    std::strtold(text.c_str(), &end);
    return end != text.c_str();
}

Ending Usage(const std::string& text) {
    return MakeUsageEnding(text);
}

// Words into options and arguments, in whatever order they come.
class Parser {
  public:
    Parser(std::vector<std::string> words, ControlOptions& options, Order& order)
        : m_words(std::move(words)), m_targets{options, order.arguments}, m_order(order) {}

    MaybeEnding Parse() {
        for (m_next = 0; m_next < m_words.size();) {
            const std::string word = m_words[m_next++];
            if (auto ending = TakeWord(word)) return ending;
        }
        if (m_order.command == nullptr) return Usage("no command is named");
        if (auto ending = CheckOptions()) return ending;
        return TakeArguments();
    }

  private:
    MaybeEnding TakeWord(const std::string& word) {
        const bool isOption =
            !m_optionsEnded && word.size() > 1 && word.front() == '-' && !IsNegativeNumber(word);
        if (isOption && word == "--") {
            m_optionsEnded = true;
            return {};
        }
        if (isOption) return TakeOption(word);
        if (m_order.command != nullptr) {
            m_arguments.push_back(word);
            return {};
        }
        const auto rows = CommandRows();
        const auto row = std::ranges::find(rows, std::string_view(word), &CommandRow::name);
        if (row == rows.end()) {
            return Usage(fmt::format("there is no command \"{}\"{}", word,
                                     programs::Suggest(DescribeCommandLine(), word)));
        }
        m_order.command = &*row;
        return {};
    }

    MaybeEnding TakeOption(const std::string& word) {
        for (const EndingRow& row : kEndings) {
            if (word != row.name && word != row.shortName) continue;
            return Ending{programs::ExitDone, row.text()};
        }
        const bool isLong = word.starts_with("--");
        const std::string name = isLong ? word.substr(0, word.find('=')) : word.substr(0, 2);
        const auto* row = std::ranges::find_if(kOptions, [&name](const OptionRow& option) {
            return option.name == name || (!option.shortName.empty() && option.shortName == name);
        });
        if (row == std::end(kOptions)) {
            return Usage(fmt::format("unknown option {}{}", name,
                                     programs::Suggest(DescribeCommandLine(), name)));
        }
        std::optional<std::string> value;
        if (word.size() > name.size()) value = word.substr(name.size() + (isLong ? 1 : 0));
        if (row->form == Value::None && value) {
            return Usage(fmt::format("{} takes no value", name));
        }
        if (!value) {
            const bool hasNext = m_next < m_words.size();
            if (row->form == Value::Needed && !hasNext) {
                return Usage(fmt::format("{} needs a value", name));
            }
            const bool takesNext =
                row->form == Value::Needed || (row->form == Value::Possible && hasNext &&
                                               text::ReadWholeNumber<int>(m_words[m_next]));
            if (takesNext) value = m_words[m_next++];
        }
        if (std::string fault = row->take(m_targets, value.value_or("")); !fault.empty()) {
            return Usage(fmt::format("{}: {}", name, fault));
        }
        if (!row->isGeneral) m_used.push_back(row->name);
        return {};
    }

    MaybeEnding CheckOptions() {
        const CommandRow& command = *m_order.command;
        for (const std::string_view used : m_used) {
            if (std::ranges::find(command.options, used) == command.options.end()) {
                return Usage(fmt::format("{} takes no {}", command.name, used));
            }
        }
        const ControlOptions& options = m_targets.options;
        if (options.modules.size() > 1 && !command.takesModules) {
            return Usage(fmt::format("{} takes one module", command.name));
        }
        const bool isForAddress = !options.authority.empty() || !options.certificate.empty() ||
                                  !options.key.empty() || !options.certificateName.empty() ||
                                  options.plainText;
        if (options.address.empty() && isForAddress) {
            return Usage(
                "--authority, --certificate, --key, --certificate-name and --plain-text "
                "go with --address");
        }
        if (options.certificate.empty() != options.key.empty()) {
            return Usage("--certificate and --key go together");
        }
        const bool isMany = options.modules.size() > 1 || m_order.arguments.all;
        if (!options.address.empty() && isMany) return Usage("--address is one module's");
        if (m_order.arguments.all && !options.modules.empty()) {
            return Usage("--all goes without --module");
        }
        if (options.user && !options.loginFile.empty()) {
            return Usage("--user goes without --login");
        }
        return {};
    }

    MaybeEnding TakeArguments() {
        const CommandRow& command = *m_order.command;
        std::size_t taken = 0;
        for (const Argument argument : command.arguments) {
            if (taken == m_arguments.size()) {
                if (!RowOf(argument).needed) break;
                return Usage(fmt::format("{} needs {}", command.name, RowOf(argument).usage));
            }
            std::string fault = TakeArgument(argument, m_arguments[taken++], m_order.arguments);
            if (!fault.empty()) return Usage(fmt::format("{}: {}", command.name, fault));
        }
        if (taken == m_arguments.size()) return {};
        return Usage(fmt::format("{}: \"{}\" is too much", command.name, m_arguments[taken]));
    }

    std::vector<std::string> m_words;
    Targets m_targets;
    Order& m_order;
    std::size_t m_next = 0;
    bool m_optionsEnded = false;
    std::vector<std::string_view> m_used;
    std::vector<std::string> m_arguments;
};

programs::OptionForm FormOf(const OptionRow& row, std::span<const programs::ValueForm> values) {
    programs::ValueForm value = programs::MakeValueForm(row.value, values);
    value.mayLack = row.form == Value::Possible;
    return {std::string(row.name), std::string(row.shortName), std::move(value), row.help,
            row.repeats};
}

constexpr std::string_view kBlanks = " \t";

// Takes the first word off, and the blanks around it.
std::string TakeWord(std::string_view& line) {
    line.remove_prefix(std::min(line.find_first_not_of(kBlanks), line.size()));
    const std::string word(line.substr(0, line.find_first_of(kBlanks)));
    line.remove_prefix(word.size());
    line.remove_prefix(std::min(line.find_first_not_of(kBlanks), line.size()));
    return word;
}

}  // namespace

programs::CommandForm DescribeCommandLine() {
    using programs::Offer;
    const programs::ValueForm script = {"SCRIPT", Offer::Told, "scripts"};
    const programs::ValueForm ofOptions[] = {script, {"L", Offer::Words, "0 1 2 3"}};
    const programs::ValueForm ofArguments[] = {script,
                                               {"PATH", Offer::File, ".kx"},
                                               {"VAR", Offer::Told, "variables"},
                                               {"N", Offer::Words, "1 2 3"}};
    programs::CommandForm form{.name = "kalvexctl"};
    for (const OptionRow& row : kOptions) {
        if (row.isGeneral) form.options.push_back(FormOf(row, ofOptions));
    }
    for (const EndingRow& row : kEndings) {
        form.options.push_back({std::string(row.name), std::string(row.shortName), {}, row.help});
    }
    for (const CommandRow& row : CommandRows()) {
        programs::CommandForm& command = form.commands.emplace_back();
        command.name = row.name;
        command.help = row.help;
        for (const std::string_view name : row.options) {
            command.options.push_back(FormOf(OptionNamed(name), ofOptions));
        }
        for (const Argument argument : row.arguments) {
            command.arguments.push_back(
                programs::MakeValueForm(RowOf(argument).usage, ofArguments));
        }
    }
    return form;
}

ControlLine ParseControlLine(const std::vector<std::string>& arguments) {
    ControlLine line;
    line.ending = Parser(arguments, line.options, line.order).Parse();
    return line;
}

OrderLine ParseOrder(std::string_view line, const std::string& script) {
    OrderLine result;
    std::string_view rest = line;
    std::string name = TakeWord(rest);
    if (name.empty()) return result;
    const auto rows = CommandRows();
    const auto row = std::ranges::find(rows, std::string_view(name), &CommandRow::name);
    if (row == rows.end() || !row->isOrder) {
        result.ending = Usage(fmt::format("there is no order \"{}\"", name));
        return result;
    }
    const bool takesText =
        std::ranges::find(row->arguments, Argument::Text) != row->arguments.end();
    std::vector<std::string> words{std::move(name)};
    if (takesText) {
        // What begins with "-" is no option here.
        words.insert(words.end(), {"--", text::ToUtf8(script), TakeWord(rest)});
        if (!rest.empty()) words.emplace_back(rest);
        if (words[3].empty()) words.pop_back();
    } else {
        const bool takesScript = !row->arguments.empty();
        if (takesScript) words.push_back(text::ToUtf8(script));
        while (!rest.empty()) words.push_back(TakeWord(rest));
    }
    ControlOptions unused;
    result.ending = Parser(std::move(words), unused, result.order).Parse();
    result.order.arguments.script = script;
    return result;
}

}  // namespace kalvex::kalvexctl
