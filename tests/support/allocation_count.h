// What the memory of this program does: linked in, it counts the calls of operator new and delete.
#pragma once

#include <cstdint>

namespace kalvex::support {

// Calls of operator new so far.
int AllocationCount();

// Bytes that are held now, as the allocator reckons them.
std::int64_t HeldBytes();

}  // namespace kalvex::support
