#include "programs/kalvex-run/Options.h"

#include <gtest/gtest.h>

#include "support/zone_scope.h"
#include "text/CodePage.h"

namespace kalvex::programs {
namespace {

using Words = std::vector<std::string>;

run::RunOptions Parse(const Words& arguments) {
    const run::CommandLine line = run::ParseCommandLine(arguments);
    EXPECT_EQ(line.exitStatus, std::nullopt) << line.message;
    return line.options;
}

TEST(OptionsTest, Defaults) {
    const run::RunOptions options = Parse({"a.kx"});
    EXPECT_EQ(options.scripts, Words{"a.kx"});
    EXPECT_EQ(options.clock, std::nullopt);
    EXPECT_EQ(options.tickMs, 1);
    EXPECT_EQ(options.ticks, std::nullopt);
    EXPECT_EQ(options.until, std::nullopt);
    EXPECT_EQ(options.plant, std::nullopt);
    EXPECT_EQ(options.actions, std::nullopt);
    EXPECT_EQ(options.profile, std::nullopt);
    EXPECT_EQ(options.userName, "");
    EXPECT_EQ(options.logLevel, std::nullopt);
    EXPECT_FALSE(options.minimised);
    EXPECT_FALSE(options.json);
    EXPECT_FALSE(options.lines);
    EXPECT_FALSE(options.test);
    EXPECT_EQ(options.junit, std::nullopt);
    EXPECT_EQ(options.language, std::nullopt);
}

TEST(OptionsTest, AllAreTaken) {
    const support::ZoneScope zone("Europe/Warsaw");
    const run::RunOptions options = Parse({"--clock",
                                           "2024-03-10 07:00:00",
                                           "--tick-ms",
                                           "10",
                                           "--ticks",
                                           "500",
                                           "--until",
                                           "2024-03-10 08:00:00",
                                           "--minimised",
                                           "--plant",
                                           "p.json",
                                           "--actions",
                                           "a.json",
                                           "--user",
                                           "jan:Jan Żak: dyspozytor",
                                           "--log-level",
                                           "3",
                                           "--json",
                                           "--lines",
                                           "--profile",
                                           "p.ini",
                                           "a.kx",
                                           "b.kx"});
    EXPECT_EQ(options.scripts, (Words{"a.kx", "b.kx"}));
    EXPECT_EQ(options.clock, 1710050400);
    EXPECT_EQ(options.tickMs, 10);
    EXPECT_EQ(options.ticks, 500);
    EXPECT_EQ(options.until, 1710054000);
    EXPECT_EQ(options.plant, "p.json");
    EXPECT_EQ(options.actions, "a.json");
    EXPECT_EQ(options.profile, "p.ini");
    EXPECT_EQ(options.userName, "jan");
    EXPECT_EQ(options.userDescription, text::FromUtf8("Jan Żak: dyspozytor"));
    EXPECT_EQ(options.logLevel, 3);
    EXPECT_TRUE(options.minimised);
    EXPECT_TRUE(options.json);
    EXPECT_TRUE(options.lines);
}

TEST(OptionsTest, ScriptsMayStandBetweenOptions) {
    const run::RunOptions options = Parse({"a.kx", "--json", "b.kx", "--ticks", "5", "c.kx"});
    EXPECT_EQ(options.scripts, (Words{"a.kx", "b.kx", "c.kx"}));
    EXPECT_EQ(options.ticks, 5);
}

TEST(OptionsTest, WhatFollowsTwoDashesIsAScript) {
    EXPECT_EQ(Parse({"--json", "--", "--lines"}).scripts, Words{"--lines"});
}

TEST(OptionsTest, ValueMayFollowAnEqualsSign) {
    EXPECT_EQ(Parse({"--ticks=7", "a.kx"}).ticks, 7);
}

TEST(OptionsTest, LastOfLikeOptionsCounts) {
    EXPECT_EQ(Parse({"--ticks", "5", "--ticks", "6", "a.kx"}).ticks, 6);
}

TEST(OptionsTest, VirtualRunHasALimit) {
    EXPECT_EQ(Parse({"--clock", "2024-03-10 07:00:00", "a.kx"}).ticks, 1000000);
    EXPECT_EQ(Parse({"--clock", "2024-03-10 07:00:00", "--ticks", "0", "a.kx"}).ticks, 0);
}

TEST(OptionsTest, VirtualRunWithATimeToEndHasNoLimitOfItsOwn) {
    const Words times = {"--clock", "2024-03-10 07:00:00", "--until", "2024-03-11 07:00:00",
                         "a.kx"};
    EXPECT_EQ(Parse(times).ticks, std::nullopt);
    Words limited = times;
    limited.insert(limited.end(), {"--ticks", "7"});
    EXPECT_EQ(Parse(limited).ticks, 7);
}

TEST(OptionsTest, Tests) {
    const run::RunOptions options = Parse({"--test", "folder", "--junit", "out.xml", "a.kx"});
    EXPECT_TRUE(options.test);
    EXPECT_EQ(options.junit, "out.xml");
    EXPECT_EQ(options.scripts, (Words{"folder", "a.kx"}));
}

TEST(OptionsTest, WordOfTheLanguageMayBeMissing) {
    EXPECT_EQ(Parse({"--language"}).language, "");
    EXPECT_EQ(Parse({"--language", "SET"}).language, "SET");
    EXPECT_EQ(Parse({"--language=SET"}).language, "SET");
}

TEST(OptionsTest, UserWithoutDescription) {
    const run::RunOptions options = Parse({"--user", "jan", "a.kx"});
    EXPECT_EQ(options.userName, "jan");
    EXPECT_EQ(options.userDescription, "");
}

TEST(OptionsTest, VersionIsOneLine) {
    const run::CommandLine line = run::ParseCommandLine({"--version"});
    EXPECT_EQ(line.exitStatus, 0);
    EXPECT_EQ(line.message, "kalvex-run " KALVEX_VERSION "\n");
    EXPECT_EQ(run::ParseCommandLine({"-V"}).message, line.message);
}

TEST(OptionsTest, HelpNamesEveryOption) {
    const run::CommandLine line = run::ParseCommandLine({"--help"});
    EXPECT_EQ(line.exitStatus, 0);
    EXPECT_EQ(run::ParseCommandLine({"-h"}).message, line.message);
    for (const char* option :
         {"--clock", "--tick-ms", "--ticks", "--until", "--minimised", "--plant", "--actions",
          "--user", "--log-level", "--json", "--lines", "--profile", "--test", "--junit",
          "--language", "-V,--version", "-h,--help"}) {
        EXPECT_NE(line.message.find("\n  " + std::string(option) + " "), std::string::npos)
            << option;
    }
}

struct UsageCase {
    const char* name;
    Words arguments;
    const char* message;
};

class OptionsWrongUsageTest : public testing::TestWithParam<UsageCase> {};

TEST_P(OptionsWrongUsageTest, IsOneLine) {
    const run::CommandLine line = run::ParseCommandLine(GetParam().arguments);
    EXPECT_EQ(line.exitStatus, 2);
    EXPECT_EQ(line.message, GetParam().message);
}

const UsageCase kUsages[] = {
    {"Nothing", {}, "kalvex-run: no script is named\n"},
    {"NoScript", {"--json"}, "kalvex-run: no script is named\n"},
    {"UnknownOption",
     {"--jsn", "a.kx"},
     "kalvex-run: unknown option --jsn, did you mean --json?\n"},
    {"ShortOption", {"a.kx", "-v"}, "kalvex-run: unknown option -v\n"},
    {"Abbreviation", {"a.kx", "--min"}, "kalvex-run: unknown option --min\n"},
    {"ClockWithoutTime", {"a.kx", "--clock"}, "kalvex-run: --clock needs a value\n"},
    {"ClockIsADay",
     {"--clock", "2024-03-10", "a.kx"},
     "kalvex-run: --clock: \"2024-03-10\" is not a time \"YYYY-MM-DD HH:MM:SS\"\n"},
    {"ClockIsNoDay",
     {"--clock", "2024-02-30 07:00:00", "a.kx"},
     "kalvex-run: --clock: \"2024-02-30 07:00:00\" is not a time \"YYYY-MM-DD HH:MM:SS\"\n"},
    {"UntilIsAnHour",
     {"--until", "08:00:00", "a.kx"},
     "kalvex-run: --until: \"08:00:00\" is not a time \"YYYY-MM-DD HH:MM:SS\"\n"},
    {"TicksText",
     {"--ticks", "12x", "a.kx"},
     "kalvex-run: --ticks: \"12x\" is not a whole number of at least 0\n"},
    {"TicksNegative",
     {"--ticks", "-1", "a.kx"},
     "kalvex-run: --ticks: \"-1\" is not a whole number of at least 0\n"},
    {"TicksFraction",
     {"--ticks", "1.5", "a.kx"},
     "kalvex-run: --ticks: \"1.5\" is not a whole number of at least 0\n"},
    {"TicksTooMany",
     {"--ticks", "9223372036854775808", "a.kx"},
     "kalvex-run: --ticks: \"9223372036854775808\" is not a whole number of at least 0\n"},
    {"TickMsZero",
     {"--tick-ms", "0", "a.kx"},
     "kalvex-run: --tick-ms: \"0\" is not a whole number from 1 to 86400000\n"},
    {"LogLevelFour",
     {"--log-level", "4", "a.kx"},
     "kalvex-run: --log-level: \"4\" is not a whole number from 0 to 3\n"},
    {"JUnitWithoutTest", {"--junit", "out.xml", "a.kx"}, "kalvex-run: --junit goes with --test\n"},
    {"TestWithAnOptionOfRuns",
     {"--test", "--until", "2024-03-10 07:00:00", "a.kx"},
     "kalvex-run: --test takes no --until: a script names its own behind \";; run:\"\n"},
    {"TestOfNothing", {"--test"}, "kalvex-run: no script is named\n"},
    {"UserWithoutName", {"--user", ":Jan", "a.kx"}, "kalvex-run: --user: \":Jan\" names nobody\n"},
    {"PlantWithoutFile", {"a.kx", "--plant"}, "kalvex-run: --plant needs a value\n"},
    {"ActionsWithoutFile", {"a.kx", "--actions"}, "kalvex-run: --actions needs a value\n"},
};

INSTANTIATE_TEST_SUITE_P(Options, OptionsWrongUsageTest, testing::ValuesIn(kUsages),
                         [](const auto& info) { return std::string(info.param.name); });

}  // namespace
}  // namespace kalvex::programs
