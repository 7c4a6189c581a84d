#include "host/Programs.h"

#include <gmock/gmock.h>
#include <sys/resource.h>
#include <sys/wait.h>

#include <cerrno>
#include <filesystem>
#include <map>

#include "host/DataFiles.h"
#include "operands/OperandEvaluator.h"
#include "platform/posix/Processes.h"
#include "support/host_world.h"
#include "support/program_end.h"

namespace kalvex::host {
namespace {

using testing::ElementsAre;
using testing::IsEmpty;

// Programs that end when the test says so. Calls are noted as texts.
class FakeProcesses final : public platform::Processes {
  public:
    int Start(const platform::ProgramCall& call, std::string& error) override {
        std::string text = "start " + call.program;
        for (const std::string& word : call.arguments) text += " <" + word + '>';
        if (!call.directory.empty()) text += " in " + call.directory;
        calls.push_back(text);
        error = "nie ma pliku";
        if (failures-- > 0) return 0;
        codes[m_nextId] = kStillActive;
        return m_nextId++;
    }
    void Release(int id) override { calls.push_back("release " + std::to_string(id)); }
    std::optional<int> GetExitCode(int id, std::string& error) override {
        if (unreadable) error = "stan nieznany";
        if (unreadable) return std::nullopt;
        return codes.at(id);
    }
    bool Terminate(int id, int exitCode, std::string& error) override {
        calls.push_back("terminate " + std::to_string(id) + ' ' + std::to_string(exitCode));
        error = "nie można";
        if (codes.at(id) != kStillActive) return false;
        codes[id] = exitCode;
        return true;
    }
    bool RequestClose(int id) override {
        calls.push_back("close " + std::to_string(id));
        return takesRequests;
    }
    void WaitSecond() override {
        ++seconds;
        if (seconds == endsAfter) codes.rbegin()->second = 0;
        if (seconds == readableAfter) unreadable = false;
    }
    bool IsEnding() const override { return seconds == endingAfter; }

    std::vector<std::string> calls;
    std::map<int, int> codes;  // by identifier
    int failures = 0;          // of the next attempts to start
    bool takesRequests = true;
    bool unreadable = false;
    int seconds = 0;
    int endsAfter = -1;
    int readableAfter = -1;
    int endingAfter = -1;

  private:
    int m_nextId = 11;
};

class ProgramsTest : public support::HostWorld {
  protected:
    ProgramsTest() { services.processes = &processes; }
    ~ProgramsTest() override { documents.clear(); }

    // What the script logged, its path and start lines left out.
    std::vector<std::string> Failures() const {
        std::vector<std::string> lines;
        for (const std::string& line : Log()) {
            const std::string path = "main.kx - ";
            if (line.starts_with(path)) lines.push_back(line.substr(path.size()));
        }
        return lines;
    }

