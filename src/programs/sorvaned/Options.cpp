#include "programs/sorvaned/Options.h"

#include <CLI/CLI.hpp>
#include <algorithm>
#include <sstream>

#include "text/CodePage.h"

namespace kalvex::sorvaned {

namespace {

constexpr const char* kPurpose = "A data server: keeps variables and gives them to its clients.";
constexpr const char* kExitStatuses =
    "Exit status: 0 done, or ended by SIGTERM or SIGINT; 1 a fault of the configuration,\n"
    "of the store, of the users or of a backup; 2 wrong usage.";

struct UserTexts {
    std::string name;
    std::string description;
    std::vector<std::string> groups;
    std::vector<std::string> addresses;
};

void AddName(CLI::App& command, UserTexts& texts) {
    command.add_option("NAME", texts.name, "The user's name")->required();
}

void AddUserCommands(CLI::App& app, SorvanedOptions& options, UserTexts& texts) {
    CLI::App* user = app.add_subcommand("user", "Manage the users");
    user->require_subcommand(1);
    user->fallthrough();
    struct Row {
        const char* name;
        const char* help;
        SorvanedTask task;
        bool named;
    };
    constexpr Row kRows[] = {
        {"add", "Add a user", SorvanedTask::AddUser, true},
        {"list", "List the users: name, level, groups, addresses, description, separated by tabs",
         SorvanedTask::ListUsers, false},
        {"passwd", "Give a user another password", SorvanedTask::ChangePassword, true},
        {"remove", "Remove a user", SorvanedTask::RemoveUser, true},
    };
    for (const Row& row : kRows) {
        CLI::App* command = user->add_subcommand(row.name, row.help);
        command->fallthrough();
        command->callback([&options, task = row.task] { options.task = task; });
        if (row.named) AddName(*command, texts);
        if (row.task != SorvanedTask::AddUser) continue;
        command->add_option("--level", options.user.level, "From 0 to 100, an administrator's (0)")
            ->type_name("N");
        command->add_option("--group", texts.groups, "A group that the user belongs to; repeatable")
            ->type_name("GROUP")
            ->allow_extra_args(false);
        command
            ->add_option("--address", texts.addresses,
                         "Where the user may come from (10.1.2.3, 10.1.0.0/16); repeatable")
            ->type_name("RANGE")
            ->allow_extra_args(false);
        command->add_option("--description", texts.description, "For people")->type_name("TEXT");
    }
}

void AddBackupCommand(CLI::App& app, SorvanedOptions& options) {
    CLI::App* command = app.add_subcommand(
        "backup", "Save store, users and configuration, also of a server that runs");
    command->fallthrough();
    command->callback([&options] { options.task = SorvanedTask::BackUp; });
    command->add_option("FOLDER", options.backup, "A folder that is not there yet")->required();
}

}  // namespace

SorvanedLine ParseSorvanedLine(std::vector<std::string> arguments) {
    SorvanedLine line;
    SorvanedOptions& options = line.options;
    UserTexts texts;
    bool check = false;

    CLI::App app(kPurpose, "sorvaned");
    app.footer(kExitStatuses);
    app.set_help_flag("-h,--help", "Print this and exit");
    app.set_version_flag("-V,--version", "sorvaned " KALVEX_VERSION, "Print the version and exit");
    app.add_option("--config", options.configuration,
                   "The configuration (/etc/sorvane/sorvaned.toml)")
        ->type_name("FILE");
    app.add_option("--log-level", options.logLevel,
                   "Log: 0 always, 1 errors, 2 events, 3 transmission (2)")
        ->type_name("N")
        ->check(CLI::Range(0, 3));
    app.add_flag("--check", check, "Tell what is wrong with the configuration and exit");
    AddUserCommands(app, options, texts);
    AddBackupCommand(app, options);

    std::reverse(arguments.begin(), arguments.end());
    try {
        app.parse(std::move(arguments));
    } catch (const CLI::ParseError& error) {
        std::ostringstream out;
        std::ostringstream fault;
        const bool wrong = app.exit(error, out, fault) != 0;
        line.exitStatus = wrong ? programs::ExitRefused : programs::ExitDone;
        line.message = wrong ? "sorvaned: " + std::string(error.what()) + "\n" : out.str();
        return line;
    }
    if (check && options.task == SorvanedTask::Serve) options.task = SorvanedTask::Check;
    options.user.name = text::FromUtf8(texts.name);
    options.user.description = text::FromUtf8(texts.description);
    for (const std::string& group : texts.groups)
        options.user.groups.push_back(text::FromUtf8(group));
    options.user.addresses = texts.addresses;
    return line;
}

}  // namespace kalvex::sorvaned
