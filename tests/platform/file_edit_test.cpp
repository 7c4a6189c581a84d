#include "platform/FileEdit.h"

#include <fcntl.h>
#include <gtest/gtest.h>
#include <sys/file.h>
#include <unistd.h>

#include "platform/posix/Descriptor.h"
#include "support/marking_translator.h"
#include "support/scratch_folder.h"

namespace kalvex::platform {
namespace {

class FileEditTest : public testing::Test {
  protected:
    // Somebody who holds the lock of the folder.
    FileEditTest() : m_other(::open(m_folder.Path().c_str(), O_RDONLY | O_DIRECTORY | O_CLOEXEC)) {
        EXPECT_EQ(::flock(m_other.Get(), LOCK_EX), 0);
    }

    bool Edit(const LockPause& pause) {
        return EditWholeFile(
            m_folder.Path("a"),
            [](std::string& content) {
                content += "x";
                return true;
            },
            m_error, pause);
    }

    support::ScratchFolder m_folder;
    Descriptor m_other;
    Notice m_error;
};

TEST_F(FileEditTest, LockThatStaysRefusesTheEdit) {
    int pauses = 0;
    EXPECT_FALSE(Edit([&] { return ++pauses < 3; }));
    EXPECT_EQ(pauses, 3);
    EXPECT_EQ(InWords(m_error, support::MarkingTranslator(false)),
              "folder jest zablokowany przez inny proces: platform_test[" +
                  std::to_string(::getpid()) + "]");
    EXPECT_FALSE(m_folder.Has("a"));
}

TEST_F(FileEditTest, LockThatIsLetGoIsWaitedFor) {
    int pauses = 0;
    EXPECT_TRUE(Edit([&] {
        if (++pauses == 3) ::flock(m_other.Get(), LOCK_UN);
        return true;
    }));
    EXPECT_EQ(pauses, 3);
    EXPECT_EQ(m_folder.Get("a"), "x");
}

}  // namespace
}  // namespace kalvex::platform
