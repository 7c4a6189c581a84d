#include "platform/ProcessMemory.h"

#include <gtest/gtest.h>

#include <cstddef>
#include <cstring>
#include <memory>
#include <vector>

namespace kalvex::platform {
namespace {

#if defined(__SANITIZE_ADDRESS__) || defined(__SANITIZE_THREAD__)
constexpr bool kOwnAllocator = true;
#else
constexpr bool kOwnAllocator = false;
#endif

constexpr std::uint64_t kMebibyte = std::uint64_t{1} << 20;

using Blocks = std::vector<std::unique_ptr<char[]>>;

// 96 MiB in blocks of a thousand bytes.
Blocks Take() {
    Blocks blocks(100'000);
    for (auto& block : blocks) {
        block = std::make_unique<char[]>(1000);
        std::memset(block.get(), 1, 1000);
    }
    return blocks;
}

// One in a hundred stays, the last one among them.
void FreeMost(Blocks& blocks) {
    for (std::size_t index = 0; index + 1 < blocks.size(); ++index) {
        if (index % 100 != 0) blocks[index].reset();
    }
}

class ProcessMemoryTest : public testing::Test {
  protected:
    void SetUp() override {
        if (kOwnAllocator) GTEST_SKIP() << "a sanitizer has an allocator of its own";
        m_memory.Step();
        m_before = ResidentBytes();
    }

    MemoryReturn m_memory;
    std::uint64_t m_before = 0;
};

TEST_F(ProcessMemoryTest, WhatLiesBetweenBlocksThatStayIsGivenBack) {
    Blocks blocks = Take();
    EXPECT_GT(ResidentBytes(), m_before + 80 * kMebibyte);
    FreeMost(blocks);
    EXPECT_GT(ResidentBytes(), m_before + 80 * kMebibyte);
    m_memory.Step();
    EXPECT_LT(ResidentBytes(), m_before + 20 * kMebibyte);
}

TEST_F(ProcessMemoryTest, WhatWasInUseAtALookIsGivenBackAtTheNextOne) {
    Blocks blocks = Take();
    m_memory.Step();
    EXPECT_GT(ResidentBytes(), m_before + 80 * kMebibyte);
    FreeMost(blocks);
    m_memory.Step();
    EXPECT_LT(ResidentBytes(), m_before + 20 * kMebibyte);
}

TEST_F(ProcessMemoryTest, EachPeakIsGivenBack) {
    for (int peak = 0; peak < 3; ++peak) {
        Blocks blocks = Take();
        m_memory.Step();
        FreeMost(blocks);
        m_memory.Step();
        EXPECT_LT(ResidentBytes(), m_before + 20 * kMebibyte) << peak;
    }
}

}  // namespace
}  // namespace kalvex::platform
