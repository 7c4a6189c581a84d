#include "app/Log.h"

#include <gmock/gmock.h>
#include <gtest/gtest.h>

#include <cstdlib>
#include <ctime>
#include <filesystem>
#include <sstream>
#include <string>
#include <utility>
#include <vector>

#include "app/KalvexLog.h"
#include "app/LogStream.h"
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
        std::FILE* file = std::fopen(m_folder.Path("wyjscie").c_str(), "wb");
        LogStream stream(file, form);
        for (const LogMessage& message : messages) stream.OnLogMessage(message);
        std::fclose(file);
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
                                                 {kNow, 1, text::FromUtf8("ż\nb")},
                                                 {kNow, 2, "c"},
                                                 {kNow, 3, "d"},
                                                 {kNow, 9, "e"}}),
              "<5>a\n<3>ż b\n<6>c\n<7>d\n<7>e\n");
}

TEST_F(LogTest, StreamForAPersonHasTheStamp) {
    EXPECT_EQ(Streamed(LogStreamForm::Stamped, {{kNow, 1, "a"}}), "2024-03-10 07:00:00  a\n");
}

TEST_F(LogTest, ListenerHearsEachLine) {
    std::FILE* file = std::fopen(m_folder.Path("wyjscie").c_str(), "wb");
    LogStream stream(file, LogStreamForm::Priority);
    m_module.SetListener(&stream);
    m_module.Log("a", 1);
    m_module.Log("b", 2);
    std::fclose(file);
    EXPECT_EQ(m_folder.Get("wyjscie"), "<3>a\n");
}

}  // namespace
}  // namespace kalvex::app
