#include "programs/kalvex/Options.h"

#include <gmock/gmock.h>
#include <gtest/gtest.h>

#include "support/scratch_folder.h"

namespace kalvex::desk {
namespace {

using testing::ElementsAre;
using testing::IsEmpty;

DeskLine Parse(const std::vector<std::string>& arguments) {
    return ParseDeskLine(arguments, "/srv");
}

TEST(KalvexOptionsTest, WithoutOptionsNoFolderIsSaid) {
    const DeskLine line = Parse({});
    EXPECT_FALSE(line.exitStatus);
    EXPECT_EQ(line.options.workingDir, "");
    EXPECT_EQ(line.options.logDir, "");
    EXPECT_THAT(line.options.arguments, IsEmpty());
}

TEST(KalvexOptionsTest, FoldersAreMadeAbsolute) {
    const DeskLine line = Parse({"--working-dir=a/", "--log-dir", "log"});
    EXPECT_EQ(line.options.workingDir, "/srv/a");
    EXPECT_EQ(line.options.logDir, "/srv/log");
    EXPECT_EQ(Parse({"--log-dir", "log"}).options.logDir, "/srv/log");
    EXPECT_EQ(Parse({"--log-dir", "log"}).options.workingDir, "");
    EXPECT_EQ(Parse({"--working-dir", "a"}).options.logDir, "/srv/a");
}

TEST(KalvexOptionsTest, ScriptsAreMadeAbsoluteAndTheRestIsForTheModule) {
    EXPECT_THAT(Parse({"a.kx", "/RC", "/dom/b.KX", "/D:5", "-u.kx"}).options.arguments,
                ElementsAre("/srv/a.kx", "/RC", "/dom/b.KX", "/D:5", "-u.kx"));
}

TEST(KalvexOptionsTest, WhatNobodyKnowsIsRefusedWithAHint) {
    const std::string list = " (kalvex --help lists the options)\n";
    for (const char* word : {"status", "a.txt"}) {
        EXPECT_EQ(Parse({"a.kx", word}).exitStatus, 2);
        EXPECT_EQ(Parse({"a.kx", word}).message, "kalvex: unknown word \"" + std::string(word) +
                                                     "\": the name of a script ends in .kx" + list);
    }
    EXPECT_EQ(Parse({"--log-stdout"}).exitStatus, 2);
    EXPECT_EQ(Parse({"--log-fir", "x"}).message,
              "kalvex: unknown option --log-fir, did you mean --log-dir?" + list);
    EXPECT_THAT(Parse({"/ZZ", "-NOLOGIN"}).options.arguments, ElementsAre("/ZZ", "-NOLOGIN"));
}

TEST(KalvexOptionsTest, WrongUsageAndTheTextsEndTheProgram) {
    EXPECT_EQ(Parse({"--log-dir"}).exitStatus, 2);
    EXPECT_EQ(Parse({"--log-dir"}).message, "kalvex: --log-dir needs a value\n");
    EXPECT_EQ(Parse({"--help=1"}).message, "kalvex: --help takes no value\n");
    EXPECT_EQ(Parse({"--version"}).exitStatus, 0);
    EXPECT_EQ(Parse({"--version"}).message, "kalvex " KALVEX_VERSION "\n");
    EXPECT_EQ(Parse({"-V"}).message, "kalvex " KALVEX_VERSION "\n");
    EXPECT_EQ(Parse({"--help"}).exitStatus, 0);
    EXPECT_EQ(Parse({"-h"}).message, Parse({"--help"}).message);
}

TEST(KalvexOptionsTest, StartOfADesktopWorksInTheFolderOfData) {
    const support::ScratchFolder home;
    EXPECT_EQ(UsualFolder("/praca", "/home/jan", ""), "/praca");
    EXPECT_EQ(UsualFolder(home.Path(), home.Path(), ""), home.Path(".local/share/kalvex"));
    EXPECT_EQ(UsualFolder(home.Path(), home.Path(), "/dane"), "/dane/kalvex");
    EXPECT_EQ(UsualFolder("/", home.Path(), "/dane"), "/dane/kalvex");
    home.Put("Kalvex.ini", "");
    EXPECT_EQ(UsualFolder(home.Path(), home.Path(), "/dane"), home.Path());
}

}  // namespace
}  // namespace kalvex::desk
