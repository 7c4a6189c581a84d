// What the values of a stretch of time come to. Any thread, one at a time.
#pragma once

#include <cstdint>
#include <limits>

namespace kalvex::server {

inline constexpr std::int64_t kNoInstant = std::numeric_limits<std::int64_t>::min();

enum class PointForm : std::uint8_t {
    Number,  // finite, neither UNKNOWN nor TRANSMISSION_ERROR
    Text,
    Gap,  // any other
};

struct StoredPoint {
    std::int64_t time = 0;
    PointForm form = PointForm::Gap;
    double number = 0;
};

// The times of what stands out; kNoInstant where there is none. Of equal numbers the earliest
// counts.
struct Extremes {
    double min = 0;
    double max = 0;
    std::int64_t minTime = kNoInstant;
    std::int64_t maxTime = kNoInstant;
    std::int64_t textTime = kNoInstant;  // of the last text
    std::int64_t gapTime = kNoInstant;   // of the last gap

    // What is added lies behind all that was added before.
    void Add(const StoredPoint& point);
    void Add(const Extremes& later);
};

struct Rollup {
    std::int64_t time = 0;     // of its first second
    std::int64_t count = 0;    // values
    std::int64_t numbers = 0;  // of them
    double sum = 0;            // of the numbers
    double last = 0;
    std::int64_t lastTime = kNoInstant;
    Extremes extremes = {};

    void Add(const StoredPoint& point);
};

}  // namespace kalvex::server
