#include "programs/sorvaned/Options.h"

#include <gmock/gmock.h>
#include <gtest/gtest.h>

#include "text/CodePage.h"

namespace kalvex {
namespace {

using testing::ElementsAre;
using testing::IsEmpty;

SorvanedOptions Parsed(std::vector<std::string> arguments) {
    const SorvanedLine line = ParseSorvanedLine(std::move(arguments));
    EXPECT_FALSE(line.exitStatus) << line.message;
    return line.options;
}

TEST(SorvanedOptionsTest, ServesUnlessToldOtherwise) {
    const SorvanedOptions options = Parsed({});
    EXPECT_EQ(options.task, SorvanedTask::Serve);
    EXPECT_EQ(options.configuration, "/etc/sorvane/sorvaned.toml");
    EXPECT_EQ(options.logLevel, 2);
    EXPECT_EQ(Parsed({"--config", "a.toml", "--log-level", "3"}).configuration, "a.toml");
    EXPECT_EQ(Parsed({"--log-level", "3"}).logLevel, 3);
    EXPECT_EQ(Parsed({"--check"}).task, SorvanedTask::Check);
}

TEST(SorvanedOptionsTest, UserHasItsAttributes) {
    const SorvanedOptions options =
        Parsed({"--config", "a.toml", "user", "add", "Żaneta", "--level", "50", "--group", "gaz",
                "--group", "zmiana A", "--address", "10.0.0.0/8", "--description", "Główna"});
    EXPECT_EQ(options.task, SorvanedTask::AddUser);
    EXPECT_EQ(options.user.name, FromUtf8("Żaneta"));
    EXPECT_EQ(options.user.level, 50);
    EXPECT_THAT(options.user.groups, ElementsAre("gaz", "zmiana A"));
    EXPECT_THAT(options.user.addresses, ElementsAre("10.0.0.0/8"));
    EXPECT_EQ(options.user.description, FromUtf8("Główna"));
}

TEST(SorvanedOptionsTest, GroupTakesOneWord) {
    const SorvanedOptions options = Parsed({"user", "add", "--group", "gaz", "adam"});
    EXPECT_EQ(options.user.name, "adam");
    EXPECT_THAT(options.user.groups, ElementsAre("gaz"));
    EXPECT_EQ(options.user.level, 0);
    EXPECT_THAT(options.user.addresses, IsEmpty());
}

TEST(SorvanedOptionsTest, OtherTasksWithUsers) {
    EXPECT_EQ(Parsed({"user", "list"}).task, SorvanedTask::ListUsers);
    EXPECT_EQ(Parsed({"user", "passwd", "adam"}).task, SorvanedTask::ChangePassword);
    EXPECT_EQ(Parsed({"user", "passwd", "adam"}).user.name, "adam");
    const SorvanedOptions options = Parsed({"user", "remove", "adam", "--config", "a.toml"});
    EXPECT_EQ(options.task, SorvanedTask::RemoveUser);
    EXPECT_EQ(options.configuration, "a.toml");
}

TEST(SorvanedOptionsTest, WrongUsageIsTold) {
    struct Row {
        std::vector<std::string> arguments;
        const char* message;
    };
    const Row rows[] = {
        {{"user", "add"}, "sorvaned: NAME is required\n"},
        {{"user"}, "sorvaned: A subcommand is required\n"},
        {{"--log-level", "4"}, "sorvaned: --log-level: Value 4 not in range 0 to 3\n"},
        {{"serve"}, "sorvaned: The following argument was not expected: serve\n"},
        {{"user", "list", "adam"}, "sorvaned: The following argument was not expected: adam\n"},
    };
    for (const Row& row : rows) {
        const SorvanedLine line = ParseSorvanedLine(row.arguments);
        EXPECT_EQ(line.exitStatus, 2);
        EXPECT_EQ(line.message, row.message);
    }
}

TEST(SorvanedOptionsTest, HelpAndVersionAreNoFault) {
    EXPECT_EQ(ParseSorvanedLine({"--help"}).exitStatus, 0);
    EXPECT_EQ(ParseSorvanedLine({"user", "add", "--help"}).exitStatus, 0);
    EXPECT_EQ(ParseSorvanedLine({"--version"}).message.rfind("sorvaned ", 0), 0u);
}

}  // namespace
}  // namespace kalvex
