#include "platform/posix/Processes.h"

#include <fcntl.h>
#include <gtest/gtest.h>
#include <sys/resource.h>
#include <sys/stat.h>
#include <sys/wait.h>
#include <unistd.h>

#include <cerrno>
#include <csignal>
#include <cstdio>
#include <cstdlib>
#include <filesystem>
#include <iterator>
#include <optional>
#include <vector>

#include "support/program_end.h"
#include "support/scratch_folder.h"

namespace kalvex::platform {
namespace {

class ProcessesTest : public testing::Test {
  protected:
    // A program that the shell makes of these commands, in the scratch folder; 0 with `error` set.
    int Shell(const std::string& commands) {
        return processes.Start({"/bin/sh", {"-c", commands}, folder.Path()}, error);
    }

    std::optional<int> ExitOf(int id) { return support::ExitCodeOf(processes, id); }

    // Returns when this process has no child any more, not even an ended one.
    static void WaitForNoChild() {
        siginfo_t info;
        while (waitid(P_ALL, 0, &info, WEXITED | WNOWAIT) == 0 || errno == EINTR) {
        }
        EXPECT_EQ(errno, ECHILD);
    }

    void MakeProgram(const std::string& name, const std::string& text, mode_t mode = 0755) {
        folder.Put(name, text);
        chmod(folder.Path(name).c_str(), mode);
    }

    // A name by which a program tells that it has come as far as there.
    void MakeSign() { ASSERT_EQ(mkfifo(folder.Path("znak").c_str(), 0600), 0); }
    void WaitForSign() { folder.Get("znak"); }

