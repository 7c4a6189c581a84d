// The versions of scripts as they were saved.
#include "workbench/model/SnapshotStore.h"

#include <gmock/gmock.h>
#include <sys/mount.h>
#include <sys/stat.h>

#include <filesystem>
#include <iterator>

#include "platform/Files.h"
#include "support/scratch_folder.h"
#include "support/small_disk.h"

namespace kalvex::workbench {
namespace {

using testing::ElementsAre;
using testing::IsEmpty;

class SnapshotStoreTest : public testing::Test {
  protected:
    SnapshotStoreTest() : m_script(m_folder.Put("main.kx", "LOCAL A = 1\r\n")) {}

    std::string Keep(std::string_view content, std::int64_t now = 100) {
        const platform::Notice fault = m_store.Keep(m_script, content, now);
        return fault ? platform::InWords(fault, {}) : std::string();
    }
    // Content and time, newest first.
    std::vector<std::string> Kept() const {
        std::vector<std::string> kept;
        for (const Snapshot& snapshot : SnapshotStore::List(m_script)) {
            std::string content;
            std::string error;
            EXPECT_TRUE(SnapshotStore::Read(snapshot, content, error)) << error;
            EXPECT_EQ(snapshot.size, content.size());
            kept.push_back(content + " " + std::to_string(snapshot.time));
        }
        return kept;
    }

    support::ScratchFolder m_folder;
    std::string m_script;
    SnapshotStore m_store;
};

TEST_F(SnapshotStoreTest, VersionsComeNewestFirstAndOneThatIsThereOnlyOnce) {
    EXPECT_THAT(Kept(), IsEmpty());
    EXPECT_EQ(Keep("a", 100), "");
    EXPECT_EQ(Keep("a", 101), "");
    EXPECT_EQ(Keep("b", 102), "");
    EXPECT_EQ(Keep("a", 90), "");
    EXPECT_THAT(Kept(), ElementsAre("a 90", "b 102", "a 100"));
    EXPECT_EQ(SnapshotStore::List(m_script).front().file,
              m_folder.Path(".kalvex-history/main.kx/0000000003-90.kx"));
}

TEST_F(SnapshotStoreTest, OldestGoBeyondFifty) {
    for (int i = 1; i <= 53; ++i) Keep(std::to_string(i), i);
    const std::vector<std::string> kept = Kept();
    ASSERT_EQ(kept.size(), SnapshotStore::kKept);
    EXPECT_EQ(kept.front(), "53 53");
    EXPECT_EQ(kept.back(), "4 4");
}

TEST_F(SnapshotStoreTest, ForeignFilesAreLeftAlone) {
    Keep("a");
    const std::string folder = m_folder.Path(".kalvex-history/main.kx/");
    for (const char* const name : {"0000000009-x.kx", "notatki.txt", "12-3.kx", "0000000009.kx"}) {
        std::string error;
        ASSERT_TRUE(platform::WriteWholeFile(folder + name, "x", error));
    }
    EXPECT_THAT(Kept(), ElementsAre("a 100"));
    for (int i = 1; i <= 60; ++i) Keep(std::to_string(i), i);
    EXPECT_TRUE(std::filesystem::exists(folder + "notatki.txt"));
}

TEST_F(SnapshotStoreTest, VersionHasTheRightsOfItsScript) {
    ASSERT_EQ(::chmod(m_script.c_str(), 0640), 0);
    Keep("a");
    struct stat status {};
    ASSERT_EQ(::stat(SnapshotStore::List(m_script).front().file.c_str(), &status), 0);
    EXPECT_EQ(status.st_mode & 07777, 0640u);
}

TEST_F(SnapshotStoreTest, FolderThatCannotBeMadeIsToldOnce) {
    m_folder.Put(".kalvex-history", "zajęte");
    EXPECT_EQ(Keep("a"),
              "Nie można zachować wersji skryptu " + m_script + " w historii (Not a directory)");
    EXPECT_EQ(Keep("b"), "");
    std::filesystem::remove(m_folder.Path(".kalvex-history"));
    EXPECT_EQ(Keep("c"), "");
    EXPECT_THAT(Kept(), ElementsAre("c 100"));
    std::filesystem::remove_all(m_folder.Path(".kalvex-history"));
    m_folder.Put(".kalvex-history", "zajęte");
    EXPECT_NE(Keep("d"), "");
}

TEST_F(SnapshotStoreTest, FullDiskLeavesTheFormerVersionsAndNothingElse) {
    m_folder.MakeFolder("dysk");
    if (!support::MountSmallDisk(m_folder.Path("dysk"), 64))
        GTEST_SKIP() << "no disk of its own for this user";
    m_script = m_folder.Put("dysk/main.kx", "LOCAL A = 1\r\n");
    Keep("stara", 1);
    const std::string large(100'000, 'x');
    EXPECT_EQ(Keep(large, 2), "Nie można zachować wersji skryptu " + m_script +
                                  " w historii (No space left on device)");
    EXPECT_EQ(Keep(large, 3), "");
    EXPECT_THAT(Kept(), ElementsAre("stara 1"));
    const std::filesystem::directory_iterator files(m_folder.Path("dysk/.kalvex-history/main.kx"));
    EXPECT_EQ(std::distance(begin(files), end(files)), 1);
    EXPECT_EQ(Keep("nowa", 4), "");
    EXPECT_THAT(Kept(), ElementsAre("nowa 4", "stara 1"));
    ::umount2(m_folder.Path("dysk").c_str(), MNT_DETACH);
}

}  // namespace
}  // namespace kalvex::workbench
