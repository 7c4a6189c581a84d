// The number of calls of operator new in this program so far.
#pragma once

namespace kalvex {

int AllocationCount();

}  // namespace kalvex
