// Local time for the tests: the zone of a test, and instants written as their GMT fields.
#pragma once

#include <chrono>
#include <cstdint>
#include <optional>

#include "support/environment_scope.h"

namespace kalvex::support {

// Sets the zone of the process for its lifetime and puts the former one back.
class ZoneScope {
  public:
    explicit ZoneScope(const char* zone);
    ~ZoneScope();
    ZoneScope(const ZoneScope&) = delete;
    ZoneScope& operator=(const ZoneScope&) = delete;

  private:
    std::optional<EnvironmentScope> m_zone;
};

// The count of seconds of a reading of GMT.
constexpr std::int64_t Gmt(int year, unsigned month, unsigned day, int hour = 0, int minute = 0,
                           int second = 0) {
    using namespace std::chrono;
    const sys_days date =
        std::chrono::year(year) / std::chrono::month(month) / std::chrono::day(day);
    return sys_seconds(date).time_since_epoch().count() + hour * 3600 + minute * 60 + second;
}

}  // namespace kalvex::support
