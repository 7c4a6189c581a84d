#include "app/Log.h"

#include <fcntl.h>
#include <gmock/gmock.h>
#include <gtest/gtest.h>
#include <sys/stat.h>
#include <unistd.h>

#include <cstdlib>
#include <ctime>
#include <filesystem>
#include <sstream>
#include <string>
#include <utility>
#include <vector>

#include "app/KalvexLog.h"
#include "app/LogStream.h"
#include "platform/posix/Descriptor.h"
#include "support/environment_scope.h"
#include "support/scratch_folder.h"
#include "support/zone_scope.h"
#include "text/CodePage.h"

namespace kalvex::app {
namespace {

using testing::ElementsAre;
using testing::IsEmpty;
using testing::Not;

// 2024-03-10 07:00:00 in Warsaw.
constexpr std::int64_t kNow = 1710050400;

class Outlets final : public LogOutlets, public LogClients {
  public:
    void AddLogMessage(std::string_view text, std::int64_t time, int level) override {
        forwarded.push_back(text::ToUtf8(text) + '/' + std::to_string(time) + '/' +
                            std::to_string(level));
    }
    void ShowStatusLine(std::string_view text) override { status = text::ToUtf8(text); }
    void OnLogLevel(int level) override { levels.push_back(level); }

    std::vector<std::string> forwarded;
    std::string status;
    std::vector<int> levels;
};

class LogTest : public testing::Test {
  protected:
    LogTest() {
        m_client.BecomeConsoleClient();
        for (CKalvexLog* log : {&m_module, &m_client}) {
            log->SetOutlets(&m_outlets);
            log->SetClients(&m_outlets);
        }
    }

    static std::vector<std::string> Lines(const CLog& log) {
        std::vector<std::string> lines;
        for (std::size_t i = 0; i < log.GetCount(); ++i)
            lines.push_back(text::ToUtf8(log.GetText(i)));
        return lines;
    }

    std::string Streamed(LogStreamForm form, const std::vector<LogMessage>& messages) const {
        const platform::Descriptor file(
            ::open(m_folder.Path("wyjscie").c_str(), O_WRONLY | O_CREAT | O_CLOEXEC, 0600));
        {
            LogStream stream(file.Get(), form, m_clock, m_translator);
            for (const LogMessage& message : messages) stream.OnLogMessage(message);
        }
        return m_folder.Get("wyjscie");
    }

