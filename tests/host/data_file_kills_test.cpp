// A process that is killed, or a disk that fails, at any point of the writing of a data file: file
// and backup hold the old content or the new one.
#include <fcntl.h>
#include <sys/file.h>
#include <sys/mman.h>
#include <sys/wait.h>
#include <unistd.h>

#include <atomic>
#include <charconv>
#include <chrono>
#include <csignal>
#include <cstdio>
#include <ctime>
#include <filesystem>
#include <new>
#include <optional>
#include <random>
#include <set>
#include <sstream>
#include <string_view>

#include "host/DataFile.h"
#include "host/DataFiles.h"
#include "host/counted_calls.h"
#include "platform/posix/Descriptor.h"
#include "support/host_world.h"

namespace kalvex::host {
namespace {

int g_kills = 100;  // at random

// The file with the value that was written as the number-th, among the lines of others.
std::string Content(int number) {
    std::string text = "[S]\r\nA:" + std::to_string(number) + "\r\n[INNE]\r\n";
    for (int i = 0; i < 2000; ++i) text += "B" + std::to_string(i) + ":wiersz innych\r\n";
    return text;
}

std::string Fresh(int number) {
    return "[S]\r\nA:" + std::to_string(number) + "\r\n";
}

struct State {
    std::optional<std::string> file;
    std::optional<std::string> backup;

    bool operator==(const State&) const = default;
};

// What a write of the value 2 makes of what stands there.
struct Scene {
    const char* name;
    State before;
    State after;
    const char* path = "d.txt";
    const char* target = nullptr;  // of the link that the path is
    const char* backup = "d.bak";

    // What a second write makes of it.
    State Later() const {
        const bool hasBackup = BackupPath(path) != "";
        return {after.file, hasBackup ? after.file : after.backup};
    }
};

const std::vector<Scene>& Scenes() {
    static const std::vector<Scene> scenes = {
        {"file and backup", {Content(1), "stary"}, {Content(2), Content(1)}},
        {"file alone", {Content(1), {}}, {Content(2), Content(1)}},
        {"backup alone", {{}, Content(1)}, {Content(2), Content(1)}},
        {"nothing", {}, {Fresh(2), {}}},
        {"link", {Content(1), "stary"}, {Content(2), Content(1)}, "d.txt", "cel/x.dane"},
        {"link to nothing", {}, {Fresh(2), {}}, "d.txt", "cel/x.dane"},
        {"no backup of its own", {Content(1), {}}, {Content(2), {}}, "e.bak"},
        {"backup in another folder",
         {Content(1), "stary"},
         {Content(2), Content(1)},
         "g.1/dane",
         nullptr,
         "g.bak"},
    };
    return scenes;
}

const std::vector<DiskKind>& Disks() {
    static const std::vector<DiskKind> disks = {
        {},
        {"without exchange", EINVAL},
        {"old system, without links", ENOSYS, EPERM},
        {"folders apart", 0, 0, 0, true},
    };
    return disks;
}

// Whether the disk makes a difference to it.
bool IsFitting(const DiskKind& disk, const Scene& scene) {
    const bool isSpread =
        scene.target != nullptr || std::string_view(scene.path).find('/') != std::string_view::npos;
    return isSpread || !disk.foldersApart;
}

class DataFileKillsTest : public support::HostWorld {
  protected:
    DataFileKillsTest() { script.CreateVariable("A", operands::VariableLocal); }

    DataFileResult Write(const std::string& path, int number) {
        script.Variables().Find("A")->SetValue(value::CVal(number), value::KindCurrent);
        script.SetError(operands::ErrorNone, {}, true);
        return WriteDataFile(script, files, '"' + path + "\" \"S\" -A A");
    }

    void Set(const Scene& scene) {
        for (const auto& entry : std::filesystem::directory_iterator(folder.Path())) {
            if (entry.path().filename() != "main.kx") std::filesystem::remove_all(entry.path());
        }
        folder.MakeFolder("cel");
        folder.MakeFolder("g.1");
        if (scene.target != nullptr) std::filesystem::create_symlink(scene.target, PathOf("d.txt"));
        if (scene.before.file) folder.Put(scene.path, *scene.before.file);
        if (scene.before.backup) folder.Put(scene.backup, *scene.before.backup);
    }

    std::optional<std::string> Content(const std::string& name) const {
        if (!Has(name)) return std::nullopt;
        return folder.Get(name);
    }
    State Found(const Scene& scene) const { return {Content(scene.path), Content(scene.backup)}; }

    // Files that nobody has asked for.
    std::string Litter() const {
        static const std::set<std::string> wanted = {"main.kx", "d.txt", "d.bak", "e.bak",
                                                     "x.dane",  "dane",  "g.bak"};
        std::string names;
        for (const auto& entry : std::filesystem::recursive_directory_iterator(folder.Path())) {
            const std::string name = entry.path().filename().string();
            if (!entry.is_directory() && !wanted.contains(name)) names += name + ' ';
        }
        return names;
    }

