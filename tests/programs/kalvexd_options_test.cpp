#include "programs/kalvexd/Options.h"

#include <gmock/gmock.h>
#include <gtest/gtest.h>

namespace kalvex::programs {
namespace {

using testing::ElementsAre;
using testing::IsEmpty;

kalvexd::KalvexdLine Parse(const std::vector<std::string>& arguments) {
    return kalvexd::ParseKalvexdLine(arguments, "/srv");
}

TEST(KalvexdOptionsTest, WithoutOptionsEverythingIsInTheCurrentFolder) {
    const kalvexd::KalvexdLine line = Parse({});
    EXPECT_FALSE(line.exitStatus);
    EXPECT_EQ(line.options.workingDir, "/srv");
    EXPECT_EQ(line.options.logDir, "/srv");
    EXPECT_FALSE(line.options.logStdout);
    EXPECT_THAT(line.options.arguments, IsEmpty());
}

TEST(KalvexdOptionsTest, FoldersAreMadeAbsolute) {
    const kalvexd::KalvexdOptions options =
        Parse({"--working-dir=a/../b/", "--log-dir", "log"}).options;
    EXPECT_EQ(options.workingDir, "/srv/b");
    EXPECT_EQ(options.logDir, "/srv/log");
    EXPECT_EQ(Parse({"--working-dir", "/var/kalvex"}).options.logDir, "/var/kalvex");
    EXPECT_EQ(Parse({"--working-dir", "/"}).options.workingDir, "/");
}

TEST(KalvexdOptionsTest, EverythingElseIsForTheModule) {
    const kalvexd::KalvexdOptions options =
        Parse({"/D:5", "--log-stdout", "-INST", "2", "/ZZ", "/srv/a.kx"}).options;
    EXPECT_TRUE(options.logStdout);
    EXPECT_THAT(options.arguments, ElementsAre("/D:5", "-INST", "2", "/ZZ", "/srv/a.kx"));
}

TEST(KalvexdOptionsTest, WhatNobodyKnowsIsRefusedWithAHint) {
    const auto refused = [](const std::vector<std::string>& arguments) {
        const kalvexd::KalvexdLine line = Parse(arguments);
        EXPECT_EQ(line.exitStatus, 2);
        return line.message;
    };
    const std::string list = " (kalvexd --help lists the options)\n";
    EXPECT_EQ(refused({"--log-level", "2"}), "kalvexd: unknown option --log-level" + list);
    EXPECT_EQ(refused({"/D:5", "--log-stdaut=1"}),
              "kalvexd: unknown option --log-stdaut, did you mean --log-stdout?" + list);
    EXPECT_EQ(refused({"-v"}), "kalvexd: unknown option -v" + list);
    const std::string hint =
        ": the profile names the scripts, kalvex-run runs one at a prompt, kalvexctl asks a "
        "running "
        "module" +
        list;
    EXPECT_EQ(refused({"status"}), "kalvexd: unknown word \"status\"" + hint);
    EXPECT_EQ(refused({"foo.kx"}), "kalvexd: unknown word \"foo.kx\"" + hint);
}

TEST(KalvexdOptionsTest, CheckIsDoneInsteadOfTheService) {
    EXPECT_FALSE(Parse({}).options.check);
    EXPECT_TRUE(Parse({"--check", "/INST:2"}).options.check);
}

TEST(KalvexdOptionsTest, SourcesAreManagedInsteadOfTheService) {
    EXPECT_FALSE(Parse({}).options.source);
    const std::optional<kalvexd::SourceOrder> added =
        Parse({"--add-source", "Gaz,ewa"}).options.source;
    ASSERT_TRUE(added);
    EXPECT_EQ(added->task, kalvexd::SourceTask::Add);
    EXPECT_EQ(added->name, "Gaz");
    EXPECT_EQ(added->user, "ewa");
    const std::optional<kalvexd::SourceOrder> removed =
        Parse({"--remove-source=Gaz"}).options.source;
    ASSERT_TRUE(removed);
    EXPECT_EQ(removed->task, kalvexd::SourceTask::Remove);
    EXPECT_EQ(removed->name, "Gaz");
    const std::optional<kalvexd::SourceOrder> listed = Parse({"--list-sources"}).options.source;
    ASSERT_TRUE(listed);
    EXPECT_EQ(listed->task, kalvexd::SourceTask::List);
    const std::optional<kalvexd::SourceOrder> protect = Parse({"--protect"}).options.source;
    ASSERT_TRUE(protect);
    EXPECT_EQ(protect->task, kalvexd::SourceTask::Protect);
}

TEST(KalvexdOptionsTest, FiguresAreOfferedWhereTheyShould) {
    EXPECT_EQ(Parse({}).options.metrics, "");
    EXPECT_EQ(Parse({"--metrics", "[::1]:9464"}).options.metrics, "[::1]:9464");
}

TEST(KalvexdOptionsTest, WrongUsageEndsTheProcess) {
    EXPECT_EQ(Parse({"--log-dir"}).exitStatus, 2);
    EXPECT_EQ(Parse({"--log-dir="}).message, "kalvexd: --log-dir needs a value\n");
    EXPECT_EQ(Parse({"--log-stdout=1"}).message, "kalvexd: --log-stdout takes no value\n");
}

TEST(KalvexdOptionsTest, HelpAndVersionEndTheProcessWell) {
    EXPECT_EQ(Parse({"/D:5", "--help"}).exitStatus, 0);
    EXPECT_EQ(Parse({"--version"}).exitStatus, 0);
    EXPECT_EQ(Parse({"--version"}).message, "kalvexd " KALVEX_VERSION "\n");
    EXPECT_EQ(Parse({"status", "-V"}).message, "kalvexd " KALVEX_VERSION "\n");
    EXPECT_EQ(Parse({"-h"}).exitStatus, 0);
    EXPECT_EQ(Parse({"-h"}).message, Parse({"--help"}).message);
    EXPECT_NE(Parse({"-h"}).message.find("  -V,--version              Print the version and exit\n"
                                         "  -h,--help                 Print this and exit\n\n"),
              std::string::npos);
}

}  // namespace
}  // namespace kalvex::programs
