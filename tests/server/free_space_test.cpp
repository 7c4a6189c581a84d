#include "server/FreeSpace.h"

#include <gtest/gtest.h>

namespace kalvex::server {
namespace {

constexpr std::uint64_t kMebibyte = 1 << 20;

class FreeSpaceTest : public testing::Test {
  protected:
    // What is said half a minute later, when so many MiB are free.
    std::string At(std::uint64_t mebibytes, std::uint64_t little = 100) {
        m_free = mebibytes * kMebibyte;
        m_elapsed += 30;
        const platform::Notice notice = m_space.Step(m_elapsed, little * kMebibyte);
        return notice ? platform::InWords(notice, platform::Translator()) : "";
    }

    std::optional<std::uint64_t> m_free;
    std::int64_t m_elapsed = 1000;
    int m_looks = 0;
    FreeSpace m_space{[this] {
        ++m_looks;
        return m_free;
    }};
};

TEST_F(FreeSpaceTest, LittleIsToldOnceAndAgainWithEachHalving) {
    EXPECT_EQ(At(100), "");
    EXPECT_EQ(At(99), "Mało miejsca na dysku danych: 99 MiB");
    EXPECT_EQ(At(99), "");
    EXPECT_EQ(At(50), "");
    EXPECT_EQ(At(49), "Mało miejsca na dysku danych: 49 MiB");
    EXPECT_EQ(At(0), "Mało miejsca na dysku danych: 0 MiB");
    EXPECT_EQ(At(0), "");
}

TEST_F(FreeSpaceTest, EnoughIsAQuarterMore) {
    EXPECT_EQ(At(60), "Mało miejsca na dysku danych: 60 MiB");
    EXPECT_EQ(At(124), "");
    EXPECT_EQ(At(125), "Miejsca na dysku danych znów wystarcza: 125 MiB");
    EXPECT_EQ(At(125), "");
    EXPECT_EQ(At(99), "Mało miejsca na dysku danych: 99 MiB");
}

TEST_F(FreeSpaceTest, NothingIsLittleWhereNoLimitIs) {
    EXPECT_EQ(At(0, 0), "");
    EXPECT_EQ(At(60), "Mało miejsca na dysku danych: 60 MiB");
    EXPECT_EQ(At(60, 0), "Miejsca na dysku danych znów wystarcza: 60 MiB");
}

TEST_F(FreeSpaceTest, SystemThatDoesNotTellIsNoReasonToSayAnything) {
    EXPECT_FALSE(m_space.Step(m_elapsed, 100));
    EXPECT_EQ(m_space.Bytes(), std::nullopt);
    EXPECT_EQ(At(500), "");
    EXPECT_EQ(m_space.Bytes(), 500 * kMebibyte);
}

TEST_F(FreeSpaceTest, LooksEachHalfMinute) {
    for (int second = 0; second < 60; ++second) m_space.Step(second, 100);
    EXPECT_EQ(m_looks, 2);
}

}  // namespace
}  // namespace kalvex::server
