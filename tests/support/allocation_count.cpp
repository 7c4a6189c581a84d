#include "support/allocation_count.h"

#include <malloc.h>

#include <atomic>
#include <cstddef>
#include <cstdlib>
#include <new>

namespace {

std::atomic<int> g_allocations = 0;
std::atomic<std::int64_t> g_heldBytes = 0;

void* Allocate(std::size_t size) noexcept {
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
