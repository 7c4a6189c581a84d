#include "values/allocation_count.h"

#include <atomic>
#include <cstddef>
#include <cstdlib>
#include <new>

namespace {

std::atomic<int> g_nAllocations = 0;

}  // namespace

namespace kalvex {

int AllocationCount() {
    return g_nAllocations;
}

}  // namespace kalvex

void* operator new(std::size_t size) {
    ++g_nAllocations;
    if (void* memory = std::malloc(size)) return memory;
    throw std::bad_alloc();
}

void* operator new(std::size_t size, const std::nothrow_t&) noexcept {
    ++g_nAllocations;
    return std::malloc(size);
}

void operator delete(void* memory) noexcept {
    std::free(memory);
}

void operator delete(void* memory, std::size_t) noexcept {
    std::free(memory);
}
