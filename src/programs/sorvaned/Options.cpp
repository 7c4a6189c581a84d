#include "programs/sorvaned/Options.h"

#include <fmt/format.h>

#include <CLI/CLI.hpp>
#include <algorithm>
#include <span>
#include <sstream>

#include "programs/CompletionText.h"
#include "text/CodePage.h"
#include "value/LocalTimeText.h"

namespace kalvex::sorvaned {

namespace {

constexpr const char* kPurpose = "A data server: keeps variables and gives them to its clients.";
constexpr const char* kExitStatuses =
    "Exit status: 0 done, or ended by SIGTERM or SIGINT; 1 a fault of the configuration,\n"
    "of the store, of the users, of a backup or of an import, or no server; 2 wrong usage.";

// What the command line says, texts as they are there.
struct Draft : SorvanedOptions {
    bool check = false;
    int level = 0;
    std::string name;
    std::string description;
    std::vector<std::string> groups;
    std::vector<std::string> addresses;
    std::string time;
    std::string fromTime;
    std::string toTime;
    std::string kindWord = "archive";
};

// As the command line names the kinds of stored values.
struct KindRow {
    const char* word;
    value::ValueKind kind;
};

constexpr KindRow kKinds[] = {
    {"archive", value::KindArchive}, {"hour", value::KindHour}, {"day", value::KindDay},
    {"month", value::KindMonth},     {"span", value::KindSpan},
};

struct OptionRow {
    const char* name;   // an argument of a command has no dashes before it
    const char* value;  // as the help shows it; null for an option without one
    const char* help;
    CLI::Option* (*add)(CLI::App& app, const OptionRow& row, Draft& draft);
    int most = 0;  // of a number that begins with 0
    bool repeats = false;
    bool isNeeded = false;
    bool mayLack = false;         // an argument of a command
    const char* words = nullptr;  // the values that there are, with blanks between them
};

template <auto Member>
CLI::Option* Add(CLI::App& app, const OptionRow& row, Draft& draft) {
    return app.add_option(row.name, draft.*Member, row.help);
}

template <auto Member>
CLI::Option* AddFlag(CLI::App& app, const OptionRow& row, Draft& draft) {
    return app.add_flag(row.name, draft.*Member, row.help);
}

constexpr OptionRow kLogin = {"--user", "NAME",
                              "Log in, the password is asked for; NOBODY unless given",
                              Add<&Draft::asUser>};
constexpr OptionRow kJson = {"--json", nullptr, "As JSON", AddFlag<&Draft::json>};

constexpr OptionRow kOptions[] = {
    {"--config", "FILE", "The configuration (/etc/sorvane/sorvaned.toml)",
     Add<&Draft::configuration>},
    {"--log-level", "N", "Log: 0 always, 1 errors, 2 events, 3 transmission (2)",
     Add<&Draft::logLevel>, 3},
    {"--metrics", "ADDRESS",
     "Figures for Prometheus: 127.0.0.1:9464, [::1]:9464, or the path of a socket (none)",
     Add<&Draft::metrics>},
    {"--check", nullptr, "Tell what is wrong with the configuration and exit",
     AddFlag<&Draft::check>},
};

constexpr OptionRow kUserOptions[] = {
    {"--level", "N", "From 0 to 100, an administrator's (0)", Add<&Draft::level>},
    {"--group", "GROUP", "A group that the user belongs to; repeatable", Add<&Draft::groups>, 0,
     true},
    {"--address", "RANGE", "Where the user may come from (10.1.2.3, 10.1.0.0/16); repeatable",
     Add<&Draft::addresses>, 0, true},
    {"--description", "TEXT", "For people", Add<&Draft::description>},
};

constexpr OptionRow kHistoryOptions[] = {
    {"--at", "TIME",
     "Archive value and reports that count at YYYY-MM-DD HH:MM:SS instead of the current value",
     Add<&Draft::time>},
    {"--versions", nullptr, "What stood there before, too, the latest first",
     AddFlag<&Draft::versions>},
    kJson,
};

constexpr OptionRow kAlarmOptions[] = {
    {"--active", nullptr, "Those alone that stand or are not acknowledged",
     AddFlag<&Draft::active>},
    {"--from", "TIME", "Those that began at YYYY-MM-DD HH:MM:SS or later", Add<&Draft::fromTime>},
    {"--to", "TIME", "Those that began at that time or before", Add<&Draft::toTime>},
    kJson,
};

constexpr OptionRow kAcknowledgeOptions[] = {kLogin, kJson};

constexpr OptionRow kValuesOptions[] = {
    {"--watch", nullptr, "Go on with each change", AddFlag<&Draft::watch>},
    kLogin,
    kJson,
};

constexpr OptionRow kExportOptions[] = {
    {"--from", "TIME", "The first second, YYYY-MM-DD HH:MM:SS", Add<&Draft::fromTime>, 0, false,
     true},
    {"--to", "TIME", "The last second", Add<&Draft::toTime>, 0, false, true},
    {"--kind", "KIND", "archive, or reports: hour, day, month, span (archive)",
     Add<&Draft::kindWord>, 0, false, false, false, "archive hour day month span"},
    {"--csv", nullptr, "As CSV with a head, which import reads", AddFlag<&Draft::csv>},
    kJson,
};

constexpr OptionRow kImportOptions[] = {
    {"--write", nullptr, "Write what is new or changed, by way of the server that runs",
     AddFlag<&Draft::write>},
    {"--user", "NAME", "Whose rights count; NOBODY unless given", Add<&Draft::asUser>},
    kJson,
};

constexpr OptionRow kJsonAlone[] = {kJson};

constexpr OptionRow kNames = {"NAME", nullptr, "Their names, with * and ?", Add<&Draft::names>,
                              0,      true};
constexpr OptionRow kPattern = {"PATTERN",
                                nullptr,
                                "Their names, with * and ?; all unless given",
                                Add<&Draft::pattern>,
                                0,
                                false,
                                false,
                                true};
constexpr OptionRow kFile = {"FILE", nullptr, "A CSV file as export makes it", Add<&Draft::file>};
constexpr OptionRow kName = {"NAME", nullptr, "The user's name", Add<&Draft::name>};
constexpr OptionRow kVariable = {"VARIABLE", nullptr, "Its name", Add<&Draft::variable>};
constexpr OptionRow kFolder = {"FOLDER", nullptr, "A folder that is not there yet",
                               Add<&Draft::backup>};

// What ends the program, whatever else is asked for.
struct EndingRow {
    const char* shortName;
    const char* name;
    const char* help;

