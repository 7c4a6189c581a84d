#include <gmock/gmock.h>
#include <sys/stat.h>

#include <filesystem>

#include "engine/script_lines.h"

namespace kalvex::engine {
namespace {

using testing::ElementsAre;
using testing::ElementsAreArray;
using testing::IsEmpty;

class ScriptPreparationTest : public ScriptLines {
  protected:
    // The bytes are written as they are.
    void Write(const std::string& name, std::string_view bytes) {
        std::string error;
        ASSERT_TRUE(platform::WriteWholeFile(folder.Path(name), bytes, error)) << error;
    }

    void OpenScript(std::string_view bytes) {
        Write("main.kx", bytes);
        std::string error;
        ASSERT_TRUE(document.Open("main.kx", error)) << error;
    }

    bool Expand(std::string_view bytes) {
        OpenScript(bytes);
        return document.ExpandIncludes(true);
    }

    std::string Path(const std::string& name) const { return folder.Path() + '/' + name; }
    std::string Begin(const std::string& name) const {
        return "; BEGIN -> INCLUDE " + Path(name) + " */";
    }
    std::string End(const std::string& name) const {
        return "; END -> INCLUDE " + Path(name) + " */";
    }

    std::vector<std::string> Lines() const {
        std::vector<std::string> lines;
        for (int i = 0; i < document.Text().GetLineCount(); ++i) {
            lines.emplace_back(document.Text().GetLine(i));
        }
        return lines;
    }
};

TEST_F(ScriptPreparationTest, IncludedLinesTakeThePlaceOfTheStatement) {
    Write("dod.kx", "LOCAL B\r\nLOCAL C\r\n");
    EXPECT_TRUE(Expand("LOCAL A\r\nINCLUDE dod.kx\r\nLOCAL D"));
    EXPECT_THAT(Lines(), ElementsAre("LOCAL A", Begin("dod.kx"), "LOCAL B", "LOCAL C",
                                     End("dod.kx"), "LOCAL D"));
    EXPECT_TRUE(document.State().m_bIncludesExpanded);
    EXPECT_FALSE(document.IsModified());
}

TEST_F(ScriptPreparationTest, StatementOnTheLastLineIsFollowedByTheText) {
    Write("dod.kx", "LOCAL B");
    EXPECT_TRUE(Expand("LOCAL A\r\nINCLUDE dod.kx"));
    EXPECT_THAT(Lines(), ElementsAre("LOCAL A", Begin("dod.kx"), "LOCAL B", End("dod.kx"), ""));
}

TEST_F(ScriptPreparationTest, EmptyFileGivesItsTwoMarkers) {
    Write("pusty.kx", "");
    EXPECT_TRUE(Expand("INCLUDE pusty.kx\r\nLOCAL A"));
    EXPECT_THAT(Lines(), ElementsAre(Begin("pusty.kx"), End("pusty.kx"), "LOCAL A"));
}

TEST_F(ScriptPreparationTest, LineEndAtTheEndOfAFileMakesNoLine) {
    Write("z.kx", "a\nb\n");
    Write("bez.kx", "a\nb");
    Write("puste.kx", "\n\n");
    EXPECT_TRUE(Expand("INCLUDE z.kx\nINCLUDE bez.kx\nINCLUDE puste.kx\n"));
    EXPECT_THAT(Lines(),
                ElementsAre(Begin("z.kx"), "a", "b", End("z.kx"), Begin("bez.kx"), "a", "b",
                            End("bez.kx"), Begin("puste.kx"), "", "", End("puste.kx"), ""));
}

TEST_F(ScriptPreparationTest, BytesOfAFileStayAsTheyAre) {
    using namespace std::string_literals;
    // Undefined and Polish bytes, a NUL, tabs, and carriage returns that end no line.
    Write("b.kx", "\x81\xB9\xFF\t \0x\r\nsam\rCR\r\r\nkoniec\r"s);
    EXPECT_TRUE(Expand("INCLUDE b.kx\r\nLOCAL A"));
    EXPECT_THAT(Lines(), ElementsAre(Begin("b.kx"), "\x81\xB9\xFF\t \0x"s, "sam\rCR\r", "koniec\r",
                                     End("b.kx"), "LOCAL A"));
}

TEST_F(ScriptPreparationTest, ByteOrderMarkIsNotUnderstood) {
    Write("bom.kx", "\xEF\xBB\xBFLOCAL A\r\n");
    EXPECT_TRUE(Expand("INCLUDE bom.kx"));
    EXPECT_EQ(Lines()[1], "\xEF\xBB\xBFLOCAL A");
}

TEST_F(ScriptPreparationTest, PathLosesQuotesAndOuterBlanksOnly) {
    folder.MakeFolder("moje dane");
    Write("moje dane/plik z danymi.kx", "LOCAL A\r\n");
    for (const char* line :
         {"Include   \"moje dane/plik z danymi.kx\"  ",
          "\tINCLUDE\t\" moje dane/plik z danymi.kx\"", "include moje dane\\plik z danymi.kx \t"}) {
        EXPECT_TRUE(Expand(line));
        EXPECT_THAT(Lines(), ElementsAre(Begin("moje dane/plik z danymi.kx"), "LOCAL A",
                                         End("moje dane/plik z danymi.kx"), ""))
            << line;
    }
}

TEST_F(ScriptPreparationTest, PathIsMadeAbsolute) {
    folder.MakeFolder("a");
    Write("dod.kx", "LOCAL A\r\n");
    EXPECT_TRUE(Expand("INCLUDE a/../dod.kx\r\nINCLUDE " + Path("dod.kx") + "\r\n"));
    EXPECT_THAT(Lines(), ElementsAre(Begin("dod.kx"), "LOCAL A", End("dod.kx"), Begin("dod.kx"),
                                     "LOCAL A", End("dod.kx"), ""));
}

TEST_F(ScriptPreparationTest, PolishNameIsFoundInTheFileSystem) {
    Write("źródło.kx", "LOCAL A\r\n");
    EXPECT_TRUE(Expand(text::FromUtf8("INCLUDE źródło.kx")));
    EXPECT_THAT(Lines(), ElementsAre(text::FromUtf8(Begin("źródło.kx")), "LOCAL A",
                                     text::FromUtf8(End("źródło.kx")), ""));
}

TEST_F(ScriptPreparationTest, MissingFileLeavesALineThatFails) {
    EXPECT_TRUE(Expand("INCLUDE nie_ma.kx\r\nLOCAL A"));
    EXPECT_THAT(Lines(), ElementsAre(Begin("nie_ma.kx"),
                                     "ERROR - file \"" + Path("nie_ma.kx") + "\" not found",
                                     End("nie_ma.kx"), "LOCAL A"));
    EXPECT_TRUE(document.State().m_bIncludesExpanded);
    document.Resume();
    EXPECT_FALSE(GoOn());
    EXPECT_EQ(Failure(), "2: 1 ERROR");
}

TEST_F(ScriptPreparationTest, FileThatCannotBeReadIsToldWithItsLineButNotByAConsole) {
    Write("dod.kx", "LOCAL A\r\nLOCAL B\r\n");
    Expand("INCLUDE dod.kx\r\nINCLUDE nie_ma.kx");
    EXPECT_THAT(Log(), ElementsAre("main.kx : Nie można odczytać pliku " + Path("nie_ma.kx") +
                                   " (No such file or directory), INCLUDE w wierszu 5"));
    log.lines.clear();
    services.consoleClient = true;
    Expand("INCLUDE nie_ma.kx");
    EXPECT_THAT(Log(), IsEmpty());
}

TEST_F(ScriptPreparationTest, FolderIsNoFile) {
    folder.MakeFolder("a");
    EXPECT_TRUE(Expand("INCLUDE a"));
    EXPECT_THAT(Lines(), ElementsAre(Begin("a"), "ERROR - file \"" + Path("a") + "\" not found",
                                     End("a"), ""));
}

TEST_F(ScriptPreparationTest, PipeIsNoFileAndNothingWaitsForIt) {
    ASSERT_EQ(mkfifo(Path("rura").c_str(), 0600), 0);
    EXPECT_TRUE(Expand("INCLUDE rura"));
    EXPECT_THAT(Lines(),
                ElementsAre(Begin("rura"), "ERROR - file \"" + Path("rura") + "\" not found",
                            End("rura"), ""));
    std::string error;
    EXPECT_FALSE(document.Open("rura", error));
    EXPECT_EQ(error, "Not a regular file");
}

TEST_F(ScriptPreparationTest, MissingPathIsTheWorkingFolder) {
    EXPECT_TRUE(Expand("INCLUDE\r\n"));
    EXPECT_THAT(Lines(),
                ElementsAre(Begin(""), "ERROR - file \"" + Path("") + "\" not found", End(""), ""));
}

TEST_F(ScriptPreparationTest, FileThatBreaksEndsTheExpansion) {
    Write("dod.kx", "LOCAL B\r\n");
    // The system opens this file and cannot read its beginning.
    EXPECT_FALSE(Expand("LOCAL A\r\nINCLUDE /proc/self/mem\r\nINCLUDE dod.kx"));
    EXPECT_THAT(Lines(), ElementsAre("LOCAL A", "; BEGIN -> INCLUDE /proc/self/mem */",
                                     "ERROR - file \"/proc/self/mem\" %sInput/output error",
                                     "INCLUDE dod.kx"));
    EXPECT_FALSE(document.State().m_bIncludesExpanded);
}

TEST_F(ScriptPreparationTest, StartGoesOnWithATextThatBroke) {
    OpenScript("INCLUDE /proc/self/mem\r\nLOCAL A");
    EXPECT_TRUE(document.Start());
    EXPECT_TRUE(document.State().m_bRunning);
    EXPECT_FALSE(document.State().m_bIncludesExpanded);
    EXPECT_FALSE(GoOn());
    EXPECT_EQ(Failure(), "2: 1 ERROR");
}

TEST_F(ScriptPreparationTest, IncludeInAnIncludedFileStays) {
    Write("a.kx", "INCLUDE a.kx\r\n");
    EXPECT_TRUE(Expand("INCLUDE a.kx\r\nLOCAL A"));
    EXPECT_THAT(Lines(), ElementsAre(Begin("a.kx"), "INCLUDE a.kx", End("a.kx"), "LOCAL A"));
    document.Resume();
    EXPECT_FALSE(GoOn());
    EXPECT_EQ(Failure(), "2: 1 INCLUDE");
}

TEST_F(ScriptPreparationTest, CommentedIncludeStays) {
    EXPECT_TRUE(Expand(";INCLUDE a.kx\r\n; INCLUDE a.kx"));
    EXPECT_THAT(Lines(), ElementsAre(";INCLUDE a.kx", "; INCLUDE a.kx"));
}

TEST_F(ScriptPreparationTest, IncludedProcedureAndLabelAreFound) {
    Write("proc.kx", "PROCEDURE f(x)\nBEGIN\nSET x = 5\nEND\n:z_pliku\n");
    EXPECT_TRUE(Expand("LOCAL A\r\nCALL f(A)\r\nGOTO z_pliku\r\nINCLUDE proc.kx"));
    document.Resume();
    EXPECT_TRUE(GoOn());
    EXPECT_TRUE(Finished());
    EXPECT_EQ(Value(document, "A"), "171:5.00");
}

TEST_F(ScriptPreparationTest, ErrorsCountTheLinesOfTheExpandedText) {
    Write("dod.kx", "LOCAL B\r\nLOCAL C\r\n");
    OpenScript("INCLUDE dod.kx\r\nFOO");
    EXPECT_TRUE(document.Start());
    EXPECT_FALSE(GoOn());
    EXPECT_EQ(Failure(), "5: 1 FOO");
}

TEST_F(ScriptPreparationTest, ReloadBringsTheFilesTextBack) {
    Write("dod.kx", "LOCAL B\r\n");
    EXPECT_TRUE(Expand("INCLUDE dod.kx\r\n"));
    Write("main.kx", "LOCAL A\r\n");
    document.SetModified(true);
    EXPECT_TRUE(document.ExpandIncludes(false));
    EXPECT_THAT(Lines(), ElementsAre("LOCAL A", ""));
    EXPECT_FALSE(document.State().m_bIncludesExpanded);
    EXPECT_FALSE(document.IsModified());
}

TEST_F(ScriptPreparationTest, TextStaysWhenTheScriptsOwnFileIsGone) {
    Write("dod.kx", "LOCAL B\r\n");
    OpenScript("INCLUDE dod.kx\r\nLOCAL A");
    std::filesystem::remove(folder.Path("main.kx"));
    EXPECT_TRUE(document.ExpandIncludes(true));
    EXPECT_THAT(Lines(), ElementsAre(Begin("dod.kx"), "LOCAL B", End("dod.kx"), "LOCAL A"));
    EXPECT_THAT(Log(), ElementsAre("main.kx : No such file or directory"));
}

TEST_F(ScriptPreparationTest, ResumeExpandsNothing) {
    Write("dod.kx", "LOCAL B\r\n");
    OpenScript("INCLUDE dod.kx\r\nLOCAL A");
    EXPECT_TRUE(document.Start());
    document.Stop();
    Write("dod.kx", "LOCAL C\r\nLOCAL D\r\n");
    EXPECT_TRUE(document.Start());
    EXPECT_THAT(Lines(), ElementsAre(Begin("dod.kx"), "LOCAL B", End("dod.kx"), "LOCAL A"));
}

TEST_F(ScriptPreparationTest, ResetAndFailedStructureUndoTheExpansion) {
    Write("dod.kx", "ENDIF\r\n");
    OpenScript("INCLUDE dod.kx\r\nLOCAL A");
    EXPECT_FALSE(document.Start());
    EXPECT_THAT(Lines(), ElementsAre("INCLUDE dod.kx", "LOCAL A"));
    EXPECT_FALSE(document.State().m_bIncludesExpanded);

    Write("dod.kx", "LOCAL B\r\n");
    EXPECT_TRUE(document.Start());
    EXPECT_EQ(Lines().size(), 4u);
    document.Reset();
    EXPECT_THAT(Lines(), ElementsAre("INCLUDE dod.kx", "LOCAL A"));
    EXPECT_FALSE(document.State().m_bIncludesExpanded);
}

TEST_F(ScriptPreparationTest, LargeFileIsInsertedInOrder) {
    std::string bytes;
    std::vector<std::string> wanted{Begin("duzy.kx")};
    for (int i = 0; i < 20000; ++i) {
        wanted.push_back("; wiersz " + std::to_string(i));
        bytes += wanted.back() + "\r\n";
    }
    wanted.push_back(End("duzy.kx"));
    wanted.emplace_back("LOCAL A");
    Write("duzy.kx", bytes);
    EXPECT_TRUE(Expand("INCLUDE duzy.kx\r\nLOCAL A"));
    EXPECT_THAT(Lines(), ElementsAreArray(wanted));
}

TEST_F(ScriptPreparationTest, VariablesOfAServerAreDeclared) {
    sources.servers["srv"] = {"Z1.PRZEPLYW", "Z1 CISN 2", "Z2"};
    EXPECT_TRUE(Expand("INCLUDE_VAR srv\r\nLOCAL A"));
    EXPECT_THAT(Lines(),
                ElementsAre("; BEGIN -> INCLUDE_VAR srv */", "REMOTE Z1_PRZEPLYW srv@Z1.PRZEPLYW",
                            "REMOTE Z1_CISN_2 srv@Z1 CISN 2", "REMOTE Z2 srv@Z2",
                            "; END -> INCLUDE_VAR srv */", "LOCAL A"));
    EXPECT_TRUE(document.State().m_bIncludesExpanded);
}

TEST_F(ScriptPreparationTest, LocalNameIsTrimmed) {
    sources.servers["srv"] = {"\tZ1\r"};
    EXPECT_TRUE(Expand("INCLUDE_VAR srv\r\nLOCAL A"));
    EXPECT_EQ(Lines()[1], "REMOTE Z1 srv@\tZ1\r");
}

TEST_F(ScriptPreparationTest, FilterTakesWholeNamesInAnyCase) {
    sources.servers["srv"] = {"Z1.A", "z1.b", "Z2.A", "XZ1.A", "Z1"};
    EXPECT_TRUE(Expand("include_var srv Z1.?\r\n"));
    EXPECT_THAT(Lines(), ElementsAre("; BEGIN -> INCLUDE_VAR srv */", "REMOTE Z1_A srv@Z1.A",
                                     "REMOTE z1_b srv@z1.b", "; END -> INCLUDE_VAR srv */", ""));
}

TEST_F(ScriptPreparationTest, UnknownServerGivesTheTwoMarkers) {
    EXPECT_TRUE(Expand("INCLUDE_VAR inny Z*\r\n"));
    EXPECT_THAT(Lines(),
                ElementsAre("; BEGIN -> INCLUDE_VAR inny */", "; END -> INCLUDE_VAR inny */", ""));
}

TEST_F(ScriptPreparationTest, ProcessWithoutSourcesGivesTheTwoMarkers) {
    services.sources = nullptr;
    EXPECT_TRUE(Expand("INCLUDE_VAR srv\r\n"));
    EXPECT_THAT(Lines(),
                ElementsAre("; BEGIN -> INCLUDE_VAR srv */", "; END -> INCLUDE_VAR srv */", ""));
}

TEST_F(ScriptPreparationTest, MissingServerLeavesTheStatementAndALineBehindIt) {
    EXPECT_TRUE(Expand("INCLUDE_VAR\r\nLOCAL A"));
    EXPECT_THAT(Lines(), ElementsAre("INCLUDE_VAR", "ERROR - source \"\" not found", "LOCAL A"));
    document.Resume();
    EXPECT_FALSE(GoOn());
    EXPECT_EQ(Failure(), "1: 1 INCLUDE_VAR");
}

}  // namespace
}  // namespace kalvex::engine
