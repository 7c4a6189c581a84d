#include "audit/AuditFiles.h"

#include <gmock/gmock.h>
#include <gtest/gtest.h>
#include <sys/stat.h>

#include <filesystem>

#include "support/scratch_folder.h"
#include "support/zone_scope.h"
#include "text/CodePage.h"

namespace kalvex::audit {
namespace {

using testing::ElementsAre;
using testing::IsEmpty;

constexpr std::int64_t kNow = support::Gmt(2024, 3, 10, 6);

class AuditFilesTest : public testing::Test {
  protected:
    static std::string Line(std::int64_t time, std::string script = {}, std::string name = {},
                            AuditAction action = AuditAction::Value) {
        return AuditLine(
            {time, {.action = action, .script = std::move(script), .name = std::move(name)}});
    }

    // Those that are there, without their folder.
    std::vector<std::string> Files() const {
        std::vector<std::string> files = AuditFiles(m_name);
        for (std::string& file : files) {
            EXPECT_TRUE(file.starts_with(m_folder.Path("")));
            file.erase(0, m_folder.Path("").size());
        }
        return files;
    }

    // The entries as "seconds name".
    std::vector<std::string> Read(std::int64_t since = 0, std::string_view script = {}) {
        return Read(AuditFiles(m_name), since, script);
    }
    std::vector<std::string> Read(const std::vector<std::string>& files, std::int64_t since,
                                  std::string_view script) {
        std::vector<std::string> entries;
        m_reading = ReadAudit(files, since, script, [&](const AuditEntry& entry) {
            entries.push_back(std::to_string(entry.time) + " " + entry.record.name);
            return true;
        });
        return entries;
    }

