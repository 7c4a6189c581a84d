#include "audit/AuditTrail.h"

#include <gmock/gmock.h>
#include <gtest/gtest.h>
#include <signal.h>
#include <sys/mount.h>
#include <sys/resource.h>
#include <sys/stat.h>
#include <sys/wait.h>
#include <unistd.h>

#include <csignal>
#include <cstdlib>
#include <filesystem>
#include <functional>
#include <memory>

#include "audit/AuditFiles.h"
#include "support/log_recorder.h"
#include "support/marking_translator.h"
#include "support/scratch_folder.h"
#include "support/small_disk.h"
#include "support/zone_scope.h"
#include "text/CodePage.h"

namespace kalvex::audit {
namespace {

using testing::ElementsAre;
using testing::IsEmpty;

constexpr std::size_t kPlenty = 10000000;
constexpr std::int64_t kNow = support::Gmt(2024, 3, 10, 6);
constexpr std::int64_t kDay = 86400;

// What a child that is well ends with.
constexpr int kWell = 42;

class AuditTrailTest : public testing::Test {
  protected:
    static AuditRecord Start(std::string script) {
        return {.action = AuditAction::Start, .script = std::move(script), .user = "adam"};
    }
    std::string Line(std::string script) const {
        return AuditLine({m_clock.Now(), Start(std::move(script))});
    }
    std::string LostLine(const std::string& count) const {
        return AuditLine({m_clock.Now(), {.action = AuditAction::Lost, .newValue = count}});
    }

    void SetFile(std::size_t maxBytes = kPlenty) { m_trail->SetFile(m_name, maxBytes); }
    void Add(std::string script) { m_trail->Add(Start(std::move(script))); }
    std::string Content() const { return m_folder.Get("Kalvex.audit.log"); }

    // Runs in a process of its own what answers whether all is well.
    static bool InChild(const std::function<bool()>& run) {
        const pid_t child = ::fork();
        if (child == 0) ::_exit(run() ? kWell : EXIT_FAILURE);
        int status = 0;
        return ::waitpid(child, &status, 0) == child && WIFEXITED(status) &&
               WEXITSTATUS(status) == kWell;
    }

