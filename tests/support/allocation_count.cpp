#include "support/allocation_count.h"

#include <malloc.h>

#include <atomic>
#include <cstddef>
#include <cstdlib>
#include <limits>
#include <new>

namespace {

std::atomic<int> g_allocations = 0;
std::atomic<std::int64_t> g_heldBytes = 0;
std::atomic<std::size_t> g_largest = std::numeric_limits<std::size_t>::max();

void* Allocate(std::size_t size) noexcept {
    if (size > g_largest) return nullptr;
    void* memory = std::malloc(size);
    ++g_allocations;
    g_heldBytes += static_cast<std::int64_t>(malloc_usable_size(memory));
    return memory;
}

void Release(void* memory) noexcept {
    g_heldBytes -= static_cast<std::int64_t>(malloc_usable_size(memory));
    std::free(memory);
}

}  // namespace

namespace kalvex::support {

int AllocationCount() {
    return g_allocations;
}

std::int64_t HeldBytes() {
    return g_heldBytes;
}

AllocationBound::AllocationBound(std::size_t largest) {
    g_largest = largest;
}

AllocationBound::~AllocationBound() {
    g_largest = std::numeric_limits<std::size_t>::max();
}

}  // namespace kalvex::support

void* operator new(std::size_t size) {
    if (void* memory = Allocate(size)) return memory;
    throw std::bad_alloc();
}

void* operator new(std::size_t size, const std::nothrow_t&) noexcept {
    return Allocate(size);
}

void operator delete(void* memory) noexcept {
    Release(memory);
}

void operator delete(void* memory, std::size_t) noexcept {
    Release(memory);
}
