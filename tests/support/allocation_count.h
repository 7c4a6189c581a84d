// What the memory of this program does: linked in, it counts the calls of operator new and delete,
// and can refuse large ones.
#pragma once

#include <cstddef>
#include <cstdint>

namespace kalvex::support {

// Calls of operator new so far.
int AllocationCount();

// Bytes that are held now, as the allocator reckons them.
std::int64_t HeldBytes();

// As long as it lives there is no memory for more than `largest` bytes at a time. One at a time.
class AllocationBound {
  public:
    explicit AllocationBound(std::size_t largest);
    ~AllocationBound();
    AllocationBound(const AllocationBound&) = delete;
    AllocationBound& operator=(const AllocationBound&) = delete;
};

}  // namespace kalvex::support