    FakeProcesses processes;
};

TEST_F(ProgramsTest, TranslationMayHaveOtherPlacesThanTheText) {
    struct OneText final : platform::Translator {
        std::string Translate(const char*) const override { return text; }
        std::string text;
    } english;
    engine::DocumentServices told{{clock, log, english, users, paths, language::Functions()},
                                  language::Statements(),
                                  questions};
    told.processes = &processes;
    engine::CKalvexDoc script(told);
    script.Text().SetText("TERMINATE_EXEC 17");
    for (const char* text : {"none", "%s|%d|%s|%d", "no %2$d", "100%"}) {
        english.text = text;
        script.JumpTo(0);
        EXPECT_TRUE(script.ExecuteLine());
    }
    EXPECT_THAT(Log(), ElementsAre("none", "|17||", "no 17", "100%"));
}

TEST_F(ProgramsTest, ReadsProgramDirectoryAndParameters) {
    engine::CKalvexDoc& script = Open("");
    const auto read = [&](std::string_view text) {
        const ProgramLine line = ReadProgramLine(script, text, ExecForm::Statement);
        return line.program + '|' + line.directory + '|' + line.parameters;
    };
    EXPECT_EQ(read("notepad.exe -WD C:\\temp a b"), "notepad.exe|C:\\temp|a b ");
    EXPECT_EQ(read("prog a -WD \"gdzie indziej\" b"), "prog|gdzie indziej|a b ");
    EXPECT_EQ(read("\"nasz program\" \"a b\" c"), "nasz program||\"a b\" c ");
    EXPECT_EQ(read("prog -WD x -WD y"), "prog|x|-WD y ");
    EXPECT_EQ(read("prog -WDx y"), "prog||-WDx y ");
    EXPECT_EQ(read("prog -WD"), "prog||");
    EXPECT_EQ(read("-WD x"), "-WD||x ");
    EXPECT_EQ(read(""), "||");
}

TEST_F(ProgramsTest, FunctionKnowsTheDirectoryWordAtTheStartOfAToken) {
    engine::CKalvexDoc& script = Open("");
    const ProgramLine line = ReadProgramLine(script, "prog -WDcokolwiek x y", ExecForm::Function);
    EXPECT_EQ(line.directory, "x");
    EXPECT_EQ(line.parameters, "y ");
}

TEST_F(ProgramsTest, VariablesGiveTheirTexts) {
    engine::CKalvexDoc& script = support::ScriptWorld::Run(
        "LOCAL P = \"prog\"\nLOCAL D = \"-WD kat inne\"\nLOCAL N = 5\nLIST L\n"
        "LOCAL K = \"-WDkat\"\nLOCAL B = \"a b\"");
    const auto read = [&](std::string_view text) {
        const ProgramLine line = ReadProgramLine(script, text, ExecForm::Statement);
        return line.program + '|' + line.directory + '|' + line.parameters;
    };
    EXPECT_EQ(read("P N D x"), "prog|kat|5.00 x ");
    EXPECT_EQ(read("P K D"), "prog|kat|-WD kat inne ");
    EXPECT_EQ(read("P B P.NAME"), "prog||a b P ");
    EXPECT_EQ(read("L P"), "L||prog ");
    EXPECT_EQ(read("P.x N.y"), "P.x||N.y ");
}

TEST(ProgramsSplitParametersTest, QuotesGroupAndGo) {
    EXPECT_THAT(SplitParameters("a  b "), ElementsAre("a", "b"));
    EXPECT_THAT(SplitParameters("\"a b\" c"), ElementsAre("a b", "c"));
    EXPECT_THAT(SplitParameters("x\"a b\"y \"\" z"), ElementsAre("xa by", "", "z"));
    EXPECT_THAT(SplitParameters("\"a b"), ElementsAre("a b"));
    EXPECT_THAT(SplitParameters("'a b' $c \\d"), ElementsAre("'a", "b'", "$c", "\\d"));
    EXPECT_THAT(SplitParameters("  "), IsEmpty());
}

TEST_F(ProgramsTest, StatementStartsAndForgets) {
    EXPECT_EQ(Run({"EXEC prog -WD kat \"a b\" zażółć", "TERMINATE_EXEC 11"}), "done");
    EXPECT_THAT(processes.calls,
                ElementsAre("start prog <a b> <zażółć> in " + PathOf("kat"), "release 11"));
    EXPECT_THAT(Failures(), ElementsAre("Brak procesu o podanym identyfikatorze (Id procesu 11)"));
}

TEST_F(ProgramsTest, PathWithBackslashesCountsAsOneWithSlashes) {
    EXPECT_EQ(Run({"EXEC bin\\prog a\\b -WD ..\\x", "EXEC \"/usr/bin/prog\""}), "done");
    EXPECT_EQ(processes.calls[0], "start " + PathOf("bin/prog") + " <a\\b> in " +
                                      std::filesystem::path(folder.Path()).parent_path().string() +
                                      "/x");
    EXPECT_EQ(processes.calls[2], "start /usr/bin/prog");
}

TEST_F(ProgramsTest, SecondAttemptLeavesTheDirectoryAside) {
    processes.failures = 1;
    EXPECT_EQ(Run({"LOCAL id = EXEC prog -WD kat \"a b\" c"}), "done");
    EXPECT_THAT(processes.calls,
                ElementsAre("start prog <a b> <c> in " + PathOf("kat"), "start prog <a b> <c>"));
    EXPECT_THAT(Failures(), ElementsAre("Błąd uruchomienia programu (1): nie ma pliku (prog)"));
    EXPECT_EQ(Typed("id"), "150:11");
}

TEST_F(ProgramsTest, SecondAttemptCutsTheProgramsTextAsWell) {
    processes.failures = 1;
    EXPECT_EQ(
        Run({"LOCAL p = \"bin\\raport -d 5;touch ZLE\"", "LOCAL id = EXEC p \"R&D.txt\" \"$x\""}),
        "done");
    EXPECT_THAT(
        processes.calls,
        ElementsAre("start " + PathOf("bin/raport -d 5;touch ZLE") + " <R&D.txt> <$x>",
                    "start " + PathOf("bin/raport") + " <-d> <5;touch> <ZLE> <R&D.txt> <$x>"));
    EXPECT_EQ(Typed("id"), "150:11");
}

TEST_F(ProgramsTest, SecondAttemptKeepsAQuotedProgramWhole) {
    processes.failures = 1;
    EXPECT_EQ(Run({"LOCAL id = EXEC \"/opt/Mój program/x\" -WD \"/brak\" \"a b\" c"}), "done");
    EXPECT_THAT(processes.calls, ElementsAre("start /opt/Mój program/x <a b> <c> in /brak",
                                             "start /opt/Mój program/x <a b> <c>"));
    EXPECT_EQ(Typed("id"), "150:11");
}

TEST_F(ProgramsTest, ProgramThatCannotBeStartedIsLoggedTwiceAndStopsNothing) {
    processes.failures = 4;
    EXPECT_EQ(Run({"LOCAL id = 5", "EXEC \"nie ma\\takiego\" a", "SET id = EXEC"}), "done");
    EXPECT_EQ(Text("id"), "0");
    EXPECT_THAT(Failures(),
                ElementsAre("Błąd uruchomienia programu (1): nie ma pliku (nie ma\\takiego)",
                            "Błąd uruchomienia programu (2): nie ma pliku (nie ma\\takiego)",
                            "Błąd uruchomienia programu (1): nie ma pliku ()",
                            "Błąd uruchomienia programu (2): nie ma pliku ()"));
}

TEST_F(ProgramsTest, FunctionsWatchARunningAndAnEndedProgram) {
    EXPECT_EQ(Run({"LOCAL id = EXEC prog", "LOCAL a = CHECK_EXEC_ACTIVITY id",
                   "LOCAL b = GET_EXIT_CODE_EXEC id"}),
              "done");
    EXPECT_EQ(Typed("a"), "150:1");
    EXPECT_EQ(Typed("b"), "150:-100");
    processes.endsAfter = 1;
    EXPECT_EQ(Run({"LOCAL id = EXEC prog", "LOCAL z = CLOSE_EXEC id",
                   "LOCAL a = CHECK_EXEC_ACTIVITY id", "LOCAL b = GET_EXIT_CODE_EXEC id"}),
              "done");
    EXPECT_EQ(Text("z"), "1");
    EXPECT_EQ(Text("a"), "0");
    EXPECT_EQ(Text("b"), "0");
}

TEST_F(ProgramsTest, FunctionsAnswerForStrangersAndForWhatCannotBeRead) {
    processes.unreadable = true;
    EXPECT_EQ(Run({"LOCAL id = EXEC prog", "LOCAL x = id + 0.5", "LOCAL a = CHECK_EXEC_ACTIVITY id",
                   "LOCAL b = GET_EXIT_CODE_EXEC id", "LOCAL c = CHECK_EXEC_ACTIVITY x",
                   "LOCAL d = GET_EXIT_CODE_EXEC 12345", "LOCAL e = TERMINATE_EXEC 12345 1",
                   "LOCAL f = CLOSE_EXEC 12345 0 1", "LOCAL g = CHECK_EXEC_ACTIVITY brak",
                   "LOCAL h = GET_EXIT_CODE_EXEC brak"}),
              "done");
    const std::map<const char*, std::string> expected = {{"a", "-1"}, {"b", "-1"}, {"c", "-2"},
                                                         {"d", "-2"}, {"e", "-2"}, {"f", "-3"},
                                                         {"g", "-3"}, {"h", "-3"}};
    for (const auto& [name, value] : expected) EXPECT_EQ(Text(name), value) << name;
}

TEST_F(ProgramsTest, FunctionFailsWithAnOperandThatDoesNotEvaluate) {
    EXPECT_EQ(Run({"LOCAL a = TERMINATE_EXEC brak"}), "1: 3 brak");
    EXPECT_EQ(Run({"LOCAL id = EXEC prog", "LOCAL a = TERMINATE_EXEC id brak"}), "2: 3 brak");
    EXPECT_EQ(Run({"LOCAL a = CLOSE_EXEC brak"}), "1: 3 brak");
    EXPECT_EQ(Run({"LOCAL id = EXEC prog", "LOCAL a = CLOSE_EXEC id brak"}), "2: 3 brak");
    EXPECT_EQ(Run({"LOCAL id = EXEC prog", "LOCAL a = CLOSE_EXEC id 0 brak"}), "2: 3 brak");
}

TEST_F(ProgramsTest, TerminateTakesACodeOrZero) {
    EXPECT_EQ(Run({"LOCAL id = EXEC prog", "TERMINATE_EXEC id", "LOCAL a = GET_EXIT_CODE_EXEC id",
                   "SET id = EXEC prog", "LOCAL t = TERMINATE_EXEC id 7",
                   "LOCAL b = GET_EXIT_CODE_EXEC id", "LOCAL u = TERMINATE_EXEC id 8"}),
              "done");
    EXPECT_EQ(Text("a"), "0");
    EXPECT_EQ(Text("t"), "1");
    EXPECT_EQ(Text("b"), "7");
    EXPECT_EQ(Text("u"), "0");
    EXPECT_THAT(Failures(), IsEmpty());
}

TEST_F(ProgramsTest, FailedTerminationIsLogged) {
    EXPECT_EQ(Run({"LOCAL id = EXEC prog", "TERMINATE_EXEC id 5", "TERMINATE_EXEC id",
                   "TERMINATE_EXEC id brak"}),
              "done");
    EXPECT_THAT(Failures(),
                ElementsAre("Błąd przerwania pracy programu: nie można (Id procesu 11)",
                            "Błąd przerwania pracy programu: Invalid argument (Id procesu 11)"));
}

TEST_F(ProgramsTest, StatementFailsOnlyForAnIdentifierThatDoesNotEvaluate) {
    EXPECT_EQ(Run({"TERMINATE_EXEC brak"}), "1: 3 brak");
    EXPECT_EQ(Run({"CLOSE_EXEC brak 1 1"}), "1: 3 brak");
    EXPECT_EQ(Run({"CLOSE_EXEC 12345 1 1"}), "done");
    EXPECT_EQ(Failures().back(), "Brak procesu o podanym identyfikatorze (Id procesu 12345)");
}

TEST_F(ProgramsTest, CloseWaitsWholeSecondsForTheEnd) {
    processes.endsAfter = 3;
    EXPECT_EQ(Run({"LOCAL id = EXEC prog", "CLOSE_EXEC id 0 5"}), "done");
    EXPECT_EQ(processes.seconds, 3);
    EXPECT_THAT(processes.calls, ElementsAre("start prog", "close 11"));
    EXPECT_THAT(Failures(), IsEmpty());
}

TEST_F(ProgramsTest, CloseWaitsNoLongerWhenTheProcessIsToEnd) {
    processes.endingAfter = 2;
    EXPECT_EQ(Run({"LOCAL id = EXEC prog", "CLOSE_EXEC id 0 1000000"}), "done");
    EXPECT_EQ(processes.seconds, 2);
    EXPECT_THAT(Failures(), ElementsAre("Brak informacji o zamknięciu programu (Id procesu 11)"));
}

TEST_F(ProgramsTest, CloseWithoutAWaitOrWithNoneWaitsOneSecond) {
    EXPECT_EQ(Run({"LOCAL id = EXEC prog", "CLOSE_EXEC id"}), "done");
    EXPECT_EQ(processes.seconds, 1);
    EXPECT_EQ(Run({"LOCAL id = EXEC prog", "CLOSE_EXEC id 0 0"}), "done");
    EXPECT_EQ(processes.seconds, 2);
    EXPECT_EQ(Run({"LOCAL id = EXEC prog", "CLOSE_EXEC id brak brak"}), "done");
    EXPECT_EQ(processes.seconds, 3);
    EXPECT_EQ(Run({"LOCAL id = EXEC prog", "LOCAL a = CLOSE_EXEC id 1 -4"}), "done");
    EXPECT_EQ(processes.seconds, 4);
    EXPECT_EQ(Text("a"), "0");
}

TEST_F(ProgramsTest, ProgramThatTookTheRequestAndStaysIsLeftRunningAlsoWithForce) {
    EXPECT_EQ(
        Run({"LOCAL id = EXEC prog", "CLOSE_EXEC id 1 2", "LOCAL a = CHECK_EXEC_ACTIVITY id"}),
        "done");
    EXPECT_EQ(Text("a"), "1");
    EXPECT_THAT(processes.calls, ElementsAre("start prog", "close 11"));
    EXPECT_THAT(Failures(), ElementsAre("Brak informacji o zamknięciu programu (Id procesu 11)"));
}

TEST_F(ProgramsTest, ProgramThatCannotBeAskedIsTerminatedByForce) {
    processes.takesRequests = false;
    EXPECT_EQ(Run({"LOCAL id = EXEC prog", "CLOSE_EXEC id", "LOCAL a = CLOSE_EXEC id 0",
                   "LOCAL b = CLOSE_EXEC id 1", "LOCAL c = CLOSE_EXEC id 1", "CLOSE_EXEC id 1 9"}),
              "done");
    EXPECT_EQ(Text("a"), "-2");
    EXPECT_EQ(Text("b"), "1");
    EXPECT_EQ(Text("c"), "0");
    EXPECT_EQ(processes.seconds, 0);
    EXPECT_THAT(Failures(),
                ElementsAre("Błąd wysłania polecenia zamknięcia programu (Id procesu 11)",
                            "Błąd wysłania polecenia zamknięcia programu (Id procesu 11)",
                            "Błąd przerwania pracy programu: nie można (Id procesu 11)"));
}

TEST_F(ProgramsTest, PollThatFailsIsLoggedAndThePollingGoesOn) {
    processes.unreadable = true;
    processes.readableAfter = 3;
    EXPECT_EQ(Run({"LOCAL id = EXEC prog", "CLOSE_EXEC id 0 3"}), "done");
    const std::string poll =
        "Błąd pobrania informacji o zamknięciu programu: stan nieznany (Id procesu 11)";
    EXPECT_THAT(Failures(),
                ElementsAre(poll, poll, "Brak informacji o zamknięciu programu (Id procesu 11)"));
}

TEST_F(ProgramsTest, FunctionYieldsTheFailedPollOnlyWhenItWasTheLast) {
    processes.unreadable = true;
    EXPECT_EQ(Run({"LOCAL id = EXEC prog", "LOCAL a = CLOSE_EXEC id 0 2"}), "done");
    EXPECT_EQ(Text("a"), "-1");
    processes.readableAfter = 4;
    EXPECT_EQ(Run({"LOCAL id = EXEC prog", "LOCAL a = CLOSE_EXEC id 0 2"}), "done");
    EXPECT_EQ(Text("a"), "0");
    EXPECT_THAT(Failures(), IsEmpty());
}

TEST_F(ProgramsTest, IdentifiersAreOfOneDocumentAndOneRun) {
    EXPECT_EQ(Run({"LOCAL id = EXEC prog"}), "done");
    EXPECT_EQ(Run({"LOCAL a = CHECK_EXEC_ACTIVITY 11"}), "done");
    EXPECT_EQ(Text("a"), "-2");
    processes.calls.clear();
    documents[0]->Reset();
    EXPECT_THAT(processes.calls, ElementsAre("release 11"));
    documents[0]->Reset();
    EXPECT_THAT(processes.calls, ElementsAre("release 11"));
}

TEST_F(ProgramsTest, ClosedDocumentLetsItsProgramsGo) {
    EXPECT_EQ(Run({"LOCAL a = EXEC jeden", "LOCAL b = EXEC dwa"}), "done");
    processes.calls.clear();
    ticks.Remove(*documents.back());
    documents.clear();
    EXPECT_THAT(processes.calls, ElementsAre("release 11", "release 12"));
}

// The same with the system's own programs.
class ProgramsRealTest : public support::HostWorld {
  protected:
    ProgramsRealTest() { services.processes = &processes; }
    ~ProgramsRealTest() override { documents.clear(); }