    support::ZoneScope m_zone{"Europe/Warsaw"};
    support::ScratchFolder m_folder;
    platform::VirtualClock m_clock{kNow};
    platform::Translator m_translator;
    Outlets m_outlets;
    CKalvexLog m_module{m_clock, m_translator};
    CKalvexLog m_client{m_clock, m_translator};
};

TEST_F(LogTest, TextBeginsBehindTheStamp) {
    m_module.Log("/a.kx : Linia 3 - x", 1);
    ASSERT_EQ(m_module.GetCount(), 1u);
    EXPECT_EQ(m_module.GetText(0), "2024-03-10 07:00:00  /a.kx : Linia 3 - x");
    EXPECT_EQ(m_module.GetText(0).substr(21), "/a.kx : Linia 3 - x");
}

TEST_F(LogTest, LineAboveTheLevelIsNowhere) {
    m_module.Log("zdarzenie", 2);
    EXPECT_THAT(Lines(m_module), IsEmpty());
    EXPECT_EQ(m_outlets.status, "");
    EXPECT_THAT(m_outlets.forwarded, IsEmpty());
}

TEST_F(LogTest, LineUpToTheLevelIsKeptForwardedAndShown) {
    m_module.SetLevel(2);
    m_module.Log(text::FromUtf8("ż"), 2);
    EXPECT_THAT(Lines(m_module), ElementsAre("2024-03-10 07:00:00  ż"));
    EXPECT_EQ(m_outlets.status, "ż");
    EXPECT_THAT(m_outlets.forwarded, ElementsAre("ż/1710050400/2"));
}

TEST_F(LogTest, ConsoleClientFiltersNothingForwardsNothingAndMarksItsLines) {
    EXPECT_EQ(m_client.GetLevel(), 65535);
    m_client.SetLevel(1);
    m_client.Log("x", 3);
    EXPECT_THAT(Lines(m_client), ElementsAre("2024-03-10 07:00:00  RC: x"));
    EXPECT_EQ(m_outlets.status, "RC: x");
    EXPECT_THAT(m_outlets.forwarded, IsEmpty());
}

TEST_F(LogTest, LogAlwaysIsOfThisProcessAlone) {
    m_module.SetLevel(-1);
    m_module.LogAlways("x");
    m_client.LogAlways("y");
    EXPECT_THAT(Lines(m_module), ElementsAre("2024-03-10 07:00:00  x"));
    EXPECT_THAT(Lines(m_client), ElementsAre("2024-03-10 07:00:00  RC: y"));
    EXPECT_EQ(m_outlets.status, "");
    EXPECT_THAT(m_outlets.forwarded, IsEmpty());
}

TEST_F(LogTest, LineOfTheModuleHasItsTimeAndNoMark) {
    m_client.LogFromModule("x", kNow - 60, 3);
    EXPECT_THAT(Lines(m_client), ElementsAre("2024-03-10 06:59:00  x"));
    EXPECT_EQ(m_outlets.status, "x");
}

TEST_F(LogTest, LineOfTheModuleNeedsAConsoleClientWithItsFrame) {
    m_module.LogFromModule("x", kNow, 1);
    m_client.SetOutlets(nullptr);
    m_client.LogFromModule("x", kNow, 1);
    EXPECT_THAT(Lines(m_module), IsEmpty());
    EXPECT_THAT(Lines(m_client), IsEmpty());
}

TEST_F(LogTest, LevelIsToldByItsWord) {
    for (const int level : {1, 2, 3, 0, 7}) {
        m_module.SetLevel(level);
        m_module.PublishLevel();
    }
    EXPECT_THAT(Lines(m_module), ElementsAre("2024-03-10 07:00:00  Poziom rejestracji: błędy ",
                                             "2024-03-10 07:00:00  Poziom rejestracji: zdarzenia",
                                             "2024-03-10 07:00:00  Poziom rejestracji: transmisja",
                                             "2024-03-10 07:00:00  Poziom rejestracji: ",
                                             "2024-03-10 07:00:00  Poziom rejestracji: "));
    EXPECT_THAT(m_outlets.levels, ElementsAre(1, 2, 3, 0, 7));
}

TEST_F(LogTest, LevelOfAConsoleClientIsAskedForWithoutAWord) {
    m_client.SetLevel(2);
    m_client.PublishLevel();
    EXPECT_THAT(Lines(m_client), IsEmpty());
    EXPECT_THAT(m_outlets.levels, ElementsAre(2));
}

TEST_F(LogTest, ControlCharactersAreEscapedWhereverALineGoes) {
    const platform::Descriptor file(
        ::open(m_folder.Path("wyjscie").c_str(), O_WRONLY | O_CREAT | O_CLOEXEC, 0600));
    const std::string shown = "a\\nb\\t\\x1b[2J\\x7f\\x90";
    {
        LogStream stream(file.Get(), LogStreamForm::Priority, m_clock, m_translator);
        m_module.SetListener(&stream);
        m_module.SetLogFile(m_folder.Path("Kalvex"), 10000000);
        m_module.Log("a\nb\t\x1b[2J\x7f\x90", 1);
        m_module.SetListener(nullptr);
    }
    EXPECT_THAT(Lines(m_module), ElementsAre("2024-03-10 07:00:00  " + shown));
    EXPECT_THAT(m_outlets.forwarded, ElementsAre(shown + "/1710050400/1"));
    EXPECT_EQ(m_outlets.status, shown);
    EXPECT_EQ(m_folder.Get("Kalvex.log"), "2024-03-10 07:00:00  " + shown + "\n");
    EXPECT_EQ(m_folder.Get("wyjscie"), "<3>" + shown + "\n");
    m_client.LogFromModule("\r", kNow, 3);
    EXPECT_THAT(Lines(m_client), ElementsAre("2024-03-10 07:00:00  \\r"));
    EXPECT_EQ(m_outlets.status, "\\r");
}

TEST_F(LogTest, OldestLinesGoWhenThereAreTooMany) {
    for (std::size_t i = 0; i < CLog::kLines + 2; ++i) m_module.Log(std::to_string(i), 0);
    EXPECT_EQ(m_module.GetCount(), CLog::kLines);
    EXPECT_EQ(m_module.GetText(0), "2024-03-10 07:00:00  2");
    const std::vector<LogMessage> last = m_module.GetLastMessages(2);
    ASSERT_EQ(last.size(), 2u);
    EXPECT_EQ(last[0].text, "10000");
    EXPECT_EQ(last[1].text, "10001");
    m_module.OnClear();
    EXPECT_EQ(m_module.GetCount(), 0u);
    EXPECT_THAT(m_module.GetLastMessages(2), IsEmpty());
}

TEST_F(LogTest, EachLineHasItsLevel) {
    m_module.SetLevel(3);
    for (const int level : {0, 3, 1}) m_module.Log("a", level);
    EXPECT_EQ(m_module.GetLevelOf(0), 0);
    EXPECT_EQ(m_module.GetLevelOf(1), 3);
    EXPECT_EQ(m_module.GetLevelOf(2), 1);
}

TEST_F(LogTest, AListenerHearsThatTheLinesAreGone) {
    class Listener final : public LogListener {
      public:
        explicit Listener(CLog& log) : m_log(log) {}
        void OnLogMessage(const LogMessage& message) override { heard.push_back(message.text); }
        void OnLogCleared() override { heard.push_back(std::to_string(m_log.GetCount())); }
        std::vector<std::string> heard;

      private:
        CLog& m_log;
    };
    Listener listener(m_module);
    m_module.SetListener(&listener);
    m_module.Log("a", 0);
    m_module.OnClear();
    EXPECT_THAT(listener.heard, ElementsAre("a", "0"));
    m_module.SetListener(nullptr);
    m_module.OnClear();
    EXPECT_THAT(listener.heard, ElementsAre("a", "0"));
}

TEST_F(LogTest, FileIsUtf8) {
    m_module.SetLogFile(m_folder.Path("Kalvex"), 10000000);
    m_module.Log(text::FromUtf8("zażółć"), 1);
    m_module.SetLogFile("", 0);
    m_module.Log("po", 1);
    EXPECT_EQ(m_folder.Get("Kalvex.log"), "2024-03-10 07:00:00  zażółć\n");
}

TEST_F(LogTest, FullDiskStopsNothingAndTheGapIsTold) {
    std::filesystem::create_symlink("/dev/full", m_folder.Path("Kalvex.log"));
    m_module.SetLogFile(m_folder.Path("Kalvex"), 10000000);
    m_module.Log("a", 1);
    m_module.Log("b", 1);
    m_clock.Advance(1000);
    m_module.Log("c", 1);
    std::filesystem::remove(m_folder.Path("Kalvex.log"));
    m_clock.Advance(1000);
    m_module.Log("d", 1);
    m_module.Log("e", 1);
    EXPECT_EQ(m_module.GetCount(), 5u);
    EXPECT_EQ(m_folder.Get("Kalvex.log"),
              "2024-03-10 07:00:02  Pominięte wiersze rejestru: 3\n"
              "2024-03-10 07:00:02  d\n"
              "2024-03-10 07:00:02  e\n");
}

// Every question for the time is a second later, and one of them finds the disk with room again.
class FullDisk final : public platform::Clock {
  public:
    explicit FullDisk(std::string file) : m_file(std::move(file)) {
        std::filesystem::create_symlink("/dev/full", m_file);
    }
    void HasRoomAfter(int questions) { m_left = questions; }

