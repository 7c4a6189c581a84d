// What a disk does to the writing of a data file: it must leave the backup whole and say error 9,
// and the line that is run again must find its way.
#include <sched.h>
#include <sys/mount.h>
#include <unistd.h>

#include <filesystem>
#include <functional>

#include "host/DataFiles.h"
#include "platform/posix/FileStore.h"
#include "support/host_world.h"

namespace kalvex::host {
namespace {

constexpr const char* kOld = "[S]\r\nA:1\r\n; uwaga\r\n";

// The real files, with something that happens between two steps.
class InterruptedFiles : public platform::FileStore {
  public:
    platform::FileOutcome Read(const std::string& path, std::string& content) override {
        beforeRead();
        return m_files.Read(path, content);
    }
    bool Create(const std::string& path, std::string_view content) override {
        beforeCreate();
        return m_files.Create(path, content);
    }
    platform::FileOutcome MoveAside(const std::string& path, const std::string& backup) override {
        beforeMove();
        return m_files.MoveAside(path, backup);
    }

    std::function<void()> beforeMove = [] {};
    std::function<void()> beforeRead = [] {};
    std::function<void()> beforeCreate = [] {};

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

    InterruptedFiles interrupted;
    engine::CKalvexDoc& script = Open("");
};

// A small disk of its own for this process; it is gone with the process.
bool MountTinyDisk(const std::string& path) {
    if (unshare(CLONE_NEWNS) != 0 && unshare(CLONE_NEWUSER | CLONE_NEWNS) != 0) return false;
    if (mount(nullptr, "/", nullptr, MS_REC | MS_PRIVATE, nullptr) != 0) return false;
    return mount("tmpfs", path.c_str(), "tmpfs", 0, "size=64k") == 0;
}

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

TEST_F(DataFileFaultsTest, FullDiskLeavesTheBackupAndTheNextTryWritesFromIt) {
    folder.MakeFolder("dysk");
    if (!MountTinyDisk(PathOf("dysk"))) GTEST_SKIP() << "no disk of its own for this user";
    std::string old = "[S]\r\nA:1\r\n";
    while (old.size() < 30000) old += "; wiersz, który zostaje\r\n";
    Put("dysk/d.txt", old);
    Put("dysk/inny", std::string(20000, 'x'));

    EXPECT_EQ(Write("dysk/d.txt"), DataFileResult::Failed);
    EXPECT_EQ(Error(script), "9 " + PathOf("dysk/d.txt"));
    EXPECT_FALSE(Has("dysk/d.txt"));
    EXPECT_EQ(Get("dysk/d.bak"), old);

    EXPECT_EQ(Write("dysk/d.txt"), DataFileResult::Failed);
    EXPECT_EQ(Get("dysk/d.bak"), old);

    std::filesystem::remove(PathOf("dysk/inny"));
    EXPECT_EQ(Write("dysk/d.txt"), DataFileResult::Data);
    EXPECT_EQ(Get("dysk/d.txt"), "[S]\r\nA:5\r\n" + old.substr(10));
    EXPECT_EQ(Get("dysk/d.bak"), old);
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

TEST_F(DataFileFaultsTest, FileTakenAwayBeforeTheBackupIsSimplyNew) {
    interrupted.beforeMove = [&] { std::filesystem::remove(PathOf("d.txt")); };
    EXPECT_EQ(Write(), DataFileResult::Data);
    EXPECT_EQ(Get("d.txt"), "[S]\r\nA:5\r\n");
    EXPECT_FALSE(Has("d.bak"));
}

TEST_F(DataFileFaultsTest, BackupTakenAwayBeforeItIsReadLeavesANewSection) {
    interrupted.beforeRead = [&] { std::filesystem::remove(PathOf("d.bak")); };
    EXPECT_EQ(Write(), DataFileResult::Data);
    EXPECT_EQ(Get("d.txt"), "[S]\r\nA:5\r\n");
}

TEST_F(DataFileFaultsTest, FolderTakenAwayBeforeTheNewFileIsMade) {
    interrupted.beforeCreate = [&] { std::filesystem::remove_all(folder.Path()); };
    EXPECT_EQ(Write(), DataFileResult::Failed);
    EXPECT_EQ(Error(script), "9 " + PathOf("d.txt"));
}

TEST_F(DataFileFaultsTest, FileThatAppearsMeanwhileIsNotOverwritten) {
    interrupted.beforeCreate = [&] { Put("d.txt", "obcy"); };
    EXPECT_EQ(Write(), DataFileResult::Failed);
    EXPECT_EQ(Error(script), "9 " + PathOf("d.txt"));
    EXPECT_EQ(Get("d.txt"), "obcy");
    EXPECT_EQ(Get("d.bak"), kOld);
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

TEST_F(DataFileFaultsTest, FileThatWouldBeItsOwnBackupIsNotOverwritten) {
    Put("e.bak", kOld);
    EXPECT_EQ(Write("e.bak"), DataFileResult::Failed);
    EXPECT_EQ(Error(script), "9 " + PathOf("e.bak"));
    EXPECT_EQ(Get("e.bak"), kOld);
}

}  // namespace
}  // namespace kalvex::host
