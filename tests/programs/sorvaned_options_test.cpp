#include "programs/sorvaned/Options.h"

#include <gmock/gmock.h>
#include <gtest/gtest.h>

#include <sstream>
#include <string>
#include <vector>

#include "support/zone_scope.h"
#include "text/CodePage.h"

namespace kalvex::programs {
namespace {

using testing::ElementsAre;
using testing::IsEmpty;

// Those that are not empty.
std::vector<std::string> Lines(const std::string& text) {
    std::vector<std::string> lines;
    std::istringstream stream(text);
    for (std::string line; std::getline(stream, line);) {
        if (!line.empty()) lines.push_back(line);
    }
    return lines;
}

sorvaned::SorvanedOptions Parsed(std::vector<std::string> arguments) {
    const sorvaned::SorvanedLine line = sorvaned::ParseSorvanedLine(std::move(arguments));
    EXPECT_FALSE(line.exitStatus) << line.message;
    return line.options;
}

TEST(SorvanedOptionsTest, ServesUnlessToldOtherwise) {
    const sorvaned::SorvanedOptions options = Parsed({});
    EXPECT_EQ(options.task, sorvaned::SorvanedTask::Serve);
    EXPECT_EQ(options.configuration, "/etc/sorvane/sorvaned.toml");
    EXPECT_EQ(options.logLevel, 2);
    EXPECT_EQ(Parsed({"--config", "a.toml", "--log-level", "3"}).configuration, "a.toml");
    EXPECT_EQ(Parsed({"--log-level", "3"}).logLevel, 3);
    EXPECT_EQ(Parsed({"--check"}).task, sorvaned::SorvanedTask::Check);
}

TEST(SorvanedOptionsTest, UserHasItsAttributes) {
    const sorvaned::SorvanedOptions options =
        Parsed({"--config", "a.toml", "user", "add", "Żaneta", "--level", "50", "--group", "gaz",
                "--group", "zmiana A", "--address", "10.0.0.0/8", "--description", "Główna"});
    EXPECT_EQ(options.task, sorvaned::SorvanedTask::AddUser);
    EXPECT_EQ(options.user.name, text::FromUtf8("Żaneta"));
    EXPECT_EQ(options.user.level, 50);
    EXPECT_THAT(options.user.groups, ElementsAre("gaz", "zmiana A"));
    EXPECT_THAT(options.user.addresses, ElementsAre("10.0.0.0/8"));
    EXPECT_EQ(options.user.description, text::FromUtf8("Główna"));
}

TEST(SorvanedOptionsTest, GroupTakesOneWord) {
    const sorvaned::SorvanedOptions options = Parsed({"user", "add", "--group", "gaz", "adam"});
    EXPECT_EQ(options.user.name, "adam");
    EXPECT_THAT(options.user.groups, ElementsAre("gaz"));
    EXPECT_EQ(options.user.level, 0);
    EXPECT_THAT(options.user.addresses, IsEmpty());
}

TEST(SorvanedOptionsTest, OtherTasksWithUsers) {
    EXPECT_EQ(Parsed({"user", "list"}).task, sorvaned::SorvanedTask::ListUsers);
    EXPECT_EQ(Parsed({"user", "passwd", "adam"}).task, sorvaned::SorvanedTask::ChangePassword);
    EXPECT_EQ(Parsed({"user", "passwd", "adam"}).user.name, "adam");
    const sorvaned::SorvanedOptions options =
        Parsed({"user", "remove", "adam", "--config", "a.toml"});
    EXPECT_EQ(options.task, sorvaned::SorvanedTask::RemoveUser);
    EXPECT_EQ(options.configuration, "a.toml");
}

TEST(SorvanedOptionsTest, BackupHasItsFolder) {
    const sorvaned::SorvanedOptions options = Parsed({"backup", "kopia", "--config", "a.toml"});
    EXPECT_EQ(options.task, sorvaned::SorvanedTask::BackUp);
    EXPECT_EQ(options.backup, "kopia");
    EXPECT_EQ(options.configuration, "a.toml");
}

TEST(SorvanedOptionsTest, ExportHasNamesAndARange) {
    const support::ZoneScope zone("Europe/Warsaw");
    const sorvaned::SorvanedOptions options =
        Parsed({"export", "A", "B*", "--from", "2024-03-10 07:00:00", "--to",
                "2024-10-27 02:30:00+01:00", "--kind", "day", "--csv", "--config", "a.toml"});
    EXPECT_EQ(options.task, sorvaned::SorvanedTask::Export);
    EXPECT_THAT(options.names, ElementsAre("A", "B*"));
    EXPECT_EQ(options.from, 1710050400);
    EXPECT_EQ(options.to, 1729992600);
    EXPECT_EQ(options.kind, value::KindDay);
    EXPECT_TRUE(options.csv);
    EXPECT_EQ(options.configuration, "a.toml");
    EXPECT_EQ(
        Parsed({"export", "A", "--from", "2024-03-10 07:00:00", "--to", "2024-03-10 07:00:00"})
            .kind,
        value::KindArchive);
}

TEST(SorvanedOptionsTest, CommandsHaveTheirOptions) {
    EXPECT_EQ(Parsed({"values"}).task, sorvaned::SorvanedTask::ShowValues);
    EXPECT_EQ(Parsed({"values"}).pattern, "*");
    const sorvaned::SorvanedOptions values =
        Parsed({"values", "A?", "--watch", "--user", "adam", "--json"});
    EXPECT_EQ(values.pattern, "A?");
    EXPECT_EQ(values.asUser, "adam");
    EXPECT_TRUE(values.watch && values.json);
    const sorvaned::SorvanedOptions acknowledge =
        Parsed({"acknowledge", "A", "B*", "--user", "adam", "--json"});
    EXPECT_EQ(acknowledge.task, sorvaned::SorvanedTask::Acknowledge);
    EXPECT_THAT(acknowledge.names, ElementsAre("A", "B*"));
    EXPECT_EQ(acknowledge.asUser, "adam");
    EXPECT_TRUE(acknowledge.json);
    EXPECT_TRUE(Parsed({"backup", "kopia", "--json"}).json);
    const sorvaned::SorvanedOptions import = Parsed({"import", "a.csv", "--write"});
    EXPECT_EQ(import.task, sorvaned::SorvanedTask::Import);
    EXPECT_EQ(import.file, "a.csv");
    EXPECT_TRUE(import.write);
    EXPECT_FALSE(Parsed({"import", "a.csv"}).write);
    EXPECT_EQ(Parsed({"check", "--json"}).task, sorvaned::SorvanedTask::CheckStore);
}

TEST(SorvanedOptionsTest, WrongUsageIsTold) {
    const support::ZoneScope zone("Europe/Warsaw");
    const std::string time = "2024-03-10 07:00:00";
    struct Row {
        std::vector<std::string> arguments;
        const char* message;
    };
    const Row rows[] = {
        {{"user", "add"}, "sorvaned: NAME is required\n"},
        {{"backup"}, "sorvaned: FOLDER is required\n"},
        {{"backup", "a", "b"}, "sorvaned: unknown word b (sorvaned --help lists all)\n"},
        {{"user"}, "sorvaned: A subcommand is required\n"},
        {{"--log-level", "4"}, "sorvaned: --log-level: Value 4 not in range 0 to 3\n"},
        {{"serve"}, "sorvaned: unknown word serve (sorvaned --help lists all)\n"},
        {{"bakup", "a"},
         "sorvaned: unknown word bakup, did you mean backup? (sorvaned --help lists all)\n"},
        {{"--chek"},
         "sorvaned: unknown option --chek, did you mean --check? (sorvaned --help lists all)\n"},
        {{"user", "list", "adam"}, "sorvaned: unknown word adam (sorvaned --help lists all)\n"},
        {{"user", "list", "--level", "3"},
         "sorvaned: unknown option --level (sorvaned --help lists all)\n"},
        {{"user", "add", "a", "--level"}, "sorvaned: --level: 1 required N missing\n"},
        {{"user", "add", "a", "--level", "x"}, "sorvaned: Could not convert: --level = x\n"},
        {{"user", "add", "a", "--group"}, "sorvaned: --group: 1 required GROUP missing\n"},
        {{"user", "add", "a", "--description", "b", "--description", "c"},
         "sorvaned: --description: At Most 1 required but received 2\n"},
        {{"export", "--from", time, "--to", time}, "sorvaned: NAME is required\n"},
        {{"export", "A", "--to", time}, "sorvaned: --from is required\n"},
        {{"export", "A", "--from", time}, "sorvaned: --to is required\n"},
        {{"export", "A", "--from", "7:00", "--to", time},
         "sorvaned: --from: expected YYYY-MM-DD HH:MM:SS\n"},
        {{"export", "A", "--from", time, "--to", "2024-10-27 02:30:00"},
         "sorvaned: --to: clocks show this time twice, put the offset behind it, such as +02:00\n"},
        {{"export", "A", "--from", "2024-03-31 02:30:00", "--to", time},
         "sorvaned: --from: clocks leave this time out\n"},
        {{"export", "A", "--from", time, "--to", "2024-03-10 06:59:59"},
         "sorvaned: --to is before --from\n"},
        {{"export", "A", "--from", time, "--to", time, "--csv", "--json"},
         "sorvaned: --csv and --json exclude each other\n"},
        {{"export", "A", "--from", time, "--to", time, "--kind", "week"},
         "sorvaned: --kind: week not in {archive,hour,day,month,span}\n"},
        {{"import"}, "sorvaned: FILE is required\n"},
        {{"acknowledge"}, "sorvaned: NAME is required\n"},
        {{"values", "A", "B"}, "sorvaned: unknown word B (sorvaned --help lists all)\n"},
        {{"--config"}, "sorvaned: --config: 1 required FILE missing\n"},
        {{"--log-level", "x"}, "sorvaned: --log-level: Value x not in range 0 to 3\n"},
    };
    for (const Row& row : rows) {
        const sorvaned::SorvanedLine line = sorvaned::ParseSorvanedLine(row.arguments);
        EXPECT_EQ(line.exitStatus, 2);
        EXPECT_EQ(line.message, row.message);
    }
}

TEST(SorvanedOptionsTest, VersionIsOneLine) {
    const sorvaned::SorvanedLine line = sorvaned::ParseSorvanedLine({"--version"});
    EXPECT_EQ(line.exitStatus, 0);
    EXPECT_EQ(line.message, "sorvaned " KALVEX_VERSION "\n");
    EXPECT_EQ(sorvaned::ParseSorvanedLine({"-V"}).message, line.message);
}

TEST(SorvanedOptionsTest, HelpTellsOfTheProgramAndOfItsEnd) {
    const sorvaned::SorvanedLine line = sorvaned::ParseSorvanedLine({"--help"});
    EXPECT_EQ(line.exitStatus, 0);
    EXPECT_EQ(sorvaned::ParseSorvanedLine({"-h"}).message, line.message);
    const std::vector<std::string> lines = Lines(line.message);
    ASSERT_GT(lines.size(), 3u);
    EXPECT_EQ(lines.front(), "A data server: keeps variables and gives them to its clients.");
    EXPECT_THAT(std::vector(lines.end() - 2, lines.end()),
                ElementsAre("Exit status: 0 done, or ended by SIGTERM or SIGINT; "
                            "1 a fault of the configuration,",
                            "of the store, of the users, of a backup or of an import, or no "
                            "server; 2 wrong usage."));
}

TEST(SorvanedOptionsTest, HelpOfACommandIsItsOwn) {
    const std::string options = "\nOptions:\n  -h,--help                   Print this and exit\n";
    const std::string name =
        "\nPositionals:\n  NAME TEXT REQUIRED          The user's name\n" + options;
    const std::string end =
        "\nExit status: 0 done, or ended by SIGTERM or SIGINT; 1 a fault of the configuration,\n"
        "of the store, of the users, of a backup or of an import, or no server; 2 wrong usage.\n";
    struct Row {
        std::vector<std::string> command;
        std::string help;
    };
    const Row rows[] = {
        {{},
         "A data server: keeps variables and gives them to its clients.\n"
         "Usage: sorvaned [OPTIONS] [SUBCOMMAND]\n" +
             options +
             "  -V,--version                Print the version and exit\n"
             "  --config FILE               The configuration (/etc/sorvane/sorvaned.toml)\n"
             "  --log-level N:INT in [0 - 3]\n"
             "                              Log: 0 always, 1 errors, 2 events, 3 transmission (2)\n"
             "  --metrics ADDRESS           Figures for Prometheus: 127.0.0.1:9464, [::1]:9464, or "
             "the "
             "path of a socket (none)\n"
             "  --check                     Tell what is wrong with the configuration and exit\n"
             "\nSubcommands:\n"
             "  user                        Manage the users\n"
             "  backup                      Save store, users and configuration, also of a server "
             "that runs\n"
             "  history                     Tell who wrote a value and when: kind, time, when "
             "written, user, client, address, value,\n"
             "                              status, separated by tabs\n"
             "  alarms                      Tell the journal of alarms: variable, stage, began, "
             "value, ended, acknowledged, user, client,\n"
             "                              address, separated by tabs\n"
             "  acknowledge                 Acknowledge the alarms of variables of a server that "
             "runs, and tell whose they were\n"
             "  values                      Tell the current values of a server that runs: name, "
             "value, status, time, separated by tabs\n"
             "  export                      Tell archive values or reports: name, kind, time, "
             "value, status, separated by tabs\n"
             "  import                      Tell what a file would change, and what is wrong with "
             "it\n"
             "  check                       Check the store (--check: the configuration), and "
             "tell what each variable has in it\n"},
        {{"user"},
         "Manage the users\nUsage: sorvaned user [OPTIONS] SUBCOMMAND\n" + options +
             "\nSubcommands:\n"
             "  add                         Add a user\n"
             "  list                        List the users: name, level, groups, addresses, "
             "description, separated by tabs\n"
             "  passwd                      Give a user another password\n"
             "  remove                      Remove a user\n"},
        {{"user", "add"},
         "Add a user\nUsage: sorvaned user add [OPTIONS] NAME\n" + name +
             "  --level N                   From 0 to 100, an administrator's (0)\n"
             "  --group GROUP ...           A group that the user belongs to; repeatable\n"
             "  --address RANGE ...         Where the user may come from (10.1.2.3, 10.1.0.0/16); "
             "repeatable\n"
             "  --description TEXT          For people\n"},
        {{"user", "list"},
         "List the users: name, level, groups, addresses, description, separated by tabs\n"
         "Usage: sorvaned user list [OPTIONS]\n" +
             options},
        {{"user", "passwd"},
         "Give a user another password\nUsage: sorvaned user passwd [OPTIONS] NAME\n" + name},
        {{"user", "remove"}, "Remove a user\nUsage: sorvaned user remove [OPTIONS] NAME\n" + name},
        {{"import"},
         "Tell what a file would change, and what is wrong with it\n"
         "Usage: sorvaned import [OPTIONS] FILE\n"
         "\nPositionals:\n  FILE TEXT REQUIRED          A CSV file as export makes it\n" +
             options +
             "  --write                     Write what is new or changed, by way of the server "
             "that runs\n"
             "  --user NAME                 Whose rights count; NOBODY unless given\n"
             "  --json                      As JSON\n"},
        {{"values"},
         "Tell the current values of a server that runs: name, value, status, time, separated by "
         "tabs\nUsage: sorvaned values [OPTIONS] [PATTERN]\n"
         "\nPositionals:\n  PATTERN TEXT                Their names, with * and ?; all unless "
         "given\n" +
             options +
             "  --watch                     Go on with each change\n"
             "  --user NAME                 Log in, the password is asked for; NOBODY unless "
             "given\n"
             "  --json                      As JSON\n"},
        {{"backup"},
         "Save store, users and configuration, also of a server that runs\n"
         "Usage: sorvaned backup [OPTIONS] FOLDER\n"
         "\nPositionals:\n  FOLDER TEXT REQUIRED        A folder that is not there yet\n" +
             options + "  --json                      As JSON\n"},
        {{"history"},
         "Tell who wrote a value and when: kind, time, when written, user, client, address, "
         "value,\n"
         "status, separated by tabs\n"
         "Usage: sorvaned history [OPTIONS] VARIABLE\n"
         "\nPositionals:\n  VARIABLE TEXT REQUIRED      Its name\n" +
             options +
             "  --at TIME                   Archive value and reports that count at YYYY-MM-DD "
             "HH:MM:SS instead of the current value\n"
             "  --versions                  What stood there before, too, the latest first\n"
             "  --json                      As JSON\n"},
        {{"alarms"},
         "Tell the journal of alarms: variable, stage, began, value, ended, acknowledged, user, "
         "client,\naddress, separated by tabs\n"
         "Usage: sorvaned alarms [OPTIONS] [PATTERN]\n"
         "\nPositionals:\n  PATTERN TEXT                Their names, with * and ?; all unless "
         "given\n" +
             options +
             "  --active                    Those alone that stand or are not acknowledged\n"
             "  --from TIME                 Those that began at YYYY-MM-DD HH:MM:SS or later\n"
             "  --to TIME                   Those that began at that time or before\n"
             "  --json                      As JSON\n"},
        {{"acknowledge"},
         "Acknowledge the alarms of variables of a server that runs, and tell whose they were\n"
         "Usage: sorvaned acknowledge [OPTIONS] NAME...\n"
         "\nPositionals:\n  NAME TEXT ... REQUIRED      Their names, with * and ?\n" +
             options +
             "  --user NAME                 Log in, the password is asked for; NOBODY unless "
             "given\n"
             "  --json                      As JSON\n"},
    };
    for (Row row : rows) {
        row.command.emplace_back("--help");
        const sorvaned::SorvanedLine line = sorvaned::ParseSorvanedLine(row.command);
        EXPECT_EQ(line.exitStatus, 0);
        EXPECT_EQ(line.message, row.help + end);
    }
}

}  // namespace
}  // namespace kalvex::programs
