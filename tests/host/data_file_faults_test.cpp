// What a disk and other programs do to the writing of a data file: it must leave file and backup
// whole and say error 9, and the line that is run again must find its way.
#include <sys/mount.h>
#include <sys/stat.h>
#include <unistd.h>

#include <filesystem>
#include <functional>
#include <set>
#include <utility>

#include "host/DataFiles.h"
#include "platform/posix/FileStore.h"
#include "support/host_world.h"
#include "support/small_disk.h"

namespace kalvex::host {
namespace {

constexpr const char* kOld = "[S]\r\nA:1\r\n; uwaga\r\n";

// The real files, with something that happens between reading and writing.
class InterruptedFiles : public platform::FileStore {
  public:
    platform::FileOutcome Read(const std::string& path, std::string& content) override {
        return m_files.Read(path, content);
    }
    bool Replace(const std::string& path, const std::string& backup,
                 const Rewriting& rewrite) override {
        return m_files.Replace(path, backup, [&](std::string_view old) {
            meanwhile();
            return rewrite(old);
        });
    }

    std::function<void()> meanwhile = [] {};

  private:
    platform::PosixFileStore m_files;
};

class DataFileFaultsTest : public support::HostWorld {
  protected:
    DataFileFaultsTest() {
        Put("d.txt", kOld);
        script.CreateVariable("A", operands::VariableLocal);
        script.Variables().Find("A")->SetValue(value::CVal(5), value::KindCurrent);
    }

    DataFileResult Write(const std::string& path = "d.txt") {
        script.SetError(operands::ErrorNone, {}, true);
        return WriteDataFile(script, interrupted, '"' + path + "\" \"S\" -A A");
    }

    // What the folder holds, in order, the script's own text left out.
    std::string Names(const std::string& inside = "") {
        std::set<std::string> names;
        for (const auto& entry : std::filesystem::directory_iterator(folder.Path() + inside)) {
            names.insert(entry.path().filename().string());
        }
        names.erase("main.kx");
        std::string text;
        for (const std::string& name : names) text += name + ' ';
        return text;
    }

    InterruptedFiles interrupted;
    engine::CKalvexDoc& script = Open("");
};

// As a user who is nobody in particular, for whom a folder without write permission is closed.
class CommonUser {
  public:
    CommonUser() : m_wasRoot(geteuid() == 0 && seteuid(kNobody) == 0) {}
    ~CommonUser() {
        if (m_wasRoot && seteuid(0) != 0) std::abort();
    }

