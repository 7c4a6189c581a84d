#include "platform/LogFile.h"

#include <gtest/gtest.h>
#include <sys/resource.h>
#include <sys/stat.h>
#include <sys/wait.h>
#include <unistd.h>

#include <csignal>
#include <filesystem>

#include "support/scratch_folder.h"

namespace kalvex::platform {
namespace {

constexpr std::size_t kPlenty = 10000000;

class LogFileTest : public testing::Test {
  protected:
    std::string Path() const { return m_folder.Path("Kalvex"); }

    support::ScratchFolder m_folder;
    VirtualClock m_clock{1000};
    CLogFile m_file{m_clock};
};

TEST_F(LogFileTest, LinesAreThereAtOnce) {
    m_file.SetFile(Path(), kPlenty);
    EXPECT_TRUE(m_file.Write("pierwszy"));
    EXPECT_EQ(m_folder.Get("Kalvex.log"), "pierwszy\n");
    EXPECT_TRUE(m_file.Write("żółty %s {}"));
    EXPECT_EQ(m_folder.Get("Kalvex.log"), "pierwszy\nżółty %s {}\n");
}

TEST_F(LogFileTest, FileOfTheLastRunIsContinued) {
    m_folder.Put("Kalvex.log", "dawny\n");
    m_file.SetFile(Path(), kPlenty);
    EXPECT_TRUE(m_file.Write("nowy"));
    EXPECT_EQ(m_folder.Get("Kalvex.log"), "dawny\nnowy\n");
}

TEST_F(LogFileTest, PartOfALineAtTheEndIsEnded) {
    m_folder.Put("Kalvex.log", "daw");
    m_file.SetFile(Path(), kPlenty);
    EXPECT_TRUE(m_file.Write("nowy"));
    EXPECT_EQ(m_folder.Get("Kalvex.log"), "daw\nnowy\n");
}

TEST_F(LogFileTest, ControlCharactersAreEscaped) {
    m_file.SetFile(Path(), kPlenty);
    EXPECT_TRUE(m_file.Write("a\r\nb\tc\x1B[1m\x7F\xC2\x9B"));
    EXPECT_EQ(m_folder.Get("Kalvex.log"), "a\\r\\nb\\tc\\x1b[1m\\x7f\\x9b\n");
}

TEST_F(LogFileTest, TabsAreKeptWhereTheyAreWanted) {
    m_file.KeepTabs();
    m_file.SetFile(Path(), kPlenty);
    EXPECT_TRUE(m_file.Write("\ta\tb\nc"));
    EXPECT_TRUE(m_file.Write(""));
    EXPECT_EQ(m_folder.Get("Kalvex.log"), "\ta\tb\\nc\n\n");
}

TEST_F(LogFileTest, WithoutAPathOrALimitLinesGoNowhere) {
    EXPECT_TRUE(m_file.Write("a"));
    m_file.SetFile(Path(), 0);
    EXPECT_TRUE(m_file.Write("a"));
    EXPECT_FALSE(m_folder.Has("Kalvex.log"));
}

TEST_F(LogFileTest, FullFileIsTurnedOver) {
    m_file.SetFile(Path(), 10);
    for (const char* line : {"aaaa", "bbbb", "cccc"}) EXPECT_TRUE(m_file.Write(line));
    EXPECT_EQ(m_folder.Get("Kalvex.1.log"), "aaaa\nbbbb\n");
    EXPECT_EQ(m_folder.Get("Kalvex.log"), "cccc\n");
}

TEST_F(LogFileTest, NumberOfFilesIsBounded) {
    m_file.SetFile(Path(), 4);
    for (int i = 10; i < 40; ++i) EXPECT_TRUE(m_file.Write(std::to_string(i)));
    EXPECT_EQ(m_folder.Get("Kalvex.log"), "39\n");
    EXPECT_EQ(m_folder.Get("Kalvex.9.log"), "30\n");
    EXPECT_FALSE(m_folder.Has("Kalvex.10.log"));
}

TEST_F(LogFileTest, FileThatWasMovedAwayIsLetGo) {
    m_file.SetFile(Path(), kPlenty);
    EXPECT_TRUE(m_file.Write("a"));
    std::filesystem::rename(m_folder.Path("Kalvex.log"), m_folder.Path("dawny"));
    EXPECT_TRUE(m_file.Write("b"));
    m_file.Reopen();
    EXPECT_TRUE(m_file.Write("c"));
    EXPECT_EQ(m_folder.Get("dawny"), "a\nb\n");
    EXPECT_EQ(m_folder.Get("Kalvex.log"), "c\n");
}

TEST_F(LogFileTest, FullDiskLosesLinesUntilItIsTriedAgainASecondLater) {
    std::filesystem::create_symlink("/dev/full", m_folder.Path("Kalvex.log"));
    m_file.SetFile(Path(), kPlenty);
    EXPECT_FALSE(m_file.Write("a"));
    std::filesystem::remove(m_folder.Path("Kalvex.log"));
    EXPECT_FALSE(m_file.Write("b"));
    EXPECT_FALSE(m_folder.Has("Kalvex.log"));
    m_clock.Advance(1000);
    EXPECT_TRUE(m_file.Write("c"));
    EXPECT_EQ(m_folder.Get("Kalvex.log"), "c\n");
}

TEST_F(LogFileTest, FolderThatIsMissingLosesLines) {
    m_file.SetFile(m_folder.Path("nie/ma"), kPlenty);
    EXPECT_FALSE(m_file.Write("a"));
    std::filesystem::create_directory(m_folder.Path("nie"));
    m_clock.Advance(1000);
    EXPECT_TRUE(m_file.Write("b"));
    EXPECT_EQ(m_folder.Get("nie/ma.log"), "b\n");
}

TEST_F(LogFileTest, WhyItCannotBeOpenedIsKnown) {
    std::string error;
    EXPECT_TRUE(m_file.CanOpen(error));
    m_file.SetFile(m_folder.Path("nie/ma"), 100);
    EXPECT_FALSE(m_file.CanOpen(error));
    EXPECT_EQ(error, "No such file or directory");
    ASSERT_EQ(::mkfifo(m_folder.Path("rura.log").c_str(), 0600), 0);
    m_file.SetFile(m_folder.Path("rura"), 100);
    EXPECT_FALSE(m_file.CanOpen(error));
    EXPECT_EQ(error, "Not a regular file");
    m_file.SetFile(Path(), 100);
    EXPECT_TRUE(m_file.CanOpen(error));
}

// The limit lets half of the second line through, as a disk does that fills up.
TEST_F(LogFileTest, LineThatWasCutStandsAlone) {
    const pid_t child = ::fork();
    if (child == 0) {
        std::signal(SIGXFSZ, SIG_IGN);
        rlimit limit{};
        ::getrlimit(RLIMIT_FSIZE, &limit);
        limit.rlim_cur = 8;
        ::setrlimit(RLIMIT_FSIZE, &limit);
        m_file.SetFile(Path(), kPlenty);
        const bool first = m_file.Write("aaaa");
        const bool second = m_file.Write("bbbb");
        limit.rlim_cur = limit.rlim_max;
        ::setrlimit(RLIMIT_FSIZE, &limit);
        m_clock.Advance(1000);
        const bool third = m_file.Write("cccc");
        ::_exit(first && !second && third ? 42 : 1);
    }
    int status = 0;
    ASSERT_EQ(::waitpid(child, &status, 0), child);
    ASSERT_TRUE(WIFEXITED(status));
    EXPECT_EQ(WEXITSTATUS(status), 42);
    EXPECT_EQ(m_folder.Get("Kalvex.log"), "aaaa\nbbb\ncccc\n");
}

}  // namespace
}  // namespace kalvex::platform