    std::string Names() const { return std::string(shortName) + "," + name; }
};

constexpr EndingRow kHelp = {"-h", "--help", "Print this and exit"};
constexpr EndingRow kVersion = {"-V", "--version", "Print the version and exit"};

// A command stands behind that of which it is one.
struct CommandRow {
    const char* above;  // null: the program
    const char* name;
    const char* help;
    std::optional<SorvanedTask> task = {};  // none: one of its commands has to be named
    const OptionRow* argument = nullptr;
    std::span<const OptionRow> options = {};
};

constexpr CommandRow kCommands[] = {
    {nullptr, "user", "Manage the users"},
    {"user", "add", "Add a user", SorvanedTask::AddUser, &kName, kUserOptions},
    {"user", "list",
     "List the users: name, level, groups, addresses, description, separated by tabs",
     SorvanedTask::ListUsers},
    {"user", "passwd", "Give a user another password", SorvanedTask::ChangePassword, &kName},
    {"user", "remove", "Remove a user", SorvanedTask::RemoveUser, &kName},
    {nullptr, "backup", "Save store, users and configuration, also of a server that runs",
     SorvanedTask::BackUp, &kFolder, kJsonAlone},
    {nullptr, "history",
     "Tell who wrote a value and when: kind, time, when written, user, client, address, value,\n"
     "status, separated by tabs",
     SorvanedTask::ShowHistory, &kVariable, kHistoryOptions},
    {nullptr, "alarms",
     "Tell the journal of alarms: variable, stage, began, value, ended, acknowledged, user, "
     "client,\n"
     "address, separated by tabs",
     SorvanedTask::ShowAlarms, &kPattern, kAlarmOptions},
    {nullptr, "acknowledge",
     "Acknowledge the alarms of variables of a server that runs, and tell whose they were",
     SorvanedTask::Acknowledge, &kNames, kAcknowledgeOptions},
    {nullptr, "values",
     "Tell the current values of a server that runs: name, value, status, time, separated by tabs",
     SorvanedTask::ShowValues, &kPattern, kValuesOptions},
    {nullptr, "export",
     "Tell archive values or reports: name, kind, time, value, status, separated by tabs",
     SorvanedTask::Export, &kNames, kExportOptions},
    {nullptr, "import", "Tell what a file would change, and what is wrong with it",
     SorvanedTask::Import, &kFile, kImportOptions},
    {nullptr, "check",
     "Check the store (--check: the configuration), and tell what each variable has in it",
     SorvanedTask::CheckStore, nullptr, kJsonAlone},
};

void AddOption(CLI::App& app, const OptionRow& row, Draft& draft) {
    CLI::Option* const option = row.add(app, row, draft);
    if (row.value != nullptr) option->type_name(row.value);
    if (row.most > 0) option->check(CLI::Range(0, row.most));
    if (row.repeats) option->allow_extra_args(false);
    if (row.words != nullptr) option->check(CLI::IsMember(CLI::detail::split(row.words, ' ')));
    option->required(row.isNeeded);
}

void AddCommand(CLI::App& app, const CommandRow& row, Draft& draft) {
    CLI::App* const above = row.above == nullptr ? &app : app.get_subcommand(row.above);
    CLI::App* const command = above->add_subcommand(row.name, row.help);
    command->fallthrough();
    if (row.task) {
        command->callback([&draft, task = *row.task] { draft.task = task; });
    } else {
        command->require_subcommand(1);
    }
    if (row.argument != nullptr) {
        row.argument->add(*command, *row.argument, draft)->required(!row.argument->mayLack);
    }
    for (const OptionRow& option : row.options) AddOption(*command, option, draft);
}

programs::OptionForm FormOf(const OptionRow& row) {
    programs::ValueForm value = programs::MakeValueForm(row.value == nullptr ? "" : row.value);
    if (row.most > 0) value.offer = programs::Offer::Words;
    for (int number = 0; row.most > 0 && number <= row.most; ++number) {
        programs::AddWord(value.detail, std::to_string(number));
    }
    if (row.words != nullptr) {
        value.offer = programs::Offer::Words;
        value.detail = row.words;
    }
    return {row.name, {}, std::move(value), row.help, row.repeats};
}

programs::CommandForm FormOf(const CommandRow& row) {
    programs::CommandForm form{row.name, row.help};
    std::ranges::replace(form.help, '\n', ' ');
    for (const OptionRow& option : row.options) form.options.push_back(FormOf(option));
    if (row.argument != nullptr) {
        const std::string name = row.argument->name;
        form.arguments = {programs::MakeValueForm(row.argument->mayLack ? '[' + name + ']' : name)};
        form.lastRepeats = row.argument->repeats;
    }
    return form;
}

// Of what the library has left over, an option before the value that somebody gave it.
std::string TellStranger(const CLI::App& app) {
    const std::vector<std::string> left = app.remaining(true);
    const auto option =
        std::ranges::find_if(left, [](const std::string& word) { return word.starts_with('-'); });
    const std::string& word = option == left.end() ? left.front() : *option;
    return fmt::format("unknown {} {}{} (sorvaned --help lists all)",
                       option == left.end() ? "word" : "option", word,
                       programs::Suggest(DescribeCommandLine(), word));
}

// Null where the text is a time that can be meant.
const char* FaultOf(const std::string& text, std::int64_t& time) {
    switch (value::ReadExactLocalTime(text, time)) {
        case value::LocalReading::Exact:
            return nullptr;
        case value::LocalReading::Unreadable:
            return "expected YYYY-MM-DD HH:MM:SS";
        case value::LocalReading::Twice:
            return "clocks show this time twice, put the offset behind it, such as +02:00";
        case value::LocalReading::LeftOut:
            break;
    }
    return "clocks leave this time out";
}

// What is wrong with the times and with the form of an export; empty when all is well.
std::string TakeTimes(Draft& draft) {
    struct Row {
        const char* option;
        const std::string& text;
        std::optional<std::int64_t>& time;
    };
    const Row rows[] = {{"--at", draft.time, draft.at},
                        {"--from", draft.fromTime, draft.from},
                        {"--to", draft.toTime, draft.to}};
    for (const Row& row : rows) {
        if (row.text.empty()) continue;
        if (const char* fault = FaultOf(row.text, row.time.emplace())) {
            return fmt::format("{}: {}", row.option, fault);
        }
    }
    if (draft.from && draft.to && *draft.to < *draft.from) return "--to is before --from";
    if (draft.csv && draft.json) return "--csv and --json exclude each other";
    draft.kind = std::ranges::find(kKinds, draft.kindWord, &KindRow::word)->kind;
    return {};
}

}  // namespace

SorvanedLine ParseSorvanedLine(std::vector<std::string> arguments) {
    SorvanedLine line;
    Draft draft;

    CLI::App app(kPurpose, "sorvaned");
    app.footer(kExitStatuses);
    app.set_help_flag(kHelp.Names(), kHelp.help);
    app.set_version_flag(kVersion.Names(), "sorvaned " KALVEX_VERSION, kVersion.help);
    for (const OptionRow& row : kOptions) AddOption(app, row, draft);
    for (const CommandRow& row : kCommands) AddCommand(app, row, draft);

    std::reverse(arguments.begin(), arguments.end());
    try {
        app.parse(std::move(arguments));
    } catch (const CLI::ParseError& error) {
        std::ostringstream out;
        std::ostringstream fault;
        const bool wrong = app.exit(error, out, fault) != 0;
        line.exitStatus = wrong ? programs::ExitRefused : programs::ExitDone;
        const bool strange = dynamic_cast<const CLI::ExtrasError*>(&error) != nullptr;
        const std::string told = strange ? TellStranger(app) : error.what();
        line.message = wrong ? "sorvaned: " + told + "\n" : out.str();
        return line;
    }
    if (draft.check && draft.task == SorvanedTask::Serve) draft.task = SorvanedTask::Check;
    if (const std::string fault = TakeTimes(draft); !fault.empty()) {
        line.exitStatus = programs::ExitRefused;
        line.message = "sorvaned: " + fault + '\n';
        return line;
    }
    draft.user.name = text::FromUtf8(draft.name);
    draft.user.description = text::FromUtf8(draft.description);
    draft.user.level = draft.level;
    for (const std::string& group : draft.groups)
        draft.user.groups.push_back(text::FromUtf8(group));
    draft.user.addresses = draft.addresses;
    line.options = draft;
    return line;
}

programs::CommandForm DescribeCommandLine() {
    programs::CommandForm form{.name = "sorvaned"};
    for (const OptionRow& row : kOptions) form.options.push_back(FormOf(row));
    for (const EndingRow& row : {kVersion, kHelp}) {
        form.options.push_back({row.name, row.shortName, {}, row.help});
    }
    for (const CommandRow& row : kCommands) {
        auto& commands = row.above == nullptr ? form.commands
                                              : std::ranges::find(form.commands, row.above,
                                                                  &programs::CommandForm::name)
                                                    ->commands;
        commands.push_back(FormOf(row));
    }
    return form;
}

}  // namespace kalvex::sorvaned
