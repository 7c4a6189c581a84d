#include "platform/posix/FileStore.h"

#include <fcntl.h>
#include <gtest/gtest.h>
#include <sys/file.h>
#include <sys/stat.h>
#include <unistd.h>

#include <filesystem>

#include "platform/posix/Descriptor.h"
#include "support/scratch_folder.h"

namespace kalvex::platform {
namespace {

class FileStoreTest : public testing::Test {
  protected:
    // Adds a word to a file of the folder.
    bool Add(const std::string& name, const std::string& word, const std::string& backup = "") {
        return store.Replace(folder.Path(name), backup.empty() ? "" : folder.Path(backup),
                             [&](std::string_view old) { return std::string(old) + word; });
    }

    struct stat Info(const std::string& name) const {
        struct stat info {};
        EXPECT_EQ(stat(folder.Path(name).c_str(), &info), 0) << name;
        return info;
    }

    std::size_t Count() const {
        return static_cast<std::size_t>(
            std::distance(std::filesystem::directory_iterator(folder.Path()), {}));
    }

    support::ScratchFolder folder;
    PosixFileStore store;
};

TEST_F(FileStoreTest, ReplacesAFileAndKeepsTheFormerOneAsBackup) {
    EXPECT_TRUE(Add("a", "x", "b"));
    EXPECT_EQ(folder.Get("a"), "x");
    EXPECT_FALSE(folder.Has("b"));
    EXPECT_TRUE(Add("a", "y", "b"));
    EXPECT_TRUE(Add("a", "z", "b"));
    EXPECT_EQ(folder.Get("a"), "xyz");
    EXPECT_EQ(folder.Get("b"), "xy");
    EXPECT_TRUE(Add("a", "!"));
    EXPECT_EQ(folder.Get("a"), "xyz!");
    EXPECT_EQ(folder.Get("b"), "xy");
    EXPECT_EQ(Count(), 2U);
}

TEST_F(FileStoreTest, RightsStayAndNewFilesHaveThoseOfTheMask) {
    const mode_t mask = umask(027);
    folder.Put("a", "x");
    chmod(folder.Path("a").c_str(), 0604);
    EXPECT_TRUE(Add("a", "y", "b"));
    EXPECT_TRUE(Add("n", "y", "m"));
    umask(mask);
    EXPECT_EQ(Info("a").st_mode & 07777, 0604U);
    EXPECT_EQ(Info("b").st_mode & 07777, 0604U);
    EXPECT_EQ(Info("n").st_mode & 07777, 0640U);
}

TEST_F(FileStoreTest, FileBeyondTheBoundIsNeitherReadNorReplaced) {
    folder.Put("a", "x");
    std::filesystem::resize_file(folder.Path("a"), PosixFileStore::kMostBytes + 1);
    std::string content;
    EXPECT_EQ(store.Read(folder.Path("a"), content), FileOutcome::Failed);
    EXPECT_EQ(content, "");
    EXPECT_FALSE(Add("a", "y", "b"));
    EXPECT_FALSE(folder.Has("b"));
    // The one that a new file would be made of.
    EXPECT_FALSE(Add("n", "y", "a"));
    EXPECT_FALSE(folder.Has("n"));
    EXPECT_EQ(Count(), 1U);
}

TEST_F(FileStoreTest, FileOfTheBoundIsReadAndGrowsNoFurther) {
    folder.Put("a", "x");
    std::filesystem::resize_file(folder.Path("a"), PosixFileStore::kMostBytes);
    std::string content;
    EXPECT_EQ(store.Read(folder.Path("a"), content), FileOutcome::Done);
    EXPECT_EQ(content.size(), std::size_t{PosixFileStore::kMostBytes});
    EXPECT_FALSE(Add("a", "y"));
    EXPECT_EQ(Info("a").st_size, PosixFileStore::kMostBytes);
    EXPECT_TRUE(Add("a", ""));
    EXPECT_EQ(Count(), 1U);
}

TEST_F(FileStoreTest, OwnerStays) {
    if (geteuid() != 0) GTEST_SKIP() << "wants files of two users";
    folder.Put("a", "x");
    ASSERT_EQ(chown(folder.Path("a").c_str(), 12, 34), 0);
    chmod(folder.Path("a").c_str(), 0640);
    EXPECT_TRUE(Add("a", "y", "b"));
    for (const char* name : {"a", "b"}) {
        EXPECT_EQ(Info(name).st_uid, 12U) << name;
        EXPECT_EQ(Info(name).st_gid, 34U) << name;
        EXPECT_EQ(Info(name).st_mode & 07777, 0640U) << name;
    }
}

TEST_F(FileStoreTest, BackupDoesNotFollowLaterChangesOfTheFile) {
    folder.Put("a", "x");
    EXPECT_TRUE(Add("a", "y", "b"));
    folder.Put("a", "w miejscu");
    EXPECT_EQ(folder.Get("b"), "x");
}

TEST_F(FileStoreTest, LinkStaysAndItsFileIsReplaced) {
    folder.MakeFolder("cel");
    folder.Put("cel/x", "x");
    std::filesystem::create_symlink("cel/x", folder.Path("a"));
    std::filesystem::create_symlink(folder.Path("a"), folder.Path("c"));
    EXPECT_TRUE(Add("c", "y", "b"));
    EXPECT_EQ(std::filesystem::read_symlink(folder.Path("a")), "cel/x");
    EXPECT_TRUE(std::filesystem::is_symlink(folder.Path("c")));
    EXPECT_EQ(folder.Get("cel/x"), "xy");
    EXPECT_EQ(folder.Get("b"), "x");
    EXPECT_EQ(Count(), 4U);
    EXPECT_EQ(std::distance(std::filesystem::directory_iterator(folder.Path("cel")), {}), 1);
}

TEST_F(FileStoreTest, LinkThatLeadsNowhereIsNotReplaced) {
    std::filesystem::create_symlink(folder.Path("b"), folder.Path("a"));
    std::filesystem::create_symlink(folder.Path("a"), folder.Path("b"));
    EXPECT_FALSE(Add("a", "x"));
    EXPECT_TRUE(std::filesystem::is_symlink(folder.Path("a")));
    EXPECT_EQ(Count(), 2U);
}

TEST_F(FileStoreTest, BackupThatIsALinkIsReplacedItself) {
    folder.Put("a", "x");
    folder.Put("obcy", "obcy");
    std::filesystem::create_symlink("obcy", folder.Path("b"));
    EXPECT_TRUE(Add("a", "y", "b"));
    EXPECT_FALSE(std::filesystem::is_symlink(folder.Path("b")));
    EXPECT_EQ(folder.Get("b"), "x");
    EXPECT_EQ(folder.Get("obcy"), "obcy");
}

TEST_F(FileStoreTest, WhatABreakHasLeftIsCleared) {
    folder.Put("a", "x");
    folder.Put(".a.kalvex-new", "połowa tego, co miało być zapisane");
    folder.Put(".a.kalvex-old", "stary");
    folder.Put(".a.kalvex-bak", "stary");
    folder.Put(".a.kalvex-was", "stary");
    EXPECT_TRUE(Add("a", "y", "b"));
    EXPECT_EQ(folder.Get("a"), "xy");
    EXPECT_EQ(folder.Get("b"), "x");
    EXPECT_EQ(Count(), 2U);
}

TEST_F(FileStoreTest, ReplacementThatAnotherIsAtFails) {
    folder.Put("a", "x");
    for (const char* held : {"a", ".a.kalvex-new"}) {
        if (!folder.Has(held)) folder.Put(held, "nowy");
        const Descriptor other(open(folder.Path(held).c_str(), O_RDONLY | O_CLOEXEC));
        ASSERT_EQ(flock(other.Get(), LOCK_EX), 0);
        folder.Put(".a.kalvex-old", "stary");
        EXPECT_FALSE(Add("a", "y", "b"));
        EXPECT_EQ(folder.Get("a"), "x");
        EXPECT_FALSE(folder.Has("b"));
        EXPECT_EQ(folder.Get(".a.kalvex-old"), "stary");
    }
    EXPECT_EQ(folder.Get(".a.kalvex-new"), "nowy");
    EXPECT_TRUE(Add("a", "y", "b"));
    EXPECT_EQ(Count(), 2U);
}

TEST_F(FileStoreTest, NamesOfItsOwnAreNotReplaced) {
    for (const char* name : {".a.kalvex-new", ".a.kalvex-old", ".a.kalvex-bak", ".a.kalvex-was"}) {
        folder.Put(name, "x");
        std::filesystem::create_symlink(name, folder.Path("a"));
        EXPECT_FALSE(Add(name, "y")) << name;
        EXPECT_FALSE(Add("a", "y")) << name;
        EXPECT_EQ(folder.Get(name), "x");
        std::filesystem::remove(folder.Path("a"));
    }
    EXPECT_TRUE(Add("a.kalvex-new", "y"));
}

TEST_F(FileStoreTest, NameMayBeAsLongAsNamesCanBe) {
    const std::string name(255, 'd');
    EXPECT_TRUE(Add(name, "x", "b"));
    EXPECT_TRUE(Add(name, "y", "b"));
    EXPECT_EQ(folder.Get(name), "xy");
    EXPECT_EQ(folder.Get("b"), "x");
    EXPECT_EQ(Count(), 2U);
}

TEST_F(FileStoreTest, FileInTheWorkingFolderMayBeNamedAlone) {
    const std::filesystem::path kept = std::filesystem::current_path();
    std::filesystem::current_path(folder.Path());
    EXPECT_TRUE(store.Replace("a", "b", [](std::string_view) { return std::string("x"); }));
    std::filesystem::current_path(kept);
    EXPECT_EQ(folder.Get("a"), "x");
}

TEST_F(FileStoreTest, FolderThatIsNotThereTakesNoFile) {
    EXPECT_FALSE(Add("brak/a", "x"));
    EXPECT_EQ(Count(), 0U);
}

}  // namespace
}  // namespace kalvex::platform