    // A write in a process of its own that the blow strikes at its at-th call: its result, nothing
    // when it was killed.
    std::optional<DataFileResult> WriteStruck(const Scene& scene, Blow blow, int at) {
        Calls() = CountedCalls{};
        Calls().disk = disk;
        Calls().blow = blow;
        Calls().at = at;
        Calls().syncs = false;
        const pid_t child = fork();
        if (child == 0) _exit(static_cast<int>(Write(scene.path, 2)));
        int status = 0;
        waitpid(child, &status, 0);
        Calls().blow = Blow::None;
        if (!WIFEXITED(status)) return std::nullopt;
        return static_cast<DataFileResult>(WEXITSTATUS(status));
    }

    // Those of a write by which the disk changes.
    std::string CallsOf(const Scene& scene) {
        static const std::set<std::string> kept = {"write",  "fsync",  "link",
                                                   "unlink", "rename", "renameat2"};
        Set(scene);
        EXPECT_EQ(WriteStruck(scene, Blow::Refuse, 0), DataFileResult::Nothing);
        std::string calls;
        std::istringstream all(Calls().all);
        for (std::string name; all >> name;) calls += kept.contains(name) ? name + ' ' : "";
        return calls;
    }

    // Each scene on each disk to which it belongs.
    template <class Look>
    void ForEachScene(const Look& look) {
        for (const DiskKind& kind : Disks()) {
            disk = kind;
            for (const Scene& scene : Scenes()) {
                SCOPED_TRACE(kind.name + std::string(": ") + scene.name);
                if (IsFitting(kind, scene)) look(scene);
            }
        }
    }