    support::ZoneScope m_zone{"Europe/Warsaw"};
    support::ScratchFolder m_folder;
    const std::string m_name = m_folder.Path("Kalvex.audit");
    const std::string m_path = m_name + ".log";
    platform::VirtualClock m_clock{kNow};
    support::MarkingTranslator m_translator{false};
    support::LogRecorder m_log;
    std::unique_ptr<AuditTrail> m_trail =
        std::make_unique<AuditTrail>(m_clock, m_translator, m_log);
};

// ---- lines

TEST_F(AuditTrailTest, RecordIsThereAtOnceWithItsTime) {
    SetFile();
    Add("a.kx");
    std::string content = Line("a.kx");
    EXPECT_EQ(Content(), content);
    m_clock.Advance(1000);
    Add("b.kx");
    content += Line("b.kx");
    EXPECT_EQ(Content(), content);
    EXPECT_THAT(m_log.Take(), IsEmpty());
}

TEST_F(AuditTrailTest, FileIsForItsOwnerAndForItsGroupToRead) {
    const mode_t before = ::umask(0);
    SetFile();
    Add("a.kx");
    ::umask(before);
    struct stat info {};
    ASSERT_EQ(::stat(m_path.c_str(), &info), 0);
    EXPECT_EQ(info.st_mode & 07777, 0640u);
}

TEST_F(AuditTrailTest, WithoutANameOrALimitRecordsGoNowhere) {
    Add("a.kx");
    SetFile(0);
    Add("a.kx");
    std::string error;
    EXPECT_TRUE(m_trail->CanOpen(error));
    EXPECT_EQ(m_trail->GetName(), "");
    EXPECT_FALSE(m_folder.Has("Kalvex.audit.log"));
    EXPECT_THAT(m_log.Take(), IsEmpty());
}

TEST_F(AuditTrailTest, FileOfTheLastRunIsContinued) {
    m_folder.Put("Kalvex.audit.log", "{}\n");
    SetFile();
    Add("a.kx");
    EXPECT_EQ(Content(), "{}\n" + Line("a.kx"));
    EXPECT_EQ(m_trail->GetName(), m_name);
}

TEST_F(AuditTrailTest, TornLastLineIsEnded) {
    m_folder.Put("Kalvex.audit.log", "{\"time\":\"2024");
    SetFile();
    Add("a.kx");
    EXPECT_EQ(Content(), "{\"time\":\"2024\n" + Line("a.kx"));
}

TEST_F(AuditTrailTest, FileThatWasMovedAwayIsLetGo) {
    SetFile();
    Add("a.kx");
    std::filesystem::rename(m_path, m_folder.Path("dawny"));
    Add("b.kx");
    EXPECT_EQ(m_folder.Get("dawny"), Line("a.kx") + Line("b.kx"));
    m_trail->Reopen();
    Add("c.kx");
    EXPECT_EQ(m_folder.Get("dawny"), Line("a.kx") + Line("b.kx"));
    EXPECT_EQ(Content(), Line("c.kx"));
}

TEST_F(AuditTrailTest, OtherFileIsTaken) {
    SetFile();
    Add("a.kx");
    m_trail->SetFile(m_folder.Path("Kalvex2.audit"), kPlenty);
    Add("b.kx");
    EXPECT_EQ(Content(), Line("a.kx"));
    EXPECT_EQ(m_folder.Get("Kalvex2.audit.log"), Line("b.kx"));
}

TEST_F(AuditTrailTest, WhyItCannotBeOpenedIsKnown) {
    std::string error;
    m_trail->SetFile(m_folder.Path("nie/ma"), kPlenty);
    EXPECT_FALSE(m_trail->CanOpen(error));
    EXPECT_EQ(error, "No such file or directory");
    ASSERT_EQ(::mkfifo(m_folder.Path("rura.log").c_str(), 0600), 0);
    m_trail->SetFile(m_folder.Path("rura"), kPlenty);
    EXPECT_FALSE(m_trail->CanOpen(error));
    EXPECT_EQ(error, "Not a regular file");
    SetFile();
    EXPECT_TRUE(m_trail->CanOpen(error));
}

// ---- turning over

TEST_F(AuditTrailTest, FullFileIsTurnedOver) {
    const std::size_t length = Line("a.kx").size();
    SetFile(2 * length);
    for (const char* script : {"a.kx", "b.kx", "c.kx", "d.kx", "e.kx"}) Add(script);
    EXPECT_EQ(m_folder.Get("Kalvex.audit.2.log"), Line("a.kx") + Line("b.kx"));
    EXPECT_EQ(m_folder.Get("Kalvex.audit.1.log"), Line("c.kx") + Line("d.kx"));
    EXPECT_EQ(Content(), Line("e.kx"));
}

TEST_F(AuditTrailTest, LineThatIsLongerThanTheLimitHasAFileOfItsOwn) {
    SetFile(1);
    Add("a.kx");
    EXPECT_FALSE(m_folder.Has("Kalvex.audit.1.log"));
    Add("b.kx");
    EXPECT_EQ(m_folder.Get("Kalvex.audit.1.log"), Line("a.kx"));
    EXPECT_EQ(Content(), Line("b.kx"));
}

TEST_F(AuditTrailTest, FilesAreNotBoundedByTheirNumber) {
    SetFile(1);
    std::vector<std::string> expected;
    for (int i = 10; i < 40; ++i) {
        Add(std::to_string(i));
        expected.push_back(std::to_string(i));
    }
    std::vector<std::string> scripts;
    const AuditReading reading = ReadAudit(AuditFiles(m_name), 0, {}, [&](const AuditEntry& entry) {
        scripts.push_back(entry.record.script);
        return true;
    });
    EXPECT_EQ(scripts, expected);
    EXPECT_EQ(reading.unreadable, 0u);
    EXPECT_EQ(m_folder.Get("Kalvex.audit.29.log"), Line("10"));
}

TEST_F(AuditTrailTest, FileThatCannotBeTurnedOverGrows) {
    SetFile(1);
    Add("a.kx");
    std::filesystem::permissions(
        m_folder.Path(), std::filesystem::perms::owner_read | std::filesystem::perms::owner_exec);
    const bool root = ::geteuid() == 0;
    const bool grown = InChild([&] {
        if (root && ::seteuid(65534) != 0) return false;
        Add("b.kx");
        return true;
    });
    std::filesystem::permissions(m_folder.Path(), std::filesystem::perms::owner_all);
    EXPECT_TRUE(grown);
    EXPECT_EQ(Content(), Line("a.kx") + Line("b.kx"));
}

// ---- old files

TEST_F(AuditTrailTest, FilesAreKeptFor400DaysByTheirLastLine) {
    const std::size_t length = Line("a.kx").size();
    SetFile(2 * length);
    Add("a.kx");
    Add("b.kx");
    m_clock.Advance(kDay * 1000);
    Add("c.kx");  // turns the first file over
    ASSERT_TRUE(m_folder.Has("Kalvex.audit.1.log"));
    m_clock.Advance(399 * kDay * 1000);
    Add("d.kx");
    EXPECT_TRUE(m_folder.Has("Kalvex.audit.1.log"));  // exactly 400 days old
    m_clock.Advance(1000);
    Add("e.kx");  // turns the second one over
    EXPECT_TRUE(m_folder.Has("Kalvex.audit.1.log"));
    EXPECT_FALSE(m_folder.Has("Kalvex.audit.2.log"));
    EXPECT_EQ(m_folder.Get("Kalvex.audit.1.log").find("b.kx"), std::string::npos);
}

TEST_F(AuditTrailTest, OldFilesGoWithTheFirstRecordOfADay) {
    const std::string old = AuditLine({kNow - 400 * kDay, Start("a.kx")});
    m_folder.Put("Kalvex.audit.1.log", old);
    SetFile();
    EXPECT_TRUE(m_folder.Has("Kalvex.audit.1.log"));
    Add("b.kx");
    EXPECT_TRUE(m_folder.Has("Kalvex.audit.1.log"));
    m_clock.Advance(kDay / 2 * 1000);
    Add("c.kx");
    EXPECT_TRUE(m_folder.Has("Kalvex.audit.1.log"));
    m_clock.Advance(kDay / 2 * 1000);
    Add("d.kx");
    EXPECT_FALSE(m_folder.Has("Kalvex.audit.1.log"));
}

TEST_F(AuditTrailTest, OldFilesGoWithTheFirstRecordOfARun) {
    m_folder.Put("Kalvex.audit.7.log", AuditLine({kNow - 400 * kDay - 1, Start("a.kx")}));
    m_folder.Put("Kalvex.audit.log", AuditLine({kNow - 500 * kDay, Start("a.kx")}));
    SetFile();
    Add("b.kx");
    EXPECT_FALSE(m_folder.Has("Kalvex.audit.7.log"));
    EXPECT_EQ(Content(), AuditLine({kNow - 500 * kDay, Start("a.kx")}) + Line("b.kx"));
    m_folder.Put("Kalvex2.audit.1.log", AuditLine({kNow - 400 * kDay - 1, Start("a.kx")}));
    m_trail->SetFile(m_folder.Path("Kalvex2.audit"), kPlenty);
    Add("c.kx");
    EXPECT_FALSE(m_folder.Has("Kalvex2.audit.1.log"));
}

// ---- what cannot be written

TEST_F(AuditTrailTest, LostRecordsAreCountedAndTheLogHearsOnce) {
    m_translator.marks = true;
    m_trail->SetFile(m_folder.Path("nie/ma"), kPlenty);
    for (const char* script : {"a.kx", "b.kx", "c.kx"}) Add(script);
    EXPECT_THAT(m_log.Take(),
                ElementsAre("1 <Nie można zapisać pliku " + m_folder.Path("nie/ma.log") +
                            " (No such file or directory), przepadają wpisy o zmianach>"));
    m_folder.MakeFolder("nie");
    m_clock.Advance(1000);
    Add("d.kx");
    EXPECT_EQ(m_folder.Get("nie/ma.log"), LostLine("3") + Line("d.kx"));
    Add("e.kx");
    EXPECT_EQ(m_folder.Get("nie/ma.log"), LostLine("3") + Line("d.kx") + Line("e.kx"));
    EXPECT_THAT(m_log.Take(), IsEmpty());
    std::filesystem::remove_all(m_folder.Path("nie"));
    m_trail->Reopen();
    Add("f.kx");
    EXPECT_EQ(m_log.Take().size(), 1u);
}

TEST_F(AuditTrailTest, NumberOfTheLostIsWrittenAtTheEnd) {
    m_trail->SetFile(m_folder.Path("nie/ma"), kPlenty);
    Add("a.kx");
    m_folder.MakeFolder("nie");
    m_trail.reset();
    EXPECT_EQ(m_folder.Get("nie/ma.log"), LostLine("1"));
}

TEST_F(AuditTrailTest, NumberOfTheLostIsWrittenBeforeAnotherFileIsTaken) {
    m_trail->SetFile(m_folder.Path("nie/ma"), kPlenty);
    Add("a.kx");
    m_folder.MakeFolder("nie");
    SetFile();
    Add("b.kx");
    EXPECT_EQ(m_folder.Get("nie/ma.log"), LostLine("1"));
    EXPECT_EQ(Content(), Line("b.kx"));
}

TEST_F(AuditTrailTest, FullDiskLeavesWholeLinesOnly) {
    m_folder.MakeFolder("dysk");
    if (!support::MountSmallDisk(m_folder.Path("dysk"), 64))
        GTEST_SKIP() << "no disk of its own for this user";
    m_folder.Put("dysk/inny", std::string(32000, 'x'));
    m_trail->SetFile(m_folder.Path("dysk/Kalvex.audit"), kPlenty);
    std::string expected;
    for (Add("a.kx"); m_log.lines.empty() && expected.size() < 64000; Add("a.kx")) {
        expected += Line("a.kx");
    }
    EXPECT_GT(expected.size(), 16000u);
    EXPECT_THAT(m_log.Take(),
                ElementsAre("1 Nie można zapisać pliku " + m_folder.Path("dysk/Kalvex.audit.log") +
                            " (No space left on device), przepadają wpisy o zmianach"));
    Add("a.kx");
    EXPECT_EQ(m_folder.Get("dysk/Kalvex.audit.log"), expected);
    EXPECT_THAT(m_log.Take(), IsEmpty());
    std::filesystem::remove(m_folder.Path("dysk/inny"));
    Add("b.kx");
    EXPECT_EQ(m_folder.Get("dysk/Kalvex.audit.log"), expected + LostLine("2") + Line("b.kx"));
    EXPECT_THAT(m_log.Take(), IsEmpty());
    ::umount2(m_folder.Path("dysk").c_str(), MNT_DETACH);
}

// As somebody does who needs room in a hurry.
TEST_F(AuditTrailTest, FileThatIsRemovedFromAFullDiskIsMadeAnew) {
    m_folder.MakeFolder("dysk");
    if (!support::MountSmallDisk(m_folder.Path("dysk"), 32))
        GTEST_SKIP() << "no disk of its own for this user";
    m_trail->SetFile(m_folder.Path("dysk/Kalvex.audit"), kPlenty);
    for (int records = 0; m_log.lines.empty() && records < 1000; ++records) Add("a.kx");
    ASSERT_EQ(m_log.Take().size(), 1u);
    std::filesystem::remove(m_folder.Path("dysk/Kalvex.audit.log"));
    Add("b.kx");
    EXPECT_EQ(m_folder.Get("dysk/Kalvex.audit.log"), LostLine("1") + Line("b.kx"));
    ::umount2(m_folder.Path("dysk").c_str(), MNT_DETACH);
}

// The limit lets half of the second line through, as a disk does that fills up.
TEST_F(AuditTrailTest, LineThatWasCutIsTakenBack) {
    const std::string line = Line("a.kx");
    const bool well = InChild([&] {
        std::signal(SIGXFSZ, SIG_IGN);
        rlimit limit{};
        ::getrlimit(RLIMIT_FSIZE, &limit);
        limit.rlim_cur = line.size() + line.size() / 2;
        ::setrlimit(RLIMIT_FSIZE, &limit);
        SetFile();
        Add("a.kx");
        Add("a.kx");
        if (Content() != line || m_log.lines.size() != 1) return false;
        limit.rlim_cur = limit.rlim_max;
        ::setrlimit(RLIMIT_FSIZE, &limit);
        Add("a.kx");
        return true;
    });
    EXPECT_TRUE(well);
    EXPECT_EQ(Content(), line + LostLine("1") + line);
}

// ---- kills

// Writes long records for ever and tells each by a byte.
[[noreturn]] void WriteForEver(const std::string& name, int told) {
    const platform::VirtualClock clock(kNow);
    const platform::Translator translator;
    support::LogRecorder log;
    AuditTrail trail(clock, translator, log);
    trail.SetFile(name, std::size_t{1} << 20);
    const AuditRecord record{.action = AuditAction::Value,
                             .oldValue = std::string(kLongestAuditText, 'a'),
                             .newValue = std::string(kLongestAuditText, 'b')};
    for (;;) {
        trail.Add(record);
        if (::write(told, "", 1) != 1) std::_Exit(EXIT_FAILURE);
    }
}

TEST_F(AuditTrailTest, KilledWriterLosesNothingThatItHadWritten) {
    constexpr int kKills = 50;
    std::uint64_t told = 0;
    for (int kill = 0; kill < kKills; ++kill) {
        int pipes[2];
        ASSERT_EQ(::pipe(pipes), 0);
        const pid_t child = ::fork();
        ASSERT_GE(child, 0);
        if (child == 0) {
            ::close(pipes[0]);
            WriteForEver(m_name, pipes[1]);
        }
        ::close(pipes[1]);
        char byte;
        for (int records = 0; records <= kill % 4; ++records, ++told) {
            ASSERT_EQ(::read(pipes[0], &byte, 1), 1);
        }
        ASSERT_EQ(::kill(child, SIGKILL), 0);
        int status = 0;
        ASSERT_EQ(::waitpid(child, &status, 0), child);
        ASSERT_TRUE(WIFSIGNALED(status));
        while (::read(pipes[0], &byte, 1) == 1) ++told;
        ::close(pipes[0]);
    }
    SetFile(kPlenty);
    Add("a.kx");
    std::uint64_t entries = 0;
    AuditEntry last;
    const AuditReading reading = ReadAudit(AuditFiles(m_name), 0, {}, [&](const AuditEntry& entry) {
        ++entries;
        last = entry;
        return true;
    });
    EXPECT_EQ(last, (AuditEntry{kNow, Start("a.kx")}));
    EXPECT_GE(entries - 1, told);
    EXPECT_LE(entries - 1, told + kKills);
    EXPECT_LE(reading.unreadable, static_cast<std::uint64_t>(kKills));
    EXPECT_THAT(reading.faults, IsEmpty());
}

}  // namespace
}  // namespace kalvex::audit
