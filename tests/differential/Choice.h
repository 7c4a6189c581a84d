// The random choices of a generator. The same seed makes the same ones with any standard library.
#pragma once

#include <cstddef>
#include <cstdint>
#include <random>
#include <span>
#include <vector>

namespace kalvex::differential {

class Choice {
  public:
    explicit Choice(std::uint64_t seed) : m_random(seed) {}

    // 0 where there is nothing to choose from.
    std::size_t Below(std::size_t bound) { return bound == 0 ? 0 : m_random() % bound; }
    int Between(int low, int high) {
        return low + static_cast<int>(Below(static_cast<std::size_t>(high - low) + 1));
    }
    bool Chance(int percent) { return static_cast<int>(Below(100)) < percent; }

    // One of at least one.
    template <class Rows>
    const auto& Pick(const Rows& rows) {
        return std::data(rows)[Below(std::size(rows))];
    }
    // One of rows with a member `weight`, as often as it says.
    template <class Rows>
    const auto& PickWeighted(const Rows& rows) {
        int total = 0;
        for (const auto& row : rows) total += row.weight;
        int left = static_cast<int>(Below(static_cast<std::size_t>(total)));
        const auto* row = std::data(rows);
        for (; left >= row->weight; ++row) left -= row->weight;
        return *row;
    }

  private:
    std::mt19937_64 m_random;
};

}  // namespace kalvex::differential