    DiskKind disk;
    engine::CKalvexDoc& script = Open("");
};

TEST_F(DataFileKillsTest, KillInAnyCallLeavesOldOrNew) {
    ForEachScene([&](const Scene& scene) {
        int at = 0;
        std::optional<DataFileResult> result;
        while (!result) {
            Set(scene);
            result = WriteStruck(scene, Blow::Kill, ++at);
            SCOPED_TRACE(std::to_string(at) + ' ' + Calls().struck);
            const State found = Found(scene);
            const State between{scene.before.file, scene.after.backup};
            EXPECT_TRUE(found == scene.before || found == between || found == scene.after);
            EXPECT_EQ(std::filesystem::is_symlink(PathOf(scene.path)), scene.target != nullptr);

            EXPECT_NE(Write(scene.path, 2), DataFileResult::Failed);
            EXPECT_TRUE(Found(scene) == (found == scene.after ? scene.Later() : scene.after));
            EXPECT_EQ(Litter(), "");
        }
        EXPECT_STREQ(Calls().struck, "");
        EXPECT_GE(at, 20);
    });
}

TEST_F(DataFileKillsTest, FailureOfAnyCallLeavesBothAsTheyWereOrIsNone) {
    // Whose failure may leave a file that the next write clears.
    const std::set<std::string> leaves = {"fstat", "lstat", "unlink"};
    ForEachScene([&](const Scene& scene) {
        int at = 0;
        int failed = 0;
        do {
            Set(scene);
            const std::optional<DataFileResult> result = WriteStruck(scene, Blow::Refuse, ++at);
            SCOPED_TRACE(std::to_string(at) + ' ' + Calls().struck);
            ASSERT_NE(result, std::nullopt);
            failed += *result == DataFileResult::Failed ? 1 : 0;
            EXPECT_TRUE(Found(scene) ==
                        (*result == DataFileResult::Failed ? scene.before : scene.after));
            EXPECT_TRUE(Litter() == "" || leaves.contains(Calls().struck)) << Litter();
            EXPECT_NE(Write(scene.path, 2), DataFileResult::Failed);
            EXPECT_EQ(Litter(), "");
        } while (*Calls().struck != '\0');
        EXPECT_GE(failed, 10);
    });
}

// What a break has left is told from what another process is writing.
TEST_F(DataFileKillsTest, LockOverANetworkIsOneOfAFileOpenForWriting) {
    const Scene& scene = Scenes().front();
    Calls() = CountedCalls{};
    Calls().disk.lockIsWrite = true;
    Set(scene);
    Put(".d.txt.kalvex-new", "reszta");
    {
        const platform::Descriptor other(open(PathOf(".d.txt.kalvex-new").c_str(), O_WRONLY));
        ASSERT_EQ(flock(other.Get(), LOCK_EX | LOCK_NB), 0);
        EXPECT_EQ(Write("d.txt", 2), DataFileResult::Failed);
    }
    EXPECT_EQ(folder.Get(".d.txt.kalvex-new"), "reszta");
    EXPECT_TRUE(Found(scene) == scene.before);
    EXPECT_EQ(Write("d.txt", 2), DataFileResult::Nothing);
    EXPECT_TRUE(Found(scene) == scene.after);
    EXPECT_EQ(Litter(), "");
}

TEST_F(DataFileKillsTest, WhatCannotBeLockedIsSomebodyElses) {
    const Scene& scene = Scenes().front();
    Calls() = CountedCalls{};
    Calls().disk.lock = ENOLCK;
    Set(scene);
    Put(".d.txt.kalvex-new", "cudze");
    EXPECT_EQ(Write("d.txt", 2), DataFileResult::Failed);
    EXPECT_EQ(folder.Get(".d.txt.kalvex-new"), "cudze");
    EXPECT_TRUE(Found(scene) == scene.before);
    std::filesystem::remove(PathOf(".d.txt.kalvex-new"));
    EXPECT_EQ(Write("d.txt", 2), DataFileResult::Nothing);
    EXPECT_TRUE(Found(scene) == scene.after);
}

TEST_F(DataFileKillsTest, ContentIsOnTheDiskBeforeItHasItsNameAndTheNameBeforeTheEnd) {
    EXPECT_EQ(CallsOf(Scenes().front()),
              "unlink unlink unlink write fsync link link renameat2 rename fsync unlink unlink "
              "unlink ");
    EXPECT_EQ(CallsOf(Scenes().back()),
              "unlink unlink unlink write fsync link link renameat2 rename fsync fsync unlink "
              "unlink unlink ");
}

// Writes one value after the other until it is killed, and tells which.
struct Progress {
    std::atomic<int> begun = 0;
    std::atomic<int> done = 0;
};

void KillMeIn(std::int64_t nanoseconds) {
    sigevent event{};
    event.sigev_notify = SIGEV_SIGNAL;
    event.sigev_signo = SIGKILL;
    timer_t timer{};
    const itimerspec setting{{}, {nanoseconds / 1'000'000'000, nanoseconds % 1'000'000'000}};
    if (timer_create(CLOCK_MONOTONIC, &event, &timer) != 0) _exit(1);
    if (timer_settime(timer, 0, &setting, nullptr) != 0) _exit(1);
}

TEST_F(DataFileKillsTest, KillAtAnyTimeLeavesOldOrNew) {
    void* const shared =
        mmap(nullptr, sizeof(Progress), PROT_READ | PROT_WRITE, MAP_SHARED | MAP_ANONYMOUS, -1, 0);
    ASSERT_NE(shared, MAP_FAILED);
    Progress& progress = *new (shared) Progress;
    Calls() = CountedCalls{};
    Put("d.txt", host::Content(0));
    const auto start = std::chrono::steady_clock::now();
    ASSERT_NE(Write("d.txt", 1), DataFileResult::Failed);
    const std::chrono::nanoseconds one = std::chrono::steady_clock::now() - start;
    std::mt19937_64 random(1);
    std::uniform_int_distribution<std::int64_t> delay(1, 4 * one.count());
    int written = 1;
    progress.begun = written;
    progress.done = written;
    for (int i = 0; i < g_kills; ++i) {
        const std::int64_t nanoseconds = delay(random);
        const pid_t child = fork();
        if (child == 0) {
            KillMeIn(nanoseconds);
            for (;;) {
                ++progress.begun;
                if (Write("d.txt", progress.begun) == DataFileResult::Failed) _exit(2);
                progress.done = progress.begun.load();
            }
        }
        int status = 0;
        waitpid(child, &status, 0);
        ASSERT_TRUE(WIFSIGNALED(status) && WTERMSIG(status) == SIGKILL) << status;
        SCOPED_TRACE("kill " + std::to_string(i) + " within " + std::to_string(progress.begun));
        const std::optional<std::string> file = Content("d.txt");
        // A process that was killed before it began leaves what the one before it has left.
        const bool hasBegun = progress.begun > written;
        const bool isNew = hasBegun && file == host::Content(progress.begun);
        const int number = isNew ? progress.begun : progress.done;
        ASSERT_TRUE(file == host::Content(number));
        const std::optional<std::string> backup = Content("d.bak");
        ASSERT_TRUE(backup == host::Content(number - 1) ||
                    (!isNew && backup == host::Content(number)));
        progress.begun = number;
        progress.done = number;
        written = number;
    }
    EXPECT_NE(Write("d.txt", progress.done + 1), DataFileResult::Failed);
    EXPECT_EQ(Litter(), "");
    std::printf("%d kills within %d writes\n", g_kills, progress.done.load());
    munmap(shared, sizeof(Progress));
}

}  // namespace
}  // namespace kalvex::host

int main(int argc, char** argv) {
    testing::InitGoogleTest(&argc, argv);
    const std::string_view option = argc > 1 ? argv[1] : "";
    const std::string_view count = argc > 2 ? argv[2] : "";
    if (option == "--kills") {
        std::from_chars(count.data(), count.data() + count.size(), kalvex::host::g_kills);
    }
    return RUN_ALL_TESTS();
}
