// Scenarios by seed. The same seed makes the same scenario.
#pragma once

#include <cstdint>

#include "differential/Scenario.h"

namespace kalvex::differential {

Scenario MakeScenario(std::uint64_t seed, int ticks);

}  // namespace kalvex::differential