    // The value of an expression of the last script, after the program `id` has ended.
    int AfterTheEnd(std::string_view expression) {
        support::ExitCodeOf(processes, std::stoi(Text("id")));
        value::CVal value;
        EXPECT_TRUE(operands::EvaluateExpression(*documents.back(), expression, value,
                                                 value::ValueType::Int));
        return value::ValueToInt(value);
    }

    platform::PosixProcesses processes;
};

TEST_F(ProgramsRealTest, ParametersDirectoryAndExitCodeArrive) {
    folder.MakeFolder("kat");
    Put("kat/zapis.sh", "echo \"$#|$1|$2|$3\" > wynik.txt\nexit 7\n");
    EXPECT_EQ(
        Run({"LOCAL arg = \"abc\"", "LOCAL id = EXEC \"/bin/sh\" -WD kat zapis.sh arg \"x y\" 12"}),
        "done");
    EXPECT_EQ(AfterTheEnd("GET_EXIT_CODE_EXEC id"), 7);
    EXPECT_EQ(AfterTheEnd("CHECK_EXEC_ACTIVITY id"), 0);
    EXPECT_EQ(Get("kat/wynik.txt"), "3|abc|x y|12\n");
}

TEST_F(ProgramsRealTest, ProgramThatIsNotThereHasNoIdentifier) {
    EXPECT_EQ(Run({"LOCAL id = EXEC \"/nie/ma/takiego\" a"}), "done");
    EXPECT_EQ(Text("id"), "0");
    EXPECT_THAT(Log(), testing::Contains("main.kx - Błąd uruchomienia programu (1): No such file "
                                         "or directory (/nie/ma/takiego)"));
    EXPECT_EQ(
        Log().back(),
        "main.kx - Błąd uruchomienia programu (2): No such file or directory (/nie/ma/takiego)");
}

TEST_F(ProgramsRealTest, NoShellSeesAParameter) {
    Put("spisz", "#!/bin/sh\nprintf '%s|' \"$@\" > \"$0.txt\"\n");
    Put("polecenia", "touch " + PathOf("ZLE") + '\n');
    for (const char* name : {"spisz", "polecenia"}) {
        std::filesystem::permissions(PathOf(name), std::filesystem::perms(0755));
    }
    EXPECT_EQ(Run({"LOCAL p = \"5;touch " + PathOf("ZLE") + '"',
                   "LOCAL id = EXEC \"spisz\" \"R&D.txt\" \"a `touch ZLE` $HOME\" p"}),
              "done");
    EXPECT_EQ(Text("id"), "0");
    EXPECT_EQ(
        Run({"LOCAL p = \"5;touch " + PathOf("ZLE") + '"',
             "LOCAL id = EXEC \"" + PathOf("spisz") + "\" \"R&D.txt\" \"a `touch ZLE` $HOME\" p"}),
        "done");
    EXPECT_EQ(AfterTheEnd("GET_EXIT_CODE_EXEC id"), 0);
    EXPECT_EQ(Get("spisz.txt"), "R&D.txt|a `touch ZLE` $HOME|5;touch|" + PathOf("ZLE") + '|');
    for (const std::string& program : {PathOf("polecenia"), "nie_ma;touch " + PathOf("ZLE")}) {
        EXPECT_EQ(Run({"LOCAL id = EXEC \"" + program + '"'}), "done");
        EXPECT_EQ(Text("id"), "0");
    }
    EXPECT_EQ(Log().back(),
              "main.kx - Błąd uruchomienia programu (2): No such file or directory (nie_ma;touch " +
                  PathOf("ZLE") + ')');
    EXPECT_FALSE(Has("ZLE"));
}

class FewDescriptors {
  public:
    FewDescriptors() {
        getrlimit(RLIMIT_NOFILE, &m_kept);
        const rlimit few{100, m_kept.rlim_max};
        setrlimit(RLIMIT_NOFILE, &few);
    }
    ~FewDescriptors() { setrlimit(RLIMIT_NOFILE, &m_kept); }
    FewDescriptors(const FewDescriptors&) = delete;
    FewDescriptors& operator=(const FewDescriptors&) = delete;

