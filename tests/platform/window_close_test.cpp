// Programs with windows, on a display that the test starts for itself.
#include <gtest/gtest.h>
#include <sys/stat.h>
#include <unistd.h>

#include <cstdlib>
#include <optional>

#include "platform/posix/Processes.h"
#include "support/program_end.h"
#include "support/scratch_folder.h"

namespace kalvex::platform {
namespace {

constexpr const char* kServer = "/usr/bin/Xvfb";
constexpr int kEndedByTerm = 143;

class WindowCloseTest : public testing::Test {
  protected:
    void SetUp() override {
        if (access(kServer, X_OK) != 0) GTEST_SKIP() << kServer << " is not installed";
        mkfifo(folder.Path("znak").c_str(), 0600);
        server = processes.Start(
            {"/bin/sh",
             {"-c", std::string("exec ") + kServer + " -displayfd 1 -nolisten tcp > znak"},
             folder.Path()},
            error);
        ASSERT_NE(server, 0) << error;
        const std::string number = folder.Get("znak");
        ASSERT_FALSE(number.empty());
        setenv("DISPLAY", (':' + number.substr(0, number.find('\n'))).c_str(), 1);
    }

    void TearDown() override {
        if (server != 0 && processes.RequestClose(server)) ExitOf(server);
        unsetenv("DISPLAY");
    }

    std::optional<int> ExitOf(int id) { return support::ExitCodeOf(processes, id); }

    // The exit code of a program of this kind that was asked to close.
    std::optional<int> Closed(const std::string& kind) {
        const int id =
            processes.Start({KALVEX_WINDOW_PROGRAM, {kind, folder.Path("znak")}, {}}, error);
        EXPECT_EQ(folder.Get("znak"), "gotowe\n");
        EXPECT_TRUE(processes.RequestClose(id));
        return ExitOf(id);
    }

    support::ScratchFolder folder;
    std::string error;
    PosixProcesses processes;
    int server = 0;
};

TEST_F(WindowCloseTest, WindowIsAskedAndTheProgramEndsInItsOwnWay) {
    EXPECT_EQ(Closed("plain"), 5);
}

TEST_F(WindowCloseTest, EveryWindowOfTheProgramIsAsked) {
    EXPECT_EQ(Closed("two"), 5);
}

TEST_F(WindowCloseTest, WindowIsFoundWithinItsFrame) {
    EXPECT_EQ(Closed("framed"), 5);
}

TEST_F(WindowCloseTest, ProgramWhoseWindowTakesNoRequestsGetsTheSignal) {
    EXPECT_EQ(Closed("deaf"), kEndedByTerm);
}

TEST_F(WindowCloseTest, WindowOfAnotherMachineIsNotMeant) {
    EXPECT_EQ(Closed("foreign"), kEndedByTerm);
}

TEST_F(WindowCloseTest, ProgramWithoutWindowsGetsTheSignal) {
    EXPECT_TRUE(processes.RequestClose(server));
    EXPECT_EQ(ExitOf(server), 0);
    server = 0;
}

TEST_F(WindowCloseTest, DisplayThatDoesNotAnswerIsAsGoodAsNone) {
    setenv("DISPLAY", ":60000", 1);
    const int id = processes.Start({"/bin/sleep", {"1000"}, {}}, error);
    EXPECT_TRUE(processes.RequestClose(id));
    EXPECT_EQ(ExitOf(id), kEndedByTerm);
}

}  // namespace
}  // namespace kalvex::platform
