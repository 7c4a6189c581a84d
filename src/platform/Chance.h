// Choices that nobody outside can foresee. Any thread.
#pragma once

#include <cstddef>

namespace kalvex::platform {

// From 0 on, below `bound`, which is not 0 and has 32 bits; each with the same chance.
std::size_t ChanceBelow(std::size_t bound);

}  // namespace kalvex::platform