    support::ScratchFolder folder;
    std::string error;
    PosixProcesses processes;
};

TEST_F(ProcessesTest, GivesTheExitCodeForAsLongAsTheIdentifierIsHeld) {
    const int id = Shell("exit 7");
    ASSERT_NE(id, 0);
    EXPECT_EQ(ExitOf(id), 7);
    EXPECT_EQ(processes.GetExitCode(id, error), 7);
    processes.Release(id);
    EXPECT_EQ(processes.GetExitCode(id, error), std::nullopt);
    EXPECT_EQ(error, "Bad file descriptor");
}

TEST_F(ProcessesTest, RunningProgramHasTheCodeOfTheStillActive) {
    MakeSign();
    const int id = Shell("read x < znak; exit 3");
    EXPECT_EQ(processes.GetExitCode(id, error), Processes::kStillActive);
    folder.Put("znak", "\n");
    EXPECT_EQ(ExitOf(id), 3);
}

TEST_F(ProcessesTest, SignalCountsFromOneHundredAndTwentyEight) {
    EXPECT_EQ(ExitOf(Shell("kill -KILL $$")), 137);
    EXPECT_EQ(ExitOf(Shell("kill -TERM $$")), 143);
}

TEST_F(ProcessesTest, TerminateGivesTheProgramItsCode) {
    const int id = Shell("exec sleep 1000");
    EXPECT_TRUE(processes.Terminate(id, -5, error));
    EXPECT_EQ(ExitOf(id), -5);
}

TEST_F(ProcessesTest, TerminateOfAnEndedProgramFailsAndLeavesItsCode) {
    const int id = Shell("exit 4");
    EXPECT_EQ(ExitOf(id), 4);
    EXPECT_FALSE(processes.Terminate(id, 9, error));
    EXPECT_EQ(error, "No such process");
    EXPECT_EQ(processes.GetExitCode(id, error), 4);
}

TEST_F(ProcessesTest, ProgramTerminatedWithTheCodeOfTheStillActiveLooksAsIfItRan) {
    const int id = Shell("exec sleep 1000");
    EXPECT_TRUE(processes.Terminate(id, 259, error));
    WaitForNoChild();
    EXPECT_EQ(processes.GetExitCode(id, error), Processes::kStillActive);
}

TEST_F(ProcessesTest, EndedProgramIsNoZombieThoughNobodyAsksAndItsCodeIsKept) {
    const int first = Shell("exit 1");
    WaitForNoChild();
    const int second = Shell("exit 2");
    EXPECT_NE(first, 0);
    EXPECT_NE(second, 0);
    WaitForNoChild();
    EXPECT_EQ(processes.GetExitCode(first, error), 1);
    EXPECT_EQ(processes.GetExitCode(second, error), 2);
}

TEST_F(ProcessesTest, ReleasedProgramRunsOnAndIsNoZombieAfterItsEnd) {
    MakeSign();
    processes.Release(Shell("read x < znak; echo koniec > wynik"));
    folder.Put("znak", "\n");
    WaitForNoChild();
    EXPECT_EQ(folder.Get("wynik"), "koniec\n");
}

TEST_F(ProcessesTest, ProgramOutlivesTheObjectAndIsNoZombieAfterItsEnd) {
    MakeSign();
    {
        PosixProcesses others;
        others.Start({"/bin/sh", {"-c", "read x < znak; echo koniec > wynik"}, folder.Path()},
                     error);
    }
    folder.Put("znak", "\n");
    WaitForNoChild();
    EXPECT_EQ(folder.Get("wynik"), "koniec\n");
}

TEST_F(ProcessesTest, StateThatAnotherHasTakenCannotBeRead) {
    struct sigaction kept {};
    struct sigaction ignore {};
    ignore.sa_handler = SIG_IGN;
    sigaction(SIGCHLD, &ignore, &kept);
    MakeSign();
    const int id = Shell("read x < znak");
    folder.Put("znak", "\n");
    EXPECT_EQ(ExitOf(id), std::nullopt);
    EXPECT_EQ(processes.GetExitCode(id, error), std::nullopt);
    EXPECT_EQ(error, "No child processes");
    sigaction(SIGCHLD, &kept, nullptr);
}

TEST_F(ProcessesTest, IdentifierIsNeverZero) {
    const int input = dup(STDIN_FILENO);
    close(STDIN_FILENO);
    const int id = Shell("exit 6");
    EXPECT_NE(id, 0);
    EXPECT_EQ(ExitOf(id), 6);
    dup2(input, STDIN_FILENO);
    close(input);
}

TEST_F(ProcessesTest, EndedProgramsHoldNoDescriptorsAndKeepTheirIdentifiers) {
    const auto descriptors = [] {
        return std::distance(std::filesystem::directory_iterator("/proc/self/fd"), {});
    };
    const int first = Shell("exit 1");
    EXPECT_EQ(ExitOf(first), 1);
    const auto before = descriptors();
    std::vector<int> ids;
    for (int i = 0; i < 20; ++i) {
        ids.push_back(Shell("exit " + std::to_string(i + 2)));
        WaitForNoChild();
    }
    EXPECT_EQ(descriptors(), before);
    EXPECT_EQ(processes.GetExitCode(first, error), 1);
    for (int i = 0; i < 20; ++i) EXPECT_EQ(processes.GetExitCode(ids[i], error), i + 2);
}

TEST_F(ProcessesTest, ProgramsThatEndTogetherLetGoOfTheirDescriptorsAtOnce) {
    const auto descriptors = [] {
        return std::distance(std::filesystem::directory_iterator("/proc/self/fd"), {});
    };
    const auto before = descriptors();
    MakeSign();
    std::vector<int> ids;
    for (int i = 0; i < 20; ++i) ids.push_back(Shell("read x < znak; exit 5"));
    EXPECT_EQ(descriptors(), before + 20);
    const int sign = open(folder.Path("znak").c_str(), O_RDWR | O_CLOEXEC);
    EXPECT_EQ(write(sign, std::string(20, '\n').c_str(), 20), 20);
    WaitForNoChild();
    close(sign);
    EXPECT_EQ(descriptors(), before);
    for (const int id : ids) EXPECT_EQ(processes.GetExitCode(id, error), 5);
}

TEST_F(ProcessesTest, ProgramThatCouldNotBeWatchedIsNotStarted) {
    EXPECT_EQ(ExitOf(Shell("exit 0")), 0);
    rlimit kept{};
    getrlimit(RLIMIT_NOFILE, &kept);
    const rlimit few{32, kept.rlim_max};
    setrlimit(RLIMIT_NOFILE, &few);
    std::vector<int> taken;
    for (int fd = dup(STDIN_FILENO); fd >= 0; fd = dup(STDIN_FILENO)) taken.push_back(fd);
    const int id = Shell("echo x > slad");
    for (const int fd : taken) close(fd);
    setrlimit(RLIMIT_NOFILE, &kept);
    EXPECT_EQ(id, 0);
    EXPECT_EQ(error, "Too many open files");
    WaitForNoChild();
    EXPECT_FALSE(folder.Has("slad"));
}

TEST_F(ProcessesTest, ProgramHasNoneOfOurDescriptors) {
    const int open = ::open(folder.Path("otwarty").c_str(), O_CREAT | O_RDWR, 0600);
    const int running = Shell("exec sleep 1000");
    EXPECT_EQ(ExitOf(Shell("exec ls /proc/self/fd > opisy")), 0);
    EXPECT_EQ(folder.Get("opisy"), "0\n1\n2\n3\n");  // 3 is the folder that ls reads
    EXPECT_EQ(ExitOf(Shell("exec readlink /proc/self/fd/0 /proc/self/fd/2 > pliki")), 0);
    EXPECT_EQ(folder.Get("pliki"), "/dev/null\n/dev/null\n");
    EXPECT_EQ(ExitOf(Shell("[ /proc/$$/fd/1 -ef /dev/null ]")), 0);
    EXPECT_TRUE(processes.Terminate(running, 0, error)) << error;
    close(open);
}

TEST_F(ProcessesTest, ProgramStartsWithTheSignalsOfALogin) {
    const auto kept = signal(SIGPIPE, SIG_IGN);
    sigset_t blocked;
    sigset_t before;
    sigemptyset(&blocked);
    sigaddset(&blocked, SIGTERM);
    sigprocmask(SIG_BLOCK, &blocked, &before);
    EXPECT_EQ(ExitOf(Shell("exec grep -E '^Sig(Blk|Ign):' /proc/self/status > stan")), 0);
    unsigned long blocks = 1;
    unsigned long ignores = 1;
    EXPECT_EQ(std::sscanf(folder.Get("stan").c_str(), "SigBlk: %lx SigIgn: %lx", &blocks, &ignores),
              2);
    constexpr unsigned long kOfTheCLibrary = 3UL
                                             << 31;  // signals 32 and 33, which are no one's else
    EXPECT_EQ(blocks, 0U);
    EXPECT_EQ(ignores & ~kOfTheCLibrary, 0U);
    sigprocmask(SIG_SETMASK, &before, nullptr);
    signal(SIGPIPE, kept);
}

TEST_F(ProcessesTest, ProgramLeadsAProcessGroupOfItsOwn) {
    EXPECT_EQ(ExitOf(Shell("set -- $(cat /proc/$$/stat); [ $5 = $$ ] && echo tak > grupa")), 0);
    EXPECT_EQ(folder.Get("grupa"), "tak\n");
}

TEST_F(ProcessesTest, ArgumentsArriveAsTheyAre) {
    MakeProgram("spisz", "#!/bin/sh\nprintf '%s|' \"$@\" > wynik\n");
    const int id = processes.Start(
        {folder.Path("spisz"), {"a b", "", "\"", "$HOME", "ż"}, folder.Path()}, error);
    EXPECT_EQ(ExitOf(id), 0);
    EXPECT_EQ(folder.Get("wynik"), "a b||\"|$HOME|ż|");
}

TEST_F(ProcessesTest, NameIsLookedUpAlongThePath) {
    MakeProgram("nasz_program", "#!/bin/sh\nexit 8\n");
    const std::string kept = getenv("PATH");
    setenv("PATH", (folder.Path() + ":/usr/bin:/bin").c_str(), 1);
    EXPECT_EQ(ExitOf(processes.Start({"nasz_program", {}, {}}, error)), 8);
    setenv("PATH", kept.c_str(), 1);
    EXPECT_EQ(processes.Start({"nasz_program", {}, {}}, error), 0);
    EXPECT_EQ(error, "No such file or directory");
}

TEST_F(ProcessesTest, ProgramThatCannotBeStartedIsToldInTheSystemsWords) {
    EXPECT_EQ(processes.Start({"/nie/ma/takiego", {}, {}}, error), 0);
    EXPECT_EQ(error, "No such file or directory");
    EXPECT_EQ(processes.Start({"", {}, {}}, error), 0);
    EXPECT_EQ(error, "No such file or directory");
    MakeProgram("dane", "#!/bin/sh\n", 0644);
    EXPECT_EQ(processes.Start({folder.Path("dane"), {}, {}}, error), 0);
    EXPECT_EQ(error, "Permission denied");
    EXPECT_EQ(processes.Start({"/bin/true", {}, folder.Path("nie_ma")}, error), 0);
    EXPECT_EQ(error, "No such file or directory");
    WaitForNoChild();
}

TEST_F(ProcessesTest, WhatOnlyAShellCouldRunIsNotStarted) {
    MakeProgram("skrypt", "echo x > slad\n");
    for (const std::string& program : {folder.Path("skrypt"), folder.Path("skrypt") + ";true"}) {
        EXPECT_EQ(processes.Start({program, {}, folder.Path()}, error), 0);
    }
    EXPECT_EQ(processes.Start({folder.Path("skrypt"), {}, folder.Path()}, error), 0);
    EXPECT_EQ(error, "Exec format error");
    EXPECT_EQ(processes.Start({"exit 9", {}, {}}, error), 0);
    EXPECT_EQ(error, "No such file or directory");
    EXPECT_EQ(processes.Start({folder.Path(), {}, {}}, error), 0);
    EXPECT_EQ(error, "Permission denied");
    WaitForNoChild();
    EXPECT_FALSE(folder.Has("slad"));
}

TEST_F(ProcessesTest, CloseRequestIsASignalThatTheProgramMayTakeItsOwnWay) {
    unsetenv("DISPLAY");
    MakeSign();
    const int id =
        Shell("sleep 1000 & trap 'kill $!; exit 5' TERM; echo > znak; while :; do wait; done");
    WaitForSign();
    EXPECT_TRUE(processes.RequestClose(id));
    EXPECT_EQ(ExitOf(id), 5);
    EXPECT_FALSE(processes.RequestClose(id));
}

TEST(ProcessesNoneTest, EveryAttemptFails) {
    std::string error;
    Processes& none = NoProcesses();
    EXPECT_EQ(none.Start({"/bin/true", {}, {}}, error), 0);
    EXPECT_EQ(error, "Operation not permitted");
    EXPECT_EQ(none.GetExitCode(5, error), std::nullopt);
    EXPECT_FALSE(none.Terminate(5, 0, error));
    EXPECT_FALSE(none.RequestClose(5));
}

}  // namespace
}  // namespace kalvex::platform