    std::int64_t Now() const override {
        if (m_left-- == 0) std::filesystem::remove(m_file);
        return ++m_now;
    }
    std::int64_t Elapsed() const override { return m_now; }
    bool SetSystemTime(std::int64_t) override { return false; }

  private:
    std::string m_file;
    mutable int m_left = -1;
    mutable std::int64_t m_now = kNow;
};

TEST_F(LogTest, GapIsToldBeforeTheLinesBehindItWheneverTheDiskHasRoomAgain) {
    constexpr int kLogged = 6;
    constexpr std::size_t kStamp = 21;
    for (int questions = 0; questions < 10; ++questions) {
        const std::string name = "pelny" + std::to_string(questions);
        FullDisk disk(m_folder.Path(name + ".log"));
        CKalvexLog log(disk, m_translator);
        log.SetLogFile(m_folder.Path(name), 10000000);
        log.Log("0", 1);
        disk.HasRoomAfter(questions);
        for (int line = 1; line < kLogged; ++line) log.Log(std::to_string(line), 1);
        std::vector<std::string> lines;
        std::istringstream file(m_folder.Get(name + ".log"));
        for (std::string line; std::getline(file, line);) lines.push_back(line.substr(kStamp));
        ASSERT_THAT(lines, Not(IsEmpty())) << questions;
        const int lost = kLogged + 1 - static_cast<int>(lines.size());
        std::vector<std::string> expected{"Pominięte wiersze rejestru: " + std::to_string(lost)};
        for (int line = lost; line < kLogged; ++line) expected.push_back(std::to_string(line));
        EXPECT_EQ(lines, expected) << questions;
    }
}

TEST_F(LogTest, StreamHasThePriorityOfTheLevel) {
    EXPECT_EQ(Streamed(LogStreamForm::Priority, {{kNow, 0, "a"},
                                                 {kNow, 1, text::FromUtf8("ż")},
                                                 {kNow, 2, "c"},
                                                 {kNow, 3, "d"},
                                                 {kNow, 9, "e"}}),
              "<5>a\n<3>ż\n<6>c\n<7>d\n<7>e\n");
}

TEST_F(LogTest, StreamForAPersonHasTheStamp) {
    EXPECT_EQ(Streamed(LogStreamForm::Stamped, {{kNow, 1, "a"}}), "2024-03-10 07:00:00  a\n");
}

TEST_F(LogTest, ListenerHearsEachLine) {
    const platform::Descriptor file(
        ::open(m_folder.Path("wyjscie").c_str(), O_WRONLY | O_CREAT | O_CLOEXEC, 0600));
    {
        LogStream stream(file.Get(), LogStreamForm::Priority, m_clock, m_translator);
        m_module.SetListener(&stream);
        m_module.Log("a", 1);
        m_module.Log("b", 2);
        m_module.SetListener(nullptr);
    }
    EXPECT_EQ(m_folder.Get("wyjscie"), "<3>a\n");
}

TEST_F(LogTest, StreamIsThatOfTheJournalByDeviceAndInode) {
    const platform::Descriptor file(::open("/dev/null", O_WRONLY | O_CLOEXEC));
    struct stat info {};
    ASSERT_EQ(::fstat(file.Get(), &info), 0);
    const std::string device = std::to_string(info.st_dev);
    const std::string inode = std::to_string(info.st_ino);
    const std::pair<std::string, LogStreamForm> cases[] = {
        {device + ':' + inode, LogStreamForm::Priority},
        {device + ':' + inode + '1', LogStreamForm::Stamped},
        {'1' + device + ':' + inode, LogStreamForm::Stamped},
        {"1", LogStreamForm::Stamped},
        {"", LogStreamForm::Stamped}};
    for (const auto& [journal, form] : cases) {
        const support::EnvironmentScope scope("JOURNAL_STREAM", journal);
        EXPECT_EQ(FormOf(file.Get()), form) << journal;
    }
}

TEST_F(LogTest, StreamThatStandsStillLosesLinesWithTheirNumberInBothForms) {
    for (const auto& [form, told] :
         {std::pair(LogStreamForm::Stamped, "2024-03-10 07:00:00  Pominięte wiersze rejestru: "),
          std::pair(LogStreamForm::Priority, "<5>Pominięte wiersze rejestru: ")}) {
        int ends[2] = {-1, -1};
        ASSERT_EQ(::pipe2(ends, O_CLOEXEC), 0);
        const platform::Descriptor reader(ends[0]);
        platform::Descriptor writer(ends[1]);
        const int room = ::fcntl(ends[1], F_SETPIPE_SZ, 4096);
        const std::string filling(static_cast<std::size_t>(room), '\n');
        ASSERT_EQ(::write(ends[1], filling.data(), filling.size()), room);
        LogStream stream(ends[1], form, m_clock, m_translator);
        for (std::size_t i = 0; i < platform::LineWriter::kLines + 2; ++i)
            stream.OnLogMessage({kNow, 1, "a"});
        std::string text;
        std::size_t found = std::string::npos;
        while (found == std::string::npos || text.find('\n', found) == std::string::npos) {
            char buffer[4096];
            const ssize_t count = ::read(reader.Get(), buffer, sizeof buffer);
            ASSERT_GT(count, 0);
            text.append(buffer, static_cast<std::size_t>(count));
            found = text.find(told);
        }
        const std::string line = text.substr(found, text.find('\n', found) - found);
        EXPECT_TRUE(line == std::string(told) + "1" || line == std::string(told) + "2") << line;
    }
}

}  // namespace
}  // namespace kalvex::app
