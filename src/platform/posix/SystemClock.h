#pragma once

#include "platform/Clock.h"

namespace kalvex::platform {

class SystemClock final : public Clock {
  public:
    std::int64_t Now() const override;
    std::int64_t Elapsed() const override;
    bool SetSystemTime(std::int64_t seconds) override;
};

}  // namespace kalvex::platform