  private:
    rlimit m_kept{};
};

// Programs that go on until they are ended, and no longer than this.
class Sleepers {
  public:
    explicit Sleepers(platform::Processes& processes) : m_processes(processes) {}
    ~Sleepers() { EndAll(); }
    Sleepers(const Sleepers&) = delete;
    Sleepers& operator=(const Sleepers&) = delete;

    // As many as there can be; why there cannot be one more.
    std::string StartAll() {
        std::string error;
        while (const int id = m_processes.Start({"/bin/sleep", {"1000"}, {}}, error)) {
            m_ids.push_back(id);
        }
        return error;
    }

    // Returns when they are no children of this process any more.
    void EndAll() {
        std::string error;
        for (const int id : m_ids) EXPECT_TRUE(m_processes.Terminate(id, 0, error)) << error;
        m_ids.clear();
        siginfo_t info;
        while (waitid(P_ALL, 0, &info, WEXITED | WNOWAIT) == 0 || errno == EINTR) {
        }
    }

    std::size_t Count() const { return m_ids.size(); }

  private:
    platform::Processes& m_processes;
    std::vector<int> m_ids;
};

TEST_F(ProgramsRealTest, EndedProgramsLeaveTheirDescriptorsToDataFiles) {
    engine::CKalvexDoc& script = Open("");
    // A sanitizer needs descriptors to look at the type of an object for the first time.
    EXPECT_EQ(WriteDataFile(script, files, "\"e.txt\" \"S\""), DataFileResult::Data);
    {
        const FewDescriptors few;
        Sleepers sleepers(processes);
        EXPECT_EQ(sleepers.StartAll(), "Too many open files");
        EXPECT_GT(sleepers.Count(), 50U);
        EXPECT_EQ(WriteDataFile(script, files, "\"d.txt\" \"S\""), DataFileResult::Failed);
        sleepers.EndAll();
        EXPECT_EQ(WriteDataFile(script, files, "\"d.txt\" \"S\""), DataFileResult::Data);
    }
    EXPECT_EQ(Get("d.txt"), "[S]\r\n");
}

TEST_F(ProgramsRealTest, TerminatedProgramHasItsCodeAndCannotBeTerminatedAgain) {
    EXPECT_EQ(Run({"LOCAL id = EXEC sleep 1000", "LOCAL t = TERMINATE_EXEC id 12"}), "done");
    EXPECT_EQ(Text("t"), "1");
    EXPECT_EQ(AfterTheEnd("GET_EXIT_CODE_EXEC id"), 12);
    EXPECT_EQ(AfterTheEnd("TERMINATE_EXEC id"), 0);
}

}  // namespace
}  // namespace kalvex::host