  private:
    static constexpr uid_t kNobody = 65534;
    bool m_wasRoot;
};

TEST_F(DataFileFaultsTest, FullDiskLeavesFileAndBackupAsTheyWere) {
    folder.MakeFolder("dysk");
    if (!support::MountSmallDisk(PathOf("dysk"), 64))
        GTEST_SKIP() << "no disk of its own for this user";
    std::string old = "[S]\r\nA:1\r\n";
    while (old.size() < 24000) old += "; wiersz, który zostaje\r\n";
    Put("dysk/d.txt", old);
    Put("dysk/d.bak", "stary");
    Put("dysk/inny", std::string(20000, 'x'));

    for (int i = 0; i < 2; ++i) {
        EXPECT_EQ(Write("dysk/d.txt"), DataFileResult::Failed);
        EXPECT_EQ(Error(script), "9 " + PathOf("dysk/d.txt"));
        EXPECT_EQ(Get("dysk/d.txt"), old);
        EXPECT_EQ(Get("dysk/d.bak"), "stary");
        EXPECT_EQ(Names("/dysk"), "d.bak d.txt inny ");
    }

    std::filesystem::remove(PathOf("dysk/inny"));
    EXPECT_EQ(Write("dysk/d.txt"), DataFileResult::Data);
    EXPECT_EQ(Get("dysk/d.txt"), "[S]\r\nA:5\r\n" + old.substr(10));
    EXPECT_EQ(Get("dysk/d.bak"), old);
    EXPECT_EQ(Names("/dysk"), "d.bak d.txt ");
    umount2(PathOf("dysk").c_str(), MNT_DETACH);
}

TEST_F(DataFileFaultsTest, ClosedFolderKeepsTheFileAsItIs) {
    Put("d.bak", "stary");
    std::filesystem::permissions(folder.Path(), std::filesystem::perms(0555));
    {
        const CommonUser user;
        EXPECT_EQ(Write(), DataFileResult::Failed);
    }
    EXPECT_EQ(Error(script), "9 " + PathOf("d.txt"));
    EXPECT_EQ(Get("d.txt"), kOld);
    EXPECT_EQ(Get("d.bak"), "stary");
    std::filesystem::permissions(folder.Path(), std::filesystem::perms(0755));
}

TEST_F(DataFileFaultsTest, ClosedFolderTakesNoNewFile) {
    std::filesystem::permissions(folder.Path(), std::filesystem::perms(0555));
    {
        const CommonUser user;
        EXPECT_EQ(Write("nowy.txt"), DataFileResult::Failed);
    }
    EXPECT_EQ(Error(script), "9 " + PathOf("nowy.txt"));
    std::filesystem::permissions(folder.Path(), std::filesystem::perms(0755));
}

TEST_F(DataFileFaultsTest, SomebodyElsesFileInAStickyFolderStays) {
    if (geteuid() != 0) GTEST_SKIP() << "wants files of two users";
    using std::filesystem::perms;
    std::filesystem::permissions(folder.Path(), perms(01777));
    std::filesystem::permissions(PathOf("d.txt"), perms(0666));
    for (const char* backup : {"", "stary"}) {
        if (*backup != '\0') Put("d.bak", backup);
        if (*backup != '\0') std::filesystem::permissions(PathOf("d.bak"), perms(0666));
        const std::string names = Names();
        {
            const CommonUser user;
            EXPECT_EQ(Write(), DataFileResult::Failed);
        }
        EXPECT_EQ(Error(script), "9 " + PathOf("d.txt"));
        EXPECT_EQ(Get("d.txt"), kOld);
        EXPECT_EQ(Has("d.bak") ? Get("d.bak") : "", backup);
        EXPECT_EQ(Names(), names);
    }
}

TEST_F(DataFileFaultsTest, BackupOfAFileThatCannotBeReplacedComesBack) {
    if (geteuid() != 0) GTEST_SKIP() << "wants files of two users";
    using std::filesystem::perms;
    std::filesystem::permissions(folder.Path(), perms(01777));
    std::filesystem::permissions(PathOf("d.txt"), perms(0666));
    {
        const CommonUser user;
        Put("d.bak", "stary");
        EXPECT_EQ(Write(), DataFileResult::Failed);
    }
    EXPECT_EQ(Get("d.txt"), kOld);
    EXPECT_EQ(Get("d.bak"), "stary");
    EXPECT_EQ(Names(), "d.bak d.txt ");
}

TEST_F(DataFileFaultsTest, FileTakenAwayMeanwhileStaysAway) {
    interrupted.meanwhile = [&] { std::filesystem::remove(PathOf("d.txt")); };
    EXPECT_EQ(Write(), DataFileResult::Failed);
    EXPECT_EQ(Error(script), "9 " + PathOf("d.txt"));
    EXPECT_EQ(Names(), "");
}

TEST_F(DataFileFaultsTest, FileChangedMeanwhileKeepsTheChangeAndTheNextTryKnowsIt) {
    interrupted.meanwhile = [&] { Put("d.txt", "[S]\r\nA:1\r\nB:2\r\n"); };
    EXPECT_EQ(Write(), DataFileResult::Failed);
    EXPECT_EQ(Error(script), "9 " + PathOf("d.txt"));
    EXPECT_EQ(Get("d.txt"), "[S]\r\nA:1\r\nB:2\r\n");
    EXPECT_FALSE(Has("d.bak"));
    interrupted.meanwhile = [] {};
    EXPECT_EQ(Write(), DataFileResult::Data);
    EXPECT_EQ(Get("d.txt"), "[S]\r\nA:5\r\nB:2\r\n");
}

TEST_F(DataFileFaultsTest, FolderTakenAwayMeanwhile) {
    interrupted.meanwhile = [&] { std::filesystem::remove_all(folder.Path()); };
    EXPECT_EQ(Write(), DataFileResult::Failed);
    EXPECT_EQ(Error(script), "9 " + PathOf("d.txt"));
}

TEST_F(DataFileFaultsTest, FileThatAppearsMeanwhileIsNotOverwritten) {
    std::filesystem::rename(PathOf("d.txt"), PathOf("d.bak"));
    interrupted.meanwhile = [&] { Put("d.txt", "obcy"); };
    EXPECT_EQ(Write(), DataFileResult::Failed);
    EXPECT_EQ(Error(script), "9 " + PathOf("d.txt"));
    EXPECT_EQ(Get("d.txt"), "obcy");
    EXPECT_EQ(Get("d.bak"), kOld);
    EXPECT_EQ(Names(), "d.bak d.txt ");
}

TEST_F(DataFileFaultsTest, NewFileThatAnotherHasMadeAnewIsNotPutInPlace) {
    Put("d.bak", "stary");
    interrupted.meanwhile = [&] {
        std::filesystem::remove(PathOf(".d.txt.kalvex-new"));
        Put(".d.txt.kalvex-new", "obcy");
    };
    EXPECT_EQ(Write(), DataFileResult::Failed);
    EXPECT_EQ(Error(script), "9 " + PathOf("d.txt"));
    EXPECT_EQ(Get("d.txt"), kOld);
    EXPECT_EQ(Get("d.bak"), "stary");
    EXPECT_EQ(Get(".d.txt.kalvex-new"), "obcy");
    EXPECT_EQ(Names(), ".d.txt.kalvex-new d.bak d.txt ");
}

TEST_F(DataFileFaultsTest, LeftoverThatMayNotBeWrittenIsCleared) {
    std::filesystem::permissions(folder.Path(), std::filesystem::perms(0777));
    {
        const CommonUser user;
        std::filesystem::remove(PathOf("d.txt"));
        Put(".d.txt.kalvex-new", "reszta");
        std::filesystem::permissions(PathOf(".d.txt.kalvex-new"), std::filesystem::perms(0444));
        EXPECT_EQ(Write(), DataFileResult::Data);
    }
    EXPECT_EQ(Get("d.txt"), "[S]\r\nA:5\r\n");
    EXPECT_EQ(Names(), "d.txt ");
}

TEST_F(DataFileFaultsTest, WriteWithinAWriteFailsAndSpoilsNothing) {
    bool inside = false;
    interrupted.meanwhile = [&] {
        if (std::exchange(inside, true)) return;
        EXPECT_EQ(Write(), DataFileResult::Failed);
        EXPECT_EQ(Error(script), "9 " + PathOf("d.txt"));
    };
    EXPECT_EQ(Write(), DataFileResult::Data);
    EXPECT_EQ(Get("d.txt"), "[S]\r\nA:5\r\n; uwaga\r\n");
    EXPECT_EQ(Get("d.bak"), kOld);
    EXPECT_EQ(Names(), "d.bak d.txt ");
}

TEST_F(DataFileFaultsTest, BackupWithoutItsFileIsTheSource) {
    std::filesystem::rename(PathOf("d.txt"), PathOf("d.bak"));
    EXPECT_EQ(Write(), DataFileResult::Data);
    EXPECT_EQ(Get("d.txt"), "[S]\r\nA:5\r\n; uwaga\r\n");
    EXPECT_EQ(Get("d.bak"), kOld);
}

TEST_F(DataFileFaultsTest, FolderUnderTheBackupsNameStopsTheWrite) {
    std::filesystem::create_directory(PathOf("d.bak"));
    EXPECT_EQ(Write(), DataFileResult::Failed);
    EXPECT_EQ(Error(script), "9 " + PathOf("d.txt"));
    EXPECT_EQ(Get("d.txt"), kOld);
}

TEST_F(DataFileFaultsTest, FolderUnderTheFilesNameIsNotMoved) {
    std::filesystem::create_directory(PathOf("e.txt"));
    EXPECT_EQ(Write("e.txt"), DataFileResult::Failed);
    EXPECT_EQ(Error(script), "9 " + PathOf("e.txt"));
    EXPECT_TRUE(std::filesystem::is_directory(PathOf("e.txt")));
    EXPECT_FALSE(Has("e.bak"));
    EXPECT_EQ(ReadDataFile(script, interrupted, "\"e.txt\""), DataFileResult::Failed);
    EXPECT_EQ(Error(script), "9 " + PathOf("e.txt"));
}

TEST_F(DataFileFaultsTest, FileThatWouldBeItsOwnBackupHasNone) {
    Put("e.bak", kOld);
    Put("e.txt", "obcy");
    EXPECT_EQ(Write("e.bak"), DataFileResult::Data);
    EXPECT_EQ(Get("e.bak"), "[S]\r\nA:5\r\n; uwaga\r\n");
    EXPECT_EQ(Write("f.bak"), DataFileResult::Data);
    EXPECT_EQ(Get("f.bak"), "[S]\r\nA:5\r\n");
    EXPECT_EQ(Names(), "d.txt e.bak e.txt f.bak ");
}

TEST_F(DataFileFaultsTest, WhatIsNoRegularFileIsRefusedAndNotWaitedFor) {
    ASSERT_EQ(mkfifo(PathOf("f.txt").c_str(), 0600), 0);
    ASSERT_EQ(mkfifo(PathOf("g.bak").c_str(), 0600), 0);
    ASSERT_EQ(mkfifo(PathOf("d.bak").c_str(), 0600), 0);
    for (const std::string& path : {PathOf("f.txt"), std::string("/dev/zero")}) {
        script.SetError(operands::ErrorNone, {}, true);
        EXPECT_EQ(ReadDataFile(script, interrupted, '"' + path + '"'), DataFileResult::Failed);
        EXPECT_EQ(Error(script), "9 " + path);
        EXPECT_EQ(Write(path), DataFileResult::Failed);
        EXPECT_EQ(Error(script), "9 " + path);
    }
    EXPECT_EQ(Write("g.txt"), DataFileResult::Failed);
    EXPECT_EQ(Write("d.txt"), DataFileResult::Failed);
    EXPECT_EQ(Error(script), "9 " + PathOf("d.txt"));
    EXPECT_EQ(Get("d.txt"), kOld);
    EXPECT_EQ(Names(), "d.bak d.txt f.txt g.bak ");
}

}  // namespace
}  // namespace kalvex::host
