#include "platform/DurationCounts.h"

#include <algorithm>
#include <bit>
#include <cmath>

namespace kalvex::platform {

// Up to 8 a class a value; from there on the bits below the highest four are left out of account.
std::size_t DurationCounts::ClassOf(std::uint64_t duration) {
    if (duration < (1u << kSplit)) return duration;
    const int top = std::bit_width(duration) - 1;
    const std::uint64_t part = (duration >> (top - kSplit)) & ((1u << kSplit) - 1);
    return (static_cast<std::size_t>(top - kSplit + 1) << kSplit) + part;
}

std::int64_t DurationCounts::TopOf(std::size_t index) {
    if (index < (1u << kSplit)) return static_cast<std::int64_t>(index);
    const std::size_t shift = (index >> kSplit) - 1;
    const std::int64_t part = static_cast<std::int64_t>(index & ((1u << kSplit) - 1));
    return (((1 << kSplit) + part + 1) << shift) - 1;
}

void DurationCounts::Add(std::int64_t duration) {
    constexpr std::int64_t kLongest = (std::int64_t{1} << kTopBit) - 1;
    duration = std::clamp<std::int64_t>(duration, 0, kLongest);
    ++m_counts[ClassOf(static_cast<std::uint64_t>(duration))];
    ++m_count;
    m_sum += duration;
    m_max = std::max(m_max, duration);
}

std::int64_t DurationCounts::GetPercentile(double share) const {
    const double rank = std::ceil(share * static_cast<double>(m_count));
    std::uint64_t passed = 0;
    for (std::size_t index = 0; index < kClasses; ++index) {
        passed += m_counts[index];
        if (static_cast<double>(passed) >= rank) return std::min(TopOf(index), m_max);
    }
    return m_max;
}

}  // namespace kalvex::platform
