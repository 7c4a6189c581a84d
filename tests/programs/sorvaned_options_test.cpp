#include "programs/sorvaned/Options.h"

#include <gmock/gmock.h>
#include <gtest/gtest.h>

#include <sstream>
#include <string>
#include <vector>

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

TEST(SorvanedOptionsTest, WrongUsageIsTold) {
    struct Row {
        std::vector<std::string> arguments;
        const char* message;
    };
    const Row rows[] = {
        {{"user", "add"}, "sorvaned: NAME is required\n"},
        {{"backup"}, "sorvaned: FOLDER is required\n"},
        {{"backup", "a", "b"}, "sorvaned: The following argument was not expected: b\n"},
        {{"user"}, "sorvaned: A subcommand is required\n"},
        {{"--log-level", "4"}, "sorvaned: --log-level: Value 4 not in range 0 to 3\n"},
        {{"serve"}, "sorvaned: The following argument was not expected: serve\n"},
        {{"user", "list", "adam"}, "sorvaned: The following argument was not expected: adam\n"},
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
                            "of the store, of the users or of a backup; 2 wrong usage."));
}

TEST(SorvanedOptionsTest, HelpOfACommandIsItsOwn) {
    const sorvaned::SorvanedLine line = sorvaned::ParseSorvanedLine({"user", "add", "--help"});
    EXPECT_EQ(line.exitStatus, 0);
    const std::vector<std::string> lines = Lines(line.message);
    ASSERT_GT(lines.size(), 1u);
    EXPECT_EQ(lines[0], "Add a user");
    EXPECT_EQ(lines[1], "Usage: sorvaned user add [OPTIONS] NAME");
}

}  // namespace
}  // namespace kalvex::programs
