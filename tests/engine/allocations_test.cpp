// That lines which run again and again take nothing from the heap. A program of its own, for it
// counts what the whole program takes.
#include <gtest/gtest.h>

#include <atomic>
#include <cstdlib>
#include <new>

#include "engine/script_lines.h"

namespace {

std::atomic<long> g_allocations = 0;

}  // namespace

void* operator new(std::size_t size) {
    ++g_allocations;
    if (void* const memory = std::malloc(size == 0 ? 1 : size)) return memory;
    throw std::bad_alloc();
}

void operator delete(void* memory) noexcept {
    std::free(memory);
}

void operator delete(void* memory, std::size_t) noexcept {
    std::free(memory);
}

namespace kalvex::engine {
namespace {

class AllocationsTest : public ScriptLines {
  protected:
    long CountOf(const std::vector<std::string>& lines) {
        constexpr int kLinesToWarmUp = 200;
        constexpr int kLinesCounted = 2000;
        Load(lines);
        EXPECT_TRUE(document.Start());
        for (int i = 0; i < kLinesToWarmUp; ++i) EXPECT_TRUE(document.ExecuteLine()) << Failure();
        const long before = g_allocations;
        for (int i = 0; i < kLinesCounted; ++i) document.ExecuteLine();
        return g_allocations - before;
    }
};

TEST_F(AllocationsTest, LoopOfNumbersTakesNone) {
    EXPECT_EQ(CountOf({"LOCAL N = 0", "LOCAL M = 0", ":w", "SET M = N",
                       "SET N = M * 1.01 + 1 - M * 0.01", "IF N < 1000000 GOTO w"}),
              0);
}

TEST_F(AllocationsTest, CallTakesNone) {
    EXPECT_EQ(CountOf({"LOCAL S = 0", "LOCAL N = 0", ":w", "CALL dodaj(S, N, 2)", "SET N = N + 1",
                       "IF N < 1000000 GOTO w", "PROCEDURE dodaj(suma, ile, razy)", "BEGIN",
                       "SET suma = suma + ile * razy", "END"}),
              0);
}

TEST_F(AllocationsTest, ComparisonOfShortTextsTakesNone) {
    EXPECT_EQ(CountOf({"LOCAL S = \"Z1\"", "LOCAL N = 0", ":w", "IF S == \"Z1\" THEN",
                       "SET N = N + 1", "ELSE", "SET N = 0", "ENDIF", "GOTO w"}),
              0);
}

// What is counted is counted at all.
TEST_F(AllocationsTest, LongTextTakesSome) {
    EXPECT_GT(CountOf({"LOCAL S = \"tekst, który nie mieści się w samej wartości\"", "LOCAL T",
                       ":w", "SET T = STRING_MAKE_UPPER S", "GOTO w"}),
              0);
}

}  // namespace
}  // namespace kalvex::engine
