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

// 96 MiB in blocks of a thousand bytes of which one in a hundred stays, the last one among them.
TEST(ProcessMemoryTest, WhatLiesBetweenBlocksThatStayIsGivenBack) {
    if (kOwnAllocator) GTEST_SKIP() << "a sanitizer has an allocator of its own";
    MemoryReturn memory;
    memory.Step();
    const std::uint64_t before = ResidentBytes();
    std::vector<std::unique_ptr<char[]>> blocks(100'000);
    for (auto& block : blocks) {
        block = std::make_unique<char[]>(1000);
        std::memset(block.get(), 1, 1000);
    }
    EXPECT_GT(ResidentBytes(), before + 80 * kMebibyte);
    for (std::size_t index = 0; index + 1 < blocks.size(); ++index) {
        if (index % 100 != 0) blocks[index].reset();
    }
    EXPECT_GT(ResidentBytes(), before + 80 * kMebibyte);
    memory.Step();
    EXPECT_LT(ResidentBytes(), before + 20 * kMebibyte);
}

}  // namespace
}  // namespace kalvex::platform
