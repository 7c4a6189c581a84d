#include "platform/Instances.h"

#include <gtest/gtest.h>

#include "support/scratch_folder.h"

namespace kalvex::platform {
namespace {

// Two objects are two processes: a lock belongs to the opening of its file.
TEST(InstancesTest, OneProcessIsThePrimaryOne) {
    const support::ScratchFolder folder;
    auto first = std::make_unique<FileInstances>(folder.Path("run/sorvane"));
    FileInstances second(folder.Path("run/sorvane"));
    EXPECT_FALSE(first->IsPrimaryInstance());
    EXPECT_TRUE(first->SetPrimaryInstance("Kalvex"));
    EXPECT_TRUE(first->SetPrimaryInstance("Kalvex"));
    EXPECT_TRUE(first->IsPrimaryInstance());
    EXPECT_FALSE(second.SetPrimaryInstance("Kalvex"));
    EXPECT_FALSE(second.IsPrimaryInstance());
    first.reset();
    EXPECT_TRUE(second.SetPrimaryInstance("Kalvex"));
}

TEST(InstancesTest, EachNameAndNumberRunsOnce) {
    const support::ScratchFolder folder;
    auto first = std::make_unique<FileInstances>(folder.Path());
    FileInstances second(folder.Path());
    std::string error;
    EXPECT_TRUE(first->LockInstance("Kalvex", 1, error));
    EXPECT_FALSE(second.LockInstance("Kalvex", 1, error));
    EXPECT_EQ(error, "");
    EXPECT_TRUE(second.LockInstance("Kalvex", 2, error));
    EXPECT_TRUE(second.LockInstance("Kalvex_RC", 1, error));
    first.reset();
    EXPECT_TRUE(second.LockInstance("Kalvex", 1, error));
}

TEST(InstancesTest, FolderThatCannotBeMadeIsTold) {
    const support::ScratchFolder folder;
    folder.Put("plik", "");
    FileInstances instances(folder.Path("plik/run"));
    std::string error;
    EXPECT_FALSE(instances.LockInstance("Kalvex", 1, error));
    EXPECT_EQ(error, folder.Path("plik/run/Kalvex.1.lock") + ": Not a directory");
    EXPECT_FALSE(instances.SetPrimaryInstance("Kalvex"));
}

}  // namespace
}  // namespace kalvex::platform
