// Where a trend has its points from. Main thread; engine texts.
#pragma once

#include <cstdint>
#include <functional>
#include <optional>
#include <string>
#include <vector>

#include "platform/Translator.h"
#include "workbench/model/TrendSeries.h"

namespace kalvex::workbench {

struct TrendArchive {
    std::vector<TrendPoint> points;
    platform::Notice fault = {};  // why there are none
};

// Points of an archive that a request brings at most, where the server can thin them.
inline constexpr std::uint32_t kMostTrendPoints = 8000;

class TrendSource {
  public:
    using Answer = std::function<void(TrendArchive)>;

    // Lets go of a request under way.
    virtual ~TrendSource() = default;

    virtual std::string GetName() = 0;
    virtual std::string GetUnit() = 0;  // empty where none is known
    // Whether x is a time; otherwise it counts elements and the range of a request has no meaning.
    virtual bool IsTime() const = 0;

    // Has the points of the range, both ends included, come to the answer, once, perhaps before the
    // call ends; of more than kMostTrendPoints perhaps those that show its course. A new request
    // takes the place of one under way, which is not answered then.
    virtual void Request(std::int64_t from, std::int64_t to, Answer answer) = 0;

    // The value of now; nothing where there is no such thing.
    virtual std::optional<TrendPoint> ReadLive(std::int64_t now) = 0;

    // What is to be requested anew because it has changed: any number that differs then.
    virtual std::uint64_t GetVersion() { return 0; }
};

}  // namespace kalvex::workbench
