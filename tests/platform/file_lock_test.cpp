#include "platform/FileLock.h"

#include <fcntl.h>
#include <gtest/gtest.h>
#include <sys/file.h>
#include <sys/stat.h>
#include <unistd.h>

#include <filesystem>

#include "platform/posix/Descriptor.h"
#include "platform/posix/Flock.h"
#include "support/scratch_folder.h"

namespace kalvex::platform {
namespace {

class FileLockTest : public testing::Test {
  protected:
    bool Acquire(FileLock& lock, const std::string& name = "lock") {
        return lock.Acquire(m_folder.Path(name), m_taken, m_error, [] { return false; });
    }
    mode_t Mode(const std::string& name = "lock") const {
        struct stat info {};
        EXPECT_EQ(::stat(m_folder.Path(name).c_str(), &info), 0);
        return info.st_mode & 07777;
    }
    static std::string Self() { return "platform_test[" + std::to_string(::getpid()) + "]"; }

    support::ScratchFolder m_folder;
    bool m_taken = true;
    std::string m_error;
};

TEST_F(FileLockTest, OneHasItAtATime) {
    FileLock first;
    FileLock second;
    ASSERT_TRUE(Acquire(first)) << m_error;
    EXPECT_FALSE(Acquire(second));
    EXPECT_TRUE(m_taken);
    EXPECT_EQ(m_error, Self());
    first.Release();
    EXPECT_TRUE(Acquire(second)) << m_error;
    EXPECT_FALSE(m_taken);
    EXPECT_FALSE(Acquire(first, "no/such/folder"));
    EXPECT_FALSE(m_taken);
    EXPECT_EQ(m_error, "No such file or directory");
}

TEST_F(FileLockTest, OneThatIsLetGoIsWaitedFor) {
    FileLock first;
    FileLock second;
    ASSERT_TRUE(Acquire(first)) << m_error;
    int pauses = 0;
    EXPECT_TRUE(second.Acquire(m_folder.Path("lock"), m_taken, m_error, [&] {
        if (++pauses == 3) first.Release();
        return true;
    }));
    EXPECT_EQ(pauses, 3);
    EXPECT_FALSE(m_taken);
}

TEST_F(FileLockTest, OneThatStaysIsWaitedForAsLongAsThePauseSays) {
    FileLock first;
    FileLock second;
    ASSERT_TRUE(Acquire(first)) << m_error;
    int pauses = 0;
    EXPECT_FALSE(
        second.Acquire(m_folder.Path("lock"), m_taken, m_error, [&] { return ++pauses < 3; }));
    EXPECT_EQ(pauses, 3);
    EXPECT_TRUE(m_taken);
}

TEST_F(FileLockTest, FileIsForItsOwnerAlone) {
    const mode_t mask = ::umask(0);
    FileLock lock;
    EXPECT_TRUE(Acquire(lock)) << m_error;
    ::umask(mask);
    EXPECT_EQ(Mode(), 0600u);
    m_folder.Put("older", "");
    ASSERT_EQ(::chmod(m_folder.Path("older").c_str(), 0664), 0);
    EXPECT_TRUE(Acquire(lock, "older")) << m_error;
    EXPECT_EQ(Mode("older"), 0600u);
}

TEST_F(FileLockTest, WhatIsNoFileOfItsOwnIsRefused) {
    m_folder.Put("file", "");
    ASSERT_EQ(::chmod(m_folder.Path("file").c_str(), 0644), 0);
    ASSERT_EQ(::symlink("file", m_folder.Path("link").c_str()), 0);
    ASSERT_EQ(::symlink("nothing", m_folder.Path("dangling").c_str()), 0);
    ASSERT_EQ(::mkfifo(m_folder.Path("pipe").c_str(), 0600), 0);
    FileLock lock;
    for (const std::string name : {"link", "dangling", "pipe"}) {
        EXPECT_FALSE(Acquire(lock, name)) << name;
        EXPECT_FALSE(m_taken) << name;
        EXPECT_EQ(m_error, "Not a regular file") << name;
    }
    EXPECT_FALSE(m_folder.Has("nothing"));
    EXPECT_EQ(Mode("file"), 0644u);
    m_folder.MakeFolder("folder");
    EXPECT_FALSE(Acquire(lock, "folder"));
    EXPECT_EQ(m_error, "Is a directory");
}

TEST_F(FileLockTest, HolderThatTheSystemDoesNotNameIsAQuestionMark) {
    const Descriptor free(::open(m_folder.Path().c_str(), O_RDONLY | O_DIRECTORY | O_CLOEXEC));
    EXPECT_EQ(LockHolder(free.Get()), "?");
    EXPECT_EQ(LockHolder(-1), "?");
    ASSERT_EQ(::flock(free.Get(), LOCK_SH), 0);
    EXPECT_EQ(LockHolder(free.Get()), Self());
}

}  // namespace
}  // namespace kalvex::platform
