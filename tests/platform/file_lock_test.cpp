#include "platform/FileLock.h"

#include <gtest/gtest.h>

#include "support/scratch_folder.h"

namespace kalvex::platform {
namespace {

TEST(FileLockTest, OneHasItAtATime) {
    const support::ScratchFolder folder;
    const std::string path = folder.Path("lock");
    FileLock first;
    FileLock second;
    bool taken = true;
    std::string error;
    ASSERT_TRUE(first.Acquire(path, taken, error)) << error;
    EXPECT_FALSE(second.Acquire(path, taken, error));
    EXPECT_TRUE(taken);
    first.Release();
    EXPECT_TRUE(second.Acquire(path, taken, error)) << error;
    EXPECT_FALSE(taken);
    EXPECT_FALSE(first.Acquire(folder.Path("no/such/folder"), taken, error));
    EXPECT_FALSE(taken);
    EXPECT_EQ(error, "No such file or directory");
}

}  // namespace
}  // namespace kalvex::platform