    support::ZoneScope m_zone{"Europe/Warsaw"};
    support::ScratchFolder m_folder;
    const std::string m_name = m_folder.Path("Kalvex.audit");
    AuditReading m_reading;
};

// ---- names

TEST_F(AuditFilesTest, FilesAreListedOldestFirst) {
    EXPECT_THAT(Files(), IsEmpty());
    for (const char* file :
         {"Kalvex.audit.log", "Kalvex.audit.2.log", "Kalvex.audit.10.log", "Kalvex.audit.1.log",
          "Kalvex.audit.0.log", "Kalvex.audit.01.log", "Kalvex.audit.-1.log", "Kalvex.audit.x.log",
          "Kalvex.audit.3.txt", "Kalvex.audit3.log", "Kalvex.3.log", "Kalvex2.audit.3.log",
          "Kalvex.audit.1.2.log", "Kalvex.audit..log"}) {
        m_folder.Put(file, "");
    }
    EXPECT_THAT(Files(), ElementsAre("Kalvex.audit.10.log", "Kalvex.audit.2.log",
                                     "Kalvex.audit.1.log", "Kalvex.audit.log"));
    EXPECT_THAT(AuditFiles(m_folder.Path("nie/ma")), IsEmpty());
}

TEST_F(AuditFilesTest, NameWithoutAFolderIsInTheWorkingDirectory) {
    const std::filesystem::path before = std::filesystem::current_path();
    std::filesystem::current_path(m_folder.Path());
    m_folder.Put("Kalvex.audit.1.log", "");
    m_folder.Put("Kalvex.audit.log", "");
    const std::vector<std::string> files = AuditFiles("Kalvex.audit");
    std::filesystem::current_path(before);
    EXPECT_THAT(files, ElementsAre("Kalvex.audit.1.log", "Kalvex.audit.log"));
}

// ---- turning over

TEST_F(AuditFilesTest, EachFileGetsTheNextNumber) {
    m_folder.Put("Kalvex.audit.log", "c");
    m_folder.Put("Kalvex.audit.1.log", "b");
    m_folder.Put("Kalvex.audit.2.log", "a");
    EXPECT_TRUE(TurnAuditFilesOver(m_name));
    EXPECT_THAT(Files(),
                ElementsAre("Kalvex.audit.3.log", "Kalvex.audit.2.log", "Kalvex.audit.1.log"));
    EXPECT_EQ(m_folder.Get("Kalvex.audit.3.log"), "a");
    EXPECT_EQ(m_folder.Get("Kalvex.audit.2.log"), "b");
    EXPECT_EQ(m_folder.Get("Kalvex.audit.1.log"), "c");
}

TEST_F(AuditFilesTest, GapThatAnInterruptionLeftIsClosed) {
    m_folder.Put("Kalvex.audit.log", "c");
    m_folder.Put("Kalvex.audit.1.log", "b");
    m_folder.Put("Kalvex.audit.3.log", "a");
    EXPECT_TRUE(TurnAuditFilesOver(m_name));
    EXPECT_EQ(m_folder.Get("Kalvex.audit.3.log"), "a");
    EXPECT_EQ(m_folder.Get("Kalvex.audit.2.log"), "b");
    EXPECT_EQ(m_folder.Get("Kalvex.audit.1.log"), "c");
    EXPECT_FALSE(m_folder.Has("Kalvex.audit.log"));
}

TEST_F(AuditFilesTest, FileThatIsMissingCannotBeTurnedOver) {
    EXPECT_FALSE(TurnAuditFilesOver(m_name));
    EXPECT_FALSE(TurnAuditFilesOver(m_folder.Path("nie/ma")));
}

// ---- old files

TEST_F(AuditFilesTest, FilesGoByTheirLastLine) {
    m_folder.Put("Kalvex.audit.4.log", Line(kNow - 3) + Line(kNow - 2));
    m_folder.Put("Kalvex.audit.3.log", Line(kNow - 2) + Line(kNow - 1));
    m_folder.Put("Kalvex.audit.2.log", Line(kNow - 9) + Line(kNow));
    m_folder.Put("Kalvex.audit.1.log", Line(kNow + 9) + Line(kNow - 1));
    m_folder.Put("Kalvex.audit.log", Line(kNow - 9));
    RemoveAuditFiles(m_name, kNow);
    EXPECT_THAT(Files(), ElementsAre("Kalvex.audit.2.log", "Kalvex.audit.log"));
}

TEST_F(AuditFilesTest, LastLineIsTheLastThatTellsATime) {
    m_folder.Put("Kalvex.audit.1.log", Line(kNow - 9) + Line(kNow) + "{\"time\":\"20\nx\n\n");
    m_folder.Put("Kalvex.audit.2.log", Line(kNow) + Line(kNow - 9) + "{\"time\":\"20");
    const std::string torn(300000, 'x');
    m_folder.Put("Kalvex.audit.3.log", Line(kNow - 9) + torn);
    m_folder.Put("Kalvex.audit.4.log", Line(kNow) + torn);
    RemoveAuditFiles(m_name, kNow);
    EXPECT_THAT(Files(), ElementsAre("Kalvex.audit.4.log", "Kalvex.audit.1.log"));
}

TEST_F(AuditFilesTest, FileThatTellsNoTimeStays) {
    m_folder.Put("Kalvex.audit.1.log", "");
    m_folder.Put("Kalvex.audit.2.log", "x\n");
    m_folder.MakeFolder("Kalvex.audit.3.log");
    RemoveAuditFiles(m_name, kNow);
    EXPECT_THAT(Files(),
                ElementsAre("Kalvex.audit.3.log", "Kalvex.audit.2.log", "Kalvex.audit.1.log"));
}

// A value that fills more than a piece of the file.
TEST_F(AuditFilesTest, LongLastLineIsFound) {
    const std::string text(kLongestAuditText, '\x01');
    const std::string old =
        AuditLine({kNow - 1, {.action = AuditAction::Value, .oldValue = text, .newValue = text}});
    ASSERT_GT(old.size(), 150000u);
    m_folder.Put("Kalvex.audit.1.log", Line(kNow) + old);
    m_folder.Put("Kalvex.audit.2.log", old);
    RemoveAuditFiles(m_name, kNow);
    EXPECT_THAT(Files(), IsEmpty());
}

// ---- reading

TEST_F(AuditFilesTest, EntriesComeOldestFirst) {
    m_folder.Put("Kalvex.audit.2.log", Line(1, "", "a") + Line(2, "", "b"));
    m_folder.Put("Kalvex.audit.1.log", Line(3, "", "c"));
    m_folder.Put("Kalvex.audit.log", Line(4, "", "d"));
    EXPECT_THAT(Read(), ElementsAre("1 a", "2 b", "3 c", "4 d"));
    EXPECT_EQ(m_reading.unreadable, 0u);
    EXPECT_THAT(m_reading.faults, IsEmpty());
}

TEST_F(AuditFilesTest, EntryIsWhole) {
    const AuditEntry written{kNow,
                             {AuditAction::Start, "a.kx", "adam", "10.1.2.3", "a_RC", "n", "1",
                              text::FromUtf8("żółty")}};
    m_folder.Put("Kalvex.audit.log", AuditLine(written));
    std::vector<AuditEntry> entries;
    ReadAudit(AuditFiles(m_name), 0, {}, [&](const AuditEntry& entry) {
        entries.push_back(entry);
        return true;
    });
    EXPECT_THAT(entries, ElementsAre(written));
}

TEST_F(AuditFilesTest, TimeBoundsFromBelow) {
    m_folder.Put("Kalvex.audit.log", Line(1) + Line(3) + Line(2) + Line(2).substr(0, 100) + "\n" +
                                         Line(4) + "{ \"seconds\" : 1, \"action\": \"start\"}\n" +
                                         "{ \"seconds\" : 7, \"action\": \"start\"}\n");
    EXPECT_THAT(Read(3), ElementsAre("3 ", "4 ", "7 "));
    EXPECT_EQ(m_reading.unreadable, 0u);
}

TEST_F(AuditFilesTest, ScriptIsTakenByItsNameWithWhatConcernsAll) {
    m_folder.Put("Kalvex.audit.log", Line(1, "/a.kx", "a") + Line(2, "/b.kx", "b") +
                                         Line(3, "", "none") +
                                         Line(4, "", "lost", AuditAction::Lost) +
                                         Line(5, "", "back", AuditAction::SessionsTakenBack) +
                                         Line(6, "/b.kx", "back", AuditAction::SessionsTakenBack) +
                                         Line(7, "/A.kx", "A"));
    EXPECT_THAT(Read(0, "/a.kx"), ElementsAre("1 a", "4 lost", "5 back"));
    EXPECT_THAT(Read(2, "/b.kx"), ElementsAre("2 b", "4 lost", "5 back", "6 back"));
}

TEST_F(AuditFilesTest, LinesThatAreNoneAreCounted) {
    m_folder.Put("Kalvex.audit.1.log", "x\n" + Line(1) + "{\"time\":\"2024\n" + Line(2) + "\n");
    m_folder.Put("Kalvex.audit.log", Line(3) + Line(4).substr(0, 100));
    EXPECT_THAT(Read(), ElementsAre("1 ", "2 ", "3 "));
    EXPECT_EQ(m_reading.unreadable, 4u);
}

TEST_F(AuditFilesTest, LineWithoutItsEndIsReadWhenItIsWhole) {
    std::string line = Line(1);
    line.pop_back();
    m_folder.Put("Kalvex.audit.log", line);
    EXPECT_THAT(Read(), ElementsAre("1 "));
    EXPECT_EQ(m_reading.unreadable, 0u);
}

TEST_F(AuditFilesTest, LongLinesAreReadUpToTheLongest) {
    const std::string text(kLongestAuditText, '\x01');
    const std::string longest =
        AuditLine({2, {AuditAction::Value, text, text, text, text, "n", text, text}});
    m_folder.Put("Kalvex.audit.log", Line(1) + longest +
                                         std::string(kLongestAuditLine + 200000, ' ') + Line(3) +
                                         std::string(kLongestAuditLine, 'x') + '\n' + Line(4));
    EXPECT_THAT(Read(), ElementsAre("1 ", "2 n", "4 "));
    EXPECT_EQ(m_reading.unreadable, 2u);
}

TEST_F(AuditFilesTest, ReaderMayHaveEnough) {
    m_folder.Put("Kalvex.audit.1.log", Line(1) + Line(2));
    m_folder.Put("Kalvex.audit.log", Line(3));
    int entries = 0;
    ReadAudit(AuditFiles(m_name), 0, {}, [&](const AuditEntry&) { return ++entries < 2; });
    EXPECT_EQ(entries, 2);
}

TEST_F(AuditFilesTest, FilesTurnedOverMeanwhileAreReadOnce) {
    m_folder.Put("Kalvex.audit.1.log", Line(1));
    m_folder.Put("Kalvex.audit.log", Line(2));
    std::vector<std::int64_t> times;
    ReadAudit(AuditFiles(m_name), 0, {}, [&](const AuditEntry& entry) {
        if (times.empty()) {
            EXPECT_TRUE(TurnAuditFilesOver(m_name));
            m_folder.Put("Kalvex.audit.log", Line(3));
        }
        times.push_back(entry.time);
        return true;
    });
    EXPECT_THAT(times, ElementsAre(1, 2));
    std::filesystem::create_hard_link(m_folder.Path("Kalvex.audit.1.log"),
                                      m_folder.Path("Kalvex.audit.3.log"));
    EXPECT_THAT(Read(), ElementsAre("1 ", "2 ", "3 "));
}

TEST_F(AuditFilesTest, FileThatCannotBeReadIsTold) {
    m_folder.Put("Kalvex.audit.log", Line(1));
    m_folder.MakeFolder("Kalvex.audit.1.log");
    EXPECT_THAT(Read(), ElementsAre("1 "));
    EXPECT_THAT(m_reading.faults,
                ElementsAre(m_folder.Path("Kalvex.audit.1.log") + " (Is a directory)"));
    EXPECT_THAT(Read({m_folder.Path("gone"), m_folder.Path("Kalvex.audit.log")}, 0, {}),
                ElementsAre("1 "));
    EXPECT_THAT(m_reading.faults, IsEmpty());
    // A file of a process's memory opens and cannot be read at its beginning.
    EXPECT_THAT(Read({"/proc/self/mem"}, 0, {}), IsEmpty());
    EXPECT_THAT(m_reading.faults, ElementsAre("/proc/self/mem (Input/output error)"));
}

}  // namespace
}  // namespace kalvex::audit
