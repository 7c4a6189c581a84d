#include "text/NearestWord.h"

#include <algorithm>
#include <string>
#include <vector>

#include "text/CodePage.h"

namespace kalvex::text {

namespace {

constexpr std::size_t kMostChanges = 2;

std::size_t CountChanges(const std::string& from, const std::string& to) {
    std::vector<std::size_t> counts(to.size() + 1);
    for (std::size_t j = 0; j < counts.size(); ++j) counts[j] = j;
    for (std::size_t i = 0; i < from.size(); ++i) {
        std::size_t diagonal = counts[0];
        counts[0] = i + 1;
        for (std::size_t j = 0; j < to.size(); ++j) {
            const std::size_t replaced = diagonal + (from[i] == to[j] ? 0 : 1);
            diagonal = counts[j + 1];
            counts[j + 1] = std::min({replaced, counts[j] + 1, counts[j + 1] + 1});
        }
    }
    return counts.back();
}

}  // namespace

std::string_view FindNearestWord(std::string_view word, std::span<const std::string_view> known) {
    if (word.empty()) return {};
    const std::string upper = ToUpper(word);
    std::size_t least = std::min(kMostChanges, (word.size() - 1) / 2) + 1;
    std::string_view nearest;
    for (const std::string_view candidate : known) {
        const std::size_t changes = CountChanges(upper, ToUpper(candidate));
        if (changes >= least) continue;
        least = changes;
        nearest = candidate;
    }
    return nearest;
}

}  // namespace kalvex::text
