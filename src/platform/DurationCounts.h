// How long something takes, or how late it comes, counted in a fixed number of classes, however
// long the process lasts. Microseconds. One thread.
#pragma once

#include <array>
#include <cstddef>
#include <cstdint>

namespace kalvex::platform {

class DurationCounts {
  public:
    // What comes early counts as in time.
    void Add(std::int64_t duration);

    std::uint64_t GetCount() const { return m_count; }
    std::int64_t GetSum() const { return m_sum; }
    std::int64_t GetMax() const { return m_max; }
    // What this share of all, above 0 and up to 1, does not exceed: never less than the true
    // figure and at most an eighth above it. 0 before the first one.
    std::int64_t GetPercentile(double share) const;

  private:
    // Eight classes for each doubling, up to 2^40, which is two weeks.
    static constexpr int kSplit = 3;
    static constexpr int kTopBit = 40;
    static constexpr std::size_t kClasses = std::size_t{kTopBit - kSplit + 1} << kSplit;

    static std::size_t ClassOf(std::uint64_t duration);
    static std::int64_t TopOf(std::size_t index);

    std::array<std::uint64_t, kClasses> m_counts{};
    std::uint64_t m_count = 0;
    std::int64_t m_sum = 0;
    std::int64_t m_max = 0;
};

}  // namespace kalvex::platform
