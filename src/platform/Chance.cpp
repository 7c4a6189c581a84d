#include "platform/Chance.h"

#include <sodium.h>

#include <cstdint>

namespace kalvex::platform {

std::size_t ChanceBelow(std::size_t bound) {
    return sodium_init() < 0 ? 0 : randombytes_uniform(static_cast<std::uint32_t>(bound));
}

}  // namespace kalvex::platform
